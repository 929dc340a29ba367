#include "host/filters/Playout.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

using namespace filters;

namespace {

constexpr std::size_t kBlock = 1024;

SoundBlock Tone(Ticks time, bool live, Ticks lead = 0) {
    SoundBlock block;
    block.sampleRate = 48000;
    block.channels = 2;
    block.time = time;
    block.lead = lead;
    block.live = live;
    for (std::size_t i = 0; i < kBlock; ++i) {
        const double second = static_cast<double>(time) / 90000 + static_cast<double>(i) / 48000;
        const auto sample = static_cast<std::int16_t>(8000 * std::sin(2 * std::numbers::pi * 300 * second));
        block.samples.insert(block.samples.end(), 2, sample);
    }
    return block;
}

constexpr Ticks kBlockTicks = 1920;

// A device on the test's clock that pulls 10 ms at a time.
struct Device {
    ce::ManualClock clock;
    std::shared_ptr<LiveHold> hold = std::make_shared<LiveHold>();
    Playout playout{clock, hold};
    std::vector<std::int16_t> heard;

    void Pull() {
        std::vector<std::int16_t> frames(960);
        playout.Pull(frames);
        heard.insert(heard.end(), frames.begin(), frames.end());
    }
    void Pass(int milliseconds) {
        for (int i = 0; i < milliseconds; i += 10) {
            Pull();
            clock.Sleep(10);
        }
    }
    [[nodiscard]] int LargestStep() const {
        int largest = 0;
        for (std::size_t i = 2; i < heard.size(); ++i)
            largest = std::max(largest, std::abs(heard[i] - heard[i - 2]));
        return largest;
    }
};

} // namespace

TEST(Playout, AFilePlaysUnchangedBehindItsFirstMilliseconds) {
    Device device;
    std::vector<std::int16_t> wanted;
    for (int i = 0; i < 20; ++i) {
        const SoundBlock block = Tone(i * kBlockTicks, false);
        wanted.insert(wanted.end(), block.samples.begin(), block.samples.end());
        ASSERT_TRUE(device.playout.Push(block));
    }
    device.playout.End();
    device.Pass(420);
    for (std::size_t i = 600; i < 19 * kBlock * 2; ++i)
        ASSERT_EQ(device.heard[i], wanted[i]) << i;
}

TEST(Playout, TheClockIsTheSoundThatIsHeard) {
    Device device;
    for (int i = 0; i < 20; ++i)
        (void)device.playout.Push(Tone(900000 + i * kBlockTicks, false));
    Ticks now = 0;
    EXPECT_EQ(device.playout.StreamTime(now), ClockState::kPending);
    device.Pass(100);
    ASSERT_EQ(device.playout.StreamTime(now), ClockState::kRunning);
    EXPECT_EQ(now, 900000 + 100 * 90);
    device.playout.SetLatency(40);
    ASSERT_EQ(device.playout.StreamTime(now), ClockState::kRunning);
    EXPECT_EQ(now, 900000 + 60 * 90);
}

TEST(Playout, AGapBecomesSilenceOfItsLength) {
    Device device;
    for (int i = 0; i < 15; ++i)
        (void)device.playout.Push(Tone(i * kBlockTicks, false));
    for (int i = 25; i < 40; ++i)
        (void)device.playout.Push(Tone(i * kBlockTicks, false));
    device.Pass(840);
    // 10 blocks of silence, where they belong.
    for (std::size_t i = 15 * kBlock * 2 + 600; i < 25 * kBlock * 2; ++i)
        ASSERT_EQ(device.heard[i], 0) << i;
    EXPECT_LE(device.LargestStep(), 330);
}

TEST(Playout, LiveSoundWaitsUntilItIsBehindTheSchedule) {
    Device device;
    // Units come 400 ms before they are due.
    Ticks time = 0;
    int started = -1;
    for (int i = 0; i < 100 && started < 0; ++i, time += kBlockTicks) {
        (void)device.playout.Push(Tone(time, true, 400 * kTicksPerMs));
        device.Pull();
        Ticks now = 0;
        if (device.playout.StreamTime(now) == ClockState::kRunning)
            started = i;
        device.clock.Sleep(21);
    }
    EXPECT_NEAR(started * 1024 / 48.0, 472, 30);
}

TEST(Playout, AnUnderrunNeitherClicksNorStopsTheClock) {
    Device device;
    for (int i = 0; i < 16; ++i)
        (void)device.playout.Push(Tone(i * kBlockTicks, true, 0));
    device.Pass(600); // 341 ms of sound
    Ticks now = 0;
    ASSERT_EQ(device.playout.StreamTime(now), ClockState::kRunning);
    EXPECT_EQ(now, 600 * 90);
    // The stream went on meanwhile: what comes now is in time.
    for (int i = 30; i < 40; ++i)
        (void)device.playout.Push(Tone(i * kBlockTicks, true, 0));
    device.Pass(200);
    EXPECT_LE(device.LargestStep(), 330);
    EXPECT_NE(*std::max_element(device.heard.end() - 9600, device.heard.end()), 0);
}

