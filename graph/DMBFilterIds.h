// Names, class ids, pin ids, events and interfaces of the receiver chip's filters: constants only.
//
// These belong to the chip's filters, so a filter that stands in for one of them includes this header too.
#pragma once

#include "platform/dshow_api.h"

struct PadInfo;

// --- filters: friendly name in the graph and class id ---

inline constexpr const WCHAR* kParserName = WTEXT("MES DMB Parser Filter");
inline constexpr const WCHAR* kBSACDecoderName = WTEXT("MES BSAC Decoder");
inline constexpr const WCHAR* kAudioRendererName = WTEXT("Audio Renderer"); // the system's: CLSID_AudioRender
inline constexpr const WCHAR* kVideoDecoderName = WTEXT("MES Video Decoder");
inline constexpr const WCHAR* kVideoRendererName = WTEXT("MES VIDRenderer Filter");
inline constexpr const WCHAR* kDABSourceName = WTEXT("MES DAB Source Filter");
inline constexpr const WCHAR* kMP3DecoderName = WTEXT("MP3 Decoder Filter");

inline constexpr CLSID CLSID_DMBParser = {0x92461D2E, 0xF438, 0x415A, {0x8E, 0x67, 0xA7, 0x88, 0x59, 0x97, 0xBC, 0x26}};
inline constexpr CLSID CLSID_BSACDecoder = {0x58E7E569,
                                            0x3473,
                                            0x4B1B,
                                            {0xA5, 0x4A, 0x02, 0xD6, 0xEF, 0x6A, 0x40, 0x49}};
// The four-character code "divx" as a GUID, used as a class id.
inline constexpr CLSID CLSID_DMBVideoDecoder = {0x78766964,
                                                0x0000,
                                                0x0010,
                                                {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};
inline constexpr CLSID CLSID_DMBVideoRenderer = {0x512B4798,
                                                 0xD3D0,
                                                 0x47F9,
                                                 {0x86, 0x37, 0x9C, 0xDF, 0x15, 0xE4, 0x45, 0xA0}};
inline constexpr CLSID CLSID_DABSource = {0xA940F639, 0xF1C5, 0x4F9C, {0x9E, 0x90, 0xB9, 0xC8, 0x63, 0x7E, 0x9C, 0xAB}};
inline constexpr CLSID CLSID_MP3Decoder = {0x1AA69151,
                                           0x3727,
                                           0x4408,
                                           {0xAF, 0x40, 0xF0, 0x21, 0x22, 0x28, 0xE9, 0x43}};

// --- pins ---

inline constexpr const WCHAR* kParserVideoPin = WTEXT("1");
inline constexpr const WCHAR* kParserAudioPin = WTEXT("2");
inline constexpr const WCHAR* kDABSourcePin = WTEXT("1");
inline constexpr const WCHAR* kInPin = WTEXT("In");
inline constexpr const WCHAR* kOutPin = WTEXT("Out");
inline constexpr const WCHAR* kAudioRendererPin = WTEXT("Audio Input pin (rendered)");

// --- events, beside the system's EC_ codes ---

inline constexpr LONG IDMB_EVENT_AUDIO_CHANGE = 0xA201; // the parser met another audio format
inline constexpr LONG IDMB_EVENT_PAD = 0xA301;          // a new label is in the PAD record
inline constexpr LONG IDMB_EVENT_MOT = 0xA310;          // a new slide is in the slide file
inline constexpr LONG IDMB_EVENT_TIME_RESET = 0xB000;   // the stream's clock jumped; the graph must be built anew
inline constexpr LONG IDMB_EVENT_NO_SIGNAL = 0xB100;
inline constexpr LONG IDMB_EVENT_SIGNAL = 0xB101;

// --- parameters of IDMBStreamControl ---

inline constexpr int kParamApplyAudioInfo = 3; // SetParam: two 32-bit words, value0 then value1
inline constexpr int kParamAudioInfo = 19;     // GetParam: pointer to the parser's current DMBAudioInfo

// The parser's description of the audio format. The parser owns it; the meaning of the words is the parser's.
struct DMBAudioInfo {
    LONG value0;
    LONG value1;
};
static_assert(sizeof(DMBAudioInfo) == 8);

// --- interfaces; the slot order is the contract, a reserved slot is never called ---

inline constexpr IID IID_IDMBCapture = {0x5D4943CC, 0x450B, 0x4B62, {0x96, 0x2A, 0xF7, 0x3F, 0xD6, 0x64, 0x58, 0x86}};
// On the parser: copies the received stream into a file. StartCapture during a capture fails.
struct IDMBCapture : IUnknown {
    STDMETHOD(SetCaptureFileName)(const WCHAR* path) PURE;
    STDMETHOD(StartCapture)() PURE;
    STDMETHOD(StopCapture)() PURE;
};

inline constexpr IID IID_IDMBStreamControl = {0x3DAAD846,
                                              0xACF3,
                                              0x44D8,
                                              {0xA9, 0xA5, 0xDF, 0x8F, 0xEF, 0xD7, 0xFE, 0x06}};
// On the parser: parameters by number, and the position in a file in the parser's own unit.
struct IDMBStreamControl : IUnknown {
    STDMETHOD(SetParam)(int id, void* block) PURE;
    STDMETHOD(GetParam)(int id, void* result) PURE;
    STDMETHOD(GetPosition)(ULONGLONG* first, LONGLONG* second) PURE;
    STDMETHOD(SetPosition)(LONGLONG position) PURE;
};

inline constexpr IID IID_IVideoHoldControl = {0x446B639C,
                                              0x16BC,
                                              0x4B92,
                                              {0xAA, 0x88, 0x6F, 0x88, 0x75, 0x16, 0x3E, 0x5E}};
// On the video renderer: keeps the last picture while another view is in front.
struct IVideoHoldControl : IUnknown {
    STDMETHOD(Reserved1)() PURE;
    STDMETHOD(Reserved2)() PURE;
    STDMETHOD(Reserved3)() PURE;
    STDMETHOD(Reserved4)() PURE;
    STDMETHOD(Reserved5)() PURE;
    STDMETHOD(Reserved6)() PURE;
    STDMETHOD(Reserved7)() PURE;
    STDMETHOD(Reserved8)() PURE;
    STDMETHOD(ResumeVideo)() PURE; // before the graph runs again
    STDMETHOD(HoldVideo)() PURE;   // after the graph was paused
};

inline constexpr IID IID_IPadDataSource = {0x9B950C76,
                                           0x1555,
                                           0x4198,
                                           {0xAE, 0x8C, 0x16, 0x4A, 0x79, 0x8F, 0xCC, 0x7F}};
// On the radio source: lends its record of programme-associated data, or null when it has none.
struct IPadDataSource : IUnknown {
    STDMETHOD(Reserved1)() PURE;
    STDMETHOD(Reserved2)() PURE;
    STDMETHOD(FetchPadInfo)(PadInfo** record) PURE;
};
