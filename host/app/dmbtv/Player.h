// Watching, step by step: what the shell's thread does between an open session and its end.
#pragma once

#include <optional>

#include "host/app/dmbtv/Script.h"
#include "host/app/dmbtv/Session.h"

namespace dmbtv {

// Throws StartFailure with the line that cannot be read.
[[nodiscard]] Script LoadScript(const std::filesystem::path& file);

// Opens the view, scans when there has never been a channel list, then carries out the script, or plays until the session is
// asked to end. Returns an ExitStatus.
[[nodiscard]] int Play(Session& session, const Options& options, const std::optional<Script>& script);

// The same in a window (WindowPlayer.cpp). Throws StartFailure when there is no display.
[[nodiscard]] int PlayInWindow(const Options& options, const std::optional<Script>& script);

} // namespace dmbtv
