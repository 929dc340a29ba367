#include "host/filters/FileFeed.h"

#include <algorithm>
#include <utility>

namespace filters {

namespace {

constexpr std::size_t kReadBytes = 32 * 1024;
// A random access point comes at least every two seconds; decoding begins before the moment that is wanted.
constexpr Ticks kPreroll = 5 * kTicksPerSecond / 2;
constexpr ce::Millis kDrainPollMs = 20;

} // namespace

FileFeed::FileFeed(FeedHost host, const WString& path)
    : Feed(std::move(host)), opened_(recording_.Open(path.c_str())), reception_(host_.status) {}

// --- the window's thread

void FileFeed::Position(std::uint64_t& now, std::int64_t& whole) {
    now = static_cast<std::uint64_t>(PresentedTime() / kTicksPerMs);
    whole = recording_.Duration() / kTicksPerMs;
}

Ticks FileFeed::PresentedTime() {
    const auto heard = host_.presented();
    const std::scoped_lock lock(guard_);
    if (seek_)
        return *seek_;
    if (heard && origin_)
        shown_ = std::clamp<Ticks>(*heard - *origin_, 0, std::max<Ticks>(recording_.Duration(), 0));
    return shown_;
}

HRESULT FileFeed::Seek(std::int64_t milliseconds) {
    if (!opened_ || recording_.Duration() <= 0)
        return E_FAIL;
    const Ticks last = recording_.Duration() / kTicksPerMs;
    if (IsStarted())
        BeginFlush();
    {
        const std::scoped_lock lock(guard_);
        seek_ = std::clamp<Ticks>(milliseconds, 0, last) * kTicksPerMs;
        shown_ = *seek_;
        resumeAt_.reset();
    }
    wake_.Raise();
    return S_OK;
}

// A stop follows a pause; the next run begins with what was heard last.
void FileFeed::OnPause() {
    const auto heard = host_.presented();
    const std::scoped_lock lock(guard_);
    if (heard && origin_ && !seek_)
        resumeAt_ = std::max<Ticks>(*heard - *origin_, 0);
}

// --- the worker

void FileFeed::Work() {
    host_.stream.BeginRun(false);
    reception_.Report(ReceptionState::kWaiting);
    if (!opened_) {
        reception_.Report(ReceptionState::kNoFile);
        host_.stream.End();
        while (!quit_)
            (void)wake_.Wait();
        reception_.Report(ReceptionState::kIdle);
        return;
    }
    {
        // A run after a stop: from the beginning when the file had ended, at once further on after a change of the sound,
        // otherwise where it was.
        const std::scoped_lock lock(guard_);
        if (started_ && !seek_ && ended_)
            seek_ = 0;
        else if (started_ && !seek_ && resumeAt_ && !std::exchange(changeWaits_, false))
            seek_ = resumeAt_;
        resumeAt_.reset();
    }
    started_ = true;
    changeWaits_ = false;
    lossTold_ = false;
    while (!quit_) {
        if (const auto target = TakeSeek())
            MoveTo(*target);
        bool ended = false;
        {
            const std::scoped_lock lock(guard_);
            ended = ended_;
        }
        if (paused_ || ended || host_.stream.WaitsForAudio())
            (void)wake_.Wait();
        else
            Step();
    }
    reception_.Report(ReceptionState::kIdle);
}

std::optional<Ticks> FileFeed::TakeSeek() {
    const std::scoped_lock lock(guard_);
    return std::exchange(seek_, std::nullopt);
}

void FileFeed::MoveTo(Ticks time) {
    BeginFlush();
    const std::uint64_t byte = recording_.ByteOf(time - kPreroll);
    recording_.MoveTo(byte);
    byteMoved_ = byte;
    sync_.Reset();
    packets_.clear();
    at_ = 0;
    host_.stream.Restart();
    host_.stream.SetDropping(true); // until it is known where we are
    segment_ = time;
    {
        const std::scoped_lock lock(guard_);
        origin_.reset();
        ended_ = false;
    }
    EndFlush();
}

// One packet, or the next stretch of the file.
void FileFeed::Step() {
    if (at_ < packets_.size()) {
        const ByteSpan packet = ByteSpan(packets_).subspan(at_, wire::kTsPacketSize);
        at_ += wire::kTsPacketSize;
        host_.stream.Push(packet);
        (void)host_.stream.TakeClockLost(); // a file cannot be received anew
        SettleOrigin();
        reception_.Report(host_.stream.State(), false);
        if (host_.stream.TakeAudioChange())
            ReportAudioChange();
        return;
    }
    packets_.clear();
    at_ = 0;
    const auto take = [this](ByteSpan packet) { packets_.insert(packets_.end(), packet.begin(), packet.end()); };
    const Bytes bytes = recording_.Read(kReadBytes);
    sync_.Push(bytes, take);
    if (bytes.size() == kReadBytes)
        return;
    if (recording_.IsLost() && !std::exchange(lossTold_, true) && host_.status != nullptr)
        host_.status->OnFileLost();
    sync_.Finish(take);
    if (!packets_.empty())
        return; // the end comes at the next reading
    host_.stream.End();
    if (host_.stream.State() == StreamState::kUnknown)
        reception_.Report(ReceptionState::kNoFile);
    const std::scoped_lock lock(guard_);
    ended_ = true;
}

// The first clock reference after a move tells where in the file we are.
void FileFeed::SettleOrigin() {
    const auto now = host_.stream.Demux().Now();
    if (!now)
        return;
    {
        const std::scoped_lock lock(guard_);
        if (origin_)
            return;
        origin_ = *now - recording_.TimeOf(static_cast<std::uint64_t>(*now) * 300, byteMoved_);
    }
    if (segment_) {
        const Ticks start = *origin_ + *std::exchange(segment_, std::nullopt);
        host_.picture.DeliverSegment(start);
        host_.sound.DeliverSegment(start);
    }
    host_.stream.SetDropping(false);
}

// First what came before the change is heard to its end.
void FileFeed::ReportAudioChange() {
    changeWaits_ = true;
    const auto end = host_.stream.SoundEnd();
    while (!quit_ && end) {
        const auto heard = host_.presented();
        if (paused_ || !heard || *heard >= *end)
            break;
        (void)wake_.Wait(host_.clock.Now() + kDrainPollMs);
        const std::scoped_lock lock(guard_);
        if (seek_)
            return;
    }
    if (!quit_)
        host_.notify(IDMB_EVENT_AUDIO_CHANGE);
}

} // namespace filters
