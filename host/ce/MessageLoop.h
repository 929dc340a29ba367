// Windows as the system core knows them, their messages and their timers: the one loop of the shell thread.
//
// A window here is a handle and a procedure; what it looks like is the shell's business. The loop hands a
// posted message to the procedure of its window, in the order of posting. When no posted message waits it
// lets the painter paint, and when there is nothing to paint it serves one due timer.
//
// Timers are flags, not queues: however late a timer is, one WM_TIMER comes; the next is due at the following
// multiple of its period, so a regular timer does not drift. Of several due timers the one that has waited
// longest is first. Starting a timer again restarts its period, stopping one is final, and a window that goes
// takes its timers and messages along.
//
// Owner: Ce. Thread: Post from any thread; everything else on the one thread that dispatches (AdoptThread).
//
// Do: end a modal loop by making its condition true. Do: expect a handler to run inside RunUntil of another
// handler. Don't: start a second loop for the same thread's windows, or dispatch from another thread. Don't:
// wait inside a handler for something that only a later message brings. Don't: send from a streaming thread;
// post.
#pragma once

#include "host/ce/Clock.h"
#include "platform/wince.h"

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

namespace ce {

struct Message {
    HWND window;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
};

using WindowProcedure = std::function<LRESULT(HWND window, UINT message, WPARAM wParam, LPARAM lParam)>;

class DMB_HOST_API MessageLoop {
public:
    explicit MessageLoop(Clock& clock);
    ~MessageLoop();
    MessageLoop(const MessageLoop&) = delete;
    MessageLoop& operator=(const MessageLoop&) = delete;

    // Makes the calling thread the one that dispatches (at first: the constructing thread).
    void AdoptThread();

    // A new window. Its handle is never used again for another one.
    [[nodiscard]] HWND AddWindow(WindowProcedure procedure);
    // Takes a window away; its waiting messages and timers vanish without a call. A procedure that runs may
    // do this to its own window. False when there is no such window.
    bool RemoveWindow(HWND window);
    [[nodiscard]] bool HasWindow(HWND window) const;

    // See PostMessageW. False when there is no such window.
    bool Post(HWND window, UINT message, WPARAM wParam = 0, LPARAM lParam = 0);
    // Calls the window's procedure now and returns its result; 0 when there is no such window or on a foreign
    // thread.
    LRESULT Send(HWND window, UINT message, WPARAM wParam = 0, LPARAM lParam = 0);

    // See SetTimer and KillTimer.
    bool StartTimer(HWND window, UINT_PTR id, UINT period);
    bool StopTimer(HWND window, UINT_PTR id);

    // Handles one posted message, or lets the painter paint once, or serves one due timer. False when nothing
    // was to do.
    bool DispatchOne();
    // Dispatches until nothing is to do now; time is not moved. False when `limit` dispatches were not
    // enough, as with a handler that is slower than its timer.
    bool RunUntilIdle(int limit = 100000);
    // Dispatches until `condition` holds (true). False when the system closes down; and under a manual clock
    // also when nothing is to do at the present time, since time does not move by itself: a modal loop then
    // ends as cancelled.
    bool RunUntil(const std::function<bool()>& condition);
    // Dispatches for so many milliseconds. Under a manual clock this is how a test lets time pass: it stops
    // at every timer and at every worker's deadline. False when the system closed down meanwhile.
    bool RunFor(Millis duration);

    // Paints one thing that wants painting and says true, or false when nothing does. Called between messages
    // and timers.
    void SetPainter(std::function<bool()> painter);
    // Called by RunUntil when nothing is to do: scripted input, or input from the desktop. True when it did
    // something.
    void SetIdleHandler(std::function<bool()> handler);
    // Sees every message at the moment of posting, in that order, on the posting thread with the queue
    // locked: it must not call the loop.
    void SetPostObserver(std::function<void(const Message&)> observer);

    // Ends waits of the loop so that conditions are looked at again. Any thread.
    void WakeUp();

    // What is left, for leak checks: windows, waiting messages, running timers.
    [[nodiscard]] std::size_t WindowCount() const;
    [[nodiscard]] std::size_t WaitingMessages() const;
    [[nodiscard]] std::size_t RunningTimers() const;
    // Is this timer of the window running?
    [[nodiscard]] bool HasTimer(HWND window, UINT_PTR id) const;

private:
    struct Timer {
        HWND window;
        UINT_PTR id;
        Millis period;
        Millis due;
    };

    [[nodiscard]] std::optional<Message> TakePosted();
    [[nodiscard]] std::optional<Message> TakeDueTimer();
    [[nodiscard]] Millis NextTimerDue() const;
    [[nodiscard]] bool HasWork() const;
    LRESULT Call(const Message& message);

    Clock& clock_;
    Signal posted_;
    std::thread::id thread_;
    mutable std::mutex mutex_; // guards what follows, never held during a call
    std::map<HWND, std::shared_ptr<WindowProcedure>> windows_;
    std::deque<Message> queue_;
    std::vector<Timer> timers_;
    std::uintptr_t nextHandle_ = 0x10000;
    std::function<void(const Message&)> postObserver_;
    std::function<bool()> painter_;     // dispatching thread only
    std::function<bool()> idleHandler_; // dispatching thread only
};

} // namespace ce
