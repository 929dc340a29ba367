#include "host/dshow/FilterGraph.h"

#include "host/dshow/Enumerator.h"
#include "platform/wince.h"

#include <algorithm>

namespace dshow {

namespace {

// What the product never asks of a graph says so in the debugger output.
HRESULT Unsupported(const WCHAR* call) {
    OutputDebugStringW(FormatW(WTEXT("[dshow] %s is not supported\r\n"), call).c_str());
    return E_NOTIMPL;
}

// The filters of a graph as they were at the last Reset.
struct FilterSource {
    ComPtr<FilterGraph> graph;
    std::vector<ComPtr<IBaseFilter>> filters = {};
    ULONG version = 0;

    [[nodiscard]] bool InStep() const { return graph->Version() == version; }
    void Restart() {
        filters = graph->Snapshot();
        version = graph->Version();
    }
    [[nodiscard]] ULONG Count() const { return static_cast<ULONG>(filters.size()); }
    HRESULT Give(ULONG index, IBaseFilter** filter) const {
        *filter = ComPtr<IBaseFilter>(filters[index]).Detach();
        return S_OK;
    }
};

bool IsFree(IPin* pin) {
    return !PeerOf(pin);
}

// Both ends of one link, the peer first. A failure leaves what was done.
HRESULT DisconnectBothEnds(IPin* pin) {
    const auto peer = PeerOf(pin);
    if (!peer)
        return S_OK;
    const HRESULT result = peer->Disconnect();
    return FAILED(result) ? result : pin->Disconnect();
}

} // namespace

FilterGraph::FilterGraph(ce::Clock& clock)
    : events_(*this, clock), sink_(*this, events_), states_(clock, lock_, filters_, events_), control_(*this, states_),
      mediaFilter_(*this, states_), videoWindow_(*this, IID_IVideoWindow, E_NOINTERFACE),
      basicVideo_(*this, IID_IBasicVideo, E_NOINTERFACE), basicAudio_(*this, IID_IBasicAudio, E_NOTIMPL),
      position_(*this, IID_IMediaPosition, E_NOTIMPL), seeking_(*this, IID_IMediaSeeking, E_NOTIMPL) {}

// R5: stop, then let every filter go. Filters that someone else holds live on.
FilterGraph::~FilterGraph() {
    events_.SetNotifyWindow(0, 0, 0);
    states_.Stop();
    while (!filters_.Entries().empty()) {
        IBaseFilter* filter = filters_.Entries().front().filter.Get();
        (void)Unlink(filter);
        TakeOut(filter);
    }
}

STDMETHODIMP FilterGraph::QueryInterface(REFIID iid, void** object) {
    if (object == nullptr)
        return E_POINTER;
    const struct {
        const IID& iid;
        void* face;
    } faces[] = {
        {IID_IUnknown, static_cast<IGraphBuilder*>(this)},
        {IID_IFilterGraph, static_cast<IGraphBuilder*>(this)},
        {IID_IGraphBuilder, static_cast<IGraphBuilder*>(this)},
        {IID_IMediaControl, static_cast<IMediaControl*>(&control_)},
        {IID_IMediaEvent, static_cast<IMediaEventEx*>(&events_)},
        {IID_IMediaEventEx, static_cast<IMediaEventEx*>(&events_)},
        {IID_IMediaEventSink, static_cast<IMediaEventSink*>(&sink_)},
        {IID_IMediaFilter, static_cast<IMediaFilter*>(&mediaFilter_)},
        {IID_IVideoWindow, static_cast<IVideoWindow*>(&videoWindow_)},
        {IID_IBasicVideo, static_cast<IBasicVideo*>(&basicVideo_)},
        {IID_IBasicAudio, static_cast<IBasicAudio*>(&basicAudio_)},
        {IID_IMediaPosition, static_cast<IMediaPosition*>(&position_)},
        {IID_IMediaSeeking, static_cast<IMediaSeeking*>(&seeking_)},
    };
    *object = nullptr;
    for (const auto& face : faces)
        if (face.iid == iid) {
            *object = face.face;
            AddRef();
            return S_OK;
        }
    return E_NOINTERFACE;
}

// --- filters
// --------------------------------------------------------------------------------------------------------

STDMETHODIMP FilterGraph::AddFilter(IBaseFilter* filter, LPCWSTR name) {
    if (filter == nullptr)
        return E_POINTER;
    const std::scoped_lock lock(lock_);
    if (filters_.Find(filter) != nullptr)
        return E_FAIL;
    WString chosen = filters_.ChooseName(name);
    const bool renamed = name != nullptr && chosen != name;
    const HRESULT joined = filter->JoinFilterGraph(this, chosen.c_str());
    if (FAILED(joined))
        return joined;
    filters_.Add(filter, std::move(chosen));
    states_.OnAdded(filter);
    return renamed ? VFW_S_DUPLICATE_NAME : joined;
}

// Frees both ends of every link of the filter. The first failure ends it, and what was freed stays free
// (R10).
HRESULT FilterGraph::Unlink(IBaseFilter* filter) {
    for (const auto& pin : PinsOf(filter)) {
        const HRESULT result = DisconnectBothEnds(pin.Get());
        if (FAILED(result))
            return result;
    }
    return S_OK;
}

void FilterGraph::TakeOut(IBaseFilter* filter) {
    std::erase_if(targets_, [&](const CachedTarget& cached) { return cached.filter == filter; });
    filter->JoinFilterGraph(nullptr, nullptr);
    filter->SetSyncSource(nullptr);
    filters_.Remove(filter);
}

STDMETHODIMP FilterGraph::RemoveFilter(IBaseFilter* filter) {
    if (filter == nullptr)
        return E_POINTER;
    const std::scoped_lock lock(lock_);
    if (filters_.Find(filter) == nullptr)
        return E_FAIL;
    states_.OnRemoving(filter);
    const HRESULT result = Unlink(filter);
    if (FAILED(result))
        return result;
    TakeOut(filter);
    return S_OK;
}

STDMETHODIMP FilterGraph::EnumFilters(IEnumFilters** filters) {
    if (filters == nullptr)
        return E_POINTER;
    FilterSource source{ComPtr<FilterGraph>::Share(this)};
    source.Restart();
    *filters = new Enumerator<IEnumFilters, IBaseFilter*, FilterSource>(IID_IEnumFilters, std::move(source));
    return S_OK;
}

ULONG FilterGraph::Version() {
    const std::scoped_lock lock(lock_);
    return filters_.Version();
}

std::vector<ComPtr<IBaseFilter>> FilterGraph::Snapshot() {
    const std::scoped_lock lock(lock_);
    std::vector<ComPtr<IBaseFilter>> filters;
    for (const FilterEntry& entry : filters_.Entries())
        filters.push_back(entry.filter);
    return filters;
}

STDMETHODIMP FilterGraph::FindFilterByName(LPCWSTR name, IBaseFilter** filter) {
    if (name == nullptr || filter == nullptr)
        return E_POINTER;
    const std::scoped_lock lock(lock_);
    const FilterEntry* found = filters_.FindByName(name);
    *filter = found != nullptr ? ComPtr<IBaseFilter>(found->filter).Detach() : nullptr;
    return found != nullptr ? S_OK : VFW_E_NOT_FOUND;
}

IUnknown* FilterGraph::TargetFor(REFIID iid) {
    const std::scoped_lock lock(lock_);
    for (const CachedTarget& cached : targets_)
        if (cached.iid == iid)
            return cached.target.Get();
    for (const FilterEntry& entry : filters_.Entries())
        if (auto target = QueryFor<IUnknown>(entry.filter.Get(), iid)) {
            targets_.push_back({iid, entry.filter.Get(), std::move(target)});
            return targets_.back().target.Get();
        }
    return nullptr;
}

// --- links
// ----------------------------------------------------------------------------------------------------------

STDMETHODIMP FilterGraph::ConnectDirect(IPin* out, IPin* in, const AM_MEDIA_TYPE* type) {
    if (out == nullptr || in == nullptr)
        return E_POINTER;
    const std::scoped_lock lock(lock_);
    return IsInput(out) ? in->Connect(out, type) : out->Connect(in, type);
}

STDMETHODIMP FilterGraph::Connect(IPin* out, IPin* in) {
    if (out == nullptr || in == nullptr)
        return E_POINTER;
    const std::scoped_lock lock(lock_);
    if (IsInput(out))
        std::swap(out, in);
    const HRESULT direct = out->Connect(in, nullptr);
    if (SUCCEEDED(direct) || direct == VFW_E_NOT_CONNECTED || direct == VFW_E_NO_AUDIO_HARDWARE)
        return direct;
    std::vector<IBaseFilter*> path = {FilterOf(out).Get(), FilterOf(in).Get()};
    return SUCCEEDED(ConnectThrough(out, in, path)) ? S_OK : VFW_E_CANNOT_CONNECT;
}

// Tries to reach `in` through a filter of the graph with a free input (R15). `path` holds the filters on the
// way already.
HRESULT FilterGraph::ConnectThrough(IPin* out, IPin* in, std::vector<IBaseFilter*>& path) {
    for (const auto& filter : Snapshot()) {
        if (std::ranges::find(path, filter.Get()) != path.end())
            continue;
        const auto pins = PinsOf(filter.Get());
        const auto entry = std::ranges::find_if(pins, [&](const auto& pin) {
            return IsInput(pin.Get()) && IsFree(pin.Get()) && SUCCEEDED(out->Connect(pin.Get(), nullptr));
        });
        if (entry == pins.end())
            continue;
        path.push_back(filter.Get());
        for (const auto& exit : pins)
            if (!IsInput(exit.Get()) && IsFree(exit.Get()) &&
                (SUCCEEDED(exit->Connect(in, nullptr)) || SUCCEEDED(ConnectThrough(exit.Get(), in, path))))
                return S_OK;
        path.pop_back();
        entry->Get()->Disconnect();
        out->Disconnect();
    }
    return VFW_E_CANNOT_CONNECT;
}

// One end only (R18).
STDMETHODIMP FilterGraph::Disconnect(IPin* pin) {
    return pin != nullptr ? pin->Disconnect() : E_POINTER;
}

STDMETHODIMP FilterGraph::SetDefaultSyncSource() {
    return states_.SetDefaultClock();
}

STDMETHODIMP FilterGraph::Reconnect(IPin*) {
    return Unsupported(WTEXT("IFilterGraph::Reconnect"));
}

STDMETHODIMP FilterGraph::Render(IPin*) {
    return Unsupported(WTEXT("IGraphBuilder::Render"));
}

STDMETHODIMP FilterGraph::RenderFile(LPCWSTR, LPCWSTR) {
    return Unsupported(WTEXT("IGraphBuilder::RenderFile"));
}

STDMETHODIMP FilterGraph::AddSourceFilter(LPCWSTR, LPCWSTR, IBaseFilter**) {
    return Unsupported(WTEXT("IGraphBuilder::AddSourceFilter"));
}

STDMETHODIMP FilterGraph::SetLogFile(DWORD_PTR) {
    return Unsupported(WTEXT("IGraphBuilder::SetLogFile"));
}

// There is never a long operation to abort.
STDMETHODIMP FilterGraph::Abort() {
    return S_OK;
}

STDMETHODIMP FilterGraph::ShouldOperationContinue() {
    return S_OK;
}

} // namespace dshow
