#include "jpeg/RgbToYuv.h"

#include "jpeg/ColourTables.h"

#include <cstddef>
#include <cstring>

namespace jpeg {

namespace {

using Table = std::array<std::uint8_t, 256>;

// (factor * v + addBefore) >> 16, then + addAfter, modulo 256. On purpose only blue to luma rounds.
constexpr Table MakeTable(std::int32_t factor, std::int32_t addBefore, std::int32_t addAfter) {
    Table table{};
    for (std::int32_t v = 0; v < 256; ++v) {
        table[static_cast<std::size_t>(v)] = static_cast<std::uint8_t>(((factor * v + addBefore) >> 16) + addAfter);
    }
    return table;
}

enum Use { kRToY, kGToY, kBToY, kRToU, kGToU, kBToU, kGToV, kBToV, kRToV = kBToU };

std::uint8_t Mix(Rgb pixel, Use red, Use green, Use blue) {
    return static_cast<std::uint8_t>(kRgbToYuvTables[red][pixel.r] + kRgbToYuvTables[green][pixel.g] +
                                     kRgbToYuvTables[blue][pixel.b]);
}

Rgb LoadPixel(const std::uint8_t* row, RgbLayout layout, std::ptrdiff_t x) {
    if (layout == RgbLayout::k24) {
        return {row[3 * x], row[3 * x + 1], row[3 * x + 2]};
    }
    std::uint16_t word = 0;
    std::memcpy(&word, row + 2 * x, sizeof word);
    return {static_cast<std::uint8_t>(word >> 8 & 0xF8), static_cast<std::uint8_t>(word >> 3 & 0xFC),
            static_cast<std::uint8_t>(word << 3 & 0xF8)};
}

} // namespace

constexpr std::array<Table, 8> kRgbToYuvTables = {
    MakeTable(19595, 0, 0),  MakeTable(38470, 0, 0),   MakeTable(7471, 32768, 0), MakeTable(-11058, 0, 0),
    MakeTable(-21710, 0, 0), MakeTable(32768, 0, 128), MakeTable(-27439, 0, 0),   MakeTable(-5329, 0, 0)};

bool ConvertRgbToYuv(const std::uint8_t* source, RgbLayout layout, int width, int height, std::uint8_t* destination) {
    if (source == nullptr || width <= 0 || height <= 0) {
        return false;
    }
    const std::size_t columns = static_cast<std::size_t>(width);
    const std::size_t sourceStride = columns * (layout == RgbLayout::k24 ? 3 : 2);
    const std::size_t chromaStride = (columns + 1) / 2;
    std::uint8_t* u = destination + columns * static_cast<std::size_t>(height);
    std::uint8_t* v = u + chromaStride * ((static_cast<std::size_t>(height) + 1) / 2);
    for (int y = 0; y < height; ++y) {
        const std::uint8_t* row = source + static_cast<std::size_t>(y) * sourceStride;
        for (int x = 0; x < width; ++x) {
            *destination++ = Mix(LoadPixel(row, layout, x), kRToY, kGToY, kBToY);
        }
        if (y % 2 != 0) {
            continue;
        }
        const bool isOddLastRow = y == height - 1;
        for (int x = 0; x < width; x += 2) {
            const int from = isOddLastRow && x + 1 < width ? x + 1 : x;
            const Rgb pixel = LoadPixel(row, layout, from);
            *u++ = Mix(pixel, kRToU, kGToU, kBToU);
            *v++ = Mix(pixel, kRToV, kGToV, kBToV);
        }
    }
    return true;
}

} // namespace jpeg
