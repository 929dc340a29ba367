// Stand-ins for the receiver chip's filters: they play no media and own no thread, they answer as told and write down every
// call.
//
// Portable: the same filters serve in the graph of Linux and in that of Windows, which makes the one a check of the other.
// A Stage holds one script and the live objects per kind, and one log for all; a GraphWorld (GraphWorld.h) puts the stage behind
// CoCreateInstance.
//
// A line of the log is "<who>.<call>" with what matters of the arguments and of the result: "parser.Pause",
// "bsac.In.ReceiveConnection = 8004022A".
#pragma once

#include "dataservice/PadInfo.h"
#include "graph/DMBFilterIds.h"
#include "host/dshow/FilterBase.h"
#include "host/dshow/Forwarders.h"

#include <array>
#include <atomic>
#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace scripted {

enum class Kind { Parser, BSACDecoder, AudioRenderer, VideoDecoder, VideoRenderer, DABSource, MP3Decoder };
inline constexpr std::size_t kKinds = 7;

struct KindInfo {
    Kind kind;
    const CLSID& classId;
    const WCHAR* friendlyName; // in the graph
    const char* logName;
};
[[nodiscard]] const KindInfo& InfoOf(Kind kind);

class CallLog {
public:
    struct Line {
        std::string text;
        long timeMs;
    };
    void Add(std::string text);
    [[nodiscard]] std::vector<std::string> Texts() const;
    // The lines that contain the text.
    [[nodiscard]] std::vector<Line> Matching(const std::string& part) const;
    [[nodiscard]] int Count(const std::string& part) const { return static_cast<int>(Matching(part).size()); }
    void Clear();

    std::function<long()> now;                        // stamps the lines; may be empty
    std::function<void(const std::string&)> listener; // is told every line; may be empty

private:
    mutable std::mutex guard_; // a graph may run filters from a thread of its own
    std::vector<Line> lines_;
};

// How the filters of one kind behave; changes count at once, also for filters that exist.
struct Script {
    HRESULT create = S_OK; // the answer of the factory
    HRESULT join = S_OK;
    HRESULT pause = S_OK;
    HRESULT run = S_OK;
    HRESULT stop = S_OK;
    HRESULT stopped = S_OK;         // what Stop answers once it has stopped
    bool ready = true;              // false: Pause answers S_FALSE and GetState "on the way"
    bool live = false;              // GetState answers "can not cue" while paused
    bool clock = false;             // offers IReferenceClock
    bool renderer = false;          // says through IAMFilterMiscFlags that it is one
    bool seeking = false;           // offers IMediaSeeking, which without outputs makes a renderer of it too
    std::set<WString> unknownPins;  // FindPin does not find these
    bool leavesOutPointer = false;  // ... and leaves the out pointer alone
    std::set<WString> lostPins;     // FindPin succeeds and gives null
    std::set<WString> refusingPins; // do not take any type
    std::set<WString> stuckPins;    // Disconnect answers VFW_E_NOT_STOPPED
    std::set<WString> mutePins;     // QueryDirection fails
    bool namelessPeers = false;     // ConnectedTo succeeds and gives null
    bool noPins = false;            // EnumPins shows none
    bool noCustom = false;          // hides the vendor interfaces and IFileSourceFilter

    // The parser's answers.
    HRESULT load = S_OK;
    HRESULT captureName = S_OK, startCapture = S_OK, stopCapture = S_OK;
    HRESULT getParam = S_OK, setParam = S_OK, getPosition = S_OK, setPosition = S_OK;
    DMBAudioInfo audioInfo = {0, 0};
    bool noAudioInfo = false; // GetParam succeeds and gives null
    ULONGLONG position1 = 0;
    LONGLONG position2 = 0;
    // The radio source's answers.
    HRESULT fetch = S_OK;
    PadInfo* padInfo = nullptr;
};

class ScriptedFilter;

