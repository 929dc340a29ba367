#include "host/filters/VideoRenderer.h"

#include <algorithm>

namespace filters {

namespace {

// Room for what the sound's queue may be behind, and no more memory than this.
constexpr std::size_t kRoomPictures = 120;
constexpr std::size_t kRoomBytes = 96u << 20;
constexpr ce::Millis kPollMs = 5;
// A picture this far away on the line belongs to a time that the clock will never show.
constexpr Ticks kUnreachable = 20 * kTicksPerSecond;

} // namespace

VideoRenderer::VideoRenderer(ce::Clock& clock, const Outputs& outputs)
    : FilterBase(CLSID_DMBVideoRenderer), clock_(clock), outputs_(outputs), room_(clock), wake_(clock) {
    AddPin(std::make_unique<SampleInput<PictureSample>>(*this, kInPin, dshow::MediaType(MEDIATYPE_Video, kSubtypeI420),
                                                        static_cast<SampleReceiver<PictureSample>&>(*this)));
}

VideoRenderer::~VideoRenderer() {
    StopWorker();
    if (outputs_.video != nullptr)
        outputs_.video->Clear();
}

void* VideoRenderer::FindInterface(REFIID iid) {
    if (iid == IID_IVideoHoldControl)
        return static_cast<IVideoHoldControl*>(&hold_);
    if (iid == IID_IVideoWindow)
        return static_cast<IVideoWindow*>(&window_);
    if (iid == IID_IAMFilterMiscFlags)
        return static_cast<IAMFilterMiscFlags*>(&flags_);
    return nullptr;
}

// --- states

HRESULT VideoRenderer::OnPause() {
    running_ = false;
    if (State() != State_Stopped)
        return S_OK;
    {
        const std::scoped_lock lock(guard_);
        ForgetQueue();
        anyShown_ = false;
    }
    quit_ = false;
    accepting_ = true;
    worker_ = clock_.StartWorker([this] { Work(); });
    return S_OK;
}

HRESULT VideoRenderer::OnRun(REFERENCE_TIME) {
    {
        const std::scoped_lock lock(guard_);
        freeTime_.reset();
    }
    running_ = true;
    wake_.Raise();
    return S_OK;
}

HRESULT VideoRenderer::OnStop() {
    running_ = false;
    accepting_ = false;
    room_.Raise();
    StopWorker();
    const std::scoped_lock lock(guard_);
    ForgetQueue();
    return S_OK;
}

void VideoRenderer::StopWorker() {
    if (!worker_.joinable())
        return;
    quit_ = true;
    wake_.Raise();
    worker_.join();
}

void VideoRenderer::ForgetQueue() {
    queue_.clear();
    queuedBytes_ = 0;
    ended_ = endReported_ = previewShown_ = false;
    segment_.reset();
    freeTime_.reset();
    distance_ = 0;
}

// --- what comes in

bool VideoRenderer::HasRoom() const {
    return queue_.empty() || (queue_.size() < kRoomPictures && queuedBytes_ < kRoomBytes);
}

HRESULT VideoRenderer::OnSample(const PictureSample& picture) {
    while (accepting_ && !flushing_) {
        {
            const std::scoped_lock lock(guard_);
            if (segment_ && picture->time < *segment_)
                return S_OK; // decoded for the sake of those that follow
            if (HasRoom()) {
                queue_.push_back(picture);
                queuedBytes_ += picture->i420.size();
                ended_ = false;
                break;
            }
        }
        (void)room_.Wait();
    }
    wake_.Raise();
    return accepting_ && !flushing_ ? S_OK : S_FALSE;
}

void VideoRenderer::OnEndOfStream() {
    if (!accepting_ || flushing_)
        return;
    {
        const std::scoped_lock lock(guard_);
        ended_ = true;
    }
    wake_.Raise();
}

void VideoRenderer::OnBeginFlush() {
    flushing_ = true;
    {
        const std::scoped_lock lock(guard_);
        ForgetQueue();
    }
    room_.Raise();
}

void VideoRenderer::OnEndFlush() {
    {
        const std::scoped_lock lock(guard_);
        ForgetQueue();
    }
    flushing_ = false;
    wake_.Raise();
}

void VideoRenderer::OnNewSegment(Ticks start) {
    const std::scoped_lock lock(guard_);
    segment_ = start;
}

// --- the worker

void VideoRenderer::Work() {
    while (!quit_) {
        const ce::Millis next = Present();
        if (next > clock_.Now())
            (void)wake_.Wait(next);
    }
}

ce::Millis VideoRenderer::Present() {
    std::unique_lock lock(guard_);
    if (flushing_)
        return ce::kForever;
    if (queue_.empty()) {
        if (!ended_ || endReported_ || !running_)
            return ce::kForever;
        // The last picture is seen for as long as those before it.
        const ce::Millis wait = anyShown_ ? DueIn(lastShown_ + distance_) : 0;
        if (wait > 0)
            return clock_.Now() + wait;
        endReported_ = true;
        lock.unlock();
        NotifyEvent(EC_COMPLETE, S_OK, 0);
        return clock_.Now();
    }
    if (!previewShown_) {
        previewShown_ = true;
        const PictureSample picture = queue_.front();
        const bool first = !std::exchange(anyShown_, true);
        lastShown_ = picture->time;
        lock.unlock();
        Show(picture);
        if (first)
            NotifyEvent(EC_VIDEOFRAMEREADY, 0, 0);
        return clock_.Now();
    }
    if (!running_)
        return ce::kForever;
    ce::Millis wait = DueIn(queue_.front()->time);
    if (wait > 0)
        return clock_.Now() + wait;
    PictureSample picture;
    do { // of several that are due, the latest
        picture = queue_.front();
        queue_.pop_front();
        queuedBytes_ -= picture->i420.size();
    } while (!queue_.empty() && DueIn(queue_.front()->time) <= 0);
    if (picture->time > lastShown_)
        distance_ = std::min(picture->time - lastShown_, kTicksPerSecond);
    lastShown_ = picture->time;
    lock.unlock();
    room_.Raise();
    Show(picture);
    return clock_.Now();
}

// Milliseconds until a place on the line is reached; with the lock held.
ce::Millis VideoRenderer::DueIn(Ticks time) {
    Ticks now = 0;
    ClockState state = ClockState::kNone;
    if (const auto clock = dshow::QueryFor<IPresentationClock>(Clock().Get(), kPresentationClockId))
        state = clock->StreamTime(&now);
    if (state == ClockState::kPending)
        return kPollMs;
    if (state == ClockState::kNone) {
        if (!freeTime_) {
            freeTime_ = time;
            freeSince_ = clock_.Now();
        }
        now = *freeTime_ + (clock_.Now() - freeSince_) * kTicksPerMs;
    }
    const Ticks left = time - now;
    if (left <= 0 || left > kUnreachable)
        return 0;
    // The next pull may move the sound's clock anyhow, so do not sleep far ahead.
    return std::min<ce::Millis>((left + kTicksPerMs - 1) / kTicksPerMs, 50);
}

void VideoRenderer::Show(const PictureSample& picture) {
    if (outputs_.video != nullptr && !held_)
        outputs_.video->Show(picture);
}

// --- faces

STDMETHODIMP VideoRenderer::HoldFace::HoldVideo() {
    owner_.held_ = true;
    return S_OK;
}

STDMETHODIMP VideoRenderer::HoldFace::ResumeVideo() {
    owner_.held_ = false;
    return S_OK;
}

STDMETHODIMP VideoRenderer::WindowFace::put_AutoShow(LONG show) {
    const std::scoped_lock lock(guard_);
    autoShow_ = show;
    return S_OK;
}

STDMETHODIMP VideoRenderer::WindowFace::get_AutoShow(LONG* show) {
    if (show == nullptr)
        return E_POINTER;
    const std::scoped_lock lock(guard_);
    *show = autoShow_;
    return S_OK;
}

STDMETHODIMP VideoRenderer::WindowFace::put_Visible(LONG visible) {
    {
        const std::scoped_lock lock(guard_);
        visible_ = visible;
    }
    Place();
    return S_OK;
}

STDMETHODIMP VideoRenderer::WindowFace::get_Visible(LONG* visible) {
    if (visible == nullptr)
        return E_POINTER;
    const std::scoped_lock lock(guard_);
    *visible = visible_;
    return S_OK;
}

STDMETHODIMP VideoRenderer::WindowFace::put_Owner(OAHWND owner) {
    const std::scoped_lock lock(guard_);
    window_ = owner;
    return S_OK;
}

STDMETHODIMP VideoRenderer::WindowFace::get_Owner(OAHWND* owner) {
    if (owner == nullptr)
        return E_POINTER;
    const std::scoped_lock lock(guard_);
    *owner = window_;
    return S_OK;
}

STDMETHODIMP VideoRenderer::WindowFace::put_MessageDrain(OAHWND drain) {
    const std::scoped_lock lock(guard_);
    drain_ = drain;
    return S_OK;
}

STDMETHODIMP VideoRenderer::WindowFace::get_MessageDrain(OAHWND* drain) {
    if (drain == nullptr)
        return E_POINTER;
    const std::scoped_lock lock(guard_);
    *drain = drain_;
    return S_OK;
}

STDMETHODIMP VideoRenderer::WindowFace::SetWindowPosition(LONG left, LONG top, LONG width, LONG height) {
    {
        const std::scoped_lock lock(guard_);
        place_ = {left, top, left + width, top + height};
    }
    Place();
    return S_OK;
}

STDMETHODIMP VideoRenderer::WindowFace::GetWindowPosition(LONG* left, LONG* top, LONG* width, LONG* height) {
    if (left == nullptr || top == nullptr || width == nullptr || height == nullptr)
        return E_POINTER;
    const std::scoped_lock lock(guard_);
    *left = place_.left;
    *top = place_.top;
    *width = place_.right - place_.left;
    *height = place_.bottom - place_.top;
    return S_OK;
}

void VideoRenderer::WindowFace::Place() {
    RECT place{};
    bool visible = false;
    {
        const std::scoped_lock lock(guard_);
        place = place_;
        visible = visible_ != OAFALSE;
    }
    if (owner_.outputs_.video != nullptr)
        owner_.outputs_.video->Place(place, visible);
}

} // namespace filters
