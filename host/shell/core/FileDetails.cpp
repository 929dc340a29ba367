#include "host/shell/core/FileDetails.h"

namespace shell {

WString DateText(TimeSeconds written) {
    const LocalTime time = LocalTimeOf(written);
    return FormatW(u"%04d-%02d-%02d %02d:%02d", time.year, time.month, time.day, time.hour, time.minute);
}

WString LengthText(ULONGLONG bytes, std::optional<UINT> seconds) {
    if (seconds) {
        const UINT minutes = *seconds / 60;
        return minutes < 60 ? FormatW(u"%u:%02u", minutes, *seconds % 60)
                            : FormatW(u"%u:%02u:%02u", minutes / 60, minutes % 60, *seconds % 60);
    }
    constexpr ULONGLONG kMegabyte = 1 << 20;
    const auto tenths = static_cast<UINT>((bytes * 10 + kMegabyte / 2) / kMegabyte);
    return FormatW(u"%u.%u MB", tenths / 10, tenths % 10);
}

} // namespace shell
