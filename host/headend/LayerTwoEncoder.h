// MPEG layer II audio as DAB carries it (EN 300 401 7.2, 7.3): 48 kHz or 24 kHz, with a check sum, with check sums over the
// next frame's scale factors, and with room for programme associated data at the end of each frame.
#pragma once

#include <span>
#include <vector>

#include "host/wire/Bytes.h"

namespace headend {

struct LayerTwoSettings {
    int sampleRate = 48000; // or 24000
    int channels = 2;
    int kbps = 128;           // of the sub-channel
    std::size_t padBytes = 0; // X-PAD in each frame; the two bytes of F-PAD come on top
};

// The coder's own rate, which leaves room for the PAD; 0 when no rate does.
[[nodiscard]] int LayerTwoCoderKbps(const LayerTwoSettings& settings);

// Whole frames of 1152 samples a channel; the PAD is all zeros. A rest at the end is filled with silence. Throws
// std::runtime_error when the settings are impossible.
[[nodiscard]] std::vector<wire::ByteVector> EncodeLayerTwo(const LayerTwoSettings& settings,
                                                           std::span<const float> samples);

// The check sums over the scale factors of a frame (annex B), as they lie in the frame before it: two bytes or four, that
// of the lowest subbands last. Empty for a frame that cannot be read.
[[nodiscard]] wire::ByteVector ScaleFactorCrcs(wire::ByteSpan frame);

} // namespace headend
