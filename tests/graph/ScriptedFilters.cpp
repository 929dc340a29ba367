#include "tests/graph/ScriptedFilters.h"

#include <algorithm>
#include <cstdio>

namespace scripted {

namespace {

const KindInfo kInfos[kKinds] = {
    {Kind::Parser, CLSID_DMBParser, kParserName, "parser"},
    {Kind::BSACDecoder, CLSID_BSACDecoder, kBSACDecoderName, "bsac"},
    {Kind::AudioRenderer, CLSID_AudioRender, kAudioRendererName, "audio"},
    {Kind::VideoDecoder, CLSID_DMBVideoDecoder, kVideoDecoderName, "video"},
    {Kind::VideoRenderer, CLSID_DMBVideoRenderer, kVideoRendererName, "picture"},
    {Kind::DABSource, CLSID_DABSource, kDABSourceName, "dab"},
    {Kind::MP3Decoder, CLSID_MP3Decoder, kMP3DecoderName, "mp3"},
};

// Each link has a type of its own, so that a refused link is not carried round through another filter.
dshow::MediaType TypeOf(DWORD link, bool video) {
    const GUID subtype = {0x0DB00000u + link, 0x5C81, 0x4D4D, {0x80, 0, 0, 0, 0, 0, 0, 1}};
    return dshow::MediaType(video ? MEDIATYPE_Video : MEDIATYPE_Audio, subtype);
}
const dshow::MediaType& AvcType() {
    static const dshow::MediaType type = TypeOf(1, true);
    return type;
}
const dshow::MediaType& PictureType() {
    static const dshow::MediaType type = TypeOf(2, true);
    return type;
}
const dshow::MediaType& BsacType() {
    static const dshow::MediaType type = TypeOf(3, false);
    return type;
}
// What the system's own renderer takes: PCM, 48 kHz, stereo, 16 bits (a WAVEFORMATEX).
const dshow::MediaType& SoundType() {
    static constexpr GUID pcm = {0x00000001, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};
    static constexpr BYTE format[18] = {1, 0, 2, 0, 0x80, 0xBB, 0, 0, 0x00, 0xEE, 2, 0, 4, 0, 16, 0, 0, 0};
    static const dshow::MediaType type(MEDIATYPE_Audio, pcm, FORMAT_WaveFormatEx, format);
    return type;
}
const dshow::MediaType& LayerIIType() {
    static const dshow::MediaType type = TypeOf(4, false);
    return type;
}

std::string Hex(HRESULT result) {
    char text[16];
    std::snprintf(text, sizeof text, "%08X", static_cast<unsigned>(result));
    return text;
}

std::string Narrow(const WCHAR* text) {
    if (text == nullptr)
        return "(null)";
    std::string narrow;
    for (; *text != 0; ++text)
        narrow += *text < 0x80 ? static_cast<char>(*text) : '?';
    return narrow;
}

} // namespace

const KindInfo& InfoOf(Kind kind) {
    return kInfos[static_cast<std::size_t>(kind)];
}

// --- log and stage --------------------------------------------------------------------------------------------------

void CallLog::Add(std::string text) {
    if (listener)
        listener(text);
    const std::scoped_lock lock(guard_);
    lines_.push_back({std::move(text), now ? now() : 0});
}

void CallLog::Clear() {
    const std::scoped_lock lock(guard_);
    lines_.clear();
}

std::vector<std::string> CallLog::Texts() const {
    const std::scoped_lock lock(guard_);
    std::vector<std::string> texts;
    for (const Line& line : lines_)
        texts.push_back(line.text);
    return texts;
}

std::vector<CallLog::Line> CallLog::Matching(const std::string& part) const {
    const std::scoped_lock lock(guard_);
    std::vector<Line> found;
    std::ranges::copy_if(lines_, std::back_inserter(found),
                         [&](const Line& line) { return line.text.find(part) != std::string::npos; });
    return found;
}

ScriptedFilter* Stage::Last(Kind kind) const {
    const auto found = std::find_if(alive_.rbegin(), alive_.rend(),
                                    [&](const ScriptedFilter* filter) { return filter->kind() == kind; });
    return found != alive_.rend() ? *found : nullptr;
}

HRESULT Stage::Create(Kind kind, REFIID iid, void** object) {
    *object = nullptr;
    const HRESULT scripted = (*this)[kind].create;
    log.Add(std::string(InfoOf(kind).logName) + ".Create" + (scripted == S_OK ? "" : " = " + Hex(scripted)));
    if (FAILED(scripted))
        return scripted;
    auto* filter = new ScriptedFilter(*this, kind);
    const HRESULT result = filter->QueryInterface(iid, object);
    filter->Release();
    return result;
}

// --- pins -----------------------------------------------------------------------------------------------------------

ScriptedPin::ScriptedPin(ScriptedFilter& filter, PIN_DIRECTION direction, const WCHAR* id, const dshow::MediaType& type)
    : PinBase(filter, direction, id, {type}), owner_(filter) {}

HRESULT ScriptedPin::Note(const char* call, HRESULT result) {
    return owner_.Note((Narrow(Id().c_str()) + "." + call).c_str(), result);
}

bool ScriptedPin::Accepts(const AM_MEDIA_TYPE& type) {
    return !owner_.script().refusingPins.contains(Id()) && PinBase::Accepts(type);
}

STDMETHODIMP ScriptedPin::Connect(IPin* receiver, const AM_MEDIA_TYPE* type) {
    return Note("Connect", PinBase::Connect(receiver, type));
}

STDMETHODIMP ScriptedPin::ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) {
    return Note("ReceiveConnection", PinBase::ReceiveConnection(connector, type));
}

