// What the user said on the command line.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace dmbtv {

// Exit statuses of all programs that play.
enum ExitStatus : int {
    kExitDone = 0,
    kExitFailed = 1,  // something went wrong while running, or a script expectation did not hold
    kExitUsage = 2,   // the command line, a script or the skin is not understood
    kExitNoInput = 3, // the source or the script cannot be opened
};

struct Options {
    std::string source;  // empty: the built-in demo
    std::string command; // template of a demodulator's command line
    std::filesystem::path script;
    std::filesystem::path deviceRoot; // host folder of the device's "\"
    std::filesystem::path card;       // host folder of the memory card
    std::filesystem::path profile;    // settings and channel list
    std::filesystem::path audioOut;   // WAV file of what is heard
    std::filesystem::path screenshot; // written at the end
    std::string language;             // "ko", "en", or empty: by the locale
    bool headless = false;
    bool debugMode = false;
};

// The options, or the exit status after --help, --version or a usage error (which is told on stderr).
[[nodiscard]] std::optional<Options> ReadOptions(int argc, char** argv, int& exitStatus);

// Folders that the user did not name, by the desktop's conventions (XDG): settings and list together in the configuration folder,
// recordings in the user's video folder, what can be made again in the cache folder.
void FillFolders(Options& options);
[[nodiscard]] std::filesystem::path CacheFolder();

} // namespace dmbtv
