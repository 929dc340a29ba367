// RGB to planar YUV 4:2:0 by table, for pictures that were decoded to RGB565 first.
#pragma once

#include <array>
#include <cstdint>

namespace jpeg {

// Eight tables of 256 bytes: R to Y, G to Y, B to Y, R to U, G to U, B to U (also R to V), G to V, B to V.
extern const std::array<std::array<std::uint8_t, 256>, 8> kRgbToYuvTables;

enum class RgbLayout {
    k565, // 16-bit words, native byte order; channels with their low bits 0
    k24,  // bytes R, G, B
};

// Writes width x height bytes of Y, then (width + 1) / 2 x (height + 1) / 2 of U and as many of V. Chroma is taken from
// the first pixel of each pair on even rows, but on the last row of an odd height from the second, on purpose.
// Refuses a side of 0 or less and a null source, and writes nothing then.
bool ConvertRgbToYuv(const std::uint8_t* source, RgbLayout layout, int width, int height, std::uint8_t* destination);

} // namespace jpeg
