#include "host/shell/gdi/ImagePainter.h"

#include "host/shell/gdi/ClippedCairo.h"

#include <algorithm>
#include <array>

namespace shell {

namespace {

struct Box {
    int x, y, width, height;
};

void DrawPart(const ClippedCairo& on, const Surface& picture, const Box& source, const Box& target,
              double opacity = 1.0) {
    if (source.width <= 0 || source.height <= 0 || target.width <= 0 || target.height <= 0) {
        return;
    }
    cairo_t* cairo = on.cairo;
    cairo_save(cairo);
    cairo_rectangle(cairo, target.x, target.y, target.width, target.height);
    cairo_clip(cairo);
    cairo_translate(cairo, target.x, target.y);
    cairo_scale(cairo, static_cast<double>(target.width) / source.width,
                static_cast<double>(target.height) / source.height);
    cairo_set_source_surface(cairo, picture.Cairo(), -source.x, -source.y);
    const bool scaled = target.width != source.width || target.height != source.height || picture.Scale() != on.scale;
    cairo_pattern_set_filter(cairo_get_source(cairo), scaled ? CAIRO_FILTER_GOOD : CAIRO_FILTER_NEAREST);
    cairo_pattern_set_extend(cairo_get_source(cairo), CAIRO_EXTEND_PAD);
    cairo_paint_with_alpha(cairo, opacity);
    cairo_restore(cairo);
}

} // namespace

void DrawPicture(Context& context, const Surface& picture, const RECT& target, int border) {
    const ClippedCairo clipped(context);
    const int width = target.right - target.left;
    const int height = target.bottom - target.top;
    const int b = std::min({border, width / 2, height / 2, picture.Width() / 2, picture.Height() / 2});
    if (b <= 0) {
        DrawPart(clipped, picture, {0, 0, picture.Width(), picture.Height()}, {target.left, target.top, width, height});
        return;
    }
    const std::array<int, 4> fromX = {0, b, picture.Width() - b, picture.Width()};
    const std::array<int, 4> fromY = {0, b, picture.Height() - b, picture.Height()};
    const std::array<int, 4> toX = {target.left, target.left + b, target.right - b, target.right};
    const std::array<int, 4> toY = {target.top, target.top + b, target.bottom - b, target.bottom};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            DrawPart(clipped, picture,
                     {fromX[column], fromY[row], fromX[column + 1] - fromX[column], fromY[row + 1] - fromY[row]},
                     {toX[column], toY[row], toX[column + 1] - toX[column], toY[row + 1] - toY[row]});
        }
    }
}

void DrawCentred(Context& context, const Surface& picture, const RECT& target, double opacity) {
    const ClippedCairo clipped(context);
    const int x = (target.left + target.right - picture.Width()) / 2;
    const int y = (target.top + target.bottom - picture.Height()) / 2;
    DrawPart(clipped, picture, {0, 0, picture.Width(), picture.Height()}, {x, y, picture.Width(), picture.Height()},
             opacity);
}

void FillPixels(Context& context, const RECT& target, std::uint32_t pixel) {
    const RECT bounds = context.target->Bounds();
    for (const RECT& part : context.clip.Parts()) {
        RECT visible;
        if (!IntersectRect(&visible, &target, &bounds) || !IntersectRect(&visible, &visible, &part)) {
            continue;
        }
        context.target->Fill(visible, pixel);
    }
    context.painted = true;
}

void DrawOver(Surface& target, const Surface& picture, int x, int y) {
    cairo_t* cairo = cairo_create(target.Cairo());
    cairo_surface_mark_dirty(picture.Cairo());
    cairo_set_source_surface(cairo, picture.Cairo(), x, y);
    cairo_paint(cairo);
    cairo_destroy(cairo);
}

} // namespace shell
