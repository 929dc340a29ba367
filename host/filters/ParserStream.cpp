#include "host/filters/ParserStream.h"

#include <utility>

namespace filters {

namespace {

DMBAudioInfo InfoOf(const AudioFormat* format) {
    return format == nullptr ? DMBAudioInfo{0, 0} : DMBAudioInfo{format->sampleRate, format->channels};
}

// Can the decoder go on without the graph being joined anew?
bool IsSameSound(const AudioFormat& a, const AudioFormat& b) {
    return a.codec == b.codec && a.sampleRate == b.sampleRate && a.channels == b.channels;
}

} // namespace

ParserStream::ParserStream(SampleOutput<PictureUnit>& picture, SampleOutput<SoundUnit>& sound)
    : picture_(picture), sound_(sound) {}

void ParserStream::BeginRun(bool live) {
    live_ = live;
    dropping_ = false;
    clockLost_ = audioChange_ = pictureCame_ = soundCame_ = false;
    {
        const std::scoped_lock lock(guard_);
        if (announced_)
            format_ = std::exchange(announced_, nullptr);
    }
    if (known_)
        EndMissing();
}

void ParserStream::End() {
    demultiplexer_.Finish();
    picture_.DeliverEnd();
    sound_.DeliverEnd();
}

void ParserStream::SetDropping(bool dropping) {
    dropping_ = dropping;
}

void ParserStream::Restart() {
    demultiplexer_.Restart();
    soundEnd_.reset();
}

void ParserStream::MarkGap() {
    demultiplexer_.MarkGap();
    pictureGap_ = soundGap_ = true;
}

StreamState ParserStream::State() const {
    if (demultiplexer_.IsScrambled())
        return StreamState::kScrambled;
    if (known_ ? !hasVideo_ && !hasAudio_ : demultiplexer_.Tables().IsForeign())
        return StreamState::kForeign;
    if (hasVideo_ ? !pictureCame_ : !soundCame_)
        return StreamState::kUnknown;
    return hasVideo_ ? StreamState::kPicture : StreamState::kSound;
}

bool ParserStream::WaitsForAudio() const {
    const std::scoped_lock lock(guard_);
    return announced_ != nullptr;
}

std::optional<Ticks> ParserStream::LastTime() const {
    const std::scoped_lock lock(guard_);
    return lastTime_;
}

DMBAudioInfo ParserStream::AnnouncedAudio() const {
    const std::scoped_lock lock(guard_);
    return InfoOf(announced_ ? announced_.get() : format_.get());
}

HRESULT ParserStream::AdoptAudio(const DMBAudioInfo& info) {
    const std::scoped_lock lock(guard_);
    const DMBAudioInfo wanted = InfoOf(announced_ ? announced_.get() : format_.get());
    if (info.value0 != wanted.value0 || info.value1 != wanted.value1)
        return E_INVALIDARG;
    if (announced_)
        format_ = std::exchange(announced_, nullptr);
    return S_OK;
}

// --- what the demultiplexer finds

void ParserStream::OnStreams(const VideoFormat* video, const AudioFormat* audio) {
    known_ = true;
    hasVideo_ = video != nullptr;
    hasAudio_ = audio != nullptr;
    if (audio != nullptr && audio->sampleRate > 0) {
        const std::scoped_lock lock(guard_);
        const auto next = std::make_shared<const AudioFormat>(*audio);
        if (!format_ || IsSameSound(*format_, *next)) {
            if (!format_ || *format_ != *next)
                format_ = next;
            announced_.reset();
        } else if (!announced_ || *announced_ != *next) {
            announced_ = next;
            audioChange_ = true;
        }
    }
    EndMissing();
}

// A pin without a stream has come to its end; the picture then keeps its own time. A live service may still grow one.
void ParserStream::EndMissing() {
    if (!hasAudio_)
        sound_.DeliverEnd();
    if (!hasVideo_ && !live_)
        picture_.DeliverEnd();
}

void ParserStream::OnVideo(AccessUnit unit) {
    if (dropping_) {
        pictureGap_ = true;
        return;
    }
    pictureCame_ = true;
    unit.discontinuity |= std::exchange(pictureGap_, false);
    unit.live = live_;
    const Ticks time = unit.time;
    if (picture_.Deliver({std::move(unit)}) != S_OK)
        pictureGap_ = true;
    const std::scoped_lock lock(guard_);
    lastTime_ = time;
}

void ParserStream::OnAudio(AccessUnit unit) {
    SoundUnit sample;
    {
        const std::scoped_lock lock(guard_);
        if (dropping_ || announced_ || !format_) {
            soundGap_ = true;
            return;
        }
        sample.format = format_;
        lastTime_ = unit.time;
    }
    soundCame_ = true;
    soundEnd_ = unit.time + sample.format->UnitTicks();
    unit.discontinuity |= std::exchange(soundGap_, false);
    unit.live = live_;
    sample.unit = std::move(unit);
    if (sound_.Deliver(sample) != S_OK)
        soundGap_ = true;
}

} // namespace filters
