#include "host/shell/gdi/Surface.h"

#include <algorithm>
#include <cairo.h>
#include <cstring>
#include <utility>

namespace shell {

namespace {

cairo_surface_t* Wrap(std::vector<std::uint32_t>& pixels, int pixelWidth, int pixelHeight, int scale) {
    cairo_surface_t* cairo = cairo_image_surface_create_for_data(
        reinterpret_cast<unsigned char*>(pixels.data()), CAIRO_FORMAT_ARGB32, pixelWidth, pixelHeight, pixelWidth * 4);
    cairo_surface_set_device_scale(cairo, scale, scale);
    return cairo;
}

// Takes another picture's pixels, with their transparency.
void Copy(cairo_surface_t* from, cairo_surface_t* to) {
    cairo_t* context = cairo_create(to);
    cairo_set_operator(context, CAIRO_OPERATOR_SOURCE);
    cairo_set_source_surface(context, from, 0, 0);
    cairo_pattern_set_extend(cairo_get_source(context), CAIRO_EXTEND_PAD);
    cairo_paint(context);
    cairo_destroy(context);
}

} // namespace

Surface::Surface(int w, int h, int s)
    : width(std::clamp(w, 1, kMaxSurfaceSide)), height(std::clamp(h, 1, kMaxSurfaceSide)),
      scale(std::clamp(s, 1, kMaxScale)), pixels(static_cast<std::size_t>(PixelWidth()) * PixelHeight()),
      cairo(Wrap(pixels, PixelWidth(), PixelHeight(), scale)) {}

Surface::~Surface() {
    if (cairo) {
        cairo_surface_destroy(cairo);
    }
}

Surface::Surface(Surface&& other) noexcept
    : width(other.width), height(other.height), scale(other.scale), pixels(std::move(other.pixels)),
      cairo(std::exchange(other.cairo, nullptr)) {}

// In place: whoever draws on the surface goes on drawing on it.
void Surface::Rescale(int newScale) {
    if (newScale == scale) {
        return;
    }
    Surface other(width, height, newScale);
    cairo_surface_mark_dirty(cairo);
    Copy(cairo, other.cairo);
    cairo_surface_flush(other.cairo);
    std::swap(scale, other.scale);
    std::swap(pixels, other.pixels);
    std::swap(cairo, other.cairo);
}

void Surface::Fill(const RECT& part, std::uint32_t pixel) {
    const RECT filled = InPixels(part);
    for (LONG y = filled.top; y < filled.bottom; ++y) {
        std::fill(PixelRow(y) + filled.left, PixelRow(y) + std::max(filled.left, filled.right), pixel);
    }
}

bool Surface::WritePng(const std::filesystem::path& file) const {
    cairo_surface_flush(cairo);
    return cairo_surface_write_to_png(cairo, file.c_str()) == CAIRO_STATUS_SUCCESS;
}

std::optional<Surface> Surface::ReadPng(const std::filesystem::path& file, int scale) {
    cairo_surface_t* read = cairo_image_surface_create_from_png(file.c_str());
    std::optional<Surface> result;
    const bool good = cairo_surface_status(read) == CAIRO_STATUS_SUCCESS;
    const int w = good ? cairo_image_surface_get_width(read) : 0;
    const int h = good ? cairo_image_surface_get_height(read) : 0;
    const bool whole = w % scale == 0 && h % scale == 0;
    if (w > 0 && h > 0 && whole && w / scale <= kMaxSurfaceSide && h / scale <= kMaxSurfaceSide) {
        result.emplace(w / scale, h / scale, scale);
        cairo_surface_set_device_scale(read, scale, scale);
        Copy(read, result->Cairo());
    }
    cairo_surface_destroy(read);
    return result;
}

} // namespace shell
