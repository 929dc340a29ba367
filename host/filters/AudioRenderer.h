// "Audio Renderer": plays the sound and is the graph's clock.
//
// The device pulls; when there is none, or when it falls silent, a worker pulls in its place at the pace of the host's clock, so that
// a graph runs the same without a sound card. Every two seconds it looks whether there is one again. While paused nobody pulls and
// both clocks stand still.
#pragma once

#include "host/dshow/Forwarders.h"
#include "host/filters/Playout.h"
#include "host/filters/Samples.h"

#include <atomic>
#include <thread>

namespace filters {

class AudioRenderer final : public dshow::FilterBase, private SampleReceiver<SoundBlock> {
public:
    // `hold` is shared with whatever plays the same source.
    AudioRenderer(ce::Clock& clock, const Outputs& outputs,
                  std::shared_ptr<LiveHold> hold = std::make_shared<LiveHold>());

    [[nodiscard]] const Playout& Sound() const { return playout_; }

protected:
    ~AudioRenderer() override;
    HRESULT OnPause() override;
    HRESULT OnRun(REFERENCE_TIME start) override;
    HRESULT OnStop() override;
    void* FindInterface(REFIID iid) override;

private:
    HRESULT OnSample(const SoundBlock& block) override;
    void OnEndOfStream() override;
    void OnBeginFlush() override;
    void OnEndFlush() override;
    void OnNewSegment(Ticks start) override { playout_.SetSegment(start); }

    void StartPulling();
    void StartDevice();
    void StopPulling();
    void Work();
    void PullHere(ce::Millis& next);
    void ReportEnd();

    // The playout with the tap behind it.
    class Source final : public SoundSource {
    public:
        explicit Source(AudioRenderer& owner) : owner_(owner) {}
        void Pull(std::span<std::int16_t> frames) override;

    private:
        AudioRenderer& owner_;
    };
    class ClockFace final : public dshow::Face<IReferenceClock> {
    public:
        explicit ClockFace(AudioRenderer& owner) : Face(owner), owner_(owner) {}
        STDMETHODIMP QueryInterface(REFIID iid, void** object) override { return owner_.QueryInterface(iid, object); }
        STDMETHODIMP GetTime(REFERENCE_TIME* time) override;
        STDMETHODIMP AdviseTime(REFERENCE_TIME, REFERENCE_TIME, HEVENT, DWORD_PTR*) override { return E_NOTIMPL; }
        STDMETHODIMP AdvisePeriodic(REFERENCE_TIME, REFERENCE_TIME, HSEMAPHORE, DWORD_PTR*) override {
            return E_NOTIMPL;
        }
        STDMETHODIMP Unadvise(DWORD_PTR) override { return E_NOTIMPL; }

    private:
        AudioRenderer& owner_;
    };
    class StreamClockFace final : public dshow::Face<IPresentationClock> {
    public:
        explicit StreamClockFace(AudioRenderer& owner) : Face(owner), owner_(owner) {}
        ClockState StreamTime(Ticks* now) override { return owner_.playout_.StreamTime(*now); }

    private:
        AudioRenderer& owner_;
    };
    class VolumeFace final : public dshow::BasicAudioFace {
    public:
        explicit VolumeFace(AudioRenderer& owner) : BasicAudioFace(owner), owner_(owner) {}
        STDMETHODIMP put_Volume(LONG volume) override;
        STDMETHODIMP get_Volume(LONG* volume) override;

    private:
        AudioRenderer& owner_;
        std::atomic<LONG> volume_{0};
    };
    class FlagsFace final : public dshow::Face<IAMFilterMiscFlags> {
    public:
        using Face::Face;
        STDMETHODIMP_(ULONG) GetMiscFlags() override { return AM_FILTER_MISC_FLAGS_IS_RENDERER; }
    };

    ce::Clock& clock_;
    const Outputs outputs_;
    Playout playout_;
    Source source_{*this};
    ClockFace clockFace_{*this};
    StreamClockFace streamClock_{*this};
    VolumeFace volume_{*this};
    FlagsFace flags_{*this};

    ce::Signal room_; // for the streaming thread
    ce::Signal wake_; // for the worker
    std::thread worker_;
    std::atomic<bool> accepting_{false}; // between stop and stop
    std::atomic<bool> flushing_{false};
    std::atomic<bool> quit_{false};
    std::atomic<bool> deviceRuns_{false};
    std::atomic<bool> endReported_{false};
};

} // namespace filters
