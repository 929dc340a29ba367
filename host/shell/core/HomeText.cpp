#include "host/shell/core/HomeText.h"

#include "platform/velshell/VelPlayerView.h"

#include <chrono>

namespace shell {

WORD HomeLineFor(bool viewIsOpen, int playMode, bool titleIsKnown) {
    if (!titleIsKnown) {
        return kHomeInvite;
    }
    if (!viewIsOpen) {
        return kHomeLast;
    }
    switch (playMode) {
    case kPlayModePlaying:
        return kHomePlaying;
    case kPlayModeRecording:
        return kHomeRecording;
    default:
        return kHomeOnHold;
    }
}

WString FillPattern(WStringView pattern, std::initializer_list<PatternPart> parts) {
    WString result;
    for (std::size_t at = 0; at < pattern.size();) {
        const std::size_t open = pattern.find(u'{', at);
        const std::size_t close = open == WStringView::npos ? open : pattern.find(u'}', open);
        if (close == WStringView::npos) {
            return result.append(pattern.substr(at));
        }
        result.append(pattern.substr(at, open - at));
        for (const PatternPart& part : parts) {
            if (part.name == pattern.substr(open + 1, close - open - 1)) {
                result.append(part.text);
            }
        }
        at = close + 1;
    }
    return result;
}

int WeekdayOf(int year, int month, int day) {
    using namespace std::chrono;
    const year_month_day date{std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                              std::chrono::day(static_cast<unsigned>(day))};
    return static_cast<int>(weekday(sys_days(date)).c_encoding());
}

} // namespace shell
