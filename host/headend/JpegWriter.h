// A small JPEG encoder for slides (ITU-T T.81): 4:2:0, the tables of annex K, in the baseline or the progressive process.
// The progressive one uses spectral selection and successive approximation, as pictures from real editors do.
#pragma once

#include <cstdint>
#include <span>

#include "host/wire/Bytes.h"

namespace headend {

struct JpegSettings {
    int width = 320;
    int height = 240;
    int quality = 80; // 1..100
    bool progressive = false;
};

// `pixels` are 32 bits each in memory order B, G, R, unused, rows `stride` bytes apart.
[[nodiscard]] wire::ByteVector WriteJpeg(const JpegSettings& settings, std::span<const std::uint8_t> pixels,
                                         std::size_t stride);

} // namespace headend
