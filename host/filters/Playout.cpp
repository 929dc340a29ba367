#include "host/filters/Playout.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace filters {

namespace {

constexpr Ticks kLargestLead = 2 * kTicksPerSecond;
constexpr Ticks kFileStart = 200 * kTicksPerMs;
constexpr Ticks kFileRoom = 2 * kTicksPerSecond;
constexpr Ticks kLiveRoom = 6 * kTicksPerSecond;
// Sound that is off its place by less is played as it comes.
constexpr Ticks kTolerance = 20 * kTicksPerMs;
// After the queue ran dry even a little late is late; this much is rounding.
constexpr Ticks kPunctual = 1 * kTicksPerMs;
constexpr Ticks kLargestGap = 3 * kTicksPerSecond;
// Waiting for a schedule that does not move ends at last.
constexpr ce::Millis kLongestHold = 3000;
constexpr double kRampStep = 1.0 / 240; // 5 ms from silence to full
constexpr double kMarginSmoothing = 1.0 / 256;
constexpr unsigned kMarginSettled = 128; // blocks
constexpr double kDeadZone = 5.0 * kTicksPerMs;
constexpr double kMillionthsPerTick = 10.0 / kTicksPerMs; // 10 for each millisecond off
constexpr int kLargestSpeed = 1000;

std::int16_t Scaled(double value) {
    return static_cast<std::int16_t>(std::lrint(std::clamp(value, -32768.0, 32767.0)));
}

} // namespace

Playout::Playout(ce::Clock& clock, std::shared_ptr<LiveHold> hold) : clock_(clock), hold_(std::move(hold)) {}

Ticks Playout::BufferedTicks() const {
    return static_cast<Ticks>(queuedSamples_ / kDeviceChannels) * kFinePerFrame / kFinePerTick;
}

bool Playout::Push(const SoundBlock& block) {
    const std::scoped_lock work(resampling_);
    std::list<Piece> made;
    {
        const std::scoped_lock lock(guard_);
        if (BufferedTicks() > (block.live ? kLiveRoom : kFileRoom))
            return false;
        if (block.sampleRate <= 0 || block.channels <= 0 || block.samples.empty())
            return true;
        const auto frames = static_cast<std::int64_t>(block.samples.size()) / block.channels;
        if (segment_ && block.time + frames * kTicksPerSecond / block.sampleRate <= *segment_)
            return true;
        if (queue_.empty() && !playing_)
            waitingSince_ = clock_.Now();
        live_ = block.live;
        ended_ = false;
        newestSchedule_ = block.time - std::clamp<Ticks>(block.lead, 0, kLargestLead);
        Steer(block);
        if (!spare_.empty())
            made.splice(made.end(), spare_, spare_.begin());
    }
    if (made.empty())
        made.emplace_back();
    Piece& piece = made.front();
    piece.time = block.time * kFinePerTick;
    piece.done = 0;
    piece.frames.clear();
    resampler_.Push(block.samples, block.sampleRate, block.channels, piece.frames);
    const std::scoped_lock lock(guard_);
    queuedSamples_ += piece.frames.size();
    auto& to = piece.frames.empty() ? spare_ : queue_;
    to.splice(to.end(), made);
    return true;
}

// Keeps the distance to the schedule.
void Playout::Steer(const SoundBlock& block) {
    if (!block.live || !playing_)
        return;
    const double margin = static_cast<double>(newestSchedule_ - PositionAt(clock_.Now()) / kFinePerTick);
    margin_ = marginBlocks_ == 0 ? margin : margin_ + (margin - margin_) * kMarginSmoothing;
    if (++marginBlocks_ < kMarginSettled)
        return;
    const double off = margin_ - static_cast<double>(hold_->Current());
    if (std::abs(off) > kDeadZone || speed_ != 0)
        speed_ = std::clamp(static_cast<int>(off * kMillionthsPerTick), -kLargestSpeed, kLargestSpeed);
    resampler_.SetSpeed(speed_);
}

void Playout::End() {
    const std::scoped_lock lock(guard_);
    ended_ = true;
}

void Playout::Flush() {
    const std::scoped_lock work(resampling_);
    resampler_.Reset();
    const std::scoped_lock lock(guard_);
    spare_.splice(spare_.end(), queue_);
    queuedSamples_ = 0;
    anchored_ = playing_ = ended_ = starved_ = filling_ = false;
    segment_.reset();
    marginBlocks_ = 0;
}

void Playout::SetSegment(Ticks start) {
    const std::scoped_lock lock(guard_);
    segment_ = start;
}

void Playout::SetVolume(int hundredths) {
    const std::scoped_lock lock(guard_);
    gain_ = hundredths <= -10000 ? 0 : std::pow(10.0, std::min(hundredths, 0) / 2000.0);
}

void Playout::SetLatency(int milliseconds) {
    const std::scoped_lock lock(guard_);
    latencyMs_ = milliseconds;
}

