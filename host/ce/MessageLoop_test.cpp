#include "host/ce/MessageLoop.h"

#include <atomic>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace ce {
namespace {

constexpr UINT kMine = WM_USER + 100;

// A loop under a manual clock and one window that keeps a log: "m7" for message kMine with wParam 7, "t3@100" for a tick of
// timer 3 at time 100.
class Loop : public ::testing::Test {
protected:
    HWND AddLogWindow(std::string prefix = {}) {
        return loop.AddWindow([this, prefix = std::move(prefix)](HWND, UINT message, WPARAM wParam, LPARAM) {
            if (message == WM_TIMER)
                log.push_back(prefix + "t" + std::to_string(wParam) + "@" + std::to_string(clock.Now()));
            else
                log.push_back(prefix + "m" + std::to_string(wParam));
            return LRESULT{5};
        });
    }

    ManualClock clock;
    MessageLoop loop{clock};
    std::vector<std::string> log;
};
using Log = std::vector<std::string>;

// ---- Messages ----

TEST_F(Loop, PostedMessagesComeInOrderAndPostingRunsNoHandler) {
    const HWND a = AddLogWindow("a");
    const HWND b = AddLogWindow("b");
    EXPECT_TRUE(loop.Post(a, kMine, 1));
    EXPECT_TRUE(loop.Post(b, kMine, 2));
    EXPECT_TRUE(loop.Post(a, kMine, 3));
    EXPECT_TRUE(log.empty());
    EXPECT_TRUE(loop.RunUntilIdle());
    EXPECT_EQ(log, (Log{"am1", "bm2", "am3"}));
}

TEST_F(Loop, SendingRunsTheHandlerAtOnce) {
    const HWND window = AddLogWindow();
    loop.Post(window, kMine, 1);
    EXPECT_EQ(loop.Send(window, kMine, 2), 5);
    EXPECT_EQ(log, (Log{"m2"}));
}

TEST_F(Loop, SendingFromAForeignThreadIsRefused) {
    const HWND window = AddLogWindow();
    std::thread([&] { EXPECT_EQ(loop.Send(window, kMine, 2), 0); }).join();
    EXPECT_TRUE(log.empty());
}

TEST_F(Loop, TheQueueHasNoLimit) {
    const HWND window = AddLogWindow();
    for (WPARAM i = 0; i < 20000; ++i)
        ASSERT_TRUE(loop.Post(window, kMine, i));
    EXPECT_TRUE(loop.RunUntilIdle());
    ASSERT_EQ(log.size(), 20000u);
    EXPECT_EQ(log.back(), "m19999");
}

TEST_F(Loop, PostingToADeadWindowFails) {
    const HWND window = AddLogWindow();
    EXPECT_TRUE(loop.RemoveWindow(window));
    EXPECT_FALSE(loop.Post(window, kMine));
    EXPECT_FALSE(loop.Post(nullptr, kMine));
    EXPECT_FALSE(loop.StartTimer(window, 1, 10));
    EXPECT_EQ(loop.Send(window, kMine), 0);
    EXPECT_FALSE(loop.RemoveWindow(window));
}

TEST_F(Loop, ADestroyedWindowLosesItsMessagesAndTimers) {
    const HWND dead = AddLogWindow("dead");
    const HWND other = AddLogWindow("other");
    loop.Post(dead, kMine, 1);
    loop.Post(other, kMine, 2);
    loop.StartTimer(dead, 7, 10);
    clock.Sleep(50);
    loop.RemoveWindow(dead);
    loop.RunFor(100);
    EXPECT_EQ(log, (Log{"otherm2"}));
    EXPECT_EQ(loop.WindowCount(), 1u);
    EXPECT_EQ(loop.RunningTimers(), 0u);
    EXPECT_EQ(loop.WaitingMessages(), 0u);
}

TEST_F(Loop, AHandleIsNeverUsedAgain) {
    const HWND first = AddLogWindow();
    loop.RemoveWindow(first);
    EXPECT_NE(AddLogWindow(), first);
    EXPECT_FALSE(loop.HasWindow(first));
}

TEST_F(Loop, AWindowMayGoInsideItsOwnHandler) {
    HWND window = nullptr;
    std::string kept(100, 'x');
    window = loop.AddWindow([&, kept](HWND self, UINT, WPARAM, LPARAM) {
        loop.RemoveWindow(self);
        log.push_back(kept.substr(0, 1)); // what the procedure holds still lives
        return LRESULT{0};
    });
    loop.Post(window, kMine);
    loop.Post(window, kMine);
    EXPECT_TRUE(loop.RunUntilIdle());
    EXPECT_EQ(log, (Log{"x"}));
}

TEST_F(Loop, TheObserverSeesMessagesWhenTheyArePosted) {
    const HWND window = AddLogWindow();
    std::vector<WPARAM> seen;
    loop.SetPostObserver([&](const Message& message) { seen.push_back(message.wParam); });
    loop.Post(window, kMine, 4);
    loop.Post(nullptr, kMine, 5);
    loop.Send(window, kMine, 6);
    EXPECT_EQ(seen, (std::vector<WPARAM>{4}));
}

TEST_F(Loop, AnyThreadMayPost) {
    const HWND window = AddLogWindow();
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int k = 0; k < 250; ++k)
                loop.Post(window, kMine, static_cast<WPARAM>(k));
        });
    while (log.size() < 1000)
        loop.RunUntilIdle();
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(log.size(), 1000u);
}

