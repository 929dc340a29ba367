#include "host/filters/AudioRenderer.h"

#include "graph/DMBFilterIds.h"

#include <array>

namespace filters {

namespace {

constexpr ce::Millis kPullMs = 10;
constexpr std::size_t kPullSamples = kDeviceRate / 1000 * kPullMs * kDeviceChannels;
constexpr ce::Millis kWatchMs = 20;
// A device that pulls nothing for so long is gone.
constexpr ce::Millis kDeviceGone = 500;
// How often a device is looked for while there is none.
constexpr ce::Millis kLookAgain = 2000;
// After a longer standstill of the whole program the lost time is not made up for.
constexpr ce::Millis kLargestCatchUp = 500;

} // namespace

AudioRenderer::AudioRenderer(ce::Clock& clock, const Outputs& outputs, std::shared_ptr<LiveHold> hold)
    : FilterBase(CLSID_AudioRender), clock_(clock), outputs_(outputs), playout_(clock, std::move(hold)), room_(clock),
      wake_(clock) {
    AddPin(std::make_unique<SampleInput<SoundBlock>>(*this, kAudioRendererPin,
                                                     dshow::MediaType(MEDIATYPE_Audio, kSubtypePcm),
                                                     static_cast<SampleReceiver<SoundBlock>&>(*this)));
}

AudioRenderer::~AudioRenderer() {
    StopPulling();
}

void* AudioRenderer::FindInterface(REFIID iid) {
    if (iid == IID_IReferenceClock)
        return static_cast<IReferenceClock*>(&clockFace_);
    if (iid == kPresentationClockId)
        return static_cast<IPresentationClock*>(&streamClock_);
    if (iid == IID_IBasicAudio)
        return static_cast<IBasicAudio*>(&volume_);
    if (iid == IID_IAMFilterMiscFlags)
        return static_cast<IAMFilterMiscFlags*>(&flags_);
    return nullptr;
}

// --- states

HRESULT AudioRenderer::OnPause() {
    if (State() == State_Stopped) {
        playout_.Flush();
        endReported_ = false;
        accepting_ = true;
    } else {
        StopPulling();
    }
    return S_OK;
}

HRESULT AudioRenderer::OnRun(REFERENCE_TIME) {
    StartPulling();
    return S_OK;
}

HRESULT AudioRenderer::OnStop() {
    accepting_ = false;
    room_.Raise();
    StopPulling();
    playout_.Flush();
    return S_OK;
}

void AudioRenderer::StartPulling() {
    quit_ = false;
    StartDevice();
    worker_ = clock_.StartWorker([this] { Work(); });
}

void AudioRenderer::StartDevice() {
    deviceRuns_ = outputs_.sound != nullptr && outputs_.sound->Start(source_);
    playout_.SetLatency(deviceRuns_ ? outputs_.sound->LatencyMs() : 0);
}

void AudioRenderer::StopPulling() {
    if (!worker_.joinable())
        return;
    quit_ = true;
    wake_.Raise();
    worker_.join();
    if (deviceRuns_.exchange(false))
        outputs_.sound->Stop();
}

// --- the worker: pulls when no device does, watches the device otherwise

void AudioRenderer::Work() {
    ce::Millis next = clock_.Now();
    ce::Millis lastPull = clock_.Now();
    ce::Millis look = clock_.Now() + kLookAgain;
    std::uint64_t pulled = playout_.PulledFrames();
    while (!quit_) {
        if (!deviceRuns_ && outputs_.sound != nullptr && clock_.Now() >= look) {
            StartDevice();
            look = clock_.Now() + kLookAgain;
            lastPull = clock_.Now();
        }
        if (!deviceRuns_) {
            PullHere(next);
        } else if (playout_.PulledFrames() != pulled) {
            pulled = playout_.PulledFrames();
            lastPull = clock_.Now();
            next = clock_.Now() + kWatchMs;
        } else if (clock_.Now() - lastPull >= kDeviceGone) {
            outputs_.sound->Stop();
            deviceRuns_ = false;
            playout_.SetLatency(0);
            next = clock_.Now();
            look = next + kLookAgain;
            continue;
        } else {
            next = clock_.Now() + kWatchMs;
        }
        ReportEnd();
        (void)wake_.Wait(next);
    }
}

void AudioRenderer::PullHere(ce::Millis& next) {
    if (clock_.Now() - next > kLargestCatchUp)
        next = clock_.Now();
    for (; next <= clock_.Now() && !quit_; next += kPullMs) {
        std::array<std::int16_t, kPullSamples> frames{};
        source_.Pull(frames);
    }
}

void AudioRenderer::ReportEnd() {
    if (playout_.IsOver() && !endReported_.exchange(true))
        NotifyEvent(EC_COMPLETE, S_OK, 0);
}

void AudioRenderer::Source::Pull(std::span<std::int16_t> frames) {
    owner_.playout_.Pull(frames);
    if (owner_.outputs_.tap != nullptr)
        owner_.outputs_.tap->OnSound(frames);
    owner_.room_.Raise();
}

// --- what comes in

HRESULT AudioRenderer::OnSample(const SoundBlock& block) {
    while (accepting_ && !flushing_) {
        if (playout_.Push(block))
            return S_OK;
        (void)room_.Wait();
    }
    return S_FALSE;
}

void AudioRenderer::OnEndOfStream() {
    if (!accepting_ || flushing_)
        return;
    playout_.End();
    wake_.Raise();
}

void AudioRenderer::OnBeginFlush() {
    flushing_ = true;
    playout_.Flush();
    room_.Raise();
}

void AudioRenderer::OnEndFlush() {
    playout_.Flush();
    endReported_ = false;
    flushing_ = false;
}

// --- faces

STDMETHODIMP AudioRenderer::ClockFace::GetTime(REFERENCE_TIME* time) {
    if (time == nullptr)
        return E_POINTER;
    *time = owner_.playout_.DeviceTime();
    return S_OK;
}

STDMETHODIMP AudioRenderer::VolumeFace::put_Volume(LONG volume) {
    if (volume < -10000 || volume > 0)
        return E_INVALIDARG;
    volume_ = volume;
    owner_.playout_.SetVolume(volume);
    return S_OK;
}

STDMETHODIMP AudioRenderer::VolumeFace::get_Volume(LONG* volume) {
    if (volume == nullptr)
        return E_POINTER;
    *volume = volume_;
    return S_OK;
}

} // namespace filters
