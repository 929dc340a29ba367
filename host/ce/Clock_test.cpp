#include "host/ce/Clock.h"

#include <atomic>
#include <vector>

#include <gtest/gtest.h>

namespace ce {
namespace {

TEST(ManualClock, TimeStandsStillUntilItIsMoved) {
    ManualClock clock;
    EXPECT_EQ(clock.Now(), 0);
    clock.Sleep(250);
    EXPECT_EQ(clock.Now(), 250);
    clock.Sleep(0);
    clock.Sleep(-5);
    EXPECT_EQ(clock.Now(), 250);
}

TEST(ManualClock, WallFollowsAndShowsTheZone) {
    ManualClock clock(1173301509); // 2007-03-07 21:05:09 UTC
    const LocalTime korea = clock.LocalTimeOf(clock.WallSeconds());
    EXPECT_EQ(korea.day, 8);
    EXPECT_EQ(korea.hour, 6);
    clock.Sleep(2999);
    EXPECT_EQ(clock.WallSeconds(), 1173301511);
    clock.SetWall(1262271600); // 2009-12-31 15:00:00 UTC
    const LocalTime newYear = clock.LocalTimeOf(clock.WallSeconds());
    EXPECT_EQ(newYear.year, 2010);
    EXPECT_EQ(newYear.month, 1);
    EXPECT_EQ(newYear.day, 1);
    EXPECT_EQ(newYear.hour + newYear.minute + newYear.second, 0);
}

TEST(ManualClock, AWorkerSleepsUntilTheTimeHasCome) {
    ManualClock clock;
    std::atomic<Millis> woke{-1};
    std::thread worker = clock.StartWorker([&] {
        clock.Sleep(100);
        woke = clock.Now();
    });
    clock.Sleep(99);
    EXPECT_EQ(woke, -1);
    EXPECT_EQ(clock.Waiters(), 1);
    clock.Sleep(1); // returns only when the worker has done what it does at that time
    clock.Settle();
    EXPECT_EQ(woke, 100);
    worker.join();
}

TEST(ManualClock, TimeStopsAtEveryDeadlineAndWaitsUntilAllAreBlocked) {
    ManualClock clock;
    std::mutex mutex;
    std::vector<std::pair<char, Millis>> log;
    const auto tick = [&](char name, Millis period, int times) {
        for (int i = 0; i < times; ++i) {
            clock.Sleep(period);
            const std::lock_guard lock(mutex);
            log.emplace_back(name, clock.Now());
        }
    };
    std::thread a = clock.StartWorker([&] { tick('a', 20, 5); });
    std::thread b = clock.StartWorker([&] { tick('b', 50, 2); });
    clock.Sleep(1000);
    a.join();
    b.join();
    std::vector<Millis> timesOfA;
    std::vector<Millis> timesOfB;
    for (const auto& [name, time] : log)
        (name == 'a' ? timesOfA : timesOfB).push_back(time);
    EXPECT_EQ(timesOfA, (std::vector<Millis>{20, 40, 60, 80, 100}));
    EXPECT_EQ(timesOfB, (std::vector<Millis>{50, 100}));
    EXPECT_EQ(clock.Now(), 1000);
}

TEST(ManualClock, ASignalEndsAWaitAndIsRemembered) {
    ManualClock clock;
    Signal signal(clock);
    std::atomic<int> seen{0};
    std::thread worker = clock.StartWorker([&] {
        while (signal.Wait(500))
            ++seen;
    });
    signal.Raise();
    clock.Settle();
    EXPECT_EQ(seen, 1);
    signal.Raise();
    clock.Settle();
    EXPECT_EQ(seen, 2);
    clock.Sleep(500); // the third wait runs out
    worker.join();
    EXPECT_EQ(seen, 2);
}

TEST(ManualClock, TheDrivingThreadWaitsByMovingTime) {
    ManualClock clock;
    Signal signal(clock);
    std::thread worker = clock.StartWorker([&] {
        clock.Sleep(70);
        signal.Raise();
    });
    EXPECT_TRUE(signal.Wait(1000));
    EXPECT_EQ(clock.Now(), 70);
    worker.join();
    EXPECT_FALSE(signal.Wait(200));
    EXPECT_EQ(clock.Now(), 200);
    EXPECT_FALSE(signal.Wait()) << "nobody is left who could raise it";
}

TEST(ManualClock, ClosingEndsSleepsAndLetsNoneBegin) {
    ManualClock clock;
    std::thread worker = clock.StartWorker([&] { clock.Sleep(3600 * 1000); });
    clock.Settle();
    clock.BeginClosing();
    worker.join();
    clock.Sleep(100);
    EXPECT_EQ(clock.Now(), 0);
    EXPECT_TRUE(clock.IsClosing());
}

TEST(RealClock, ClosingEndsASleepUnderWay) {
    RealClock clock;
    std::atomic<bool> started{false};
    std::thread worker = clock.StartWorker([&] {
        started = true;
        clock.Sleep(24LL * 3600 * 1000);
    });
    while (!started)
        std::this_thread::yield();
    clock.BeginClosing();
    worker.join(); // hangs for a day otherwise
}

TEST(RealClock, SleepsAtLeastSoLongAndNeverGoesBack) {
    RealClock clock;
    const Millis before = clock.Now();
    clock.Sleep(5);
    EXPECT_GE(clock.Now(), before + 5);
}

TEST(RealClock, ASignalWakesAnotherThread) {
    RealClock clock;
    Signal there(clock);
    Signal back(clock);
    std::thread worker = clock.StartWorker([&] {
        EXPECT_TRUE(there.Wait());
        back.Raise();
    });
    there.Raise();
    EXPECT_TRUE(back.Wait());
    EXPECT_FALSE(back.Wait(clock.Now() + 1));
    worker.join();
}

TEST(RealClock, ShowsTheWall) {
    RealClock clock;
    const TimeSeconds now = clock.WallSeconds();
    EXPECT_GT(now, 1700000000);
    EXPECT_GE(clock.LocalTimeOf(now).year, 2023);
}

} // namespace
} // namespace ce
