// The clock port: what time it is, how a thread lets time pass, and how it waits for another thread.
//
// Everything in the host that waits does so here, so that a test can hold time still. Two clocks exist:
// RealClock, and ManualClock, whose time moves only when the one driving thread (the test, which is also the
// window's thread) moves it.
//
// Threads that stream are started with StartWorker. Under a manual clock the driving thread moves time from
// deadline to deadline and, before each step, waits until every worker is blocked in Signal::Wait or Sleep;
// so what workers do at a given time is finished before time goes on, and a test needs no wall clock.
//
// Do: let a worker block only on signals, on Sleep and on short locks. Do: raise a worker's signal before
// joining it. Don't: hold a lock that a worker needs while moving time; don't drive one manual clock from two
// threads.
//
// Owner: whoever constructs Ce. Lifetime: outlives Ce, every Signal and every worker. Thread: any, except as
// said above.
#pragma once

#include "platform/wince.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <limits>
#include <mutex>
#include <thread>
#include <vector>

namespace ce {

using Millis = std::int64_t;
inline constexpr Millis kForever = std::numeric_limits<Millis>::max();

class Clock;

// Something one thread waits for and others raise. Raising is remembered until one Wait has seen it.
class DMB_HOST_API Signal {
public:
    explicit Signal(Clock& clock) : clock_(clock) {}
    Signal(const Signal&) = delete;
    Signal& operator=(const Signal&) = delete;

    void Raise();
    // Waits until raised (true) or until the clock shows `deadline` (false). Under a manual clock a thread
    // that is not a worker moves time itself; with kForever it gets false at once when no worker can raise
    // the signal any more.
    [[nodiscard]] bool Wait(Millis deadline = kForever);

private:
    friend class Clock;
    friend class RealClock;
    friend class ManualClock;
    Clock& clock_;
    std::condition_variable wake_;
    bool raised_ = false; // guarded by the clock's mutex
};

class DMB_HOST_API Clock {
public:
    Clock() = default;
    virtual ~Clock() = default;
    Clock(const Clock&) = delete;
    Clock& operator=(const Clock&) = delete;

    // Milliseconds since the clock was made; never goes back.
    [[nodiscard]] virtual Millis Now() = 0;
    // Lets at least `duration` milliseconds pass; returns at once after BeginClosing.
    virtual void Sleep(Millis duration) = 0;
    // Seconds since 1970, and how the wall shows such a moment.
    [[nodiscard]] virtual TimeSeconds WallSeconds() = 0;
    [[nodiscard]] virtual LocalTime LocalTimeOf(TimeSeconds moment) = 0;
    // True when time goes on by itself.
    [[nodiscard]] virtual bool RunsByItself() const = 0;
    // Manual clock: waits until every worker is blocked. Real clock: nothing.
    virtual void Settle() {}
    // The earliest time at which a blocked worker goes on, kForever when none does.
    [[nodiscard]] virtual Millis NextDeadline() { return kForever; }

    // From now on no Sleep lasts; those under way end.
    void BeginClosing();
    [[nodiscard]] bool IsClosing();

    // Starts a thread whose waits this clock counts. The caller joins it.
    [[nodiscard]] std::thread StartWorker(std::function<void()> work);

protected:
    friend class Signal;
    virtual void RaiseLocked(Signal& signal) = 0;
    virtual bool WaitLocked(std::unique_lock<std::mutex>& lock, Signal& signal, Millis deadline) = 0;
    virtual void WakeSleepersLocked() = 0;
    virtual void WorkerCountChangedLocked() {}
    // Is the calling thread one of this clock's workers?
    [[nodiscard]] bool IsWorker() const;

    std::mutex mutex_;
    bool closing_ = false;
    int workers_ = 0;
};

class DMB_HOST_API RealClock final : public Clock {
public:
    Millis Now() override;
    void Sleep(Millis duration) override;
    TimeSeconds WallSeconds() override;
    LocalTime LocalTimeOf(TimeSeconds moment) override;
    bool RunsByItself() const override { return true; }

private:
    void RaiseLocked(Signal& signal) override;
    bool WaitLocked(std::unique_lock<std::mutex>& lock, Signal& signal, Millis deadline) override;
    void WakeSleepersLocked() override;

    const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::condition_variable sleepers_;
};

class DMB_HOST_API ManualClock final : public Clock {
public:
    // The wall shows `wallAtStart` at time 0, in a zone `zoneMinutes` east of Greenwich (Korea unless told).
    explicit ManualClock(TimeSeconds wallAtStart = 0, int zoneMinutes = 9 * 60);

    Millis Now() override;
    // A worker blocks until the time has come; any other thread moves the time. No message is handled.
    void Sleep(Millis duration) override;
    TimeSeconds WallSeconds() override;
    LocalTime LocalTimeOf(TimeSeconds moment) override;
    bool RunsByItself() const override { return false; }
    void Settle() override;
    Millis NextDeadline() override;

    // Sets what the wall shows now; the running time stays.
    void SetWall(TimeSeconds seconds);
    // Threads blocked on this clock.
    [[nodiscard]] int Waiters();

private:
    struct Waiter {
        Signal* signal;
        Millis deadline;
        bool sleeping; // in Sleep, so that closing wakes it
        bool woken = false;
    };
    void RaiseLocked(Signal& signal) override;
    bool WaitLocked(std::unique_lock<std::mutex>& lock, Signal& signal, Millis deadline) override;
    void WakeSleepersLocked() override;
    void WorkerCountChangedLocked() override { settled_.notify_all(); }
    bool Block(std::unique_lock<std::mutex>& lock, Signal& signal, Millis deadline, bool sleeping);
    void Wake(Waiter& waiter);
    void SettleLocked(std::unique_lock<std::mutex>& lock);
    // Moves the time step by step to `target`; stops early when `until` was raised (then true).
    bool AdvanceLocked(std::unique_lock<std::mutex>& lock, Millis target, Signal* until);
    [[nodiscard]] Millis NextDeadlineLocked() const;

    Millis now_ = 0;
    TimeSeconds wallAtZero_;
    int zoneMinutes_;
    int blocked_ = 0; // workers that wait and were not woken
    std::vector<Waiter*> waiters_;
    std::condition_variable settled_;
};

} // namespace ce
