#include "host/dshow/FilterBase.h"

#include "host/dshow/Enumerator.h"

#include <cstring>

namespace dshow {

namespace {

// The pins of a filter: an enumerator holds the filter.
struct PinSource {
    ComPtr<FilterBase> filter;

    static bool InStep() { return true; }
    void Restart() {}
    [[nodiscard]] ULONG Count() const { return static_cast<ULONG>(filter->Pins().size()); }
    HRESULT Give(ULONG index, IPin** pin) const {
        *pin = filter->Pins()[index].get();
        (*pin)->AddRef();
        return S_OK;
    }
};

// The types of a pin, as they were when the enumerator was made.
struct TypeSource {
    std::vector<MediaType> types;

    static bool InStep() { return true; }
    void Restart() {}
    [[nodiscard]] ULONG Count() const { return static_cast<ULONG>(types.size()); }
    HRESULT Give(ULONG index, AM_MEDIA_TYPE** type) const {
        *type = static_cast<AM_MEDIA_TYPE*>(CoTaskMemAlloc(sizeof(AM_MEDIA_TYPE)));
        if (*type == nullptr)
            return E_OUTOFMEMORY;
        return CopyMediaType(**type, types[index].Get());
    }
};

void CopyName(WCHAR* to, std::size_t capacity, const WString& name) {
    const std::size_t length = std::min(name.size(), capacity - 1);
    std::copy_n(name.data(), length, to);
    to[length] = 0;
}

} // namespace

// --- pin
// ------------------------------------------------------------------------------------------------------------

PinBase::PinBase(FilterBase& filter, PIN_DIRECTION direction, WString id, std::vector<MediaType> types)
    : filter_(filter), direction_(direction), id_(std::move(id)), types_(std::move(types)) {}

PinBase::~PinBase() = default;

STDMETHODIMP PinBase::QueryInterface(REFIID iid, void** object) {
    if (object == nullptr)
        return E_POINTER;
    *object = iid == IID_IUnknown || iid == IID_IPin ? static_cast<IPin*>(this) : FindInterface(iid);
    if (*object == nullptr)
        return E_NOINTERFACE;
    AddRef();
    return S_OK;
}

STDMETHODIMP_(ULONG) PinBase::AddRef() {
    return filter_.AddRef();
}

STDMETHODIMP_(ULONG) PinBase::Release() {
    return filter_.Release();
}

bool PinBase::Accepts(const AM_MEDIA_TYPE& type) {
    return std::ranges::any_of(types_, [&](const MediaType& own) {
        return own.Get().majortype == type.majortype && own.Get().subtype == type.subtype;
    });
}

// One attempt with one type. The own end is joined first, so that the receiver may already ask for it.
HRESULT PinBase::Propose(IPin* receiver, const MediaType& type) {
    peer_ = ComPtr<IPin>::Share(receiver);
    linkType_ = type;
    HRESULT result = receiver->ReceiveConnection(this, &type.Get());
    if (SUCCEEDED(result)) {
        const HRESULT own = OnConnected();
        if (SUCCEEDED(own))
            return result;
        receiver->Disconnect();
        result = own;
    }
    peer_ = ComPtr<IPin>();
    linkType_ = MediaType();
    return result;
}

STDMETHODIMP PinBase::Connect(IPin* receiver, const AM_MEDIA_TYPE* type) {
    if (receiver == nullptr)
        return E_POINTER;
    if (peer_)
        return VFW_E_ALREADY_CONNECTED;
    if (filter_.State() != State_Stopped)
        return VFW_E_NOT_STOPPED;
    PIN_DIRECTION other = PINDIR_OUTPUT;
    if (direction_ != PINDIR_OUTPUT || FAILED(receiver->QueryDirection(&other)) || other != PINDIR_INPUT)
        return VFW_E_INVALID_DIRECTION;

    if (type != nullptr && MediaType(*type).IsComplete())
        return Propose(receiver, MediaType(*type));

    HRESULT failure = VFW_E_NO_ACCEPTABLE_TYPES;
    for (const MediaType& own : types_) {
        const HRESULT result = Propose(receiver, own);
        if (SUCCEEDED(result))
            return result;
        // A plain refusal of the type is no reason; anything else is.
        if (result != E_FAIL && result != E_INVALIDARG && result != VFW_E_TYPE_NOT_ACCEPTED)
            failure = result;
    }
    return failure;
}

STDMETHODIMP PinBase::ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) {
    if (connector == nullptr || type == nullptr)
        return E_POINTER;
    if (peer_)
        return VFW_E_ALREADY_CONNECTED;
    if (filter_.State() != State_Stopped)
        return VFW_E_NOT_STOPPED;
    PIN_DIRECTION other = PINDIR_INPUT;
    if (direction_ != PINDIR_INPUT || FAILED(connector->QueryDirection(&other)) || other != PINDIR_OUTPUT)
        return VFW_E_INVALID_DIRECTION;
    if (!Accepts(*type))
        return VFW_E_TYPE_NOT_ACCEPTED;
    peer_ = ComPtr<IPin>::Share(connector);
    linkType_ = MediaType(*type);
    const HRESULT result = OnConnected();
    if (FAILED(result))
        Break();
    return result;
}

