// A set of pixels made of rectangles.
#pragma once

#include "platform/types.h"

#include <cairo.h>
#include <utility>
#include <vector>

namespace shell {

class Region {
public:
    Region() : region(cairo_region_create()) {}
    explicit Region(const RECT& rect) : Region() { Add(rect); }
    Region(const Region& other) : region(cairo_region_copy(other.region)) {}
    Region& operator=(const Region& other) {
        Region copy(other);
        std::swap(region, copy.region);
        return *this;
    }
    ~Region() { cairo_region_destroy(region); }

    void Add(const RECT& rect) {
        const cairo_rectangle_int_t part = ToCairo(rect);
        cairo_region_union_rectangle(region, &part);
    }
    void ClipTo(const RECT& rect) {
        const cairo_rectangle_int_t part = ToCairo(rect);
        cairo_region_intersect_rectangle(region, &part);
    }
    void Clear() { ClipTo({0, 0, 0, 0}); }

    [[nodiscard]] bool IsEmpty() const { return cairo_region_is_empty(region); }
    [[nodiscard]] int PartCount() const { return cairo_region_num_rectangles(region); }
    // The smallest rectangle around it; all zero when empty.
    [[nodiscard]] RECT Extents() const {
        cairo_rectangle_int_t part;
        cairo_region_get_extents(region, &part);
        return {part.x, part.y, part.x + part.width, part.y + part.height};
    }
    [[nodiscard]] std::vector<RECT> Parts() const {
        std::vector<RECT> parts;
        for (int i = 0; i < PartCount(); ++i) {
            cairo_rectangle_int_t part;
            cairo_region_get_rectangle(region, i, &part);
            parts.push_back({part.x, part.y, part.x + part.width, part.y + part.height});
        }
        return parts;
    }

private:
    static cairo_rectangle_int_t ToCairo(const RECT& rect) {
        const bool empty = rect.right <= rect.left || rect.bottom <= rect.top;
        return {rect.left, rect.top, empty ? 0 : rect.right - rect.left, empty ? 0 : rect.bottom - rect.top};
    }
    cairo_region_t* region;
};

} // namespace shell
