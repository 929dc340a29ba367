// A drawing-library context on the target of a device context, clipped to what may be painted.
#pragma once

#include "host/shell/gdi/Context.h"

#include <cairo.h>

namespace shell {

class ClippedCairo {
public:
    explicit ClippedCairo(Context& context)
        : cairo(cairo_create(context.target->Cairo())), scale(context.target->Scale()) {
        for (const RECT& part : context.clip.Parts()) {
            AddRectangle(part);
        }
        cairo_clip(cairo);
        context.painted = true;
    }
    ~ClippedCairo() { cairo_destroy(cairo); }
    ClippedCairo(const ClippedCairo&) = delete;
    ClippedCairo& operator=(const ClippedCairo&) = delete;

    void ClipTo(const RECT& rect) {
        AddRectangle(rect);
        cairo_clip(cairo);
    }
    void SetColour(COLORREF colour, double alpha = 1.0) {
        cairo_set_source_rgba(cairo, (colour & 0xFF) / 255.0, ((colour >> 8) & 0xFF) / 255.0,
                              ((colour >> 16) & 0xFF) / 255.0, alpha);
    }
    void Fill(const RECT& rect) {
        AddRectangle(rect);
        cairo_fill(cairo);
    }

    cairo_t* const cairo;
    const int scale; // of what is drawn on; coordinates are units whatever it is

private:
    void AddRectangle(const RECT& rect) {
        cairo_rectangle(cairo, rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top);
    }
};

} // namespace shell
