#include "graph/DMBFilterControl.h"

#include "graph/FilterOps.h"
#include "platform/wince.h"

namespace {

constexpr int kRetries = 10;
constexpr DWORD kRetryPauseMs = 100;

// Diagnostics never fail an operation: without memory for the text the line is lost.
template <class... Arguments> void Log(const WCHAR* format, const Arguments&... arguments) noexcept {
    try {
        OutputDebugStringW(FormatW(format, arguments...).c_str());
    } catch (...) {
    }
}

// Creates a filter into the field and adds it to the graph under its name. The field keeps what creation
// gave.
bool CreateInto(IBaseFilter*& field, REFCLSID classId, IGraphBuilder* graph, const WCHAR* name) {
    const HRESULT created =
        CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter, reinterpret_cast<void**>(&field));
    return SUCCEEDED(created) && field != nullptr && SUCCEEDED(graph->AddFilter(field, name));
}

template <class Interface> HRESULT Query(IBaseFilter* filter, REFIID iid, Interface** out) {
    *out = nullptr;
    return filter->QueryInterface(iid, reinterpret_cast<void**>(out));
}

// Runs the step once and then up to ten more times, with a pause before each.
template <class Step> bool SucceedsWithRetries(Step step) {
    if (step() == 0)
        return true;
    for (int retry = 0; retry < kRetries; ++retry) {
        Sleep(kRetryPauseMs);
        if (step() == 0)
            return true;
    }
    return false;
}

} // namespace

CDMBFilterControl::CDMBFilterControl(IGraphBuilder* pGraphBuilder)
    : m_pGraphBuilder(pGraphBuilder), m_pParser(nullptr), m_pBSACDecoder(nullptr), m_pAudioRenderer(nullptr),
      m_pVideoDecoder(nullptr), m_pVideoRenderer(nullptr), m_pDABSource(nullptr), m_pMP3Decoder(nullptr) {}

// Here and not in the class: the shell links to it.
CDMBFilterControl::~CDMBFilterControl() {}

CDMBFilterControl& CDMBFilterControl::operator=(const CDMBFilterControl& other) = default;

// --- television
// -----------------------------------------------------------------------------------------------------

HRESULT CDMBFilterControl::InitDMBFilters(const WCHAR* fileName, int mode) {
    Log(WTEXT("[DMB|FILTER] InitDMBFilters(%d, %s)\r\n"), mode, fileName);
    if (LoadDMBFilters(fileName, mode) != 0)
        return E_FAIL;
    return ConnectDMBFilters();
}

HRESULT CDMBFilterControl::LoadDMBFilters(const WCHAR* fileName, int mode) {
    // Stale values of an earlier session must not be released again by a close after a load that failed
    // half-way.
    m_pParser = m_pBSACDecoder = m_pAudioRenderer = m_pVideoDecoder = m_pVideoRenderer = nullptr;
    if (m_pGraphBuilder == nullptr)
        return E_FAIL;

    if (!CreateInto(m_pParser, CLSID_DMBParser, m_pGraphBuilder, kParserName) ||
        !CreateInto(m_pBSACDecoder, CLSID_BSACDecoder, m_pGraphBuilder, kBSACDecoderName) ||
        !CreateInto(m_pAudioRenderer, CLSID_AudioRender, m_pGraphBuilder, kAudioRendererName) ||
        !CreateInto(m_pVideoDecoder, CLSID_DMBVideoDecoder, m_pGraphBuilder, kVideoDecoderName) ||
        !CreateInto(m_pVideoRenderer, CLSID_DMBVideoRenderer, m_pGraphBuilder, kVideoRendererName))
        return E_FAIL; // what was created stays in the graph and in its field

    if (mode == 1 && fileName != nullptr) {
        IFileSourceFilter* source = nullptr;
        if (FAILED(Query(m_pParser, IID_IFileSourceFilter, &source)) || source == nullptr) {
            Log(WTEXT("[DMB|FILTER] ~LoadDMBFilters() file mode fail\r\n"));
        } else {
            source->Load(fileName, nullptr); // a file that cannot be opened shows when the graph runs
            source->Release();
        }
    }
    Log(WTEXT("[DMB|FILTER] LoadDMBFilters() success\r\n"));
    return S_OK;
}

