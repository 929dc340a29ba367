// A picture in memory: 32-bit pixels, alpha in the top byte, colours premultiplied with it.
#pragma once

#include "platform/types.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

using cairo_surface_t = struct _cairo_surface;

namespace shell {

inline constexpr std::uint32_t kOpaque = 0xFF000000u;
inline constexpr int kMaxSurfaceSide = 8192;

class Surface {
public:
    // Starts transparent. Sides are clamped to 1..kMaxSurfaceSide.
    Surface(int width, int height);
    ~Surface();
    Surface(const Surface&) = delete;
    Surface& operator=(const Surface&) = delete;
    Surface(Surface&& other) noexcept;
    Surface& operator=(Surface&&) = delete;

    [[nodiscard]] int Width() const { return width; }
    [[nodiscard]] int Height() const { return height; }
    [[nodiscard]] RECT Bounds() const { return {0, 0, width, height}; }
    [[nodiscard]] std::uint32_t* Row(int y) { return pixels.data() + static_cast<std::size_t>(y) * width; }
    [[nodiscard]] const std::uint32_t* Row(int y) const { return pixels.data() + static_cast<std::size_t>(y) * width; }
    [[nodiscard]] std::uint32_t At(int x, int y) const { return Row(y)[x]; }
    // The same pixels for the drawing library; valid as long as the surface.
    [[nodiscard]] cairo_surface_t* Cairo() const { return cairo; }

    // False when the file could not be written.
    [[nodiscard]] bool WritePng(const std::filesystem::path& file) const;
    // Nothing when the file is missing, no PNG picture, or too large.
    [[nodiscard]] static std::optional<Surface> ReadPng(const std::filesystem::path& file);

private:
    int width, height;
    std::vector<std::uint32_t> pixels;
    cairo_surface_t* cairo;
};

// COLORREF (0x00BBGGRR) to an opaque pixel.
constexpr std::uint32_t PixelOf(COLORREF colour) {
    return kOpaque | ((colour & 0xFF) << 16) | (colour & 0xFF00) | ((colour >> 16) & 0xFF);
}

} // namespace shell
