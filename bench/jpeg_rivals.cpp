#include "bench/jpeg_rivals.h"

#include "jpeg/Fit.h"

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <vector>

#include <jpeglib.h>

#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_ONLY_JPEG
#define STBI_NO_STDIO
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-function"
#pragma GCC diagnostic ignored "-Wshadow"
#include <stb/stb_image.h>
#pragma GCC diagnostic pop

namespace bench {

namespace {

constexpr int kWidth = 320;
constexpr int kHeight = 240;

std::uint16_t Pack(unsigned r, unsigned g, unsigned b) {
    return static_cast<std::uint16_t>((r & 0xF8) << 8 | (g & 0xFC) << 3 | b >> 3);
}

// Box averages of rows of four bytes a pixel: sums of whole rows first, which the compiler turns into vector code, then
// sums across with a multiplication for the division.
class BoxShrinker {
public:
    BoxShrinker(int theWidth, int theHeight, const jpeg::Fit& theFit, std::uint16_t* pixels)
        : width(theWidth), height(theHeight), fit(theFit), target(pixels),
          sums(static_cast<std::size_t>(theWidth) * 4) {
        for (int x = 0; x < fit.width; ++x) {
            const int end = End(x, width, fit.width);
            const int first = width <= fit.width ? end - 1 : x == 0 ? 0 : End(x - 1, width, fit.width);
            spans.push_back({first, end - first});
        }
    }

    void AddRow(const std::uint8_t* row) {
        std::uint16_t* __restrict to = sums.data();
        const std::uint8_t* __restrict from = row;
        const int size = width * 4;
        for (int i = 0; i < size; ++i) {
            to[i] = static_cast<std::uint16_t>(to[i] + from[i]);
        }
        ++count;
        ++y;
        while (out < fit.height && y == End(out, height, fit.height)) {
            Emit();
            ++out;
            if (out < fit.height && End(out, height, fit.height) != y) {
                std::fill(sums.begin(), sums.end(), 0);
                count = 0;
            }
        }
    }

private:
    static int End(int output, int source, int size) {
        return source <= size ? output * source / size + 1 : ((output + 1) * source + size - 1) / size;
    }

    void Emit() {
        std::uint16_t* row = target + (fit.offsetY + out) * kWidth + fit.offsetX;
        const std::uint32_t factors[3] = {0, 65536u / static_cast<std::uint32_t>(count),
                                          65536u / static_cast<std::uint32_t>(2 * count)};
        for (const auto& [first, columns] : spans) {
            const std::uint16_t* from = sums.data() + 4 * first;
            std::uint32_t r = 0;
            std::uint32_t g = 0;
            std::uint32_t b = 0;
            for (int i = 0; i < columns; ++i, from += 4) {
                r += from[0];
                g += from[1];
                b += from[2];
            }
            const std::uint32_t factor =
                columns <= 2 ? factors[columns] : 65536u / static_cast<std::uint32_t>(columns * count);
            *row++ = Pack(r * factor >> 16, g * factor >> 16, b * factor >> 16);
        }
    }

    int width;
    int height;
    jpeg::Fit fit;
    std::uint16_t* target;
    std::vector<std::uint16_t> sums;
    std::vector<std::pair<int, int>> spans; // first column and their number
    int count = 0;
    int y = 0;
    int out = 0;
};

struct ErrorExit {
    jpeg_error_mgr manager;
    std::jmp_buf jump;
};

} // namespace

bool DecodeWithTurbo(std::span<const std::uint8_t> data, std::uint16_t* pixels) {
    jpeg_decompress_struct info;
    ErrorExit error;
    info.err = jpeg_std_error(&error.manager);
    error.manager.error_exit = [](j_common_ptr failed) {
        std::longjmp(reinterpret_cast<ErrorExit*>(failed->err)->jump, 1);
    };
    error.manager.emit_message = [](j_common_ptr, int) {};
    if (setjmp(error.jump) != 0) {
        jpeg_destroy_decompress(&info);
        return false;
    }
    jpeg_create_decompress(&info);
    jpeg_mem_src(&info, data.data(), data.size());
    jpeg_read_header(&info, TRUE);
    const jpeg::Fit fit =
        jpeg::FitPicture(static_cast<int>(info.image_width), static_cast<int>(info.image_height), kWidth, kHeight);
    info.scale_num = 1;
    info.scale_denom = 1u << fit.reduction;
    info.dither_mode = JDITHER_NONE;
    jpeg_calc_output_dimensions(&info);
    const bool exact =
        static_cast<int>(info.output_width) == fit.width && static_cast<int>(info.output_height) == fit.height;
    info.out_color_space = exact ? JCS_RGB565 : JCS_EXT_RGBX;
    jpeg_start_decompress(&info);
    if (exact) {
        while (info.output_scanline < info.output_height) {
            auto* row = reinterpret_cast<JSAMPLE*>(
                pixels + (fit.offsetY + static_cast<int>(info.output_scanline)) * kWidth + fit.offsetX);
            jpeg_read_scanlines(&info, &row, 1);
        }
    } else {
        std::vector<std::uint8_t> line(std::size_t{4} * info.output_width);
        BoxShrinker shrinker(static_cast<int>(info.output_width), static_cast<int>(info.output_height), fit, pixels);
        JSAMPLE* row = line.data();
        while (info.output_scanline < info.output_height) {
            jpeg_read_scanlines(&info, &row, 1);
            shrinker.AddRow(line.data());
        }
    }
    jpeg_finish_decompress(&info);
    jpeg_destroy_decompress(&info);
    return true;
}

bool DecodeWithStb(std::span<const std::uint8_t> data, std::uint16_t* pixels) {
    int width = 0;
    int height = 0;
    int channels = 0;
    stbi_uc* picture = stbi_load_from_memory(data.data(), static_cast<int>(data.size()), &width, &height, &channels, 4);
    if (picture == nullptr) {
        return false;
    }
    const jpeg::Fit fit = jpeg::FitPicture(width, height, kWidth, kHeight);
    if (fit.width == width && fit.height == height) {
        const stbi_uc* from = picture;
        for (int y = 0; y < height; ++y) {
            std::uint16_t* row = pixels + (fit.offsetY + y) * kWidth + fit.offsetX;
            for (int x = 0; x < width; ++x, from += 4) {
                row[x] = Pack(from[0], from[1], from[2]);
            }
        }
    } else {
        BoxShrinker shrinker(width, height, fit, pixels);
        for (int y = 0; y < height; ++y) {
            shrinker.AddRow(picture + std::size_t{4} * static_cast<std::size_t>(y) * static_cast<std::size_t>(width));
        }
    }
    stbi_image_free(picture);
    return true;
}

} // namespace bench