class Stage {
public:
    Stage() = default;
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    CallLog log;
    [[nodiscard]] Script& operator[](Kind kind) { return scripts_[static_cast<std::size_t>(kind)]; }
    // The filter of the kind that was created last and is still alive, borrowed, or null.
    [[nodiscard]] ScriptedFilter* Last(Kind kind) const;
    [[nodiscard]] int Alive() const { return static_cast<int>(alive_.size()); }

    // The factory behind the class table.
    [[nodiscard]] HRESULT Create(Kind kind, REFIID iid, void** object);

private:
    friend class ScriptedFilter;
    std::array<Script, kKinds> scripts_;
    std::vector<ScriptedFilter*> alive_;
};

class ScriptedPin final : public dshow::PinBase {
public:
    ScriptedPin(ScriptedFilter& filter, PIN_DIRECTION direction, const WCHAR* id, const dshow::MediaType& type);

    STDMETHODIMP Connect(IPin* receiver, const AM_MEDIA_TYPE* type) override;
    STDMETHODIMP ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) override;
    STDMETHODIMP Disconnect() override;
    STDMETHODIMP ConnectedTo(IPin** peer) override;
    STDMETHODIMP QueryDirection(PIN_DIRECTION* direction) override;

private:
    bool Accepts(const AM_MEDIA_TYPE& type) override;
    HRESULT Note(const char* call, HRESULT result);
    ScriptedFilter& owner_;
};

class ScriptedFilter final : public dshow::FilterBase {
public:
    ScriptedFilter(Stage& stage, Kind kind);

    STDMETHODIMP Stop() override;
    STDMETHODIMP Pause() override;
    STDMETHODIMP Run(REFERENCE_TIME start) override;
    STDMETHODIMP GetState(DWORD timeoutMs, FILTER_STATE* state) override;
    STDMETHODIMP SetSyncSource(IReferenceClock* clock) override;
    STDMETHODIMP EnumPins(IEnumPins** pins) override;
    STDMETHODIMP FindPin(LPCWSTR id, IPin** pin) override;
    STDMETHODIMP JoinFilterGraph(IFilterGraph* graph, LPCWSTR name) override;

    // Reports an event as the filter's streaming thread would.
    HRESULT Report(LONG code, LONG_PTR param1 = 0, LONG_PTR param2 = 0) { return NotifyEvent(code, param1, param2); }
    [[nodiscard]] Script& script() { return stage_[kind_]; }
    [[nodiscard]] Kind kind() const { return kind_; }
    // Start time of the last Run.
    [[nodiscard]] REFERENCE_TIME Started() const { return started_; }
    [[nodiscard]] ULONG References();
    void Log(const std::string& text);
    HRESULT Note(const char* call, HRESULT result);

private:
    ~ScriptedFilter() override;
    void* FindInterface(REFIID iid) override;
    void* FindCustom(REFIID iid);
    HRESULT OnGetState(DWORD timeoutMs) override;

    // The vendor's interfaces and the system's, each a face of this filter.
    class CaptureFace final : public dshow::Face<IDMBCapture> {
    public:
        explicit CaptureFace(ScriptedFilter& filter) : Face(filter), filter_(filter) {}
        STDMETHODIMP SetCaptureFileName(const WCHAR* path) override;
        STDMETHODIMP StartCapture() override;
        STDMETHODIMP StopCapture() override;

    private:
        ScriptedFilter& filter_;
        bool capturing_ = false;
    };
    class StreamFace final : public dshow::Face<IDMBStreamControl> {
    public:
        explicit StreamFace(ScriptedFilter& filter) : Face(filter), filter_(filter) {}
        STDMETHODIMP SetParam(int id, void* block) override;
        STDMETHODIMP GetParam(int id, void* result) override;
        STDMETHODIMP GetPosition(ULONGLONG* first, LONGLONG* second) override;
        STDMETHODIMP SetPosition(LONGLONG position) override;

