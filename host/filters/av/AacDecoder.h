// AAC raw data blocks to 16-bit samples, by libavcodec; more than two channels are mixed down to two.
#pragma once

#include "host/filters/PacketSync.h"

#include <memory>

namespace filters {

struct AacSamples {
    int sampleRate = 0;
    int channels = 0;
    std::vector<std::int16_t> interleaved;
};

class AacDecoder {
public:
    // `audioSpecificConfig` as in ISO/IEC 14496-3 1.6.2.1.
    explicit AacDecoder(ByteSpan audioSpecificConfig);
    ~AacDecoder();
    AacDecoder(const AacDecoder&) = delete;
    AacDecoder& operator=(const AacDecoder&) = delete;

    // False when the configuration is refused; nothing can be decoded then.
    [[nodiscard]] bool IsReady() const;
    // False when the block cannot be decoded; `samples` is untouched then.
    [[nodiscard]] bool Decode(ByteSpan block, AacSamples& samples);
    void Flush();

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace filters
