// The base of every filter here: state, pins, clock, and the way to report events.
//
// Portable: written against platform/dshow_api.h only, so a filter on this base runs in the Linux graph and
// in the graph of Windows alike.
//
// Rules for filters
//   Counting  A pin counts on its filter. A link adds one to each of its two filters. Neither the graph nor
//   the event sink is
//             counted by the filter: the graph owns the filter, not the other way round.
//   States    Stopped, paused, running, changed by the graph one step at a time: a Run from stopped pauses
//   first. A hook that
//             fails leaves the state as it was.
//   Linking   Only while stopped (VFW_E_NOT_STOPPED). Each end is freed by its own Disconnect.
//   Threads   State changes and linking come from one thread at a time. NotifyEvent may be called from any
//   thread that the
//             filter's OnStop joins; after the filter has left the graph it does nothing.
#pragma once

#include "host/dshow/ComObject.h"
#include "host/dshow/ComPtr.h"
#include "host/dshow/MediaType.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

namespace dshow {

class FilterBase;

// One end of a link. The types it offers (output) or accepts (input) are given at construction, best first; a
// derived pin may decide otherwise by overriding Accepts.
class DMB_HOST_API PinBase : public IPin {
public:
    PinBase(FilterBase& filter, PIN_DIRECTION direction, WString id, std::vector<MediaType> types);
    virtual ~PinBase();
    PinBase(const PinBase&) = delete;
    PinBase& operator=(const PinBase&) = delete;

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;

    STDMETHODIMP Connect(IPin* receiver, const AM_MEDIA_TYPE* type) override;
    STDMETHODIMP ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) override;
    STDMETHODIMP Disconnect() override;
    STDMETHODIMP ConnectedTo(IPin** peer) override;
    STDMETHODIMP ConnectionMediaType(AM_MEDIA_TYPE* type) override;
    STDMETHODIMP QueryPinInfo(PIN_INFO* info) override;
    STDMETHODIMP QueryDirection(PIN_DIRECTION* direction) override;
    STDMETHODIMP QueryId(LPWSTR* id) override;
    STDMETHODIMP QueryAccept(const AM_MEDIA_TYPE* type) override;
    STDMETHODIMP EnumMediaTypes(IEnumMediaTypes** types) override;
    STDMETHODIMP QueryInternalConnections(IPin** pins, ULONG* count) override;
    STDMETHODIMP EndOfStream() override;
    STDMETHODIMP BeginFlush() override;
    STDMETHODIMP EndFlush() override;
    STDMETHODIMP NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) override;

    [[nodiscard]] FilterBase& Filter() const { return filter_; }
    [[nodiscard]] const WString& Id() const { return id_; }
    [[nodiscard]] PIN_DIRECTION Direction() const { return direction_; }
    // The other end, borrowed; null while not connected.
    [[nodiscard]] IPin* Peer() const { return peer_.Get(); }
    // The type of the link; empty while not connected.
    [[nodiscard]] const MediaType& LinkType() const { return linkType_; }
    // The types that an output offers from now on; a link that exists keeps its own.
    void SetTypes(std::vector<MediaType> types) { types_ = std::move(types); }

protected:
    // Does this end take the type? The base compares major type and subtype with its own list.
    virtual bool Accepts(const AM_MEDIA_TYPE& type);
    // The link stands (Peer and LinkType are set); a failure undoes it.
    virtual HRESULT OnConnected() { return S_OK; }
    // The link is about to go.
    virtual void OnDisconnecting() {}
    // Another interface of this pin, borrowed, or null.
    virtual void* FindInterface(REFIID) { return nullptr; }

private:
    HRESULT Propose(IPin* receiver, const MediaType& type);
    void Break();

    FilterBase& filter_;
    const PIN_DIRECTION direction_;
    const WString id_;
    std::vector<MediaType> types_;
    ComPtr<IPin> peer_;
    MediaType linkType_;
};

class DMB_HOST_API FilterBase : public ComObject<IBaseFilter> {
public:
    explicit FilterBase(REFCLSID classId);

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override;
    STDMETHODIMP GetClassID(CLSID* classId) override;
    STDMETHODIMP Stop() override;
    STDMETHODIMP Pause() override;
    STDMETHODIMP Run(REFERENCE_TIME start) override;
    STDMETHODIMP GetState(DWORD timeoutMs, FILTER_STATE* state) override;
    STDMETHODIMP SetSyncSource(IReferenceClock* clock) override;
    STDMETHODIMP GetSyncSource(IReferenceClock** clock) override;
    STDMETHODIMP EnumPins(IEnumPins** pins) override;
    STDMETHODIMP FindPin(LPCWSTR id, IPin** pin) override;
    STDMETHODIMP QueryFilterInfo(FILTER_INFO* info) override;
    STDMETHODIMP JoinFilterGraph(IFilterGraph* graph, LPCWSTR name) override;
    STDMETHODIMP QueryVendorInfo(LPWSTR* info) override;

    [[nodiscard]] FILTER_STATE State() const { return state_.load(); }
    [[nodiscard]] std::span<const std::unique_ptr<PinBase>> Pins() const { return pins_; }

protected:
    ~FilterBase() override;

    // Adds a pin at the end of the fixed order; for constructors.
    PinBase& AddPin(std::unique_ptr<PinBase> pin);

    // Steps between neighbouring states. S_FALSE from OnPause or OnRun: on the way, see OnGetState.
    virtual HRESULT OnPause() { return S_OK; }
    virtual HRESULT OnRun(REFERENCE_TIME) { return S_OK; }
    virtual HRESULT OnStop() { return S_OK; }
    // The answer of GetState: 0 arrived, VFW_S_STATE_INTERMEDIATE still on the way after `timeoutMs`,
    // VFW_S_CANT_CUE a paused live source.
    virtual HRESULT OnGetState(DWORD) { return S_OK; }
    // Another interface of this filter, borrowed, or null.
    virtual void* FindInterface(REFIID) { return nullptr; }

    // Reports an event to the graph. VFW_E_NOT_IN_GRAPH when there is none.
    HRESULT NotifyEvent(LONG code, LONG_PTR param1, LONG_PTR param2);
    // The current clock, or empty.
    [[nodiscard]] ComPtr<IReferenceClock> Clock();

private:
    const CLSID classId_;
    std::vector<std::unique_ptr<PinBase>> pins_;
    std::atomic<FILTER_STATE> state_{State_Stopped};

    std::mutex guard_; // of the fields below
    IFilterGraph* graph_ = nullptr;
    IMediaEventSink* sink_ = nullptr;
    WString name_;
    ComPtr<IReferenceClock> clock_;
};

} // namespace dshow