HRESULT CDMBFilterControl::ConnectDMBFilters() {
    if (m_pGraphBuilder == nullptr)
        return E_FAIL;
    const struct {
        IBaseFilter* upstream;
        const WCHAR* upstreamPin;
        IBaseFilter* downstream;
        const WCHAR* downstreamPin;
    } links[] = {
        {m_pParser, kParserVideoPin, m_pVideoDecoder, kInPin},
        {m_pVideoDecoder, kOutPin, m_pVideoRenderer, kInPin},
        {m_pParser, kParserAudioPin, m_pBSACDecoder, kInPin},
        {m_pBSACDecoder, kOutPin, m_pAudioRenderer, kAudioRendererPin},
    };
    for (const auto& link : links)
        if (ConnectFilterPins(m_pGraphBuilder, link.upstream, link.upstreamPin, link.downstream, link.downstreamPin) !=
            0)
            return E_FAIL;
    Log(WTEXT("[DMB|FILTER] ConnectDMBFilters() success\r\n"));
    return S_OK;
}

HRESULT CDMBFilterControl::DisconnectDMBFilters() {
    if (m_pGraphBuilder == nullptr)
        return E_FAIL;
    const struct {
        IBaseFilter* upstream;
        IBaseFilter* downstream;
    } pairs[] = {
        {m_pParser, m_pBSACDecoder},
        {m_pBSACDecoder, m_pAudioRenderer},
        {m_pParser, m_pVideoDecoder},
        {m_pVideoDecoder, m_pVideoRenderer},
    };
    for (const auto& pair : pairs)
        if (DisconnectFilterPins(m_pGraphBuilder, pair.upstream, pair.downstream) != 0)
            return E_FAIL;
    return S_OK;
}

HRESULT CDMBFilterControl::CloseDMBFilters() {
    if (!SucceedsWithRetries([this] { return DisconnectDMBFilters(); }))
        return E_FAIL;
    for (IBaseFilter* filter : {m_pParser, m_pBSACDecoder, m_pAudioRenderer, m_pVideoDecoder, m_pVideoRenderer})
        // A retry meets a filter that is out of the graph already and fails: a filter that someone still
        // holds costs a second and keeps the later ones in the graph, on purpose.
        if (!SucceedsWithRetries([&] { return DeleteFilter(m_pGraphBuilder, filter); }))
            return E_FAIL;
    return S_OK;
}

// --- radio
// ----------------------------------------------------------------------------------------------------------

HRESULT CDMBFilterControl::InitDABFilters() {
    m_pDABSource = m_pMP3Decoder = m_pAudioRenderer = nullptr; // as in LoadDMBFilters
    if (m_pGraphBuilder == nullptr)
        return E_FAIL;

    if (!CreateInto(m_pDABSource, CLSID_DABSource, m_pGraphBuilder, kDABSourceName) ||
        !CreateInto(m_pMP3Decoder, CLSID_MP3Decoder, m_pGraphBuilder, kMP3DecoderName) ||
        !CreateInto(m_pAudioRenderer, CLSID_AudioRender, m_pGraphBuilder, kAudioRendererName))
        return E_FAIL;

    if (ConnectFilterPins(m_pGraphBuilder, m_pDABSource, kDABSourcePin, m_pMP3Decoder, kInPin) != 0)
        return E_FAIL;
    if (ConnectFilterPins(m_pGraphBuilder, m_pMP3Decoder, kOutPin, m_pAudioRenderer, kAudioRendererPin) != 0)
        return E_FAIL;
    return S_OK;
}

HRESULT CDMBFilterControl::CloseDABFilters() {
    if (m_pGraphBuilder == nullptr)
        return E_FAIL;
    DeleteFilter(m_pGraphBuilder, m_pDABSource);
    DeleteFilter(m_pGraphBuilder, m_pMP3Decoder);
    DeleteFilter(m_pGraphBuilder, m_pAudioRenderer);
    return S_OK;
}

HRESULT CDMBFilterControl::GetPadInfo(PadInfo** record) {
    if (m_pDABSource == nullptr)
        return E_FAIL;
    IPadDataSource* source = nullptr;
    if (FAILED(Query(m_pDABSource, IID_IPadDataSource, &source)) || source == nullptr)
        return E_FAIL;
    const HRESULT result = source->FetchPadInfo(record);
    source->Release();
    return result;
}

