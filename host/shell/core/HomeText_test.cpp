#include "host/shell/core/HomeText.h"

#include "platform/velshell/VelPlayerView.h"

#include <gtest/gtest.h>

namespace shell {

TEST(HomeText, TheLineFollowsTheView) {
    struct Case {
        bool open;
        int mode;
        bool titled;
        WORD wanted;
    };
    for (const Case& c :
         {Case{false, 0, false, kHomeInvite}, Case{false, 0, true, kHomeLast},
          Case{true, kPlayModeStopped, false, kHomeInvite}, Case{true, kPlayModeStopped, true, kHomeOnHold},
          Case{true, kPlayModePaused, true, kHomeOnHold}, Case{true, kPlayModePlaying, true, kHomePlaying},
          Case{true, kPlayModeRecording, true, kHomeRecording}, Case{true, kPlayModePlaying, false, kHomeInvite}}) {
        EXPECT_EQ(HomeLineFor(c.open, c.mode, c.titled), c.wanted) << c.open << " " << c.mode << " " << c.titled;
    }
}

TEST(HomeText, PatternsTakeTheirParts) {
    EXPECT_EQ(FillPattern(u"{month} {day}일 {weekday}", {{u"month", u"5월"}, {u"day", u"5"}, {u"weekday", u"화요일"}}),
              u"5월 5일 화요일");
    EXPECT_EQ(FillPattern(u"On hold\n{}", {{u"", u"[CH8] {}"}}), u"On hold\n[CH8] {}");
    EXPECT_EQ(FillPattern(u"{none}.", {}), u".");
    EXPECT_EQ(FillPattern(u"open { only", {}), u"open { only");
    EXPECT_EQ(FillPattern(u"", {{u"", u"x"}}), u"");
}

TEST(HomeText, WeekdaysOfKnownDates) {
    EXPECT_EQ(WeekdayOf(1970, 1, 1), 4);
    EXPECT_EQ(WeekdayOf(2000, 2, 29), 2);
    EXPECT_EQ(WeekdayOf(2026, 5, 5), 2);
    EXPECT_EQ(WeekdayOf(2026, 11, 22), 0);
}

} // namespace shell
