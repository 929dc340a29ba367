// Watching, step by step: what the shell's thread does between an open session and its end.
#pragma once

#include <functional>
#include <optional>

#include "host/app/dmbtv/Script.h"
#include "host/app/dmbtv/Session.h"

namespace dmbtv {

// Throws StartFailure with the line that cannot be read.
[[nodiscard]] Script LoadScript(const std::filesystem::path& file);

// Opens the view, scans when there has never been a channel list, then carries out the script, or plays until the session is
// asked to end. Returns an ExitStatus.
[[nodiscard]] int Play(Session& session, const Options& options, const std::optional<Script>& script);

// What the shell's thread does with the session that the window shows; returns an ExitStatus.
using WindowTask = std::function<int(Session&)>;
// Does it behind a window, which closes when the task ends (WindowPlayer.cpp). Throws StartFailure when there is no display.
[[nodiscard]] int PlayInWindow(const Options& options, const WindowTask& task);

} // namespace dmbtv