// ---- Timers ----

TEST_F(Loop, SettingATimerAgainReplacesItAndRestartsItsPeriod) { // T1
    const HWND window = AddLogWindow();
    loop.StartTimer(window, 1, 100);
    loop.RunFor(50);
    loop.StartTimer(window, 1, 100);
    loop.RunFor(105);
    EXPECT_EQ(log, (Log{"t1@150"}));
    EXPECT_EQ(loop.RunningTimers(), 1u);
}

TEST_F(Loop, ATimerIsAFlagAndNeverABurst) { // T2
    const HWND window = AddLogWindow();
    loop.StartTimer(window, 1, 20);
    clock.Sleep(200);
    EXPECT_TRUE(loop.RunUntilIdle());
    EXPECT_EQ(log, (Log{"t1@200"}));
    EXPECT_TRUE(loop.HasTimer(window, 1));
}

TEST_F(Loop, PostedMessagesComeBeforeTimers) { // T3
    const HWND window = AddLogWindow();
    loop.StartTimer(window, 1, 10);
    clock.Sleep(10);
    loop.Post(window, kMine, 1);
    loop.Post(window, kMine, 2);
    EXPECT_TRUE(loop.RunUntilIdle());
    EXPECT_EQ(log, (Log{"m1", "m2", "t1@10"}));
}

TEST_F(Loop, ExpiredTimersAreServedInTurn) { // T3
    const HWND window = loop.AddWindow([this](HWND, UINT, WPARAM id, LPARAM) {
        log.push_back(std::string("t").append(std::to_string(id)));
        if (id == 1)
            clock.Sleep(50); // slower than its period
        return LRESULT{0};
    });
    loop.StartTimer(window, 1, 10);
    loop.StartTimer(window, 2, 60);
    clock.Sleep(10);
    EXPECT_FALSE(loop.RunUntilIdle(6)) << "a handler slower than its period keeps the loop busy";
    EXPECT_EQ(log, (Log{"t1", "t1", "t2", "t1", "t1", "t2"}));
}

TEST_F(Loop, KillingATimerIsFinal) { // T4
    const HWND window = AddLogWindow();
    loop.StartTimer(window, 1, 10);
    clock.Sleep(10); // due, but not fetched
    EXPECT_TRUE(loop.StopTimer(window, 1));
    loop.RunFor(100);
    EXPECT_TRUE(log.empty());
}

TEST_F(Loop, ATickPostedByHandIsAnOrdinaryMessage) { // T4
    const HWND window = AddLogWindow();
    loop.StartTimer(window, 1, 1000);
    loop.Post(window, WM_TIMER, 1);
    loop.StopTimer(window, 1);
    EXPECT_TRUE(loop.RunUntilIdle());
    EXPECT_EQ(log, (Log{"t1@0"}));
}

TEST_F(Loop, ARegularTimerDoesNotDrift) { // T5
    const HWND window = AddLogWindow();
    loop.StartTimer(window, 1, 100);
    clock.Sleep(103); // served late
    loop.RunUntilIdle();
    loop.RunFor(300);
    EXPECT_EQ(log, (Log{"t1@103", "t1@200", "t1@300", "t1@400"}));
}

TEST_F(Loop, APeriodOfNothingIsOneMillisecond) { // T5
    const HWND window = AddLogWindow();
    loop.StartTimer(window, 1, 0);
    EXPECT_TRUE(loop.RunUntilIdle());
    EXPECT_TRUE(log.empty());
    loop.RunFor(2);
    EXPECT_EQ(log, (Log{"t1@1", "t1@2"}));
}

TEST_F(Loop, KillingAnUnknownTimerIsHarmless) { // T6
    const HWND window = AddLogWindow();
    EXPECT_FALSE(loop.StopTimer(window, 99));
    EXPECT_FALSE(loop.StopTimer(nullptr, 99));
}

TEST_F(Loop, TimersOfTwoWindowsWithOneIdAreTwo) {
    const HWND a = AddLogWindow("a");
    const HWND b = AddLogWindow("b");
    loop.StartTimer(a, 1, 10);
    loop.StartTimer(b, 1, 10);
    EXPECT_TRUE(loop.StopTimer(a, 1));
    loop.RunFor(10);
    EXPECT_EQ(log, (Log{"bt1@10"}));
}

// ---- The loop ----

