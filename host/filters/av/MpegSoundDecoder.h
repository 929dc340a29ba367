// AAC raw data blocks or frames of MPEG layer III to 16-bit samples, by libavcodec; more than two channels are mixed down to two.
#pragma once

#include "host/filters/PacketSync.h"

#include <memory>

namespace filters {

struct MpegSamples {
    int sampleRate = 0;
    int channels = 0;
    std::vector<std::int16_t> interleaved;
};

class MpegSoundDecoder {
public:
    enum class Kind : std::uint8_t { kAac, kLayerThree };
    // `configuration`: of AAC the AudioSpecificConfig, ISO/IEC 14496-3 1.6.2.1.
    MpegSoundDecoder(Kind kind, ByteSpan configuration);
    ~MpegSoundDecoder();
    MpegSoundDecoder(const MpegSoundDecoder&) = delete;
    MpegSoundDecoder& operator=(const MpegSoundDecoder&) = delete;

    // False when the configuration is refused; nothing can be decoded then.
    [[nodiscard]] bool IsReady() const;
    // False when the block cannot be decoded; `samples` is untouched then.
    [[nodiscard]] bool Decode(ByteSpan block, MpegSamples& samples);
    void Flush();

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace filters