bool Playout::IsReady() const {
    if (queue_.empty())
        return false;
    if (ended_)
        return true;
    if (!live_)
        return BufferedTicks() >= kFileStart;
    const Ticks first = queue_.front().time / kFinePerTick;
    return newestSchedule_ - first >= hold_->Current() || clock_.Now() - waitingSince_ >= kLongestHold;
}

void Playout::Pull(std::span<std::int16_t> frames) {
    const std::scoped_lock lock(guard_);
    if (!playing_ && IsReady()) {
        playing_ = anchored_ = true;
        position_ = queue_.front().time;
        marginBlocks_ = 0;
    }
    pullStart_ = position_;
    pullTime_ = clock_.Now();
    pullFrames_ = playing_ ? frames.size() / kDeviceChannels : 0;
    Fill(frames);
    pulled_ += frames.size() / kDeviceChannels;
}

void Playout::Fill(std::span<std::int16_t> out) {
    while (!out.empty()) {
        if (!playing_ || queue_.empty()) {
            starved_ = starved_ || (playing_ && live_ && !ended_);
            out = out.subspan(Silence(out, playing_));
            continue;
        }
        Piece& piece = queue_.front();
        const Fine place = piece.time + static_cast<Fine>(piece.done / kDeviceChannels) * kFinePerFrame;
        const Fine gap = place - position_;
        if (std::exchange(starved_, false) && gap < -kPunctual * kFinePerTick) {
            hold_->Lengthen();
            HoldBackAnew();
            continue;
        }
        // A gap that is filled is filled to its end.
        const bool isNear = filling_ ? gap < kFinePerFrame : std::abs(gap) <= kTolerance * kFinePerTick;
        filling_ = false;
        if (isNear || gap > kLargestGap * kFinePerTick) {
            position_ = place;
            out = out.subspan(Play(piece, out));
        } else if (gap > 0) {
            filling_ = true;
            const auto missing = static_cast<std::size_t>(gap / kFinePerFrame) * kDeviceChannels;
            out = out.subspan(Silence(out.first(std::min(out.size(), missing)), true));
            continue;
        } else if (live_) {
            HoldBackAnew();
            continue;
        } else {
            position_ = place; // a file waits for nobody; the clock goes back to its sound
            continue;
        }
        if (piece.done >= piece.frames.size())
            spare_.splice(spare_.end(), queue_, queue_.begin());
    }
}

void Playout::HoldBackAnew() {
    playing_ = false;
    waitingSince_ = clock_.Now();
}

// Falls from the last sample to silence, then stays there.
std::size_t Playout::Silence(std::span<std::int16_t> out, bool timePasses) {
    for (std::size_t i = 0; i < out.size(); ++i) {
        out[i] = Scaled(last_[i % kDeviceChannels] * ramp_);
        if (i % kDeviceChannels == kDeviceChannels - 1)
            ramp_ = std::max(0.0, ramp_ - kRampStep);
    }
    if (timePasses)
        position_ += static_cast<Fine>(out.size() / kDeviceChannels) * kFinePerFrame;
    return out.size();
}

std::size_t Playout::Play(Piece& piece, std::span<std::int16_t> out) {
    const std::size_t count = std::min(out.size(), piece.frames.size() - piece.done);
    for (std::size_t i = 0; i < count; ++i) {
        const std::int16_t sample = piece.frames[piece.done + i];
        last_[i % kDeviceChannels] = gain_ == 1 ? sample : Scaled(sample * gain_);
        out[i] = ramp_ >= 1 ? last_[i % kDeviceChannels] : Scaled(last_[i % kDeviceChannels] * ramp_);
        if (i % kDeviceChannels == kDeviceChannels - 1)
            ramp_ = std::min(1.0, ramp_ + kRampStep);
    }
    piece.done += count;
    queuedSamples_ -= count;
    position_ += static_cast<Fine>(count / kDeviceChannels) * kFinePerFrame;
    return count;
}

// --- the clock

Playout::Fine Playout::PositionAt(ce::Millis now) const {
    const Fine sinceThen = (now - pullTime_) * kTicksPerMs * kFinePerTick;
    const Fine pulled = static_cast<Fine>(pullFrames_) * kFinePerFrame;
    return pullStart_ + std::min(sinceThen, pulled) - static_cast<Fine>(latencyMs_) * kTicksPerMs * kFinePerTick;
}

ClockState Playout::StreamTime(Ticks& now) const {
    const std::scoped_lock lock(guard_);
    if (!playing_)
        return ended_ && queue_.empty() && !anchored_ ? ClockState::kNone : ClockState::kPending;
    now = PositionAt(clock_.Now()) / kFinePerTick;
    return ClockState::kRunning;
}

std::int64_t Playout::DeviceTime() const {
    const std::scoped_lock lock(guard_);
    return static_cast<std::int64_t>(pulled_) * 10'000'000 / kDeviceRate;
}

bool Playout::IsOver() const {
    const std::scoped_lock lock(guard_);
    return ended_ && queue_.empty();
}

std::uint64_t Playout::PulledFrames() const {
    const std::scoped_lock lock(guard_);
    return pulled_;
}

int Playout::Speed() const {
    const std::scoped_lock lock(guard_);
    return speed_;
}

} // namespace filters