STDMETHODIMP ScriptedPin::Disconnect() {
    return Note("Disconnect", owner_.script().stuckPins.contains(Id()) ? VFW_E_NOT_STOPPED : PinBase::Disconnect());
}

STDMETHODIMP ScriptedPin::ConnectedTo(IPin** peer) {
    if (owner_.script().namelessPeers) {
        *peer = nullptr;
        return Note("ConnectedTo null", S_OK);
    }
    return Note("ConnectedTo", PinBase::ConnectedTo(peer));
}

STDMETHODIMP ScriptedPin::QueryDirection(PIN_DIRECTION* direction) {
    return owner_.script().mutePins.contains(Id()) ? E_UNEXPECTED : PinBase::QueryDirection(direction);
}

// --- filter ---------------------------------------------------------------------------------------------------------

ScriptedFilter::ScriptedFilter(Stage& stage, Kind kind) : FilterBase(InfoOf(kind).classId), stage_(stage), kind_(kind) {
    const auto add = [this](PIN_DIRECTION direction, const WCHAR* id, const dshow::MediaType& type) {
        AddPin(std::make_unique<ScriptedPin>(*this, direction, id, type));
    };
    switch (kind) {
    case Kind::Parser:
        add(PINDIR_OUTPUT, kParserVideoPin, AvcType());
        add(PINDIR_OUTPUT, kParserAudioPin, BsacType());
        break;
    case Kind::BSACDecoder:
        add(PINDIR_INPUT, kInPin, BsacType());
        add(PINDIR_OUTPUT, kOutPin, SoundType());
        break;
    case Kind::AudioRenderer:
        add(PINDIR_INPUT, kAudioRendererPin, SoundType());
        break;
    case Kind::VideoDecoder:
        add(PINDIR_INPUT, kInPin, AvcType());
        add(PINDIR_OUTPUT, kOutPin, PictureType());
        break;
    case Kind::VideoRenderer:
        add(PINDIR_INPUT, kInPin, PictureType());
        break;
    case Kind::DABSource:
        add(PINDIR_OUTPUT, kDABSourcePin, LayerIIType());
        break;
    case Kind::MP3Decoder:
        add(PINDIR_INPUT, kInPin, LayerIIType());
        add(PINDIR_OUTPUT, kOutPin, SoundType());
        break;
    }
    stage_.alive_.push_back(this);
}