    private:
        ScriptedFilter& filter_;
    };
    class FileFace final : public dshow::Face<IFileSourceFilter> {
    public:
        explicit FileFace(ScriptedFilter& filter) : Face(filter), filter_(filter) {}
        STDMETHODIMP Load(LPCOLESTR path, const AM_MEDIA_TYPE* type) override;
        STDMETHODIMP GetCurFile(LPOLESTR*, AM_MEDIA_TYPE*) override { return E_NOTIMPL; }

    private:
        ScriptedFilter& filter_;
    };
    class HoldFace final : public dshow::Face<IVideoHoldControl> {
    public:
        explicit HoldFace(ScriptedFilter& filter) : Face(filter), filter_(filter) {}
        STDMETHODIMP Reserved1() override { return E_NOTIMPL; }
        STDMETHODIMP Reserved2() override { return E_NOTIMPL; }
        STDMETHODIMP Reserved3() override { return E_NOTIMPL; }
        STDMETHODIMP Reserved4() override { return E_NOTIMPL; }
        STDMETHODIMP Reserved5() override { return E_NOTIMPL; }
        STDMETHODIMP Reserved6() override { return E_NOTIMPL; }
        STDMETHODIMP Reserved7() override { return E_NOTIMPL; }
        STDMETHODIMP Reserved8() override { return E_NOTIMPL; }
        STDMETHODIMP ResumeVideo() override { return filter_.Note("ResumeVideo", S_OK); }
        STDMETHODIMP HoldVideo() override { return filter_.Note("HoldVideo", S_OK); }

    private:
        ScriptedFilter& filter_;
    };
    class PadFace final : public dshow::Face<IPadDataSource> {
    public:
        explicit PadFace(ScriptedFilter& filter) : Face(filter), filter_(filter) {}
        STDMETHODIMP Reserved1() override { return E_NOTIMPL; }
        STDMETHODIMP Reserved2() override { return E_NOTIMPL; }
        STDMETHODIMP FetchPadInfo(PadInfo** record) override;

    private:
        ScriptedFilter& filter_;
    };
    class WindowFace final : public dshow::VideoWindowFace {
    public:
        explicit WindowFace(ScriptedFilter& filter) : VideoWindowFace(filter), filter_(filter) {}
        STDMETHODIMP put_Visible(LONG visible) override;
        STDMETHODIMP put_AutoShow(LONG show) override;

    private:
        ScriptedFilter& filter_;
    };
    class SeekingFace final : public dshow::MediaSeekingFace {
    public:
        using MediaSeekingFace::MediaSeekingFace;
        STDMETHODIMP IsFormatSupported(const GUID*) override { return S_OK; }
    };
    class FlagsFace final : public dshow::Face<IAMFilterMiscFlags> {
    public:
        using Face::Face;
        STDMETHODIMP_(ULONG) GetMiscFlags() override { return AM_FILTER_MISC_FLAGS_IS_RENDERER; }
    };
    class ClockFace final : public dshow::Face<IReferenceClock> {
    public:
        using Face::Face;
        STDMETHODIMP GetTime(REFERENCE_TIME* time) override {
            *time = 10000000;
            return S_OK;
        }
        STDMETHODIMP AdviseTime(REFERENCE_TIME, REFERENCE_TIME, HEVENT, DWORD_PTR*) override { return E_NOTIMPL; }
        STDMETHODIMP AdvisePeriodic(REFERENCE_TIME, REFERENCE_TIME, HSEMAPHORE, DWORD_PTR*) override {
            return E_NOTIMPL;
        }
        STDMETHODIMP Unadvise(DWORD_PTR) override { return E_NOTIMPL; }
    };

    Stage& stage_;
    const Kind kind_;
    REFERENCE_TIME started_ = 0;
    CaptureFace capture_{*this};
    StreamFace stream_{*this};
    FileFace file_{*this};
    HoldFace hold_{*this};
    PadFace pad_{*this};
    WindowFace window_{*this};
    SeekingFace seeking_{*this};
    FlagsFace flags_{*this};
    ClockFace clock_{*this};
};

} // namespace scripted
