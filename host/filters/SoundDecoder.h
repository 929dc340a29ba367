// Access units of the sound to samples, whatever the codec. What is missing or damaged is replaced so that neither its
// beginning nor its end makes a step.
#pragma once

#include "host/codec/BsacDecoder.h"
#include "host/codec/av/LayerTwoDecoder.h"
#include "host/filters/Demultiplexer.h"
#include "host/filters/av/MpegSoundDecoder.h"

#include <functional>
#include <memory>

namespace filters {

struct SoundBlock {
    std::vector<std::int16_t> samples; // interleaved
    int sampleRate = 0;
    int channels = 0;
    Ticks time = 0; // of the first sample
    Ticks lead = 0; // as AccessUnit::lead
    bool live = false;
    // Made up by the decoder in place of a lost unit.
    bool concealed = false;
};

class SoundDecoder {
public:
    using Sink = std::function<void(SoundBlock)>;

    // False when there is no decoder for the format; units are then swallowed.
    bool SetFormat(const AudioFormat& format);
    [[nodiscard]] const AudioFormat& Format() const { return format_; }

    // A unit without bytes stands for a damaged one.
    void Push(const AccessUnit& unit, const Sink& sink);
    // Another place follows.
    void Flush();

private:
    void Conceal(const AccessUnit& next, const Sink& sink);
    void Decode(ByteSpan bytes, SoundBlock block, const Sink& sink);
    void DecodeBsac(ByteSpan bytes, const SoundBlock& like, const Sink& sink);
    void Emit(SoundBlock block, const Sink& sink);
    void EmitSilence(SoundBlock block, const Sink& sink);

    AudioFormat format_;
    std::unique_ptr<codec::BsacDecoder> bsac_;
    std::unique_ptr<MpegSoundDecoder> mpeg_; // AAC and layer III
    std::unique_ptr<codec::LayerTwoDecoder> layerTwo_;
    std::optional<Ticks> next_;           // when the next unit is due
    std::vector<std::int16_t> lastFrame_; // the last sample of each channel
    bool rampUp_ = false;                 // the next block rises from silence
};

} // namespace filters
