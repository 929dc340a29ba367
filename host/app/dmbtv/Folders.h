// Where things of the user lie, by the desktop's conventions (XDG base directories and user directories).
#pragma once

#include <filesystem>
#include <string>

namespace dmbtv {

// $XDG_CONFIG_HOME/dmbview: settings, channel list, key map.
[[nodiscard]] std::filesystem::path ConfigFolder();
// $XDG_CACHE_HOME/dmbview: what can be made again.
[[nodiscard]] std::filesystem::path CacheFolder();
// XDG_VIDEOS_DIR as xdg-user-dirs keeps it; ~/Videos when it says nothing. Recordings lie in its folder DMB.
[[nodiscard]] std::filesystem::path VideoFolder();

// The folder that a line of user-dirs.dirs gives the key, with $HOME filled in; empty when it is another line.
[[nodiscard]] std::filesystem::path UserDirectoryOf(const std::string& line, const std::string& key,
                                                    const std::string& home);

} // namespace dmbtv