void PinBase::Break() {
    linkType_ = MediaType();
    peer_ = ComPtr<IPin>();
}

STDMETHODIMP PinBase::Disconnect() {
    if (filter_.State() != State_Stopped)
        return VFW_E_NOT_STOPPED;
    if (!peer_)
        return S_FALSE;
    OnDisconnecting();
    Break();
    return S_OK;
}

STDMETHODIMP PinBase::ConnectedTo(IPin** peer) {
    if (peer == nullptr)
        return E_POINTER;
    *peer = ComPtr<IPin>(peer_).Detach();
    return *peer != nullptr ? S_OK : VFW_E_NOT_CONNECTED;
}

STDMETHODIMP PinBase::ConnectionMediaType(AM_MEDIA_TYPE* type) {
    if (type == nullptr)
        return E_POINTER;
    *type = AM_MEDIA_TYPE{};
    if (!peer_)
        return VFW_E_NOT_CONNECTED;
    return CopyMediaType(*type, linkType_.Get());
}

STDMETHODIMP PinBase::QueryPinInfo(PIN_INFO* info) {
    if (info == nullptr)
        return E_POINTER;
    info->pFilter = &filter_;
    info->pFilter->AddRef();
    info->dir = direction_;
    CopyName(info->achName, MAX_PIN_NAME, id_);
    return S_OK;
}

STDMETHODIMP PinBase::QueryDirection(PIN_DIRECTION* direction) {
    if (direction == nullptr)
        return E_POINTER;
    *direction = direction_;
    return S_OK;
}

STDMETHODIMP PinBase::QueryId(LPWSTR* id) {
    if (id == nullptr)
        return E_POINTER;
    *id = static_cast<LPWSTR>(CoTaskMemAlloc((id_.size() + 1) * sizeof(WCHAR)));
    if (*id == nullptr)
        return E_OUTOFMEMORY;
    CopyName(*id, id_.size() + 1, id_);
    return S_OK;
}

STDMETHODIMP PinBase::QueryAccept(const AM_MEDIA_TYPE* type) {
    if (type == nullptr)
        return E_POINTER;
    return Accepts(*type) ? S_OK : S_FALSE;
}

STDMETHODIMP PinBase::EnumMediaTypes(IEnumMediaTypes** types) {
    if (types == nullptr)
        return E_POINTER;
    *types = new Enumerator<IEnumMediaTypes, AM_MEDIA_TYPE*, TypeSource>(IID_IEnumMediaTypes, TypeSource{types_});
    return S_OK;
}

// Not told: the graph then takes every input of a filter to lead to every output.
STDMETHODIMP PinBase::QueryInternalConnections(IPin**, ULONG*) {
    return E_NOTIMPL;
}

STDMETHODIMP PinBase::EndOfStream() {
    return S_OK;
}

STDMETHODIMP PinBase::BeginFlush() {
    return S_OK;
}

STDMETHODIMP PinBase::EndFlush() {
    return S_OK;
}

STDMETHODIMP PinBase::NewSegment(REFERENCE_TIME, REFERENCE_TIME, double) {
    return S_OK;
}

// --- filter
// ---------------------------------------------------------------------------------------------------------

FilterBase::FilterBase(REFCLSID classId) : classId_(classId) {}

FilterBase::~FilterBase() = default;

PinBase& FilterBase::AddPin(std::unique_ptr<PinBase> pin) {
    return *pins_.emplace_back(std::move(pin));
}

