#include "host/ce/Clock.h"

#include <algorithm>
#include <ctime>
#include <utility>

namespace ce {

namespace {
// The clock whose worker the calling thread is.
thread_local const Clock* workerOf = nullptr;
} // namespace

void Signal::Raise() {
    const std::lock_guard lock(clock_.mutex_);
    clock_.RaiseLocked(*this);
}

bool Signal::Wait(Millis deadline) {
    std::unique_lock lock(clock_.mutex_);
    return clock_.WaitLocked(lock, *this, deadline);
}

void Clock::BeginClosing() {
    const std::lock_guard lock(mutex_);
    closing_ = true;
    WakeSleepersLocked();
}

bool Clock::IsClosing() {
    const std::lock_guard lock(mutex_);
    return closing_;
}

bool Clock::IsWorker() const {
    return workerOf == this;
}

std::thread Clock::StartWorker(std::function<void()> work) {
    {
        // Counted before the thread exists: time must not pass it by while it starts.
        const std::lock_guard lock(mutex_);
        ++workers_;
        WorkerCountChangedLocked();
    }
    return std::thread([this, work = std::move(work)] {
        workerOf = this;
        work();
        workerOf = nullptr;
        const std::lock_guard lock(mutex_);
        --workers_;
        WorkerCountChangedLocked();
    });
}

// ---- Real time ----

Millis RealClock::Now() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start_).count();
}

void RealClock::Sleep(Millis duration) {
    std::unique_lock lock(mutex_);
    sleepers_.wait_for(lock, std::chrono::milliseconds(duration), [this] { return closing_; });
}

TimeSeconds RealClock::WallSeconds() {
    return std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch())
        .count();
}

LocalTime RealClock::LocalTimeOf(TimeSeconds moment) {
    const auto seconds = static_cast<std::time_t>(moment);
    std::tm parts{};
    if (localtime_r(&seconds, &parts) == nullptr)
        return {1970, 1, 1, 0, 0, 0};
    return {parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec};
}

void RealClock::RaiseLocked(Signal& signal) {
    signal.raised_ = true;
    signal.wake_.notify_one();
}

bool RealClock::WaitLocked(std::unique_lock<std::mutex>& lock, Signal& signal, Millis deadline) {
    const auto raised = [&signal] { return signal.raised_; };
    if (deadline == kForever)
        signal.wake_.wait(lock, raised);
    else
        signal.wake_.wait_until(lock, start_ + std::chrono::milliseconds(deadline), raised);
    return std::exchange(signal.raised_, false);
}

void RealClock::WakeSleepersLocked() {
    sleepers_.notify_all();
}

// ---- Manual time ----

ManualClock::ManualClock(TimeSeconds wallAtStart, int zoneMinutes)
    : wallAtZero_(wallAtStart), zoneMinutes_(zoneMinutes) {}

Millis ManualClock::Now() {
    const std::lock_guard lock(mutex_);
    return now_;
}

void ManualClock::Sleep(Millis duration) {
    std::unique_lock lock(mutex_);
    if (closing_)
        return;
    const Millis deadline = now_ + std::max<Millis>(duration, 0);
    if (IsWorker()) {
        Signal nobodyRaises(*this);
        (void)Block(lock, nobodyRaises, deadline, true);
    } else {
        AdvanceLocked(lock, deadline, nullptr);
    }
}

TimeSeconds ManualClock::WallSeconds() {
    const std::lock_guard lock(mutex_);
    return wallAtZero_ + now_ / 1000;
}

void ManualClock::SetWall(TimeSeconds seconds) {
    const std::lock_guard lock(mutex_);
    wallAtZero_ = seconds - now_ / 1000;
}

LocalTime ManualClock::LocalTimeOf(TimeSeconds moment) {
    using namespace std::chrono;
    const sys_seconds local{seconds(moment + zoneMinutes_ * 60)};
    const auto day = floor<days>(local);
    const year_month_day date(day);
    const hh_mm_ss time(local - day);
    return {static_cast<int>(date.year()),
            static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day())),
            static_cast<int>(time.hours().count()),
            static_cast<int>(time.minutes().count()),
            static_cast<int>(time.seconds().count())};
}

void ManualClock::Settle() {
    std::unique_lock lock(mutex_);
    SettleLocked(lock);
}

Millis ManualClock::NextDeadline() {
    const std::lock_guard lock(mutex_);
    return NextDeadlineLocked();
}

int ManualClock::Waiters() {
    const std::lock_guard lock(mutex_);
    return blocked_;
}

void ManualClock::Wake(Waiter& waiter) {
    // The worker counts as running from here on, not from when its thread gets the processor.
    waiter.woken = true;
    --blocked_;
    waiter.signal->wake_.notify_one();
}

void ManualClock::RaiseLocked(Signal& signal) {
    signal.raised_ = true;
    for (Waiter* waiter : waiters_)
        if (waiter->signal == &signal && !waiter->woken) {
            Wake(*waiter);
            return;
        }
}

void ManualClock::WakeSleepersLocked() {
    for (Waiter* waiter : waiters_)
        if (waiter->sleeping && !waiter->woken)
            Wake(*waiter);
}

bool ManualClock::WaitLocked(std::unique_lock<std::mutex>& lock, Signal& signal, Millis deadline) {
    if (IsWorker())
        return Block(lock, signal, deadline, false);
    return AdvanceLocked(lock, deadline, &signal);
}

bool ManualClock::Block(std::unique_lock<std::mutex>& lock, Signal& signal, Millis deadline, bool sleeping) {
    if (!signal.raised_ && now_ < deadline) {
        Waiter self{&signal, deadline, sleeping};
        waiters_.push_back(&self);
        ++blocked_;
        settled_.notify_all();
        signal.wake_.wait(lock, [&self] { return self.woken; });
        std::erase(waiters_, &self);
    }
    return std::exchange(signal.raised_, false);
}

void ManualClock::SettleLocked(std::unique_lock<std::mutex>& lock) {
    if (!IsWorker())
        settled_.wait(lock, [this] { return blocked_ == workers_; });
}

Millis ManualClock::NextDeadlineLocked() const {
    Millis next = kForever;
    for (const Waiter* waiter : waiters_)
        if (!waiter->woken)
            next = std::min(next, waiter->deadline);
    return next;
}

bool ManualClock::AdvanceLocked(std::unique_lock<std::mutex>& lock, Millis target, Signal* until) {
    for (;;) {
        SettleLocked(lock);
        if (until != nullptr && std::exchange(until->raised_, false))
            return true;
        const Millis next = NextDeadlineLocked();
        if (next > target || next == kForever) {
            // Nothing happens before the target; of an endless wait nothing ever will.
            if (target != kForever)
                now_ = std::max(now_, target);
            return false;
        }
        now_ = std::max(now_, next);
        for (Waiter* waiter : waiters_)
            if (!waiter->woken && waiter->deadline <= now_)
                Wake(*waiter);
    }
}

} // namespace ce
