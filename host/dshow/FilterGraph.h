// The graph manager: one object with eleven interfaces and one reference count.
//
// The object itself is the builder (IGraphBuilder). Behind it stand the list of filters, the state control,
// the event queue and the faces that hand picture, sound and position calls to a filter. docs/graph-rules.md
// lists the rules (R1 to R35) that all of it keeps; the code names the rule where it would surprise.
//
// Threads: the builder and the state control belong to one thread, the window's. The graph's own worker
// exists only while a run waits for filters to be ready; it is joined by Stop. Events may be reported from
// any thread.
#pragma once

#include "host/dshow/EventQueue.h"
#include "host/dshow/FilterList.h"
#include "host/dshow/Forwarders.h"
#include "host/dshow/StateControl.h"

#include <mutex>

namespace dshow {

class FilterGraph final : public ComObject<IGraphBuilder> {
public:
    explicit FilterGraph(ce::Clock& clock);

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override;

    STDMETHODIMP AddFilter(IBaseFilter* filter, LPCWSTR name) override;
    STDMETHODIMP RemoveFilter(IBaseFilter* filter) override;
    STDMETHODIMP EnumFilters(IEnumFilters** filters) override;
    STDMETHODIMP FindFilterByName(LPCWSTR name, IBaseFilter** filter) override;
    STDMETHODIMP ConnectDirect(IPin* out, IPin* in, const AM_MEDIA_TYPE* type) override;
    STDMETHODIMP Reconnect(IPin* pin) override;
    STDMETHODIMP Disconnect(IPin* pin) override;
    STDMETHODIMP SetDefaultSyncSource() override;

    STDMETHODIMP Connect(IPin* out, IPin* in) override;
    STDMETHODIMP Render(IPin* out) override;
    STDMETHODIMP RenderFile(LPCWSTR path, LPCWSTR playList) override;
    STDMETHODIMP AddSourceFilter(LPCWSTR path, LPCWSTR name, IBaseFilter** filter) override;
    STDMETHODIMP SetLogFile(DWORD_PTR file) override;
    STDMETHODIMP Abort() override;
    STDMETHODIMP ShouldOperationContinue() override;

    // The filter that has the interface, found at the first call and kept until it is removed; borrowed, null
    // when none.
    [[nodiscard]] IUnknown* TargetFor(REFIID iid);
    // For enumerators.
    [[nodiscard]] ULONG Version();
    [[nodiscard]] std::vector<ComPtr<IBaseFilter>> Snapshot();

private:
    ~FilterGraph() override;

    [[nodiscard]] HRESULT Unlink(IBaseFilter* filter);
    void TakeOut(IBaseFilter* filter);
    [[nodiscard]] HRESULT ConnectThrough(IPin* out, IPin* in, std::vector<IBaseFilter*>& path);

    // Hands calls to the filter that has the interface.
    template <class Base, class Interface> class GraphFace final : public Base {
    public:
        GraphFace(FilterGraph& graph, REFIID iid, HRESULT absent)
            : Base(graph), graph_(graph), iid_(iid), absent_(absent) {}

    private:
        Interface* Target() override { return static_cast<Interface*>(graph_.TargetFor(iid_)); }
        HRESULT Absent() override { return absent_; }
        FilterGraph& graph_;
        const IID iid_;
        const HRESULT absent_;
    };

    struct CachedTarget {
        IID iid;
        IBaseFilter* filter;
        ComPtr<IUnknown> target;
    };

    std::recursive_mutex lock_; // of the list, the state control and the targets; never held while waiting
    FilterList filters_;
    std::vector<CachedTarget> targets_;

    EventQueue events_;
    EventSink sink_;
    StateControl states_;
    ControlFace control_;
    MediaFilterFace mediaFilter_;
    GraphFace<VideoWindowFace, IVideoWindow> videoWindow_;
    GraphFace<BasicVideoFace, IBasicVideo> basicVideo_;
    GraphFace<BasicAudioFace, IBasicAudio> basicAudio_;
    GraphFace<MediaPositionFace, IMediaPosition> position_;
    GraphFace<MediaSeekingFace, IMediaSeeking> seeking_;
};

} // namespace dshow
