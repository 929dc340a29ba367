#include "tuner/SignalBars.h"

#include <gtest/gtest.h>

// Edge case: 20, 20, 20 draw once; 4 then averages to 16.
TEST(SignalBars, ThreeEqualReadingsDrawOnceAndAFourthAverages) {
    SignalBars bars;
    EXPECT_EQ(bars.Add(20), 5);
    EXPECT_EQ(bars.Add(20), kNoLevel);
    EXPECT_EQ(bars.Add(20), kNoLevel);
    EXPECT_EQ(bars.Add(4), 3);
}

// Edge case: after a reset 30 then 0 average to 30 and 15.
TEST(SignalBars, FirstReadingsAfterAResetAverageOverThoseSoFar) {
    SignalBars bars;
    bars.Reset();
    EXPECT_EQ(bars.Add(30), 6);
    EXPECT_EQ(bars.Add(0), 3);
}

// Edge case: the next reading after a reset draws even the level drawn before it.
TEST(SignalBars, ResetForgetsTheLevelDrawn) {
    SignalBars bars;
    EXPECT_EQ(bars.Add(20), 5);
    bars.Reset();
    EXPECT_EQ(bars.Add(20), 5);
}

TEST(SignalBars, LevelsChangeAtTheirThresholds) {
    const int table[][2] = {{0, 0},  {10, 0}, {11, 1}, {12, 1}, {13, 2}, {14, 2}, {15, 3}, {16, 3},
                            {17, 4}, {18, 4}, {19, 5}, {20, 5}, {21, 6}, {23, 6}, {24, 6}, {99, 6}};
    for (const auto& [reading, level] : table) {
        SignalBars bars;
        EXPECT_EQ(bars.Add(reading), level) << "reading " << reading;
    }
}

TEST(SignalBars, FromTheFourthReadingOnTheLastFourCount) {
    SignalBars bars;
    for (int i = 0; i < 100; ++i)
        (void)bars.Add(30);
    EXPECT_EQ(bars.Add(10), kNoLevel); // 100 / 4 = 25
    EXPECT_EQ(bars.Add(10), 5);        // 80 / 4 = 20
    EXPECT_EQ(bars.Add(10), 3);        // 60 / 4 = 15
    EXPECT_EQ(bars.Add(10), 0);        // 40 / 4 = 10
}

TEST(SignalBars, AverageOfThreeTruncates) {
    SignalBars bars;
    (void)bars.Add(11);
    (void)bars.Add(11);
    EXPECT_EQ(bars.Add(10), 0); // 32 / 3 = 10
}

namespace {
constexpr RadioSignalState kNormal{false, false, false, true};
}

TEST(RadioSignal, GoodReadingInTheNormalStateDoesNothing) {
    EXPECT_EQ(DecideRadioSignal(9, kNormal), RadioSignalAction{});
}

// Edge cases: exactly 8 is weak, 7 stops and arms nothing, exactly 6 arms.
TEST(RadioSignal, EightIsWeakSevenStopsSixArms) {
    RadioSignalAction stop;
    stop.stop = true;
    EXPECT_EQ(DecideRadioSignal(8, kNormal), stop);
    EXPECT_EQ(DecideRadioSignal(7, kNormal), stop);
    RadioSignalAction stopAndArm = stop;
    stopAndArm.arm = true;
    EXPECT_EQ(DecideRadioSignal(6, kNormal), stopAndArm);
}

TEST(RadioSignal, WaitingRadioArmsOnceAndThenDoesNothing) {
    RadioSignalAction arm;
    arm.arm = true;
    EXPECT_EQ(DecideRadioSignal(6, {false, true, false, false}), arm);
    EXPECT_EQ(DecideRadioSignal(6, {false, true, true, false}), RadioSignalAction{});
    EXPECT_EQ(DecideRadioSignal(7, {false, true, false, false}), RadioSignalAction{});
}

TEST(RadioSignal, ReturnBeforeTheNoticeRestartsWithoutAnnouncing) {
    const RadioSignalAction action = DecideRadioSignal(9, {false, true, true, false});
    EXPECT_TRUE(action.restart);
    EXPECT_TRUE(action.setOnAir);
    EXPECT_FALSE(action.postOnAir);
    EXPECT_TRUE(action.disarm);
}

TEST(RadioSignal, ReturnAfterTheNoticeAnnouncesTheService) {
    const RadioSignalAction action = DecideRadioSignal(9, {true, true, true, false});
    EXPECT_TRUE(action.restart);
    EXPECT_TRUE(action.postOnAir);
    EXPECT_FALSE(action.setOnAir);
    EXPECT_FALSE(DecideRadioSignal(9, {true, true, true, true}).postOnAir);
}

TEST(RadioSignal, GoodReadingInTheNormalStateDisarmsAnArmedTimer) {
    RadioSignalAction disarm;
    disarm.disarm = true;
    EXPECT_EQ(DecideRadioSignal(20, {false, false, true, true}), disarm);
}
