// The graph's events: what filters report, in order, until the application reads it.
//
// Every queued event posts one message to the notify window; nothing is merged, so a reader that drains the
// queue finds it empty at later messages. EC_COMPLETE is counted instead of queued: it reaches the
// application once per run, when every renderer has reported it. Any thread may report; one thread reads.
#pragma once

#include "host/ce/Clock.h"
#include "host/dshow/ComObject.h"
#include "platform/dshow_api.h"

#include <deque>
#include <mutex>
#include <vector>

namespace dshow {

class EventQueue;

// The filters' end.
class EventSink final : public Face<IMediaEventSink> {
public:
    EventSink(IUnknown& owner, EventQueue& queue) : Face(owner), queue_(queue) {}
    STDMETHODIMP Notify(LONG code, LONG_PTR param1, LONG_PTR param2) override;

private:
    EventQueue& queue_;
};

// The application's end.
class EventQueue final : public NoDispatch<Face<IMediaEventEx>> {
public:
    EventQueue(IUnknown& owner, ce::Clock& clock);
    ~EventQueue();

    STDMETHODIMP GetEventHandle(OAEVENT* event) override;
    STDMETHODIMP GetEvent(LONG* code, LONG_PTR* param1, LONG_PTR* param2, LONG timeoutMs) override;
    STDMETHODIMP WaitForCompletion(LONG timeoutMs, LONG* code) override;
    STDMETHODIMP CancelDefaultHandling(LONG code) override;
    STDMETHODIMP RestoreDefaultHandling(LONG code) override;
    STDMETHODIMP FreeEventParams(LONG code, LONG_PTR param1, LONG_PTR param2) override;
    STDMETHODIMP SetNotifyWindow(OAHWND window, LONG message, LONG_PTR instanceData) override;
    STDMETHODIMP SetNotifyFlags(LONG flags) override;
    STDMETHODIMP GetNotifyFlags(LONG* flags) override;

    // An event from a filter or from the graph itself.
    void Report(LONG code, LONG_PTR param1, LONG_PTR param2);
    // A run begins with so many renderers: counting starts anew, and an EC_COMPLETE not yet read is
    // withdrawn.
    void BeginRun(int renderers);
    // The graph is no longer running: EC_COMPLETE is ignored until the next BeginRun.
    void EndRun();

private:
    struct Event {
        LONG code;
        LONG_PTR param1, param2;
    };
    void Enqueue(const Event& event);
    void Post() const;
    [[nodiscard]] bool HandledByGraph(LONG code) const;
    static void Free(const Event& event);

    ce::Clock& clock_;
    ce::Signal arrived_;
    ce::Signal completed_;
    std::mutex guard_; // of all below
    std::deque<Event> events_;
    std::vector<LONG> undefaulted_; // codes whose handling by the graph the application has cancelled
    OAHWND window_ = 0;
    LONG message_ = 0;
    LONG_PTR instanceData_ = 0;
    LONG flags_ = 0;
    bool running_ = false;
    bool complete_ = false;
    int renderers_ = 0;
    int completions_ = 0;
};

} // namespace dshow
