// YCbCr to RGB by table: four tables of 256 entries, 16.16 fixed point.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace jpeg {

// On purpose, index i stands for a chroma value of i - 127, one more than usual.
inline constexpr int kChromaCentre = 127;

struct YccToRgbTables {
    std::array<std::int32_t, 256> crToR; // whole steps
    std::array<std::int32_t, 256> cbToB; // whole steps
    std::array<std::int32_t, 256> crToG; // 16.16
    std::array<std::int32_t, 256> cbToG; // 16.16, with the rounding half of the sum

    void Fill() {
        for (int i = 255; i >= 0; --i) {
            const std::int32_t value = i - kChromaCentre;
            const auto at = static_cast<std::size_t>(i);
            crToR[at] = (91881 * value + 32768) >> 16;
            cbToB[at] = (116130 * value + 32768) >> 16;
            crToG[at] = -46802 * value;
            cbToG[at] = -22554 * value + 32768;
        }
    }
};

struct Rgb {
    std::uint8_t r;
    std::uint8_t g;
    std::uint8_t b;
};

[[nodiscard]] constexpr std::uint8_t LimitToByte(std::int32_t value) {
    return static_cast<std::uint8_t>(value < 0 ? 0 : value > 255 ? 255 : value);
}

[[nodiscard]] inline Rgb YccToRgb(const YccToRgbTables& tables, std::uint8_t y, std::uint8_t cb, std::uint8_t cr) {
    return {LimitToByte(y + tables.crToR[cr]), LimitToByte(y + ((tables.cbToG[cb] + tables.crToG[cr]) >> 16)),
            LimitToByte(y + tables.cbToB[cb])};
}

// Red in the top five bits.
[[nodiscard]] constexpr std::uint16_t PackRgb565(Rgb pixel) {
    return static_cast<std::uint16_t>((pixel.r << 8 & 0xF800) | (pixel.g << 3 & 0x07E0) | pixel.b >> 3);
}

// Pixel x of a row that may begin at any address.
inline void StoreRgb565(std::uint8_t* row, int x, std::uint16_t pixel) {
    std::memcpy(row + 2 * static_cast<std::ptrdiff_t>(x), &pixel, sizeof pixel);
}

// A pixel as a contribution to an average: three 6-bit channels, each in a byte of its own, so that four add up without
// a carry. Four make a word whose bytes are 8-bit channels.
[[nodiscard]] constexpr std::uint32_t ContributionOf(Rgb pixel) {
    return static_cast<std::uint32_t>(pixel.r >> 2) << 16 | static_cast<std::uint32_t>(pixel.g >> 2) << 8 |
           static_cast<std::uint32_t>(pixel.b >> 2);
}
[[nodiscard]] constexpr std::uint16_t PackFourContributions565(std::uint32_t word) {
    return static_cast<std::uint16_t>((word >> 8 & 0xF800) | (word >> 5 & 0x07E0) | (word << 24) >> 27);
}

} // namespace jpeg
