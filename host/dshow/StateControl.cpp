#include "host/dshow/StateControl.h"

#include <algorithm>

namespace dshow {

namespace {

constexpr REFERENCE_TIME kUnitsPerMs = 10000;
// Filters start a little in the future, so that the first one does not run ahead of the last.
constexpr REFERENCE_TIME kStartDelay = 50 * kUnitsPerMs;
constexpr ce::Millis kPollMs = 10;
constexpr DWORD kNoLimit = 0xFFFFFFFF;

// The first refusal, or else the first success code that is not S_OK.
void Combine(HRESULT& result, HRESULT next) {
    if (result == S_OK || (SUCCEEDED(result) && FAILED(next)))
        result = next;
}

bool IsRenderer(IBaseFilter* filter) {
    if (const auto flags = QueryFor<IAMFilterMiscFlags>(filter, IID_IAMFilterMiscFlags))
        return (flags->GetMiscFlags() & AM_FILTER_MISC_FLAGS_IS_RENDERER) != 0;
    if (!QueryFor<IMediaSeeking>(filter, IID_IMediaSeeking) && !QueryFor<IMediaPosition>(filter, IID_IMediaPosition))
        return false;
    return std::ranges::all_of(PinsOf(filter), [](const auto& pin) { return IsInput(pin.Get()); });
}

} // namespace

StateControl::StateControl(ce::Clock& clock, std::recursive_mutex& lock, FilterList& filters, EventQueue& events)
    : clock_(clock), lock_(lock), filters_(filters), events_(events), cancel_(clock), started_(clock) {}

StateControl::~StateControl() {
    EndWaiting();
}

// --- states
// ---------------------------------------------------------------------------------------------------------

HRESULT StateControl::Run() {
    EndWaiting();
    const std::scoped_lock lock(lock_);
    if (state_ == State_Running)
        return S_OK;
    PrepareSweep();
    HRESULT result = S_OK;
    if (state_ == State_Stopped) {
        result = PauseAll();
        if (FAILED(result))
            return result; // the filters that did pause stay so until Stop
    }
    events_.BeginRun(CountRenderers());
    state_ = State_Running;
    if (result == S_FALSE && !HasLiveSource()) {
        BeginWaiting();
        return S_FALSE;
    }
    Combine(result, StartAll());
    return result;
}

HRESULT StateControl::Pause() {
    EndWaiting();
    const std::scoped_lock lock(lock_);
    if (state_ == State_Paused)
        return S_OK;
    if (state_ == State_Running) {
        elapsed_ += Now() - startTime_;
        events_.EndRun();
    }
    PrepareSweep();
    const HRESULT result = PauseAll();
    if (SUCCEEDED(result))
        state_ = State_Paused;
    return result;
}

HRESULT StateControl::Stop() {
    EndWaiting();
    const std::scoped_lock lock(lock_);
    if (state_ == State_Stopped && !halfPaused_)
        return S_OK;
    filters_.SortDownstreamFirst();
    HRESULT result = S_OK;
    if (state_ == State_Running) {
        events_.EndRun();
        result = PauseAll();
    }
    for (const FilterEntry& entry : filters_.Entries())
        Combine(result, entry.filter->Stop());
    state_ = State_Stopped;
    halfPaused_ = false;
    elapsed_ = 0;
    return result;
}

void StateControl::PrepareSweep() {
    filters_.SortDownstreamFirst();
    if (!clockChosen_)
        SetDefaultClock();
}

HRESULT StateControl::PauseAll() {
    HRESULT result = S_OK;
    for (const FilterEntry& entry : filters_.Entries()) {
        Combine(result, entry.filter->Pause());
        halfPaused_ = FAILED(result);
        if (halfPaused_)
            break;
    }
    return result;
}

HRESULT StateControl::StartAll() {
    startTime_ = Now() + kStartDelay;
    HRESULT result = S_OK;
    for (const FilterEntry& entry : filters_.Entries())
        Combine(result, entry.filter->Run(startTime_ - elapsed_));
    return result;
}

bool StateControl::HasLiveSource() {
    FILTER_STATE state = State_Stopped;
    return std::ranges::any_of(filters_.Entries(), [&](const FilterEntry& entry) {
        return entry.filter->GetState(0, &state) == VFW_S_CANT_CUE;
    });
}

int StateControl::CountRenderers() {
    return static_cast<int>(std::ranges::count_if(
        filters_.Entries(), [](const FilterEntry& entry) { return IsRenderer(entry.filter.Get()); }));
}

HRESULT StateControl::GetState(DWORD timeoutMs, FILTER_STATE& state) {
    const ce::Millis deadline = timeoutMs == kNoLimit ? ce::kForever : clock_.Now() + timeoutMs;
    while (waiting_ && timeoutMs != 0 && started_.Wait(deadline))
        ;
    std::vector<FilterEntry> filters;
    {
        const std::scoped_lock lock(lock_);
        state = state_;
        filters = filters_.Entries();
    }
    if (waiting_)
        return VFW_S_STATE_INTERMEDIATE;
    HRESULT result = S_OK;
    for (const FilterEntry& entry : filters) {
        FILTER_STATE reached = State_Stopped;
        const ce::Millis left = std::max<ce::Millis>(deadline - clock_.Now(), 0);
        const HRESULT answer =
            entry.filter->GetState(timeoutMs == kNoLimit ? kNoLimit : static_cast<DWORD>(left), &reached);
        if (FAILED(answer))
            return answer;
        if (answer == VFW_S_CANT_CUE)
            result = VFW_S_CANT_CUE;
        else if (result == S_OK && (answer == VFW_S_STATE_INTERMEDIATE || reached != state))
            result = VFW_S_STATE_INTERMEDIATE;
    }
    return result;
}

// --- a run that waits for its filters
// -------------------------------------------------------------------------------

void StateControl::BeginWaiting() {
    cancelled_ = false;
    waiting_ = true;
    worker_ = clock_.StartWorker([this] { RunWhenReady(); });
}

void StateControl::EndWaiting() {
    if (!worker_.joinable())
        return;
    cancelled_ = true;
    cancel_.Raise();
    worker_.join();
    waiting_ = false;
}

void StateControl::RunWhenReady() {
    std::vector<FilterEntry> filters;
    {
        const std::scoped_lock lock(lock_);
        filters = filters_.Entries();
    }
    for (const FilterEntry& entry : filters)
        if (!WaitUntilReady(entry.filter.Get()))
            return;
    {
        const std::scoped_lock lock(lock_);
        if (cancelled_)
            return;
        (void)StartAll();
        waiting_ = false;
    }
    started_.Raise();
}

bool StateControl::WaitUntilReady(IBaseFilter* filter) {
    FILTER_STATE state = State_Stopped;
    while (!cancelled_) {
        if (filter->GetState(0, &state) != VFW_S_STATE_INTERMEDIATE)
            return true;
        (void)cancel_.Wait(clock_.Now() + kPollMs);
    }
    return false;
}

// --- the clock
// ------------------------------------------------------------------------------------------------------

REFERENCE_TIME StateControl::Now() {
    REFERENCE_TIME now = 0;
    if (reference_ && SUCCEEDED(reference_->GetTime(&now)))
        return now;
    return clock_.Now() * kUnitsPerMs;
}

ComPtr<IReferenceClock> StateControl::Clock() {
    const std::scoped_lock lock(lock_);
    return reference_;
}

HRESULT StateControl::SetClock(IReferenceClock* clock) {
    const std::scoped_lock lock(lock_);
    HRESULT result = S_OK;
    for (const FilterEntry& entry : filters_.Entries())
        Combine(result, entry.filter->SetSyncSource(clock));
    if (FAILED(result))
        return result;
    reference_ = ComPtr<IReferenceClock>::Share(clock);
    clockChosen_ = true;
    clockFilter_ = nullptr;
    events_.Report(EC_CLOCK_CHANGED, 0, 0);
    return S_OK;
}

HRESULT StateControl::SetDefaultClock() {
    const std::scoped_lock lock(lock_);
    ComPtr<IReferenceClock> clock;
    IBaseFilter* filter = nullptr;
    for (const FilterEntry& entry : filters_.Entries()) {
        clock = QueryFor<IReferenceClock>(entry.filter.Get(), IID_IReferenceClock);
        if (clock) {
            filter = entry.filter.Get();
            break;
        }
    }
    if (!clock)
        clock = ComPtr<IReferenceClock>::Adopt(new SystemClock(clock_));
    const HRESULT result = SetClock(clock.Get());
    clockFilter_ = filter;
    return result;
}

void StateControl::OnAdded(IBaseFilter* filter) {
    if (reference_)
        filter->SetSyncSource(reference_.Get());
}

void StateControl::OnRemoving(IBaseFilter* filter) {
    if (clockFilter_ != filter)
        return;
    // Every filter lets the clock go, or they would keep the leaving filter alive. The next run chooses
    // again.
    SetClock(nullptr);
    clockChosen_ = false;
}

// --- faces
// ----------------------------------------------------------------------------------------------------------

STDMETHODIMP ControlFace::GetState(LONG timeoutMs, OAFilterState* state) {
    if (state == nullptr)
        return E_POINTER;
    FILTER_STATE reached = State_Stopped;
    const HRESULT result = states_.GetState(static_cast<DWORD>(timeoutMs), reached);
    *state = reached;
    return result;
}

STDMETHODIMP MediaFilterFace::GetClassID(CLSID* classId) {
    if (classId == nullptr)
        return E_POINTER;
    *classId = CLSID_FilterGraph;
    return S_OK;
}

STDMETHODIMP MediaFilterFace::GetState(DWORD timeoutMs, FILTER_STATE* state) {
    return state != nullptr ? states_.GetState(timeoutMs, *state) : E_POINTER;
}

STDMETHODIMP MediaFilterFace::GetSyncSource(IReferenceClock** clock) {
    if (clock == nullptr)
        return E_POINTER;
    *clock = states_.Clock().Detach();
    return S_OK;
}

STDMETHODIMP SystemClock::QueryInterface(REFIID iid, void** object) {
    if (object == nullptr)
        return E_POINTER;
    *object = nullptr;
    if (!(iid == IID_IUnknown) && !(iid == IID_IReferenceClock))
        return E_NOINTERFACE;
    *object = static_cast<IReferenceClock*>(this);
    AddRef();
    return S_OK;
}

STDMETHODIMP SystemClock::GetTime(REFERENCE_TIME* time) {
    if (time == nullptr)
        return E_POINTER;
    *time = clock_.Now() * kUnitsPerMs;
    return S_OK;
}

} // namespace dshow
