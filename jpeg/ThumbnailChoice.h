// Main image or embedded thumbnail: a thumbnail that is large enough saves decoding a picture of many megapixels.
#pragma once

#include "jpeg/ExifScan.h"

#include <cstdint>
#include <span>

namespace jpeg {

enum class ImageChoice {
    kMainImage,
    kJpegThumbnail,
    kRawThumbnail,
    kFailure, // the thumbnail's own header is bad; on purpose there is no way back to the main image
};

// Takes a thumbnail that is larger than the target in both directions and lies wholly inside the data. The size of a JPEG
// thumbnail is then that of its own header, which replaces the size in the record.
[[nodiscard]] ImageChoice ChooseImage(std::span<const std::uint8_t> data, int targetWidth, int targetHeight,
                                      ExifThumbnail& thumbnail);

} // namespace jpeg
