// A decode into a destination between guard zones, and whole files to decode.
#pragma once

#include "jpeg/JpegDecoder.h"
#include "tests/jpeg/JpegBuilder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

namespace jpeg_builder {

inline constexpr std::uint8_t kUntouched = 0xA5;
inline constexpr std::size_t kGuard = 1024;
// A destination between guard zones.
class Decoded {
public:
    Decoded(const Bytes& file, int theWidth = 320, int theHeight = 240, int format = 0, bool noThumbnail = false)
        : width(theWidth), height(theHeight) {
        const auto pixels = static_cast<std::size_t>(width * height);
        const auto chroma = static_cast<std::size_t>((width + 1) / 2 * ((height + 1) / 2));
        size = format == 1 ? 3 * pixels : format == 0 ? 2 * pixels : std::max(2 * pixels, pixels + 2 * chroma);
        buffer.assign(size + 2 * kGuard, kUntouched);
        info.outputFormat = format;
        info.noThumbnail = noThumbnail ? 1 : 0;
        result =
            ImgDecodeJPEG(file.data(), static_cast<int>(file.size()), buffer.data() + kGuard, width, height, &info);
        for (std::size_t i = 0; i < kGuard; ++i) {
            if (buffer[i] != kUntouched || buffer[kGuard + size + i] != kUntouched) {
                ADD_FAILURE() << "written outside the destination";
                break;
            }
        }
    }

    [[nodiscard]] std::uint8_t Byte(std::size_t at) const { return buffer[kGuard + at]; }
    [[nodiscard]] unsigned Word(int x, int y) const {
        std::uint16_t word;
        std::memcpy(&word, buffer.data() + kGuard + 2 * static_cast<std::size_t>(y * width + x), 2);
        return word;
    }
    [[nodiscard]] bool Untouched(int x, int y) const { return Word(x, y) == kUntouched * 0x0101u; }

    int width;
    int height;
    std::size_t size = 0;
    std::vector<std::uint8_t> buffer;
    JpegImageInfo info{};
    int result = 0;
};

// Neutral grey: chroma 127 is the centre.
inline Bytes FlatGrey(int width, int height, int level, int h = 1, int v = 1) {
    return FlatJpeg(width, height, Ycc(h, v), {level, 127, 127});
}

inline unsigned GreyWord(unsigned level) {
    return (level & 0xF8) << 8 | (level & 0xFC) << 3 | level >> 3;
}

// A greyscale picture of one level in a single DC scan.
inline Bytes FlatProgressive(int width, int height, int level) {
    return Builder()
        .Soi()
        .App0()
        .Quant()
        .Frame(0xC2, width, height, Grey())
        .Huffman()
        .Scan({1}, 0, 0)
        .Raw([&] {
            BitWriter bits;
            const int blocks = (width + 7) / 8 * ((height + 7) / 8);
            for (int i = 0; i < blocks; ++i) {
                PutDc(bits, i == 0 ? level - 128 : 0);
            }
            return bits.Finish();
        }())
        .Eoi()
        .Done();
}

// Components R, G, B without colour transform.
inline Bytes FlatRgb(int width, int height, const std::vector<int>& levels) {
    const std::vector<jpeg_builder::ComponentSpec> components = {{'R'}, {'G'}, {'B'}};
    return Builder()
        .Soi()
        .App14(0)
        .Quant()
        .Frame(0xC0, width, height, components)
        .Huffman()
        .Scan({'R', 'G', 'B'})
        .Raw(FlatScan(width, height, components, levels))
        .Eoi()
        .Done();
}

} // namespace jpeg_builder
