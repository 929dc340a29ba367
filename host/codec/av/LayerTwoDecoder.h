// MPEG layer II frames to 16-bit samples, by libavcodec: one whole frame in, 1152 samples a channel out.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace codec {

struct LayerTwoSamples {
    int sampleRate = 0;
    int channels = 0;
    std::vector<std::int16_t> interleaved;
};

class LayerTwoDecoder {
public:
    LayerTwoDecoder();
    ~LayerTwoDecoder();
    LayerTwoDecoder(const LayerTwoDecoder&) = delete;
    LayerTwoDecoder& operator=(const LayerTwoDecoder&) = delete;

    // False when the frame cannot be decoded; `samples` is untouched then. A change of format between frames is followed.
    [[nodiscard]] bool Decode(std::span<const std::uint8_t> frame, LayerTwoSamples& samples);
    // Forgets the filter's memory: what follows does not continue what came before.
    void Flush();

private:
    struct State;
    std::unique_ptr<State> state;
};

} // namespace codec
