// How a graph runs, pauses and stops, and which clock it follows.
//
// Sweeps go through the filters renderers first, sources last. From stopped, Run pauses every filter and then
// runs every filter with one common start time. When a filter is not ready after its Pause (S_FALSE), Run
// answers S_FALSE and a worker runs the filters as soon as all are ready; a live source (VFW_S_CANT_CUE)
// makes nobody wait.
#pragma once

#include "host/ce/Clock.h"
#include "host/dshow/EventQueue.h"
#include "host/dshow/FilterList.h"
#include "platform/dshow_api.h"

#include <atomic>
#include <mutex>
#include <thread>

namespace dshow {

class StateControl {
public:
    StateControl(ce::Clock& clock, std::recursive_mutex& lock, FilterList& filters, EventQueue& events);
    ~StateControl();

    HRESULT Run();
    HRESULT Pause();
    HRESULT Stop();
    // Waits at most so long (INFINITE 0xFFFFFFFF: without limit) for all filters to arrive. The state stored
    // is the target.
    HRESULT GetState(DWORD timeoutMs, FILTER_STATE& state);

    // Gives every filter the clock and tells the application. Null: the filters run freely.
    HRESULT SetClock(IReferenceClock* clock);
    // A filter's clock if one has it, otherwise the system's.
    HRESULT SetDefaultClock();
    [[nodiscard]] ComPtr<IReferenceClock> Clock();

    // A filter joined, or is about to leave.
    void OnAdded(IBaseFilter* filter);
    void OnRemoving(IBaseFilter* filter);

private:
    void PrepareSweep();
    [[nodiscard]] HRESULT PauseAll();
    [[nodiscard]] HRESULT StartAll();
    [[nodiscard]] bool HasLiveSource();
    [[nodiscard]] int CountRenderers();
    void BeginWaiting();
    void EndWaiting();
    void RunWhenReady();
    [[nodiscard]] bool WaitUntilReady(IBaseFilter* filter);
    [[nodiscard]] REFERENCE_TIME Now();

    ce::Clock& clock_;
    std::recursive_mutex& lock_;
    FilterList& filters_;
    EventQueue& events_;

    FILTER_STATE state_ = State_Stopped;
    bool halfPaused_ = false;  // a Pause failed on the way: some filters are paused although the graph is not
    bool clockChosen_ = false; // by SetClock or by the first Run
    ComPtr<IReferenceClock> reference_;
    IBaseFilter* clockFilter_ = nullptr; // the filter whose clock it is, if it was chosen by the graph
    REFERENCE_TIME startTime_ = 0;       // of the present run
    REFERENCE_TIME elapsed_ = 0;         // stream time when the graph was paused

    std::thread worker_;
    std::atomic<bool> waiting_{false};
    std::atomic<bool> cancelled_{false};
    ce::Signal cancel_;
    ce::Signal started_;
};

class ControlFace final : public NoDispatch<Face<IMediaControl>> {
public:
    ControlFace(IUnknown& owner, StateControl& states) : NoDispatch(owner), states_(states) {}
    STDMETHODIMP Run() override { return states_.Run(); }
    STDMETHODIMP Pause() override { return states_.Pause(); }
    STDMETHODIMP Stop() override { return states_.Stop(); }
    STDMETHODIMP GetState(LONG timeoutMs, OAFilterState* state) override;
    STDMETHODIMP RenderFile(BSTR) override { return E_NOTIMPL; }
    STDMETHODIMP AddSourceFilter(BSTR, IDispatch**) override { return E_NOTIMPL; }
    STDMETHODIMP get_FilterCollection(IDispatch**) override { return E_NOTIMPL; }
    STDMETHODIMP get_RegFilterCollection(IDispatch**) override { return E_NOTIMPL; }
    STDMETHODIMP StopWhenReady() override { return states_.Stop(); }

private:
    StateControl& states_;
};

class MediaFilterFace final : public Face<IMediaFilter> {
public:
    MediaFilterFace(IUnknown& owner, StateControl& states) : Face(owner), states_(states) {}
    STDMETHODIMP GetClassID(CLSID* classId) override;
    STDMETHODIMP Stop() override { return states_.Stop(); }
    STDMETHODIMP Pause() override { return states_.Pause(); }
    // The start time is the graph's to choose.
    STDMETHODIMP Run(REFERENCE_TIME) override { return states_.Run(); }
    STDMETHODIMP GetState(DWORD timeoutMs, FILTER_STATE* state) override;
    STDMETHODIMP SetSyncSource(IReferenceClock* clock) override { return states_.SetClock(clock); }
    STDMETHODIMP GetSyncSource(IReferenceClock** clock) override;

private:
    StateControl& states_;
};

// A clock that follows the host's clock port.
class SystemClock final : public ComObject<IReferenceClock> {
public:
    explicit SystemClock(ce::Clock& clock) : clock_(clock) {}
    STDMETHODIMP QueryInterface(REFIID iid, void** object) override;
    STDMETHODIMP GetTime(REFERENCE_TIME* time) override;
    STDMETHODIMP AdviseTime(REFERENCE_TIME, REFERENCE_TIME, HEVENT, DWORD_PTR*) override { return E_NOTIMPL; }
    STDMETHODIMP AdvisePeriodic(REFERENCE_TIME, REFERENCE_TIME, HSEMAPHORE, DWORD_PTR*) override { return E_NOTIMPL; }
    STDMETHODIMP Unadvise(DWORD_PTR) override { return E_NOTIMPL; }

private:
    ce::Clock& clock_;
};

} // namespace dshow
