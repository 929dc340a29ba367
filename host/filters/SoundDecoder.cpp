#include "host/filters/SoundDecoder.h"

#include <algorithm>

namespace filters {

namespace {

// Longer holes are left to the renderer.
constexpr Ticks kLongestConcealment = 2 * kTicksPerSecond;
// 10 ms at 48 kHz: as long as the layer II filter needs to forget that it began in the middle.
constexpr std::size_t kRampFrames = 480;

} // namespace

bool SoundDecoder::SetFormat(const AudioFormat& format) {
    format_ = format;
    bsac_.reset();
    mpeg_.reset();
    layerTwo_.reset();
    Flush();
    if (format.codec == AudioCodec::kBsac) {
        if (const auto config = codec::ParseBsacConfig(format.configuration))
            bsac_ = std::make_unique<codec::BsacDecoder>(*config);
    } else if (format.codec == AudioCodec::kAac || format.codec == AudioCodec::kLayerThree) {
        using Kind = MpegSoundDecoder::Kind;
        mpeg_ = std::make_unique<MpegSoundDecoder>(format.codec == AudioCodec::kAac ? Kind::kAac : Kind::kLayerThree,
                                                   format.configuration);
        if (!mpeg_->IsReady())
            mpeg_.reset();
    } else if (format.codec == AudioCodec::kLayerTwo) {
        layerTwo_ = std::make_unique<codec::LayerTwoDecoder>();
    }
    return bsac_ || mpeg_ || layerTwo_;
}

void SoundDecoder::Flush() {
    if (bsac_)
        bsac_->Flush();
    if (mpeg_)
        mpeg_->Flush();
    if (layerTwo_)
        layerTwo_->Flush();
    next_.reset();
    lastFrame_.clear();
    rampUp_ = false;
}

void SoundDecoder::Push(const AccessUnit& unit, const Sink& sink) {
    if (!bsac_ && !mpeg_ && !layerTwo_)
        return;
    if (unit.discontinuity)
        Conceal(unit, sink);
    SoundBlock block;
    block.time = unit.time;
    block.lead = unit.lead;
    block.live = unit.live;
    Decode(unit.bytes, std::move(block), sink);
    next_ = unit.time + format_.UnitTicks();
}

// Fills the hole before a unit with as many units as would have been there.
void SoundDecoder::Conceal(const AccessUnit& unit, const Sink& sink) {
    const Ticks each = format_.UnitTicks();
    if (!next_ || each <= 0)
        return;
    SoundBlock block;
    block.lead = unit.lead;
    block.live = unit.live;
    block.time = *next_;
    const Ticks hole = unit.time - *next_;
    if (hole > kLongestConcealment) {
        EmitSilence(std::move(block), sink);
        return;
    }
    for (Ticks count = (hole + each / 2) / each; count > 0; --count) {
        Decode({}, block, sink);
        block.time += each;
    }
}

// `block` brings the times.
void SoundDecoder::Decode(ByteSpan bytes, SoundBlock block, const Sink& sink) {
    if (bsac_) {
        DecodeBsac(bytes, block, sink);
        return;
    }
    bool decoded = false;
    const auto take = [&](auto& samples) {
        block.samples = std::move(samples.interleaved);
        block.sampleRate = samples.sampleRate;
        block.channels = samples.channels;
    };
    if (mpeg_ && !bytes.empty()) {
        MpegSamples samples;
        decoded = mpeg_->Decode(bytes, samples) && !samples.interleaved.empty();
        take(samples);
    } else if (layerTwo_ && !bytes.empty()) {
        codec::LayerTwoSamples samples;
        if (rampUp_)
            layerTwo_->Flush(); // what its filter remembers does not belong in front of this frame
        decoded = layerTwo_->Decode(bytes, samples) && !samples.interleaved.empty();
        take(samples);
    }
    if (!decoded) {
        EmitSilence(std::move(block), sink);
        return;
    }
    // Layer II tells its format in each frame, and AAC may have more in it than its configuration says.
    format_.sampleRate = block.sampleRate;
    format_.channels = block.channels;
    format_.samplesPerUnit = static_cast<int>(block.samples.size()) / block.channels;
    Emit(std::move(block), sink);
}

void SoundDecoder::DecodeBsac(ByteSpan bytes, const SoundBlock& like, const Sink& sink) {
    bsac_->Push(bytes);
    Ticks offset = 0;
    while (const auto decoded = bsac_->Next()) {
        SoundBlock block = like;
        block.samples.assign(decoded->samples.begin(), decoded->samples.end());
        block.sampleRate = format_.sampleRate;
        block.channels = format_.channels;
        block.time += offset * kTicksPerSecond / format_.sampleRate;
        block.concealed = decoded->status != codec::BsacStatus::kOk;
        offset += codec::kSamplesPerBlock;
        Emit(std::move(block), sink);
    }
}

void SoundDecoder::Emit(SoundBlock block, const Sink& sink) {
    const auto channels = static_cast<std::size_t>(block.channels);
    if (std::exchange(rampUp_, false)) {
        const std::size_t frames = std::min(kRampFrames, block.samples.size() / channels);
        for (std::size_t i = 0; i < frames * channels; ++i)
            block.samples[i] =
                static_cast<std::int16_t>(block.samples[i] * static_cast<int>(i / channels) / static_cast<int>(frames));
    }
    lastFrame_.assign(block.samples.end() - static_cast<std::ptrdiff_t>(channels), block.samples.end());
    sink(std::move(block));
}

// A unit's length of silence that falls from the last sample, if any sound came before it.
void SoundDecoder::EmitSilence(SoundBlock block, const Sink& sink) {
    if (format_.sampleRate <= 0 || format_.channels <= 0)
        return;
    block.sampleRate = format_.sampleRate;
    block.channels = format_.channels;
    block.concealed = true;
    const auto channels = static_cast<std::size_t>(format_.channels);
    block.samples.assign(static_cast<std::size_t>(format_.samplesPerUnit) * channels, 0);
    if (lastFrame_.size() == channels) {
        const std::size_t frames = std::min(kRampFrames, block.samples.size() / channels);
        for (std::size_t i = 0; i < frames * channels; ++i)
            block.samples[i] = static_cast<std::int16_t>(
                lastFrame_[i % channels] * static_cast<int>(frames - 1 - i / channels) / static_cast<int>(frames));
    }
    lastFrame_.assign(channels, 0);
    rampUp_ = true;
    sink(std::move(block));
}

} // namespace filters
