// Uncompressed Exif thumbnails: a strip of raw RGB or YCbCr samples (TIFF 6.0 sections 6 and 21).
#pragma once

#include "jpeg/Buffer.h"
#include "jpeg/ExifScan.h"
#include "jpeg/Frame.h"
#include "jpeg/RowConverter.h"
#include "jpeg/Status.h"

#include <array>
#include <cstdint>
#include <span>

namespace jpeg {

class RawThumbnail {
public:
    // `strip` holds the samples. Refuses sides outside 1..20000, too few bytes, and photometric interpretations other than
    // RGB (2) and YCbCr (6). No tag of the record tells the subsampling of YCbCr, so the number of bytes does: 3, 2 or
    // 1 1/2 a pixel for 4:4:4, 4:2:2 and 4:2:0.
    [[nodiscard]] Status Open(const ExifThumbnail& thumbnail, std::span<const std::uint8_t> strip);

    [[nodiscard]] int Width() const { return width; }
    [[nodiscard]] int Height() const { return height; }
    [[nodiscard]] ColourModel Colour() const { return colour; }
    [[nodiscard]] int ChromaShiftX() const { return chromaShiftX; }
    [[nodiscard]] int ChromaShiftY() const { return chromaShiftY; }

    // The samples of row y, valid until the next call.
    [[nodiscard]] SampleRow Row(int y);

private:
    void CopyPlanes(int y);
    void SplitPixels(int y);
    void SplitUnits(int y);

    std::span<const std::uint8_t> samples;
    int width = 0;
    int height = 0;
    ColourModel colour = ColourModel::kNone;
    bool planar = false;
    int chromaShiftX = 0;
    int chromaShiftY = 0;
    std::array<Buffer<std::uint8_t>, kMaxComponents> row;
};

} // namespace jpeg
