#include "host/shell/gdi/Surface.h"

#include <algorithm>
#include <cairo.h>
#include <cstring>
#include <utility>

namespace shell {

namespace {

cairo_surface_t* Wrap(std::vector<std::uint32_t>& pixels, int width, int height) {
    return cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(pixels.data()), CAIRO_FORMAT_ARGB32,
                                               width, height, width * 4);
}

} // namespace

Surface::Surface(int w, int h)
    : width(std::clamp(w, 1, kMaxSurfaceSide)), height(std::clamp(h, 1, kMaxSurfaceSide)),
      pixels(static_cast<std::size_t>(width) * height), cairo(Wrap(pixels, width, height)) {}

Surface::~Surface() {
    if (cairo) {
        cairo_surface_destroy(cairo);
    }
}

Surface::Surface(Surface&& other) noexcept
    : width(other.width), height(other.height), pixels(std::move(other.pixels)),
      cairo(std::exchange(other.cairo, nullptr)) {}

bool Surface::WritePng(const std::filesystem::path& file) const {
    cairo_surface_flush(cairo);
    return cairo_surface_write_to_png(cairo, file.c_str()) == CAIRO_STATUS_SUCCESS;
}

std::optional<Surface> Surface::ReadPng(const std::filesystem::path& file) {
    cairo_surface_t* read = cairo_image_surface_create_from_png(file.c_str());
    std::optional<Surface> result;
    const bool good = cairo_surface_status(read) == CAIRO_STATUS_SUCCESS;
    const int w = good ? cairo_image_surface_get_width(read) : 0;
    const int h = good ? cairo_image_surface_get_height(read) : 0;
    if (w > 0 && h > 0 && w <= kMaxSurfaceSide && h <= kMaxSurfaceSide) {
        result.emplace(w, h);
        cairo_t* context = cairo_create(result->Cairo());
        cairo_set_operator(context, CAIRO_OPERATOR_SOURCE);
        cairo_set_source_surface(context, read, 0, 0);
        cairo_paint(context);
        cairo_destroy(context);
    }
    cairo_surface_destroy(read);
    return result;
}

} // namespace shell