ScriptedFilter::~ScriptedFilter() {
    Log("End");
    std::erase(stage_.alive_, this);
}

void ScriptedFilter::Log(const std::string& text) {
    stage_.log.Add(std::string(InfoOf(kind_).logName) + "." + text);
}

HRESULT ScriptedFilter::Note(const char* call, HRESULT result) {
    Log(result == S_OK ? std::string(call) : std::string(call) + " = " + Hex(result));
    return result;
}

ULONG ScriptedFilter::References() {
    AddRef();
    return Release();
}

void* ScriptedFilter::FindInterface(REFIID iid) {
    if (void* custom = script().noCustom ? nullptr : FindCustom(iid))
        return custom;
    if (iid == IID_IVideoWindow && kind_ == Kind::VideoRenderer)
        return static_cast<IVideoWindow*>(&window_);
    if (iid == IID_IMediaSeeking && script().seeking)
        return static_cast<IMediaSeeking*>(&seeking_);
    if (iid == IID_IAMFilterMiscFlags && script().renderer)
        return static_cast<IAMFilterMiscFlags*>(&flags_);
    if (iid == IID_IReferenceClock && script().clock)
        return static_cast<IReferenceClock*>(&clock_);
    return nullptr;
}

void* ScriptedFilter::FindCustom(REFIID iid) {
    if (kind_ == Kind::Parser) {
        if (iid == IID_IDMBCapture)
            return static_cast<IDMBCapture*>(&capture_);
        if (iid == IID_IDMBStreamControl)
            return static_cast<IDMBStreamControl*>(&stream_);
        if (iid == IID_IFileSourceFilter)
            return static_cast<IFileSourceFilter*>(&file_);
    }
    if (kind_ == Kind::VideoRenderer && iid == IID_IVideoHoldControl)
        return static_cast<IVideoHoldControl*>(&hold_);
    if (kind_ == Kind::DABSource && iid == IID_IPadDataSource)
        return static_cast<IPadDataSource*>(&pad_);
    return nullptr;
}

STDMETHODIMP ScriptedFilter::Stop() {
    if (FAILED(script().stop))
        return Note("Stop", script().stop);
    const HRESULT result = FilterBase::Stop();
    return Note("Stop", FAILED(script().stopped) ? script().stopped : result);
}

STDMETHODIMP ScriptedFilter::Pause() {
    if (FAILED(script().pause))
        return Note("Pause", script().pause);
    const HRESULT result = FilterBase::Pause();
    return Note("Pause", FAILED(result) || script().ready ? result : S_FALSE);
}

STDMETHODIMP ScriptedFilter::Run(REFERENCE_TIME start) {
    started_ = start;
    return Note("Run", FAILED(script().run) ? script().run : FilterBase::Run(start));
}

HRESULT ScriptedFilter::OnGetState(DWORD) {
    if (State() == State_Paused && script().live)
        return VFW_S_CANT_CUE;
    return script().ready || State() == State_Stopped ? S_OK : VFW_S_STATE_INTERMEDIATE;
}

STDMETHODIMP ScriptedFilter::GetState(DWORD timeoutMs, FILTER_STATE* state) {
    // Not written down: a graph asks as often as it likes, and from its own thread.
    return FilterBase::GetState(timeoutMs, state);
}

STDMETHODIMP ScriptedFilter::SetSyncSource(IReferenceClock* clock) {
    Log(clock != nullptr ? "SetSyncSource(clock)" : "SetSyncSource(null)");
    return FilterBase::SetSyncSource(clock);
}

STDMETHODIMP ScriptedFilter::EnumPins(IEnumPins** pins) {
    if (script().noPins) {
        *pins = nullptr;
        return Note("EnumPins", E_FAIL);
    }
    return Note("EnumPins", FilterBase::EnumPins(pins));
}

