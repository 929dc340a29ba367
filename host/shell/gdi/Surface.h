// A picture in memory: 32-bit pixels, alpha in the top byte, colours premultiplied with it.
//
// Everything that draws counts in units; what has "Pixel" in its name counts in pixels. A unit is `Scale()` pixels wide and high: one
// on the device, two where the screen behind it is finer. Nobody but the rows of pixels sees the difference.
#pragma once

#include "platform/types.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

using cairo_surface_t = struct _cairo_surface;

namespace shell {

inline constexpr std::uint32_t kOpaque = 0xFF000000u;
inline constexpr int kMaxSurfaceSide = 8192; // units
inline constexpr int kMaxScale = 2;

class Surface {
public:
    // Starts transparent. Sides are clamped to 1..kMaxSurfaceSide, the scale to 1..kMaxScale.
    Surface(int width, int height, int scale = 1);
    ~Surface();
    Surface(const Surface&) = delete;
    Surface& operator=(const Surface&) = delete;
    Surface(Surface&& other) noexcept;
    Surface& operator=(Surface&&) = delete;

    // Units.

    [[nodiscard]] int Width() const { return width; }
    [[nodiscard]] int Height() const { return height; }
    [[nodiscard]] RECT Bounds() const { return {0, 0, width, height}; }
    [[nodiscard]] int Scale() const { return scale; }
    // The same picture with finer or coarser pixels; nothing gets sharper by it.
    void Rescale(int newScale);

    // Pixels.
    [[nodiscard]] int PixelWidth() const { return width * scale; }
    [[nodiscard]] int PixelHeight() const { return height * scale; }
    [[nodiscard]] RECT InPixels(const RECT& part) const {
        return {part.left * scale, part.top * scale, part.right * scale, part.bottom * scale};
    }
    [[nodiscard]] std::uint32_t* PixelRow(int y) { return pixels.data() + static_cast<std::size_t>(y) * PixelWidth(); }
    [[nodiscard]] const std::uint32_t* PixelRow(int y) const {
        return pixels.data() + static_cast<std::size_t>(y) * PixelWidth();
    }
    [[nodiscard]] std::uint32_t PixelAt(int x, int y) const { return PixelRow(y)[x]; }
    // Sets every pixel of a part (units), which must lie inside.
    void Fill(const RECT& part, std::uint32_t pixel);

    // The same pixels for the drawing library, which counts in units too; valid until Rescale.
    [[nodiscard]] cairo_surface_t* Cairo() const { return cairo; }

    // False when the file could not be written.
    [[nodiscard]] bool WritePng(const std::filesystem::path& file) const;
    // Nothing when the file is missing, no PNG picture, too large, or no whole number of units.
    [[nodiscard]] static std::optional<Surface> ReadPng(const std::filesystem::path& file, int scale = 1);

private:
    int width, height, scale;
    std::vector<std::uint32_t> pixels;
    cairo_surface_t* cairo;
};

// COLORREF (0x00BBGGRR) to an opaque pixel.
constexpr std::uint32_t PixelOf(COLORREF colour) {
    return kOpaque | ((colour & 0xFF) << 16) | (colour & 0xFF00) | ((colour >> 16) & 0xFF);
}

} // namespace shell