TEST_F(Loop, SleepInAHandlerPumpsNothing) {
    const HWND window = loop.AddWindow([this](HWND self, UINT message, WPARAM, LPARAM) {
        log.push_back(message == WM_TIMER ? "tick" : "begin");
        if (message == kMine) {
            loop.Post(self, WM_USER);
            clock.Sleep(500);
            log.push_back("end");
        }
        return LRESULT{0};
    });
    loop.StartTimer(window, 1, 100);
    loop.Post(window, kMine);
    loop.DispatchOne();
    EXPECT_EQ(log, (Log{"begin", "end"}));
    loop.RunUntilIdle();
    EXPECT_EQ(log, (Log{"begin", "end", "begin", "tick"}));
}

TEST_F(Loop, PaintingComesAfterMessagesAndBeforeTimers) {
    const HWND window = AddLogWindow();
    bool dirty = true;
    loop.SetPainter([&] {
        if (!dirty)
            return false;
        dirty = false;
        log.push_back("paint");
        return true;
    });
    loop.StartTimer(window, 1, 10);
    clock.Sleep(10);
    loop.Post(window, kMine, 1);
    loop.RunUntilIdle();
    EXPECT_EQ(log, (Log{"m1", "paint", "t1@10"}));
}

TEST_F(Loop, AModalLoopInsideAHandlerServesTheOthers) {
    bool answered = false;
    const HWND window = loop.AddWindow([&](HWND, UINT, WPARAM wParam, LPARAM) {
        if (wParam == 1) {
            log.push_back("open");
            EXPECT_TRUE(loop.RunUntil([&] { return answered; }));
            log.push_back("closed");
        } else {
            log.push_back("answer");
            answered = true;
        }
        return LRESULT{0};
    });
    loop.Post(window, kMine, 1);
    loop.Post(window, kMine, 2);
    loop.RunUntilIdle();
    EXPECT_EQ(log, (Log{"open", "answer", "closed"}));
}

TEST_F(Loop, AModalLoopAsksTheScriptWhenNothingIsToDo) {
    const HWND window = AddLogWindow();
    int steps = 0;
    loop.SetIdleHandler([&] { return ++steps <= 3 && loop.Post(window, kMine, static_cast<WPARAM>(steps)); });
    EXPECT_TRUE(loop.RunUntil([&] { return log.size() == 3; }));
    EXPECT_EQ(log, (Log{"m1", "m2", "m3"}));
    EXPECT_FALSE(loop.RunUntil([] { return false; })) << "time does not move by itself";
    EXPECT_EQ(clock.Now(), 0);
}

TEST_F(Loop, ClosingEndsAModalLoopAsCancelled) {
    const HWND window = loop.AddWindow([&](HWND, UINT, WPARAM, LPARAM) {
        clock.BeginClosing();
        return LRESULT{0};
    });
    loop.Post(window, kMine);
    EXPECT_FALSE(loop.RunUntil([] { return false; }));
    EXPECT_FALSE(loop.RunFor(100));
}

TEST_F(Loop, MessagesOfWorkersArriveAtTheTimeOfPosting) {
    const HWND window = AddLogWindow();
    std::vector<Millis> times;
    const HWND timed = loop.AddWindow([&](HWND, UINT, WPARAM, LPARAM) {
        times.push_back(clock.Now());
        return LRESULT{0};
    });
    std::thread worker = clock.StartWorker([&] {
        for (int i = 0; i < 3; ++i) {
            clock.Sleep(30);
            loop.Post(timed, kMine);
        }
    });
    loop.StartTimer(window, 1, 40);
    EXPECT_TRUE(loop.RunFor(100));
    worker.join();
    EXPECT_EQ(times, (std::vector<Millis>{30, 60, 90}));
    EXPECT_EQ(log, (Log{"t1@40", "t1@80"}));
}

TEST(RealLoop, WaitsForAPostFromAnotherThread) {
    RealClock clock;
    MessageLoop loop(clock);
    int received = 0;
    const HWND window = loop.AddWindow([&](HWND, UINT, WPARAM, LPARAM) {
        ++received;
        return LRESULT{0};
    });
    std::thread poster = clock.StartWorker([&] {
        for (int i = 0; i < 100; ++i)
            loop.Post(window, kMine);
    });
    EXPECT_TRUE(loop.RunUntil([&] { return received == 100; }));
    poster.join();
}

TEST(RealLoop, ServesTimersAndEndsOnWakeUp) {
    RealClock clock;
    MessageLoop loop(clock);
    int ticks = 0;
    const HWND window = loop.AddWindow([&](HWND, UINT, WPARAM, LPARAM) {
        ++ticks;
        return LRESULT{0};
    });
    loop.StartTimer(window, 1, 1);
    EXPECT_TRUE(loop.RunUntil([&] { return ticks == 5; }));
    loop.StopTimer(window, 1);
    std::atomic<bool> done{false};
    std::thread other = clock.StartWorker([&] {
        done = true;
        loop.WakeUp();
    });
    EXPECT_TRUE(loop.RunUntil([&] { return done.load(); }));
    other.join();
    EXPECT_TRUE(loop.RunFor(3));
}

} // namespace
} // namespace ce
