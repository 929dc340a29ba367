#include "host/dshow/EventQueue.h"

#include "platform/wince.h"

#include <algorithm>
#include <bit>

namespace dshow {

namespace {

constexpr LONG kNoNotify = 1; // the one flag of SetNotifyFlags

// Negative means for ever.
ce::Millis DeadlineAfter(ce::Clock& clock, LONG timeoutMs) {
    return timeoutMs < 0 ? ce::kForever : clock.Now() + timeoutMs;
}

} // namespace

STDMETHODIMP EventSink::Notify(LONG code, LONG_PTR param1, LONG_PTR param2) {
    queue_.Report(code, param1, param2);
    return S_OK;
}

EventQueue::EventQueue(IUnknown& owner, ce::Clock& clock)
    : NoDispatch(owner), clock_(clock), arrived_(clock), completed_(clock) {}

EventQueue::~EventQueue() {
    for (const Event& event : events_)
        Free(event);
}

// --- from the filters
// -----------------------------------------------------------------------------------------------

bool EventQueue::HandledByGraph(LONG code) const {
    return (code == EC_COMPLETE || code == EC_REPAINT) && std::ranges::find(undefaulted_, code) == undefaulted_.end();
}

void EventQueue::Report(LONG code, LONG_PTR param1, LONG_PTR param2) {
    const std::scoped_lock lock(guard_);
    if (!HandledByGraph(code)) {
        Enqueue({code, param1, param2});
    } else if (code == EC_COMPLETE && running_ && ++completions_ == renderers_) {
        complete_ = true;
        Enqueue({EC_COMPLETE, S_OK, 0});
        completed_.Raise();
    }
}

void EventQueue::Enqueue(const Event& event) {
    events_.push_back(event);
    Post();
    arrived_.Raise();
}

void EventQueue::Post() const {
    if (window_ != 0 && (flags_ & kNoNotify) == 0)
        PostMessageW(std::bit_cast<HWND>(window_), static_cast<UINT>(message_), 0, instanceData_);
}

void EventQueue::BeginRun(int renderers) {
    const std::scoped_lock lock(guard_);
    running_ = true;
    complete_ = false;
    completions_ = 0;
    renderers_ = renderers;
    std::erase_if(events_, [](const Event& event) { return event.code == EC_COMPLETE; });
}

void EventQueue::EndRun() {
    const std::scoped_lock lock(guard_);
    running_ = false;
}

// --- to the application
// ---------------------------------------------------------------------------------------------

// There are no waitable handles here; a reader waits in GetEvent or for its window's message.
STDMETHODIMP EventQueue::GetEventHandle(OAEVENT* event) {
    if (event == nullptr)
        return E_POINTER;
    *event = 0;
    return E_NOTIMPL;
}

STDMETHODIMP EventQueue::GetEvent(LONG* code, LONG_PTR* param1, LONG_PTR* param2, LONG timeoutMs) {
    if (code == nullptr || param1 == nullptr || param2 == nullptr)
        return E_POINTER;
    const ce::Millis deadline = DeadlineAfter(clock_, timeoutMs);
    do {
        const std::scoped_lock lock(guard_);
        if (!events_.empty()) {
            const Event event = events_.front();
            events_.pop_front();
            *code = event.code;
            *param1 = event.param1;
            *param2 = event.param2;
            return S_OK;
        }
    } while (timeoutMs != 0 && arrived_.Wait(deadline));
    *code = 0;
    return E_ABORT;
}

STDMETHODIMP EventQueue::WaitForCompletion(LONG timeoutMs, LONG* code) {
    if (code == nullptr)
        return E_POINTER;
    *code = 0;
    const ce::Millis deadline = DeadlineAfter(clock_, timeoutMs);
    do {
        const std::scoped_lock lock(guard_);
        if (!running_)
            return VFW_E_WRONG_STATE;
        if (complete_) {
            *code = EC_COMPLETE;
            return S_OK;
        }
    } while (timeoutMs != 0 && completed_.Wait(deadline));
    return E_ABORT;
}

STDMETHODIMP EventQueue::CancelDefaultHandling(LONG code) {
    if (code != EC_COMPLETE && code != EC_REPAINT)
        return E_INVALIDARG;
    const std::scoped_lock lock(guard_);
    if (HandledByGraph(code))
        undefaulted_.push_back(code);
    return S_OK;
}

STDMETHODIMP EventQueue::RestoreDefaultHandling(LONG code) {
    if (code != EC_COMPLETE && code != EC_REPAINT)
        return E_INVALIDARG;
    const std::scoped_lock lock(guard_);
    std::erase(undefaulted_, code);
    return S_OK;
}

void EventQueue::Free(const Event& event) {
    if (event.code == EC_OLE_EVENT || event.code == EC_STATUS) {
        SysFreeString(std::bit_cast<BSTR>(event.param1));
        SysFreeString(std::bit_cast<BSTR>(event.param2));
    }
}

STDMETHODIMP EventQueue::FreeEventParams(LONG code, LONG_PTR param1, LONG_PTR param2) {
    Free({code, param1, param2});
    return S_OK;
}

STDMETHODIMP EventQueue::SetNotifyWindow(OAHWND window, LONG message, LONG_PTR instanceData) {
    const std::scoped_lock lock(guard_);
    window_ = window;
    message_ = message;
    instanceData_ = instanceData;
    // One message for all that waits already, as the device's graph does.
    if (!events_.empty())
        Post();
    return S_OK;
}

STDMETHODIMP EventQueue::SetNotifyFlags(LONG flags) {
    if ((flags & ~kNoNotify) != 0)
        return E_INVALIDARG;
    const std::scoped_lock lock(guard_);
    flags_ = flags;
    return S_OK;
}

STDMETHODIMP EventQueue::GetNotifyFlags(LONG* flags) {
    if (flags == nullptr)
        return E_POINTER;
    const std::scoped_lock lock(guard_);
    *flags = flags_;
    return S_OK;
}

} // namespace dshow