// --- the parser's audio format
// --------------------------------------------------------------------------------------

HRESULT CDMBFilterControl::GetAudioInfo(DMBAudioInfo** info) {
    if (m_pParser == nullptr)
        return E_FAIL;
    IDMBStreamControl* control = nullptr;
    if (Query(m_pParser, IID_IDMBStreamControl, &control) != 0 || control == nullptr)
        return E_FAIL;
    const HRESULT result = control->GetParam(kParamAudioInfo, static_cast<void*>(info));
    control->Release();
    return result;
}

HRESULT CDMBFilterControl::SetAudioInfo(int a, int b) {
    if (m_pParser == nullptr)
        return E_FAIL;
    IDMBStreamControl* control = nullptr;
    if (Query(m_pParser, IID_IDMBStreamControl, &control) != 0 || control == nullptr)
        return E_FAIL;
    DMBAudioInfo block = {b, a}; // the second argument goes first
    control->SetParam(kParamApplyAudioInfo, &block);
    control->Release();
    return S_OK;
}

HRESULT CDMBFilterControl::HandleAudioChange() {
    (void)DisconnectDMBFilters();
    DMBAudioInfo* info = nullptr;
    if (SUCCEEDED(GetAudioInfo(&info)) && info != nullptr)
        SetAudioInfo(info->value1, info->value0);
    return ConnectDMBFilters();
}

// --- capture and position: bridges to the parser
// --------------------------------------------------------------------

HRESULT CDMBFilterControl::StartDMBCapture() {
    if (m_pParser == nullptr)
        return E_FAIL;
    IDMBCapture* capture = nullptr;
    if (FAILED(Query(m_pParser, IID_IDMBCapture, &capture)) || capture == nullptr)
        return E_FAIL;
    const HRESULT result = capture->StartCapture();
    capture->Release();
    Log(WTEXT("[DMB|FILTER] StartDMBCapture() %d/%d\r\n"), result, 0);
    return result;
}

HRESULT CDMBFilterControl::StopDMBCapture() {
    if (m_pParser == nullptr)
        return E_FAIL;
    IDMBCapture* capture = nullptr;
    if (FAILED(Query(m_pParser, IID_IDMBCapture, &capture)) || capture == nullptr)
        return E_FAIL;
    const HRESULT result = capture->StopCapture();
    capture->Release();
    return result;
}

HRESULT CDMBFilterControl::SetDMBCaputerFileName(const WCHAR* path) {
    if (m_pParser == nullptr)
        return E_FAIL;
    IDMBCapture* capture = nullptr;
    if (FAILED(Query(m_pParser, IID_IDMBCapture, &capture)) || capture == nullptr)
        return E_FAIL;
    const HRESULT result = capture->SetCaptureFileName(path);
    capture->Release();
    Log(WTEXT("[DMB|FILTER] SetDMBCaputerFileName(%s) %d\r\n"), path, result);
    return result;
}

HRESULT CDMBFilterControl::GetFilePos(ULONGLONG* first, LONGLONG* second) {
    if (m_pParser == nullptr)
        return E_FAIL;
    IDMBStreamControl* control = nullptr;
    if (FAILED(Query(m_pParser, IID_IDMBStreamControl, &control)) || control == nullptr)
        return E_FAIL;
    const HRESULT result = control->GetPosition(first, second);
    control->Release();
    return result;
}

HRESULT CDMBFilterControl::SetFilePos(LONGLONG position) {
    if (m_pParser == nullptr)
        return E_FAIL;
    IDMBStreamControl* control = nullptr;
    if (FAILED(Query(m_pParser, IID_IDMBStreamControl, &control)) || control == nullptr)
        return E_FAIL;
    const HRESULT result = control->SetPosition(position);
    control->Release();
    // The line shows the two words of the position, low word first; the result has no field and is not shown,
    // on purpose.
    const auto low = static_cast<LONG>(static_cast<DWORD>(position));
    const auto high = static_cast<LONG>(static_cast<DWORD>(static_cast<ULONGLONG>(position) >> 32));
    Log(WTEXT("[DMB|FILTER] SetFilePos(%d) %d\r\n"), low, high, result);
    return result;
}
