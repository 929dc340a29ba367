// "MES VIDRenderer Filter": shows each picture when its time has come.
//
// The first picture after a start or a flush is shown as it comes, so that the viewer sees something while the sound is
// still held back; from then on the sound's clock decides. Without sound the pictures keep their own distances. When several are
// due only the latest is shown.
#pragma once

#include "graph/DMBFilterIds.h"
#include "host/ce/Clock.h"
#include "host/dshow/Forwarders.h"
#include "host/filters/Outputs.h"
#include "host/filters/PresentationClock.h"
#include "host/filters/Samples.h"

#include <atomic>
#include <deque>
#include <mutex>
#include <optional>
#include <thread>

namespace filters {

class VideoRenderer final : public dshow::FilterBase, private SampleReceiver<PictureSample> {
public:
    VideoRenderer(ce::Clock& clock, const Outputs& outputs);

protected:
    ~VideoRenderer() override;
    HRESULT OnPause() override;
    HRESULT OnRun(REFERENCE_TIME start) override;
    HRESULT OnStop() override;
    void* FindInterface(REFIID iid) override;

private:
    HRESULT OnSample(const PictureSample& picture) override;
    void OnEndOfStream() override;
    void OnBeginFlush() override;
    void OnEndFlush() override;
    void OnNewSegment(Ticks start) override;

    void StopWorker();
    void Work();
    // Shows what is due; returns when to look again.
    [[nodiscard]] ce::Millis Present();
    [[nodiscard]] ce::Millis DueIn(Ticks time);
    void Show(const PictureSample& picture);
    void ForgetQueue();
    [[nodiscard]] bool HasRoom() const;

    class HoldFace final : public dshow::Face<IVideoHoldControl> {
    public:
        explicit HoldFace(VideoRenderer& owner) : Face(owner), owner_(owner) {}
        STDMETHODIMP Reserved1() override { return E_NOTIMPL; }
        STDMETHODIMP Reserved2() override { return E_NOTIMPL; }
        STDMETHODIMP Reserved3() override { return E_NOTIMPL; }
        STDMETHODIMP Reserved4() override { return E_NOTIMPL; }
        STDMETHODIMP Reserved5() override { return E_NOTIMPL; }
        STDMETHODIMP Reserved6() override { return E_NOTIMPL; }
        STDMETHODIMP Reserved7() override { return E_NOTIMPL; }
        STDMETHODIMP Reserved8() override { return E_NOTIMPL; }
        STDMETHODIMP ResumeVideo() override;
        STDMETHODIMP HoldVideo() override;

    private:
        VideoRenderer& owner_;
    };
    class FlagsFace final : public dshow::Face<IAMFilterMiscFlags> {
    public:
        using Face::Face;
        STDMETHODIMP_(ULONG) GetMiscFlags() override { return AM_FILTER_MISC_FLAGS_IS_RENDERER; }
    };
    // The window's wishes about the picture's place.
    class WindowFace final : public dshow::VideoWindowFace {
    public:
        explicit WindowFace(VideoRenderer& owner) : VideoWindowFace(owner), owner_(owner) {}
        STDMETHODIMP put_AutoShow(LONG show) override;
        STDMETHODIMP get_AutoShow(LONG* show) override;
        STDMETHODIMP put_Visible(LONG visible) override;
        STDMETHODIMP get_Visible(LONG* visible) override;
        STDMETHODIMP put_Owner(OAHWND owner) override;
        STDMETHODIMP get_Owner(OAHWND* owner) override;
        STDMETHODIMP put_MessageDrain(OAHWND drain) override;
        STDMETHODIMP get_MessageDrain(OAHWND* drain) override;
        STDMETHODIMP SetWindowPosition(LONG left, LONG top, LONG width, LONG height) override;
        STDMETHODIMP GetWindowPosition(LONG* left, LONG* top, LONG* width, LONG* height) override;

    private:
        void Place();
        VideoRenderer& owner_;
        std::mutex guard_;
        RECT place_{};
        LONG visible_ = OATRUE;
        LONG autoShow_ = OATRUE;
        OAHWND window_ = 0;
        OAHWND drain_ = 0;
    };

    ce::Clock& clock_;
    const Outputs outputs_;
    HoldFace hold_{*this};
    FlagsFace flags_{*this};
    WindowFace window_{*this};

    ce::Signal room_; // for the streaming thread
    ce::Signal wake_; // for the worker
    std::thread worker_;
    std::atomic<bool> accepting_{false};
    std::atomic<bool> flushing_{false};
    std::atomic<bool> running_{false};
    std::atomic<bool> quit_{false};
    std::atomic<bool> held_{false};

    std::mutex guard_; // of all below
    std::deque<PictureSample> queue_;
    std::size_t queuedBytes_ = 0;
    bool ended_ = false;
    bool endReported_ = false;
    bool anyShown_ = false;     // since the start
    bool previewShown_ = false; // since the start or the flush
    std::optional<Ticks> segment_;
    Ticks lastShown_ = 0;
    Ticks distance_ = 0; // between the last two pictures
    // Without a clock to follow: this picture was due then.
    std::optional<Ticks> freeTime_;
    ce::Millis freeSince_ = 0;
};

} // namespace filters
