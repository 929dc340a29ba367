#include "host/app/dmbtv/Log.h"

#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace dmbtv {

namespace {

// What is on stderr belongs to the process, so this does too.
std::atomic<LogLevel> highestLevel = LogLevel::Info;

struct Look {
    const char* name;
    const char* mark; // in front of the line
    const char* colour;
};

const Look& LookOf(LogLevel level) {
    static constexpr Look kLooks[] = {{"error", "", "\033[31m"},
                                      {"warn", "warning: ", "\033[33m"},
                                      {"info", "", ""},
                                      {"debug", "debug: ", "\033[2m"}};
    return kLooks[static_cast<std::size_t>(level)];
}

bool IsColoured() {
    const char* off = std::getenv("NO_COLOR");
    return isatty(STDERR_FILENO) == 1 && (off == nullptr || *off == '\0');
}

} // namespace

std::optional<LogLevel> LogLevelOf(const std::string& name) {
    for (const LogLevel level : {LogLevel::Error, LogLevel::Warn, LogLevel::Info, LogLevel::Debug}) {
        if (name == LookOf(level).name)
            return level;
    }
    return std::nullopt;
}

void SetLogLevel(LogLevel highest) {
    highestLevel = highest;
}

void Log(LogLevel level, const std::string& line) {
    if (level > highestLevel.load())
        return;
    static const bool coloured = IsColoured();
    const Look& look = LookOf(level);
    const bool paint = coloured && *look.colour != '\0';
    std::string whole = std::string(paint ? look.colour : "") + "dmbtv: " + look.mark + line;
    whole += paint ? "\033[0m\n" : "\n";
    std::fwrite(whole.data(), 1, whole.size(), stderr); // one call: lines of several threads do not mix
}

int Fail(int status, const std::string& reason) {
    Log(LogLevel::Error, reason);
    return status;
}

} // namespace dmbtv
