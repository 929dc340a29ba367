#include "jpeg/RawThumbnail.h"

#include "jpeg/HeaderScan.h"

#include <cstring>

namespace jpeg {

namespace {

constexpr std::uint32_t kPhotometricRgb = 2;
constexpr std::uint32_t kPhotometricYcc = 6;
constexpr std::uint32_t kPlanarSeparate = 2;

} // namespace

Status RawThumbnail::Open(const ExifThumbnail& thumbnail, std::span<const std::uint8_t> strip) {
    if (thumbnail.width < 1 || thumbnail.width > kMaxSide || thumbnail.height < 1 || thumbnail.height > kMaxSide) {
        return Status::kRawThumbnail;
    }
    samples = strip;
    width = static_cast<int>(thumbnail.width);
    height = static_cast<int>(thumbnail.height);
    planar = thumbnail.planar == kPlanarSeparate;

    const std::uint64_t pixels = std::uint64_t{thumbnail.width} * thumbnail.height;
    const auto unitColumns = static_cast<std::uint64_t>(DivideUp(width, 2));
    const auto unitLines = static_cast<std::uint64_t>(DivideUp(height, 2));
    if (thumbnail.photometric == kPhotometricRgb && strip.size() >= 3 * pixels) {
        colour = ColourModel::kRgb;
    } else if (thumbnail.photometric == kPhotometricYcc) {
        colour = ColourModel::kYcc;
        if (strip.size() >= 3 * pixels) {
            chromaShiftX = chromaShiftY = 0;
        } else if (!planar && strip.size() >= 4 * unitColumns * thumbnail.height) {
            chromaShiftX = 1;
        } else if (!planar && strip.size() >= 6 * unitColumns * unitLines) {
            chromaShiftX = chromaShiftY = 1;
        } else {
            return Status::kRawThumbnail;
        }
    } else {
        return Status::kRawThumbnail;
    }
    for (Buffer<std::uint8_t>& part : row) {
        if (!part.Allocate(static_cast<std::uint64_t>(width) + kRowSlack)) {
            return Status::kOutOfMemory;
        }
    }
    return Status::kOk;
}

// A plane for each component; copied, as nothing can be read behind the last row.
void RawThumbnail::CopyPlanes(int y) {
    const auto size = static_cast<std::size_t>(width);
    const std::uint8_t* from = samples.data() + static_cast<std::size_t>(y) * size;
    for (Buffer<std::uint8_t>& part : row) {
        std::memcpy(part.Data(), from, size);
        from += size * static_cast<std::size_t>(height);
    }
}

// Three samples a pixel, side by side.
void RawThumbnail::SplitPixels(int y) {
    const std::uint8_t* from =
        samples.data() + std::size_t{3} * static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
    for (int x = 0; x < width; ++x) {
        for (Buffer<std::uint8_t>& part : row) {
            part.Data()[x] = *from++;
        }
    }
}

// TIFF 6.0 section 21: units of 2x1 or 2x2 luma samples, then one Cb and one Cr.
void RawThumbnail::SplitUnits(int y) {
    const int linesPerUnit = 1 << chromaShiftY;
    const std::size_t unitBytes = static_cast<std::size_t>(2 * linesPerUnit) + 2;
    const auto units = static_cast<std::size_t>(DivideUp(width, 2));
    const std::uint8_t* from = samples.data() + static_cast<std::size_t>(y >> chromaShiftY) * units * unitBytes;
    const std::size_t lumaAt = 2 * static_cast<std::size_t>(y & (linesPerUnit - 1));
    for (std::size_t unit = 0; unit < units; ++unit, from += unitBytes) {
        row[0].Data()[2 * unit] = from[lumaAt];
        row[0].Data()[2 * unit + 1] = from[lumaAt + 1];
        row[1].Data()[unit] = from[unitBytes - 2];
        row[2].Data()[unit] = from[unitBytes - 1];
    }
}

SampleRow RawThumbnail::Row(int y) {
    if (planar) {
        CopyPlanes(y);
    } else if (chromaShiftX == 0) {
        SplitPixels(y);
    } else {
        SplitUnits(y);
    }
    return {row[0].Data(), row[1].Data(), row[2].Data()};
}

} // namespace jpeg
