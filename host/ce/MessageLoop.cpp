#include "host/ce/MessageLoop.h"

#include <algorithm>
#include <utility>

namespace ce {

MessageLoop::MessageLoop(Clock& clock) : clock_(clock), posted_(clock), thread_(std::this_thread::get_id()) {}

MessageLoop::~MessageLoop() = default;

void MessageLoop::AdoptThread() {
    const std::lock_guard lock(mutex_);
    thread_ = std::this_thread::get_id();
}

// ---- Windows ----

HWND MessageLoop::AddWindow(WindowProcedure procedure) {
    const std::lock_guard lock(mutex_);
    // A handle is a number in a pointer's clothes: an address could come back for another window.
    const auto window = reinterpret_cast<HWND>(nextHandle_); // NOLINT(performance-no-int-to-ptr)
    nextHandle_ += 4;
    windows_.emplace(window, std::make_shared<WindowProcedure>(std::move(procedure)));
    return window;
}

bool MessageLoop::RemoveWindow(HWND window) {
    const std::lock_guard lock(mutex_);
    std::erase_if(queue_, [window](const Message& message) { return message.window == window; });
    std::erase_if(timers_, [window](const Timer& timer) { return timer.window == window; });
    return windows_.erase(window) != 0;
}

bool MessageLoop::HasWindow(HWND window) const {
    const std::lock_guard lock(mutex_);
    return windows_.contains(window);
}

// ---- Messages ----

bool MessageLoop::Post(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    {
        const std::lock_guard lock(mutex_);
        if (!windows_.contains(window))
            return false;
        queue_.push_back({window, message, wParam, lParam});
        if (postObserver_)
            postObserver_(queue_.back());
    }
    posted_.Raise();
    return true;
}

LRESULT MessageLoop::Send(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    {
        const std::lock_guard lock(mutex_);
        if (std::this_thread::get_id() != thread_)
            return 0;
    }
    return Call({window, message, wParam, lParam});
}

LRESULT MessageLoop::Call(const Message& message) {
    std::shared_ptr<WindowProcedure> procedure; // kept while it runs, even if the window goes meanwhile
    {
        const std::lock_guard lock(mutex_);
        const auto found = windows_.find(message.window);
        if (found == windows_.end())
            return 0;
        procedure = found->second;
    }
    return (*procedure)(message.window, message.message, message.wParam, message.lParam);
}

std::optional<Message> MessageLoop::TakePosted() {
    const std::lock_guard lock(mutex_);
    if (queue_.empty())
        return std::nullopt;
    const Message first = queue_.front();
    queue_.pop_front();
    return first;
}

// ---- Timers ----

bool MessageLoop::StartTimer(HWND window, UINT_PTR id, UINT period) {
    const Millis now = clock_.Now();
    const std::lock_guard lock(mutex_);
    if (!windows_.contains(window))
        return false;
    std::erase_if(timers_, [&](const Timer& timer) { return timer.window == window && timer.id == id; });
    const Millis length = std::max<Millis>(period, 1);
    timers_.push_back({window, id, length, now + length});
    return true;
}

bool MessageLoop::StopTimer(HWND window, UINT_PTR id) {
    const std::lock_guard lock(mutex_);
    return std::erase_if(timers_, [&](const Timer& timer) { return timer.window == window && timer.id == id; }) != 0;
}

std::optional<Message> MessageLoop::TakeDueTimer() {
    const Millis now = clock_.Now();
    const std::lock_guard lock(mutex_);
    const auto first =
        std::min_element(timers_.begin(), timers_.end(), [](const Timer& a, const Timer& b) { return a.due < b.due; });
    if (first == timers_.end() || first->due > now)
        return std::nullopt;
    // Periods that were missed are not made up for.
    first->due += ((now - first->due) / first->period + 1) * first->period;
    return Message{first->window, WM_TIMER, first->id, 0};
}

Millis MessageLoop::NextTimerDue() const {
    const std::lock_guard lock(mutex_);
    Millis next = kForever;
    for (const Timer& timer : timers_)
        next = std::min(next, timer.due);
    return next;
}

// ---- The loop ----

bool MessageLoop::HasWork() const {
    return WaitingMessages() != 0 || NextTimerDue() <= clock_.Now();
}

bool MessageLoop::DispatchOne() {
    if (const auto message = TakePosted()) {
        Call(*message);
        return true;
    }
    if (painter_ && painter_())
        return true;
    if (const auto message = TakeDueTimer()) {
        Call(*message);
        return true;
    }
    return false;
}

bool MessageLoop::RunUntilIdle(int limit) {
    for (int count = 0; count < limit; ++count)
        if (!DispatchOne())
            return true;
    return false;
}

bool MessageLoop::RunUntil(const std::function<bool()>& condition) {
    while (!condition()) {
        if (clock_.IsClosing())
            return false;
        if (DispatchOne() || (idleHandler_ && idleHandler_()))
            continue;
        if (clock_.RunsByItself()) {
            (void)posted_.Wait(NextTimerDue());
        } else {
            clock_.Settle(); // a worker may be about to post
            if (!HasWork())
                return condition();
        }
    }
    return true;
}

bool MessageLoop::RunFor(Millis duration) {
    const Millis end = clock_.Now() + duration;
    for (;;) {
        clock_.Settle();
        const Millis now = clock_.Now();
        if (clock_.IsClosing())
            return false;
        if (now > end) // a handler took longer than there was left
            return true;
        if (DispatchOne())
            continue;
        if (now == end)
            return true;
        const Millis next = std::min(end, NextTimerDue());
        if (clock_.RunsByItself())
            (void)posted_.Wait(next);
        else
            clock_.Sleep(std::min(next, clock_.NextDeadline()) - now);
    }
}

void MessageLoop::WakeUp() {
    posted_.Raise();
}

void MessageLoop::SetPainter(std::function<bool()> painter) {
    painter_ = std::move(painter);
}

void MessageLoop::SetIdleHandler(std::function<bool()> handler) {
    idleHandler_ = std::move(handler);
}

void MessageLoop::SetPostObserver(std::function<void(const Message&)> observer) {
    const std::lock_guard lock(mutex_);
    postObserver_ = std::move(observer);
}

// ---- What is left ----

std::size_t MessageLoop::WindowCount() const {
    const std::lock_guard lock(mutex_);
    return windows_.size();
}

std::size_t MessageLoop::WaitingMessages() const {
    const std::lock_guard lock(mutex_);
    return queue_.size();
}

std::size_t MessageLoop::RunningTimers() const {
    const std::lock_guard lock(mutex_);
    return timers_.size();
}

bool MessageLoop::HasTimer(HWND window, UINT_PTR id) const {
    const std::lock_guard lock(mutex_);
    return std::any_of(timers_.begin(), timers_.end(),
                       [&](const Timer& timer) { return timer.window == window && timer.id == id; });
}

} // namespace ce
