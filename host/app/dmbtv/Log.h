// What the program says on its error output: one line an event, data never.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace dmbtv {

enum class LogLevel : std::uint8_t { Error, Warn, Info, Debug };

// error, warn, info or debug.
[[nodiscard]] std::optional<LogLevel> LogLevelOf(const std::string& name);
// Lines of a higher level than this are left out from now on. At first: Info.
void SetLogLevel(LogLevel highest);
// Any thread; one line at a time. Coloured on a terminal, unless NO_COLOR is set.
void Log(LogLevel level, const std::string& line);
// An error; returns the status, so that a caller can say and leave in one line.
int Fail(int status, const std::string& reason);

} // namespace dmbtv