STDMETHODIMP FilterBase::QueryInterface(REFIID iid, void** object) {
    if (object == nullptr)
        return E_POINTER;
    if (iid == IID_IUnknown || iid == IID_IPersist || iid == IID_IMediaFilter || iid == IID_IBaseFilter)
        *object = static_cast<IBaseFilter*>(this);
    else
        *object = FindInterface(iid);
    if (*object == nullptr)
        return E_NOINTERFACE;
    AddRef();
    return S_OK;
}

STDMETHODIMP FilterBase::GetClassID(CLSID* classId) {
    if (classId == nullptr)
        return E_POINTER;
    *classId = classId_;
    return S_OK;
}

STDMETHODIMP FilterBase::Stop() {
    if (state_ == State_Stopped)
        return S_OK;
    const HRESULT result = OnStop();
    if (SUCCEEDED(result))
        state_ = State_Stopped;
    return result;
}

STDMETHODIMP FilterBase::Pause() {
    if (state_ == State_Paused)
        return S_OK;
    const HRESULT result = OnPause();
    if (SUCCEEDED(result))
        state_ = State_Paused;
    return result;
}

STDMETHODIMP FilterBase::Run(REFERENCE_TIME start) {
    if (state_ == State_Running)
        return S_OK;
    if (state_ == State_Stopped) {
        const HRESULT paused = OnPause();
        if (FAILED(paused))
            return paused;
        state_ = State_Paused;
    }
    const HRESULT result = OnRun(start);
    if (SUCCEEDED(result))
        state_ = State_Running;
    return result;
}

STDMETHODIMP FilterBase::GetState(DWORD timeoutMs, FILTER_STATE* state) {
    if (state == nullptr)
        return E_POINTER;
    const HRESULT result = OnGetState(timeoutMs);
    *state = state_;
    return result;
}

STDMETHODIMP FilterBase::SetSyncSource(IReferenceClock* clock) {
    auto shared = ComPtr<IReferenceClock>::Share(clock);
    // The old clock is let go outside the lock: its last Release may run a filter's end.
    std::unique_lock lock(guard_);
    std::swap(clock_, shared);
    lock.unlock();
    return S_OK;
}

STDMETHODIMP FilterBase::GetSyncSource(IReferenceClock** clock) {
    if (clock == nullptr)
        return E_POINTER;
    *clock = Clock().Detach();
    return S_OK;
}

ComPtr<IReferenceClock> FilterBase::Clock() {
    const std::scoped_lock lock(guard_);
    return clock_;
}

STDMETHODIMP FilterBase::EnumPins(IEnumPins** pins) {
    if (pins == nullptr)
        return E_POINTER;
    *pins = new Enumerator<IEnumPins, IPin*, PinSource>(IID_IEnumPins, PinSource{ComPtr<FilterBase>::Share(this)});
    return S_OK;
}

STDMETHODIMP FilterBase::FindPin(LPCWSTR id, IPin** pin) {
    if (id == nullptr || pin == nullptr)
        return E_POINTER;
    *pin = nullptr;
    for (const auto& own : pins_)
        if (own->Id() == id) {
            *pin = own.get();
            (*pin)->AddRef();
            return S_OK;
        }
    return VFW_E_NOT_FOUND;
}

STDMETHODIMP FilterBase::QueryFilterInfo(FILTER_INFO* info) {
    if (info == nullptr)
        return E_POINTER;
    const std::scoped_lock lock(guard_);
    CopyName(info->achName, MAX_FILTER_NAME, name_);
    info->pGraph = graph_;
    if (graph_ != nullptr)
        graph_->AddRef();
    return S_OK;
}

STDMETHODIMP FilterBase::JoinFilterGraph(IFilterGraph* graph, LPCWSTR name) {
    // The sink lives exactly as long as the graph, so the counted reference is given back at once.
    const auto sink = QueryFor<IMediaEventSink>(graph, IID_IMediaEventSink);
    const std::scoped_lock lock(guard_);
    graph_ = graph;
    sink_ = sink.Get();
    name_ = graph != nullptr && name != nullptr ? name : WString();
    return S_OK;
}

STDMETHODIMP FilterBase::QueryVendorInfo(LPWSTR*) {
    return E_NOTIMPL;
}

HRESULT FilterBase::NotifyEvent(LONG code, LONG_PTR param1, LONG_PTR param2) {
    const std::scoped_lock lock(guard_);
    if (sink_ == nullptr)
        return VFW_E_NOT_IN_GRAPH;
    return sink_->Notify(code, param1, param2);
}

} // namespace dshow
