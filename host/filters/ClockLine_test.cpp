#include "host/filters/ClockLine.h"

#include <gtest/gtest.h>

using namespace filters;

namespace {
constexpr std::uint64_t kWrap = std::uint64_t{1} << 33;
}

TEST(ClockLine, GoesOnOverAWrap) {
    ClockLine line;
    EXPECT_FALSE(line.OnReference((kWrap - 900) * 300, false));
    EXPECT_FALSE(line.OnReference(900 * 300, false));
    EXPECT_EQ(line.Now(), static_cast<Ticks>(kWrap) + 900);
    EXPECT_EQ(line.Place(1000, 33, 90000), static_cast<Ticks>(kWrap) + 1000);
    EXPECT_EQ(line.Place(kWrap - 100, 33, 90000), static_cast<Ticks>(kWrap) - 100);
}

TEST(ClockLine, StandsStillOverAJump) {
    ClockLine line;
    (void)line.OnReference(90000 * 300, false);
    EXPECT_TRUE(line.OnReference(900000ull * 300, false));
    EXPECT_EQ(line.Now(), 90000);
    EXPECT_EQ(line.Place(900500, 33, 90000), 90500);
    EXPECT_TRUE(line.OnReference(0, false));
    EXPECT_EQ(line.Now(), 90000);
    EXPECT_FALSE(line.OnReference(4500 * 300, false));
    EXPECT_EQ(line.Now(), 94500);
    EXPECT_EQ(line.Jumps(), 2u);
}

TEST(ClockLine, TheRateTellsHowLongAJumpTook) {
    ClockLine line;
    for (std::uint64_t at = 0; at <= 10; ++at)
        (void)line.OnReference(at * 4500 * 300, false, 100 + at * 25);
    EXPECT_EQ(line.Now(), 45000);
    EXPECT_TRUE(line.OnReference(0, true, 100 + 10 * 25 + 10));
    EXPECT_EQ(line.Now(), 45000 + 1800); // ten packets more
    EXPECT_EQ(line.Place(900, 33, 90000), 45000 + 1800 + 900);
    EXPECT_EQ(line.Place(45000 + 2700, 33, 90000, true), 45000 + 2700) << "a stamp from before the jump";
    // The next one comes at once, before there is a rate again.
    EXPECT_TRUE(line.OnReference(900000ull * 300, true, 1000));
    EXPECT_EQ(line.Now(), 45000 + 1800);
}

TEST(ClockLine, BelievesAnAnnouncedJump) {
    ClockLine line;
    (void)line.OnReference(0, false);
    EXPECT_TRUE(line.OnReference(4500 * 300, true));
    EXPECT_EQ(line.Now(), 0);
}

TEST(ClockLine, PlacesStampsOfOtherResolutions) {
    ClockLine line;
    (void)line.OnReference(20ull * 90000 * 300, false);
    // Milliseconds in 14 bits wrap after 16.384 seconds.
    EXPECT_EQ(line.Place(20500 % 16384, 14, 1000), 20 * 90000 + 45000);
    EXPECT_EQ(line.Place(20 * 48000 + 480, 32, 48000), 20 * 90000 + 900);
}

TEST(ClockLine, RefusesAStampOfAnotherClock) {
    ClockLine line;
    (void)line.OnReference(0, false);
    EXPECT_FALSE(line.Place(20ull * 90000, 33, 90000));
    EXPECT_FALSE(line.Place(5, 0, 90000));
    EXPECT_FALSE(line.Place(5, 33, 0));
}

TEST(ClockLine, GoesByTheStampsWithoutReferences) {
    ClockLine line;
    EXPECT_EQ(line.Place(kWrap - 10, 33, 90000), static_cast<Ticks>(kWrap) - 10);
    EXPECT_EQ(line.Place(20, 33, 90000), static_cast<Ticks>(kWrap) + 20);
}