STDMETHODIMP ScriptedFilter::FindPin(LPCWSTR id, IPin** pin) {
    const std::string call = "FindPin(" + Narrow(id) + ")";
    if (script().unknownPins.contains(id)) {
        if (!script().leavesOutPointer)
            *pin = nullptr;
        return Note(call.c_str(), VFW_E_NOT_FOUND);
    }
    if (script().lostPins.contains(id)) {
        *pin = nullptr;
        return Note((call + " null").c_str(), S_OK);
    }
    return Note(call.c_str(), FilterBase::FindPin(id, pin));
}

STDMETHODIMP ScriptedFilter::JoinFilterGraph(IFilterGraph* graph, LPCWSTR name) {
    const std::string call = graph != nullptr ? "JoinFilterGraph(" + Narrow(name) + ")" : "JoinFilterGraph(null)";
    if (graph != nullptr && FAILED(script().join))
        return Note(call.c_str(), script().join);
    return Note(call.c_str(), FilterBase::JoinFilterGraph(graph, name));
}

// --- vendor interfaces ----------------------------------------------------------------------------------------------

STDMETHODIMP ScriptedFilter::CaptureFace::SetCaptureFileName(const WCHAR* path) {
    return filter_.Note(("SetCaptureFileName(" + Narrow(path) + ")").c_str(), filter_.script().captureName);
}

STDMETHODIMP ScriptedFilter::CaptureFace::StartCapture() {
    const HRESULT result = capturing_ ? E_UNEXPECTED : filter_.script().startCapture;
    capturing_ = capturing_ || SUCCEEDED(result);
    return filter_.Note("StartCapture", result);
}

STDMETHODIMP ScriptedFilter::CaptureFace::StopCapture() {
    capturing_ = false;
    return filter_.Note("StopCapture", filter_.script().stopCapture);
}

STDMETHODIMP ScriptedFilter::StreamFace::SetParam(int id, void* block) {
    const auto* info = static_cast<const DMBAudioInfo*>(block);
    char call[80];
    std::snprintf(call, sizeof call, "SetParam(%d, {%d, %d})", id, static_cast<int>(info->value0),
                  static_cast<int>(info->value1));
    return filter_.Note(call, filter_.script().setParam);
}

STDMETHODIMP ScriptedFilter::StreamFace::GetParam(int id, void* result) {
    Script& script = filter_.script();
    if (SUCCEEDED(script.getParam) && id == kParamAudioInfo)
        *static_cast<DMBAudioInfo**>(result) = script.noAudioInfo ? nullptr : &script.audioInfo;
    return filter_.Note(("GetParam(" + std::to_string(id) + ")").c_str(), script.getParam);
}

STDMETHODIMP ScriptedFilter::StreamFace::GetPosition(ULONGLONG* first, LONGLONG* second) {
    if (first != nullptr)
        *first = filter_.script().position1;
    if (second != nullptr)
        *second = filter_.script().position2;
    return filter_.Note("GetPosition", filter_.script().getPosition);
}

STDMETHODIMP ScriptedFilter::StreamFace::SetPosition(LONGLONG position) {
    return filter_.Note(("SetPosition(" + std::to_string(position) + ")").c_str(), filter_.script().setPosition);
}

STDMETHODIMP ScriptedFilter::FileFace::Load(LPCOLESTR path, const AM_MEDIA_TYPE* type) {
    return filter_.Note(("Load(" + Narrow(path) + (type != nullptr ? ", type)" : ")")).c_str(), filter_.script().load);
}

STDMETHODIMP ScriptedFilter::PadFace::FetchPadInfo(PadInfo** record) {
    *record = filter_.script().padInfo;
    return filter_.Note("FetchPadInfo", filter_.script().fetch);
}

STDMETHODIMP ScriptedFilter::WindowFace::put_Visible(LONG visible) {
    return filter_.Note(visible != 0 ? "put_Visible(true)" : "put_Visible(false)", S_OK);
}

STDMETHODIMP ScriptedFilter::WindowFace::put_AutoShow(LONG show) {
    return filter_.Note(show != 0 ? "put_AutoShow(true)" : "put_AutoShow(false)", S_OK);
}

} // namespace scripted
