#include "tests/golden/Picture.h"

#include <algorithm>
#include <cairo.h>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

namespace golden {

namespace {

int Channel(std::uint32_t pixel, int shift) {
    return static_cast<int>(pixel >> shift & 0xFF);
}

int Distance(std::uint32_t left, std::uint32_t right) {
    int distance = 0;
    for (const int shift : {0, 8, 16})
        distance = std::max(distance, std::abs(Channel(left, shift) - Channel(right, shift)));
    return distance;
}

} // namespace

std::optional<Picture> Read(const std::filesystem::path& file) {
    cairo_surface_t* read = cairo_image_surface_create_from_png(file.c_str());
    if (cairo_surface_status(read) != CAIRO_STATUS_SUCCESS) {
        cairo_surface_destroy(read);
        return std::nullopt;
    }
    Picture picture{cairo_image_surface_get_width(read), cairo_image_surface_get_height(read), {}};
    picture.pixels.resize(static_cast<std::size_t>(picture.width) * picture.height);
    const unsigned char* data = cairo_image_surface_get_data(read);
    const int stride = cairo_image_surface_get_stride(read);
    for (int y = 0; y < picture.height; ++y)
        std::memcpy(picture.pixels.data() + static_cast<std::size_t>(y) * picture.width, data + y * stride,
                    static_cast<std::size_t>(picture.width) * 4);
    for (std::uint32_t& pixel : picture.pixels)
        pixel &= 0xFFFFFF;
    cairo_surface_destroy(read);
    return picture;
}

bool Write(const Picture& picture, const std::filesystem::path& file) {
    std::vector<std::uint32_t> pixels = picture.pixels;
    cairo_surface_t* surface =
        cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(pixels.data()), CAIRO_FORMAT_RGB24,
                                            picture.width, picture.height, picture.width * 4);
    const bool written = cairo_surface_write_to_png(surface, file.c_str()) == CAIRO_STATUS_SUCCESS;
    cairo_surface_destroy(surface);
    return written;
}

bool WritePlain(const Picture& picture, const std::filesystem::path& file) {
    std::string bytes = "P6\n" + std::to_string(picture.width) + " " + std::to_string(picture.height) + "\n255\n";
    for (const std::uint32_t pixel : picture.pixels)
        for (const int shift : {16, 8, 0})
            bytes += static_cast<char>(Channel(pixel, shift));
    return static_cast<bool>(std::ofstream(file, std::ios::binary) << bytes);
}

Difference Compare(const Picture& left, const Picture& right) {
    Difference difference;
    double sum = 0;
    for (std::size_t i = 0; i < left.pixels.size(); ++i) {
        difference.others += Distance(left.pixels[i], right.pixels[i]) > kShade ? 1 : 0;
        for (const int shift : {0, 8, 16})
            sum += std::abs(Channel(left.pixels[i], shift) - Channel(right.pixels[i], shift));
    }
    difference.mean = left.pixels.empty() ? 0 : sum / (3.0 * static_cast<double>(left.pixels.size()));
    return difference;
}

Picture Halved(const Picture& picture) {
    Picture half{picture.width / 2, picture.height / 2, {}};
    half.pixels.reserve(static_cast<std::size_t>(half.width) * half.height);
    for (int y = 0; y < half.height; ++y)
        for (int x = 0; x < half.width; ++x) {
            const std::uint32_t* upper = &picture.pixels[static_cast<std::size_t>(2 * y) * picture.width + 2 * x];
            const std::uint32_t* lower = upper + picture.width;
            std::uint32_t mean = 0;
            for (const int shift : {0, 8, 16}) {
                const int sum = Channel(upper[0], shift) + Channel(upper[1], shift) + Channel(lower[0], shift) +
                                Channel(lower[1], shift);
                mean |= static_cast<std::uint32_t>((sum + 2) / 4) << shift;
            }
            half.pixels.push_back(mean);
        }
    return half;
}

Picture Marked(const Picture& left, const Picture& right) {
    Picture marked = left;
    for (std::size_t i = 0; i < marked.pixels.size(); ++i)
        marked.pixels[i] =
            Distance(left.pixels[i], right.pixels[i]) > kShade ? 0xFF0000 : (left.pixels[i] >> 1) & 0x7F7F7F;
    return marked;
}

} // namespace golden
