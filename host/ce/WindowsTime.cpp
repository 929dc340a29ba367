// On Windows only: the two time helpers of platform/wince.h, which elsewhere ask the clock port.
#include "platform/wince.h"

#include <ctime>

TimeSeconds CurrentTime() {
    return _time64(nullptr);
}

LocalTime LocalTimeOf(TimeSeconds moment) {
    const __time64_t seconds = moment;
    std::tm parts{};
    if (_localtime64_s(&parts, &seconds) != 0)
        return {1970, 1, 1, 0, 0, 0};
    return {parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec};
}
