// The part of DirectShow that the module and its filters use: graph, filters, pins, control, events, video
// window.
//
// On Windows this is the SDK. Elsewhere the interfaces are declared here with the slots in the same order; a
// structure or a code that nobody uses is not declared.
#pragma once

#include "platform/com.h"

#ifdef _WIN32

#include <dshow.h>

#else

// --- ids
// ------------------------------------------------------------------------------------------------------------

inline constexpr CLSID CLSID_FilterGraph = {0xE436EBB3,
                                            0x524F,
                                            0x11CE,
                                            {0x9F, 0x53, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};
inline constexpr CLSID CLSID_AudioRender = {0xE30629D1,
                                            0x27E5,
                                            0x11CE,
                                            {0x87, 0x5D, 0x00, 0x60, 0x8C, 0xB7, 0x80, 0x66}};
inline constexpr IID IID_IFilterGraph = {0x56A8689F, 0x0AD4, 0x11CE, {0xB0, 0x3A, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};
inline constexpr IID IID_IGraphBuilder = {0x56A868A9, 0x0AD4, 0x11CE, {0xB0, 0x3A, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};
inline constexpr IID IID_IMediaFilter = {0x56A86899, 0x0AD4, 0x11CE, {0xB0, 0x3A, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};
inline constexpr IID IID_IBaseFilter = {0x56A86895, 0x0AD4, 0x11CE, {0xB0, 0x3A, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};
inline constexpr IID IID_IPin = {0x56A86891, 0x0AD4, 0x11CE, {0xB0, 0x3A, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};
inline constexpr IID IID_IEnumPins = {0x56A86892, 0x0AD4, 0x11CE, {0xB0, 0x3A, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};
inline constexpr IID IID_IEnumFilters = {0x56A86893, 0x0AD4, 0x11CE, {0xB0, 0x3A, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};
inline constexpr IID IID_IReferenceClock = {0x56A86897,
                                            0x0AD4,
                                            0x11CE,
                                            {0xB0, 0x3A, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};
inline constexpr IID IID_IMediaEventSink = {0x56A868A2,
                                            0x0AD4,
                                            0x11CE,
                                            {0xB0, 0x3A, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};
inline constexpr IID IID_IFileSourceFilter = {0x56A868A6,
                                              0x0AD4,
                                              0x11CE,
                                              {0xB0, 0x3A, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};
inline constexpr IID IID_IMediaControl = {0x56A868B1, 0x0AD4, 0x11CE, {0xB0, 0x3A, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};
inline constexpr IID IID_IMediaPosition = {0x56A868B2,
                                           0x0AD4,
                                           0x11CE,
                                           {0xB0, 0x3A, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};
inline constexpr IID IID_IBasicAudio = {0x56A868B3, 0x0AD4, 0x11CE, {0xB0, 0x3A, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};
inline constexpr IID IID_IVideoWindow = {0x56A868B4, 0x0AD4, 0x11CE, {0xB0, 0x3A, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};
inline constexpr IID IID_IBasicVideo = {0x56A868B5, 0x0AD4, 0x11CE, {0xB0, 0x3A, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};
inline constexpr IID IID_IMediaEvent = {0x56A868B6, 0x0AD4, 0x11CE, {0xB0, 0x3A, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};
inline constexpr IID IID_IMediaEventEx = {0x56A868C0, 0x0AD4, 0x11CE, {0xB0, 0x3A, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};
inline constexpr IID IID_IEnumMediaTypes = {0x89C31040,
                                            0x846B,
                                            0x11CE,
                                            {0x97, 0xD3, 0x00, 0xAA, 0x00, 0x55, 0x59, 0x5A}};
inline constexpr IID IID_IMediaSeeking = {0x36B73880, 0xC2C8, 0x11CF, {0x8B, 0x46, 0x00, 0x80, 0x5F, 0x6C, 0xEF, 0x60}};
inline constexpr IID IID_IAMFilterMiscFlags = {0x2DD74950,
                                               0xA890,
                                               0x11D1,
                                               {0xAB, 0xE8, 0x00, 0xA0, 0xC9, 0x05, 0xF3, 0x75}};

// Media types: what travels over a link. A link has one major type and a subtype; the format block is
// optional.
inline constexpr GUID GUID_NULL = {};
inline constexpr GUID MEDIATYPE_Video = {0x73646976, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};
inline constexpr GUID MEDIATYPE_Audio = {0x73647561, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};
inline constexpr GUID FORMAT_None = {0x0F6417D6, 0xC318, 0x11D0, {0xA4, 0x3F, 0x00, 0xA0, 0xC9, 0x22, 0x31, 0x96}};
inline constexpr GUID FORMAT_WaveFormatEx = {0x05589F81,
                                             0xC356,
                                             0x11CE,
                                             {0xBF, 0x01, 0x00, 0xAA, 0x00, 0x55, 0x59, 0x5A}};

// --- codes
// ----------------------------------------------------------------------------------------------------------

inline constexpr HRESULT VFW_S_DUPLICATE_NAME = 0x0004022D;
inline constexpr HRESULT VFW_S_STATE_INTERMEDIATE = 0x00040237;
inline constexpr HRESULT VFW_S_CANT_CUE = 0x00040268;
inline constexpr HRESULT VFW_E_INVALIDMEDIATYPE = static_cast<HRESULT>(0x80040200u);
inline constexpr HRESULT VFW_E_ENUM_OUT_OF_SYNC = static_cast<HRESULT>(0x80040203u);
inline constexpr HRESULT VFW_E_ALREADY_CONNECTED = static_cast<HRESULT>(0x80040204u);
inline constexpr HRESULT VFW_E_NO_ACCEPTABLE_TYPES = static_cast<HRESULT>(0x80040207u);
inline constexpr HRESULT VFW_E_INVALID_DIRECTION = static_cast<HRESULT>(0x80040208u);
inline constexpr HRESULT VFW_E_NOT_CONNECTED = static_cast<HRESULT>(0x80040209u);
inline constexpr HRESULT VFW_E_NO_CLOCK = static_cast<HRESULT>(0x80040213u);
inline constexpr HRESULT VFW_E_NOT_FOUND = static_cast<HRESULT>(0x80040216u);
inline constexpr HRESULT VFW_E_CANNOT_CONNECT = static_cast<HRESULT>(0x80040217u);
inline constexpr HRESULT VFW_E_NOT_STOPPED = static_cast<HRESULT>(0x80040224u);
inline constexpr HRESULT VFW_E_WRONG_STATE = static_cast<HRESULT>(0x80040227u);
inline constexpr HRESULT VFW_E_TYPE_NOT_ACCEPTED = static_cast<HRESULT>(0x8004022Au);
inline constexpr HRESULT VFW_E_NO_AUDIO_HARDWARE = static_cast<HRESULT>(0x80040256u);
inline constexpr HRESULT VFW_E_NOT_IN_GRAPH = static_cast<HRESULT>(0x8004025Fu);

// Events that filters send to the graph. The vendor's own codes are far above these.
inline constexpr LONG EC_COMPLETE = 0x01; // counted by the graph, see IMediaEventSink
inline constexpr LONG EC_USERABORT = 0x02;
inline constexpr LONG EC_ERRORABORT = 0x03;
inline constexpr LONG EC_REPAINT = 0x05; // kept by the graph
inline constexpr LONG EC_CLOCK_CHANGED = 0x0D;
inline constexpr LONG EC_OLE_EVENT = 0x18; // both parameters are BSTR
inline constexpr LONG EC_STATUS = 0x41;    // both parameters are BSTR
inline constexpr LONG EC_VIDEOFRAMEREADY = 0x49;

// --- structures
// -----------------------------------------------------------------------------------------------------

using REFERENCE_TIME = LONGLONG; // units of 100 ns
using REFTIME = double;          // seconds
using OAHWND = LONG_PTR;
using OAEVENT = LONG_PTR;
using HEVENT = ULONG_PTR;
using HSEMAPHORE = ULONG_PTR;
using DWORD_PTR = ULONG_PTR;

// pbFormat (cbFormat bytes) is task memory, pUnk is counted; both may be null.
struct AM_MEDIA_TYPE {
    GUID majortype;
    GUID subtype;
    BOOL bFixedSizeSamples;
    BOOL bTemporalCompression;
    ULONG lSampleSize;
    GUID formattype;
    IUnknown* pUnk;
    ULONG cbFormat;
    BYTE* pbFormat;
};
static_assert(sizeof(AM_MEDIA_TYPE) == (sizeof(void*) == 8 ? 88 : 72));

enum PIN_DIRECTION { PINDIR_INPUT = 0, PINDIR_OUTPUT = 1 };
enum FILTER_STATE { State_Stopped = 0, State_Paused = 1, State_Running = 2 };
using OAFilterState = LONG;

struct IBaseFilter;
struct IFilterGraph;

inline constexpr int MAX_PIN_NAME = 128;
inline constexpr int MAX_FILTER_NAME = 128;

// pFilter is counted: whoever asks for the record releases it.
struct PIN_INFO {
    IBaseFilter* pFilter;
    PIN_DIRECTION dir;
    WCHAR achName[MAX_PIN_NAME];
};

// pGraph is counted, and null while the filter is in no graph.
struct FILTER_INFO {
    WCHAR achName[MAX_FILTER_NAME];
    IFilterGraph* pGraph;
};

// --- pins and filters
// -----------------------------------------------------------------------------------------------

struct IEnumPins;
struct IEnumFilters;
struct IEnumMediaTypes;

// A pin is an end of a link. It has no life of its own: its AddRef and Release count on its filter, so a link
// holds both of its filters once. Connect is called on an output pin and calls ReceiveConnection of the
// other; Disconnect frees this end only. Both fail with VFW_E_NOT_STOPPED while the filter is not stopped.
struct IPin : IUnknown {
    STDMETHOD(Connect)(IPin* receiver, const AM_MEDIA_TYPE* type) PURE;
    STDMETHOD(ReceiveConnection)(IPin* connector, const AM_MEDIA_TYPE* type) PURE;
    STDMETHOD(Disconnect)() PURE;
    STDMETHOD(ConnectedTo)(IPin** peer) PURE;
    STDMETHOD(ConnectionMediaType)(AM_MEDIA_TYPE* type) PURE;
    STDMETHOD(QueryPinInfo)(PIN_INFO* info) PURE;
    STDMETHOD(QueryDirection)(PIN_DIRECTION* direction) PURE;
    STDMETHOD(QueryId)(LPWSTR* id) PURE;
    STDMETHOD(QueryAccept)(const AM_MEDIA_TYPE* type) PURE;
    STDMETHOD(EnumMediaTypes)(IEnumMediaTypes** types) PURE;
    STDMETHOD(QueryInternalConnections)(IPin** pins, ULONG* count) PURE;
    STDMETHOD(EndOfStream)() PURE;
    STDMETHOD(BeginFlush)() PURE;
    STDMETHOD(EndFlush)() PURE;
    STDMETHOD(NewSegment)(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) PURE;
};

// Next gives 0 when all wanted items came, S_FALSE when fewer; `fetched` may be null only when one is wanted.
struct IEnumPins : IUnknown {
    STDMETHOD(Next)(ULONG wanted, IPin** items, ULONG* fetched) PURE;
    STDMETHOD(Skip)(ULONG count) PURE;
    STDMETHOD(Reset)() PURE;
    STDMETHOD(Clone)(IEnumPins** copy) PURE;
};

struct IEnumFilters : IUnknown {
    STDMETHOD(Next)(ULONG wanted, IBaseFilter** items, ULONG* fetched) PURE;
    STDMETHOD(Skip)(ULONG count) PURE;
    STDMETHOD(Reset)() PURE;
    STDMETHOD(Clone)(IEnumFilters** copy) PURE;
};

struct IEnumMediaTypes : IUnknown {
    STDMETHOD(Next)(ULONG wanted, AM_MEDIA_TYPE** items, ULONG* fetched) PURE;
    STDMETHOD(Skip)(ULONG count) PURE;
    STDMETHOD(Reset)() PURE;
    STDMETHOD(Clone)(IEnumMediaTypes** copy) PURE;
};

// The presentation clock. A time-out wait is not used here, so AdviseTime and AdvisePeriodic may answer
// E_NOTIMPL.
struct IReferenceClock : IUnknown {
    STDMETHOD(GetTime)(REFERENCE_TIME* time) PURE;
    STDMETHOD(AdviseTime)(REFERENCE_TIME base, REFERENCE_TIME stream, HEVENT event, DWORD_PTR* cookie) PURE;
    STDMETHOD(AdvisePeriodic)
    (REFERENCE_TIME start, REFERENCE_TIME period, HSEMAPHORE semaphore, DWORD_PTR* cookie) PURE;
    STDMETHOD(Unadvise)(DWORD_PTR cookie) PURE;
};

// State changes. S_FALSE from Pause or Run: on the way, GetState tells when it has arrived. GetState waits at
// most the given milliseconds and then answers VFW_S_STATE_INTERMEDIATE; a live source answers VFW_S_CANT_CUE
// while paused.
struct IMediaFilter : IPersist {
    STDMETHOD(Stop)() PURE;
    STDMETHOD(Pause)() PURE;
    STDMETHOD(Run)(REFERENCE_TIME start) PURE;
    STDMETHOD(GetState)(DWORD timeoutMs, FILTER_STATE* state) PURE;
    STDMETHOD(SetSyncSource)(IReferenceClock* clock) PURE;
    STDMETHOD(GetSyncSource)(IReferenceClock** clock) PURE;
};

// JoinFilterGraph lends the graph to the filter: the filter keeps the pointer without counting it.
struct IBaseFilter : IMediaFilter {
    STDMETHOD(EnumPins)(IEnumPins** pins) PURE;
    STDMETHOD(FindPin)(LPCWSTR id, IPin** pin) PURE;
    STDMETHOD(QueryFilterInfo)(FILTER_INFO* info) PURE;
    STDMETHOD(JoinFilterGraph)(IFilterGraph* graph, LPCWSTR name) PURE;
    STDMETHOD(QueryVendorInfo)(LPWSTR* info) PURE;
};

// Answered by a source that reads a file.
struct IFileSourceFilter : IUnknown {
    STDMETHOD(Load)(LPCOLESTR path, const AM_MEDIA_TYPE* type) PURE;
    STDMETHOD(GetCurFile)(LPOLESTR* path, AM_MEDIA_TYPE* type) PURE;
};

// 1: renderer, 2: source. A filter that answers 1 takes part in the counting of EC_COMPLETE.
struct IAMFilterMiscFlags : IUnknown {
    STDMETHOD_(ULONG, GetMiscFlags)() PURE;
};

inline constexpr ULONG AM_FILTER_MISC_FLAGS_IS_RENDERER = 1;
inline constexpr ULONG AM_FILTER_MISC_FLAGS_IS_SOURCE = 2;

// --- the graph
// ------------------------------------------------------------------------------------------------------

struct IFilterGraph : IUnknown {
    STDMETHOD(AddFilter)(IBaseFilter* filter, LPCWSTR name) PURE;
    STDMETHOD(RemoveFilter)(IBaseFilter* filter) PURE;
    STDMETHOD(EnumFilters)(IEnumFilters** filters) PURE;
    STDMETHOD(FindFilterByName)(LPCWSTR name, IBaseFilter** filter) PURE;
    STDMETHOD(ConnectDirect)(IPin* out, IPin* in, const AM_MEDIA_TYPE* type) PURE;
    STDMETHOD(Reconnect)(IPin* pin) PURE;
    STDMETHOD(Disconnect)(IPin* pin) PURE;
    STDMETHOD(SetDefaultSyncSource)() PURE;
};

struct IGraphBuilder : IFilterGraph {
    STDMETHOD(Connect)(IPin* out, IPin* in) PURE;
    STDMETHOD(Render)(IPin* out) PURE;
    STDMETHOD(RenderFile)(LPCWSTR path, LPCWSTR playList) PURE;
    STDMETHOD(AddSourceFilter)(LPCWSTR path, LPCWSTR name, IBaseFilter** filter) PURE;
    STDMETHOD(SetLogFile)(DWORD_PTR file) PURE;
    STDMETHOD(Abort)() PURE;
    STDMETHOD(ShouldOperationContinue)() PURE;
};

struct IMediaControl : IDispatch {
    STDMETHOD(Run)() PURE;
    STDMETHOD(Pause)() PURE;
    STDMETHOD(Stop)() PURE;
    STDMETHOD(GetState)(LONG timeoutMs, OAFilterState* state) PURE;
    STDMETHOD(RenderFile)(BSTR path) PURE;
    STDMETHOD(AddSourceFilter)(BSTR path, IDispatch** filter) PURE;
    STDMETHOD(get_FilterCollection)(IDispatch** filters) PURE;
    STDMETHOD(get_RegFilterCollection)(IDispatch** filters) PURE;
    STDMETHOD(StopWhenReady)() PURE;
};

// Filters report here from any thread. EC_COMPLETE reaches the application once, when as many came as there
// are renderers.
struct IMediaEventSink : IUnknown {
    STDMETHOD(Notify)(LONG code, LONG_PTR param1, LONG_PTR param2) PURE;
};

// The application reads here. An empty queue: E_ABORT and code 0. Each event got this way goes to
// FreeEventParams.
struct IMediaEvent : IDispatch {
    STDMETHOD(GetEventHandle)(OAEVENT* event) PURE;
    STDMETHOD(GetEvent)(LONG* code, LONG_PTR* param1, LONG_PTR* param2, LONG timeoutMs) PURE;
    STDMETHOD(WaitForCompletion)(LONG timeoutMs, LONG* code) PURE;
    STDMETHOD(CancelDefaultHandling)(LONG code) PURE;
    STDMETHOD(RestoreDefaultHandling)(LONG code) PURE;
    STDMETHOD(FreeEventParams)(LONG code, LONG_PTR param1, LONG_PTR param2) PURE;
};

// Every queued event posts one message (wParam 0, lParam the instance data) to the window; window 0 ends
// that.
struct IMediaEventEx : IMediaEvent {
    STDMETHOD(SetNotifyWindow)(OAHWND window, LONG message, LONG_PTR instanceData) PURE;
    STDMETHOD(SetNotifyFlags)(LONG flags) PURE;
    STDMETHOD(GetNotifyFlags)(LONG* flags) PURE;
};

// --- picture, sound, position: the graph hands these calls to the filter that has them
// ------------------------------

// Truth of the properties below.
inline constexpr LONG OATRUE = -1;
inline constexpr LONG OAFALSE = 0;

struct IVideoWindow : IDispatch {
    STDMETHOD(put_Caption)(BSTR caption) PURE;
    STDMETHOD(get_Caption)(BSTR* caption) PURE;
    STDMETHOD(put_WindowStyle)(LONG windowStyle) PURE;
    STDMETHOD(get_WindowStyle)(LONG* windowStyle) PURE;
    STDMETHOD(put_WindowStyleEx)(LONG windowStyleEx) PURE;
    STDMETHOD(get_WindowStyleEx)(LONG* windowStyleEx) PURE;
    STDMETHOD(put_AutoShow)(LONG autoShow) PURE;
    STDMETHOD(get_AutoShow)(LONG* autoShow) PURE;
    STDMETHOD(put_WindowState)(LONG windowState) PURE;
    STDMETHOD(get_WindowState)(LONG* windowState) PURE;
    STDMETHOD(put_BackgroundPalette)(LONG backgroundPalette) PURE;
    STDMETHOD(get_BackgroundPalette)(LONG* backgroundPalette) PURE;
    STDMETHOD(put_Visible)(LONG visible) PURE;
    STDMETHOD(get_Visible)(LONG* visible) PURE;
    STDMETHOD(put_Left)(LONG left) PURE;
    STDMETHOD(get_Left)(LONG* left) PURE;
    STDMETHOD(put_Width)(LONG width) PURE;
    STDMETHOD(get_Width)(LONG* width) PURE;
    STDMETHOD(put_Top)(LONG top) PURE;
    STDMETHOD(get_Top)(LONG* top) PURE;
    STDMETHOD(put_Height)(LONG height) PURE;
    STDMETHOD(get_Height)(LONG* height) PURE;
    STDMETHOD(put_Owner)(OAHWND owner) PURE;
    STDMETHOD(get_Owner)(OAHWND* owner) PURE;
    STDMETHOD(put_MessageDrain)(OAHWND drain) PURE;
    STDMETHOD(get_MessageDrain)(OAHWND* drain) PURE;
    STDMETHOD(get_BorderColor)(LONG* color) PURE;
    STDMETHOD(put_BorderColor)(LONG color) PURE;
    STDMETHOD(get_FullScreenMode)(LONG* fullScreenMode) PURE;
    STDMETHOD(put_FullScreenMode)(LONG fullScreenMode) PURE;
    STDMETHOD(SetWindowForeground)(LONG focus) PURE;
    STDMETHOD(NotifyOwnerMessage)(OAHWND window, LONG message, LONG_PTR wParam, LONG_PTR lParam) PURE;
    STDMETHOD(SetWindowPosition)(LONG left, LONG top, LONG width, LONG height) PURE;
    STDMETHOD(GetWindowPosition)(LONG* left, LONG* top, LONG* width, LONG* height) PURE;
    STDMETHOD(GetMinIdealImageSize)(LONG* width, LONG* height) PURE;
    STDMETHOD(GetMaxIdealImageSize)(LONG* width, LONG* height) PURE;
    STDMETHOD(GetRestorePosition)(LONG* left, LONG* top, LONG* width, LONG* height) PURE;
    STDMETHOD(HideCursor)(LONG hideCursor) PURE;
    STDMETHOD(IsCursorHidden)(LONG* cursorHidden) PURE;
};

struct IBasicVideo : IDispatch {
    STDMETHOD(get_AvgTimePerFrame)(REFTIME* avgTimePerFrame) PURE;
    STDMETHOD(get_BitRate)(LONG* bitRate) PURE;
    STDMETHOD(get_BitErrorRate)(LONG* bitErrorRate) PURE;
    STDMETHOD(get_VideoWidth)(LONG* videoWidth) PURE;
    STDMETHOD(get_VideoHeight)(LONG* videoHeight) PURE;
    STDMETHOD(put_SourceLeft)(LONG sourceLeft) PURE;
    STDMETHOD(get_SourceLeft)(LONG* sourceLeft) PURE;
    STDMETHOD(put_SourceWidth)(LONG sourceWidth) PURE;
    STDMETHOD(get_SourceWidth)(LONG* sourceWidth) PURE;
    STDMETHOD(put_SourceTop)(LONG sourceTop) PURE;
    STDMETHOD(get_SourceTop)(LONG* sourceTop) PURE;
    STDMETHOD(put_SourceHeight)(LONG sourceHeight) PURE;
    STDMETHOD(get_SourceHeight)(LONG* sourceHeight) PURE;
    STDMETHOD(put_DestinationLeft)(LONG destinationLeft) PURE;
    STDMETHOD(get_DestinationLeft)(LONG* destinationLeft) PURE;
    STDMETHOD(put_DestinationWidth)(LONG destinationWidth) PURE;
    STDMETHOD(get_DestinationWidth)(LONG* destinationWidth) PURE;
    STDMETHOD(put_DestinationTop)(LONG destinationTop) PURE;
    STDMETHOD(get_DestinationTop)(LONG* destinationTop) PURE;
    STDMETHOD(put_DestinationHeight)(LONG destinationHeight) PURE;
    STDMETHOD(get_DestinationHeight)(LONG* destinationHeight) PURE;
    STDMETHOD(SetSourcePosition)(LONG left, LONG top, LONG width, LONG height) PURE;
    STDMETHOD(GetSourcePosition)(LONG* left, LONG* top, LONG* width, LONG* height) PURE;
    STDMETHOD(SetDefaultSourcePosition)() PURE;
    STDMETHOD(SetDestinationPosition)(LONG left, LONG top, LONG width, LONG height) PURE;
    STDMETHOD(GetDestinationPosition)(LONG* left, LONG* top, LONG* width, LONG* height) PURE;
    STDMETHOD(SetDefaultDestinationPosition)() PURE;
    STDMETHOD(GetVideoSize)(LONG* width, LONG* height) PURE;
    STDMETHOD(GetVideoPaletteEntries)(LONG startIndex, LONG entries, LONG* retrieved, LONG* palette) PURE;
    STDMETHOD(GetCurrentImage)(LONG* bufferSize, LONG* image) PURE;
    STDMETHOD(IsUsingDefaultSource)() PURE;
    STDMETHOD(IsUsingDefaultDestination)() PURE;
};

// Volume in hundredths of a decibel, 0 full and -10000 silent.
struct IBasicAudio : IDispatch {
    STDMETHOD(put_Volume)(LONG volume) PURE;
    STDMETHOD(get_Volume)(LONG* volume) PURE;
    STDMETHOD(put_Balance)(LONG balance) PURE;
    STDMETHOD(get_Balance)(LONG* balance) PURE;
};

struct IMediaPosition : IDispatch {
    STDMETHOD(get_Duration)(REFTIME* length) PURE;
    STDMETHOD(put_CurrentPosition)(REFTIME time) PURE;
    STDMETHOD(get_CurrentPosition)(REFTIME* time) PURE;
    STDMETHOD(get_StopTime)(REFTIME* time) PURE;
    STDMETHOD(put_StopTime)(REFTIME time) PURE;
    STDMETHOD(get_PrerollTime)(REFTIME* time) PURE;
    STDMETHOD(put_PrerollTime)(REFTIME time) PURE;
    STDMETHOD(put_Rate)(double rate) PURE;
    STDMETHOD(get_Rate)(double* rate) PURE;
    STDMETHOD(CanSeekForward)(LONG* canSeekForward) PURE;
    STDMETHOD(CanSeekBackward)(LONG* canSeekBackward) PURE;
};

struct IMediaSeeking : IUnknown {
    STDMETHOD(GetCapabilities)(DWORD* capabilities) PURE;
    STDMETHOD(CheckCapabilities)(DWORD* capabilities) PURE;
    STDMETHOD(IsFormatSupported)(const GUID* format) PURE;
    STDMETHOD(QueryPreferredFormat)(GUID* format) PURE;
    STDMETHOD(GetTimeFormat)(GUID* format) PURE;
    STDMETHOD(IsUsingTimeFormat)(const GUID* format) PURE;
    STDMETHOD(SetTimeFormat)(const GUID* format) PURE;
    STDMETHOD(GetDuration)(LONGLONG* duration) PURE;
    STDMETHOD(GetStopPosition)(LONGLONG* stop) PURE;
    STDMETHOD(GetCurrentPosition)(LONGLONG* current) PURE;
    STDMETHOD(ConvertTimeFormat)
    (LONGLONG* target, const GUID* targetFormat, LONGLONG source, const GUID* sourceFormat) PURE;
    STDMETHOD(SetPositions)(LONGLONG* current, DWORD currentFlags, LONGLONG* stop, DWORD stopFlags) PURE;
    STDMETHOD(GetPositions)(LONGLONG* current, LONGLONG* stop) PURE;
    STDMETHOD(GetAvailable)(LONGLONG* earliest, LONGLONG* latest) PURE;
    STDMETHOD(SetRate)(double rate) PURE;
    STDMETHOD(GetRate)(double* rate) PURE;
    STDMETHOD(GetPreroll)(LONGLONG* preroll) PURE;
};

#endif
