// The decoder proper: one picture, fitted into a target.
#pragma once

#include "jpeg/ExifScan.h"
#include "jpeg/Output.h"
#include "jpeg/Status.h"

#include <cstdint>
#include <span>

namespace jpeg {

struct DecodeRequest {
    Target target;
    void* progressContext = nullptr;
    void (*progress)(void* context, int percent) = nullptr; // 80 before and 100 after colour conversion
};

// A JPEG picture. When the fit is empty nothing is written and the picture still counts as decoded.
[[nodiscard]] Status DecodePicture(std::span<const std::uint8_t> data, const DecodeRequest& request);

// An uncompressed thumbnail; `strip` holds its samples.
[[nodiscard]] Status DecodeRawThumbnail(const ExifThumbnail& thumbnail, std::span<const std::uint8_t> strip,
                                        const DecodeRequest& request);

// Chroma against luma: 1x1, 2x1 or 2x2, the same for both chroma components; anything else is refused, and so is RGB that
// is not 1x1. On success fills the shifts of `shape`.
[[nodiscard]] Status FindSubsampling(const Frame& frame, ColourModel colour, SourceShape& shape);

} // namespace jpeg
