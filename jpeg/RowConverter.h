// One row of samples to pixels: upsampling, colour conversion and packing in a single pass.
#pragma once

#include "jpeg/ColourTables.h"
#include "jpeg/Frame.h"
#include "jpeg/Status.h"

#include <array>
#include <cstdint>
#include <memory>

namespace jpeg {

// The samples of one row of the picture: Y, Cb, Cr, or R, G, B, or grey alone. Chroma rows may be half as long. Each may be
// read for kRowSlack samples behind its end, so that vectors need no remainder.
using SampleRow = std::array<const std::uint8_t*, kMaxComponents>;
inline constexpr int kRowSlack = 16;

class RowConverter {
public:
    // `chromaShift` is 1 when a chroma sample serves two pixels of a row, else 0. Only YCbCr needs memory.
    [[nodiscard]] Status Open(ColourModel model, int theChromaShift);

    void ToRgb565(const SampleRow& row, int width, std::uint8_t* pixels) const;
    // Bytes R, G, B.
    void ToRgb24(const SampleRow& row, int width, std::uint8_t* pixels) const;
    // Contributions (see ContributionOf), stored or added. `words` has room for kRowSlack more than `width`; what they
    // then hold has no meaning.
    void StoreContributions(const SampleRow& row, int width, std::uint32_t* words) const;
    void AddContributions(const SampleRow& row, int width, std::uint32_t* words) const;

private:
    template <typename Sink> void ForEachPixel(const SampleRow& row, int width, Sink sink) const;

    ColourModel colour = ColourModel::kNone;
    int chromaShift = 0;
    std::unique_ptr<YccToRgbTables> tables;
};

} // namespace jpeg
