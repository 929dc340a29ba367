#include "jpeg/ThumbnailChoice.h"

#include "jpeg/HeaderScan.h"

#include <algorithm>
#include <cstddef>

namespace jpeg {

ImageChoice ChooseImage(std::span<const std::uint8_t> data, int targetWidth, int targetHeight,
                        ExifThumbnail& thumbnail) {
    if (thumbnail.width >= 1 && thumbnail.height >= 1 &&
        thumbnail.length < std::uint64_t{thumbnail.width} * thumbnail.height) {
        thumbnail.kind = kThumbnailUnusable;
    }
    if (!thumbnail.present) {
        return ImageChoice::kMainImage;
    }
    if (thumbnail.kind == kThumbnailJpeg) {
        const auto rest = data.subspan(static_cast<std::size_t>(thumbnail.offset));
        const HeaderScanResult own =
            ScanHeaders(rest.first(std::min<std::size_t>(thumbnail.length, rest.size())), kExifScan);
        if (own.status != Status::kOk) {
            return ImageChoice::kFailure;
        }
        thumbnail.width = static_cast<std::uint32_t>(own.width);
        thumbnail.height = static_cast<std::uint32_t>(own.height);
    }
    const bool usable = thumbnail.width >= 1 && thumbnail.height >= 1 &&
                        thumbnail.offset + thumbnail.length < data.size() &&
                        targetWidth < static_cast<std::int64_t>(thumbnail.width) &&
                        targetHeight < static_cast<std::int64_t>(thumbnail.height);
    if (usable && thumbnail.kind == kThumbnailJpeg) {
        return ImageChoice::kJpegThumbnail;
    }
    if (usable && thumbnail.kind == kThumbnailRaw) {
        return ImageChoice::kRawThumbnail;
    }
    return ImageChoice::kMainImage;
}

} // namespace jpeg