TEST(Playout, SoundThatComesTooLateIsHeldBackAnew) {
    Device device;
    for (int i = 0; i < 16; ++i)
        (void)device.playout.Push(Tone(i * kBlockTicks, true, 0));
    device.Pass(1000);
    for (int i = 16; i < 26; ++i)
        (void)device.playout.Push(Tone(i * kBlockTicks, true, 0));
    device.Pass(10);
    Ticks now = 0;
    EXPECT_EQ(device.playout.StreamTime(now), ClockState::kPending);
    for (int i = 26; i < 36; ++i)
        (void)device.playout.Push(Tone(i * kBlockTicks, true, 0));
    device.Pass(100);
    ASSERT_EQ(device.playout.StreamTime(now), ClockState::kRunning);
    EXPECT_EQ(now, 16 * kBlockTicks + 100 * 90);
    EXPECT_LE(device.LargestStep(), 330);
}

namespace {

// How far what is heard is behind what came last, in milliseconds.
double Behind(const Playout& playout, Ticks newest) {
    Ticks now = 0;
    EXPECT_EQ(playout.StreamTime(now), ClockState::kRunning);
    return static_cast<double>(newest - now) / kTicksPerMs;
}

// Sends half a second of sound on time and lets the device play; returns the time of the next block.
Ticks SendEvenly(Device& device, Ticks time) {
    constexpr Ticks kPull = 10 * kTicksPerMs;
    Ticks sent = 0;
    for (Ticks at = 0; sent < 24 * kBlockTicks; at += kPull) {
        for (; sent <= at && sent < 24 * kBlockTicks; sent += kBlockTicks)
            (void)device.playout.Push(Tone(time + sent, true));
        device.Pass(10);
    }
    return time + sent;
}

} // namespace

// Edge case: a source that stutters
TEST(Playout, EachUnderrunByLateSoundLengthensTheHoldUpToItsLongest) {
    Device device;
    Ticks time = SendEvenly(device, 0);
    EXPECT_NEAR(Behind(device.playout, time), 72 + 21, 25);
    for (const int expected : {144, 216, 300, 300}) {
        device.Pass(400); // nothing comes, and then it comes late
        time = SendEvenly(device, time);
        EXPECT_EQ(device.hold->Current(), expected * kTicksPerMs);
        EXPECT_NEAR(Behind(device.playout, time), expected + 21, 25);
    }
    EXPECT_LE(device.LargestStep(), 330);
}

TEST(Playout, ALongerHoldStaysWithTheSource) {
    Device device;
    const Ticks time = SendEvenly(device, 0);
    device.Pass(400);
    (void)SendEvenly(device, time);
    device.playout.Flush();
    EXPECT_EQ(device.hold->Current(), 144 * kTicksPerMs);
    Device next; // another channel of it
    Playout playout(next.clock, device.hold);
    for (int i = 0; i <= 6; ++i) // 128 ms
        (void)playout.Push(Tone(i * kBlockTicks, true));
    std::vector<std::int16_t> frames(960);
    playout.Pull(frames);
    Ticks now = 0;
    EXPECT_EQ(playout.StreamTime(now), ClockState::kPending);
    (void)playout.Push(Tone(7 * kBlockTicks, true));
    playout.Pull(frames);
    EXPECT_EQ(playout.StreamTime(now), ClockState::kRunning);
}

TEST(Playout, MissingSoundDoesNotLengthenTheHold) {
    Device device;
    Ticks time = SendEvenly(device, 0);
    for (int i = 0; i < 3; ++i) {
        device.Pass(420); // lost on the way: its time passes as well
        time = SendEvenly(device, time + 20 * kBlockTicks);
    }
    EXPECT_EQ(device.hold->Current(), 72 * kTicksPerMs);
    EXPECT_NEAR(Behind(device.playout, time), 72 + 21, 25);
}

// The transmitter's clock is 200 millionths fast for ten minutes: without correction that is 120 ms, with it the distance stays.
TEST(Playout, HoldsItsDistanceToAnotherClock) {
    Device device;
    double due = 0;
    Ticks time = 0;
    Ticks now = 0;
    for (ce::Millis at = 0; at < 600'000; at += 10) {
        for (; due <= static_cast<double>(at); due += 1024 / 48.0 / 1.0002, time += kBlockTicks)
            (void)device.playout.Push(Tone(time, true, 0));
        device.Pull();
        device.heard.clear();
        device.clock.Sleep(10);
        if (at > 120'000 && at % 1000 == 0) {
            ASSERT_EQ(device.playout.StreamTime(now), ClockState::kRunning);
            ASSERT_NEAR(static_cast<double>(time - kBlockTicks - now) / 90, 72, 45) << at;
        }
    }
    EXPECT_NEAR(device.playout.Speed(), 200, 60);
}
