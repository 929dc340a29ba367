// The quick header scan: one pass over the headers, nothing decoded and nothing allocated.
#pragma once

#include "jpeg/ExifScan.h"
#include "jpeg/Status.h"

#include <cstdint>
#include <span>

namespace jpeg {

inline constexpr int kPlainScan = 2; // headers only
inline constexpr int kExifScan = 8;  // also looks for an Exif thumbnail; what both entry operations use

inline constexpr int kMaxSide = 20000; // pixels

struct HeaderScanResult {
    Status status = Status::kOk;
    int width = 0; // of the last baseline or progressive frame header before the scan; 0 without one
    int height = 0;
    ExifThumbnail thumbnail;
};

// Reads up to the first start of scan. `mode` is kPlainScan or kExifScan, anything else fails.
[[nodiscard]] HeaderScanResult ScanHeaders(std::span<const std::uint8_t> data, int mode);

} // namespace jpeg
