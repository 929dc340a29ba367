// "MES DMB Parser Filter": the transport stream of a television service, live or from a file, taken apart into picture (pin
// "1") and sound (pin "2").
//
// Positions are milliseconds. Parameter 19 points to {sample rate, channels} of the sound that the stream announces;
// parameter 3 with the same two numbers adopts it.
#pragma once

#include "host/dshow/Forwarders.h"
#include "host/filters/Feed.h"
#include "host/medmb/Broadcast.h"

namespace filters {

class ParserFilter final : public dshow::FilterBase {
public:
    ParserFilter(ce::Clock& clock, const Outputs& outputs, medmb::Broadcast& broadcast);

protected:
    ~ParserFilter() override;
    HRESULT OnPause() override;
    HRESULT OnRun(REFERENCE_TIME start) override;
    HRESULT OnStop() override;
    HRESULT OnGetState(DWORD timeoutMs) override;
    void* FindInterface(REFIID iid) override;

private:
    void MakeFeed();
    [[nodiscard]] std::optional<Ticks> Presented();

    class FileFace final : public dshow::Face<IFileSourceFilter> {
    public:
        explicit FileFace(ParserFilter& owner) : Face(owner), owner_(owner) {}
        STDMETHODIMP Load(LPCOLESTR path, const AM_MEDIA_TYPE* type) override;
        STDMETHODIMP GetCurFile(LPOLESTR* path, AM_MEDIA_TYPE* type) override;

    private:
        ParserFilter& owner_;
    };
    class CaptureFace final : public dshow::Face<IDMBCapture> {
    public:
        explicit CaptureFace(ParserFilter& owner) : Face(owner), owner_(owner) {}
        STDMETHODIMP SetCaptureFileName(const WCHAR* path) override { return owner_.tee_.SetFileName(path); }
        STDMETHODIMP StartCapture() override;
        STDMETHODIMP StopCapture() override { return owner_.tee_.Stop(); }

    private:
        ParserFilter& owner_;
    };
    class StreamFace final : public dshow::Face<IDMBStreamControl> {
    public:
        explicit StreamFace(ParserFilter& owner) : Face(owner), owner_(owner) {}
        STDMETHODIMP SetParam(int id, void* block) override;
        STDMETHODIMP GetParam(int id, void* result) override;
        STDMETHODIMP GetPosition(ULONGLONG* now, LONGLONG* whole) override;
        STDMETHODIMP SetPosition(LONGLONG milliseconds) override;

    private:
        ParserFilter& owner_;
        DMBAudioInfo info_{}; // handed out; written only when asked for
    };
    // The same positions in units of 100 ns, for who asks the graph.
    class SeekingFace final : public dshow::MediaSeekingFace {
    public:
        explicit SeekingFace(ParserFilter& owner) : MediaSeekingFace(owner), owner_(owner) {}
        STDMETHODIMP GetDuration(LONGLONG* duration) override;
        STDMETHODIMP GetCurrentPosition(LONGLONG* current) override;
        STDMETHODIMP SetPositions(LONGLONG* current, DWORD currentFlags, LONGLONG* stop, DWORD stopFlags) override;

    private:
        ParserFilter& owner_;
    };
    class FlagsFace final : public dshow::Face<IAMFilterMiscFlags> {
    public:
        using Face::Face;
        STDMETHODIMP_(ULONG) GetMiscFlags() override { return AM_FILTER_MISC_FLAGS_IS_SOURCE; }
    };

    ce::Clock& clock_;
    const Outputs outputs_;
    medmb::Broadcast& broadcast_;
    FileFace file_{*this};
    CaptureFace capture_{*this};
    StreamFace control_{*this};
    SeekingFace seeking_{*this};
    FlagsFace flags_{*this};
    SampleOutput<PictureUnit>* picture_;
    SampleOutput<SoundUnit>* sound_;
    std::unique_ptr<ParserStream> stream_;
    CaptureTee tee_;
    WString path_; // empty: live
    std::unique_ptr<Feed> feed_;
};

} // namespace filters
