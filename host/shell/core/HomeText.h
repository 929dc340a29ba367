// What the home screen says: decisions and patterns only.
#pragma once

#include "platform/types.h"

#include <initializer_list>

namespace shell {

// The numbers of the home screen's texts in its table; in a pattern {} stands for the title.
enum HomeTextId : WORD {
    kHomeInvite = 10,    // nothing was watched yet
    kHomePlaying = 11,   // {}
    kHomeRecording = 12, // {}
    kHomeOnHold = 13,    // {}
    kHomeLast = 14,      // {}
    kHomeDate = 20,      // {weekday} {month} {day}
    kHomeMonth = 21,     // January; eleven follow
    kHomeWeekday = 41,   // Sunday; six follow
};

// Which line tells about the view: it is open or not, its play mode, and whether a title is known from it or the last one.
[[nodiscard]] WORD HomeLineFor(bool viewIsOpen, int playMode, bool titleIsKnown);

// The pattern with every occurrence of a name in braces replaced.
struct PatternPart {
    WStringView name; // without its braces
    WStringView text;
};
[[nodiscard]] WString FillPattern(WStringView pattern, std::initializer_list<PatternPart> parts);

// 0 is Sunday. Of a date of the Gregorian calendar.
[[nodiscard]] int WeekdayOf(int year, int month, int day);

} // namespace shell
