#include "host/shell/gdi/VideoPlane.h"

#include <algorithm>
#include <cairo.h>

namespace shell {

void VideoPlane::Present(int width, int height, std::span<const std::uint32_t> pixels, double aspect) {
    if (width < 1 || height < 1 || width > kMaxSurfaceSide || height > kMaxSurfaceSide ||
        pixels.size() < static_cast<std::size_t>(width) * height) {
        return;
    }
    std::function<void()> notify;
    {
        const std::lock_guard lock(mutex);
        if (!frame || frame->Width() != width || frame->Height() != height) {
            frame = std::make_unique<Surface>(width, height);
        }
        std::transform(pixels.begin(), pixels.begin() + static_cast<std::ptrdiff_t>(width) * height, frame->Row(0),
                       [](std::uint32_t pixel) { return pixel | kOpaque; });
        frameAspect = aspect > 0.1 && aspect < 10 ? aspect : static_cast<double>(width) / height;
        ++frames;
        notify = listener;
    }
    if (notify) {
        notify();
    }
}

void VideoPlane::Clear() {
    std::function<void()> notify;
    {
        const std::lock_guard lock(mutex);
        frame.reset();
        notify = listener;
    }
    if (notify) {
        notify();
    }
}

void VideoPlane::SetListener(std::function<void()> newListener) {
    const std::lock_guard lock(mutex);
    listener = std::move(newListener);
}

std::uint64_t VideoPlane::FrameCount() const {
    const std::lock_guard lock(mutex);
    return frames;
}

void VideoPlane::Paint(Surface& target, const RECT& rect) const {
    cairo_t* cairo = cairo_create(target.Cairo());
    cairo_rectangle(cairo, rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top);
    cairo_clip(cairo);
    cairo_set_source_rgb(cairo, 0, 0, 0);
    cairo_paint(cairo);
    const std::lock_guard lock(mutex);
    if (frame) {
        double width = rect.right - rect.left;
        double height = rect.bottom - rect.top;
        if (keepAspect) {
            const double fitted = std::min(width, height * frameAspect);
            height = std::min(height, width / frameAspect);
            width = fitted;
        }
        cairo_translate(cairo, (rect.left + rect.right - width) / 2, (rect.top + rect.bottom - height) / 2);
        cairo_rectangle(cairo, 0, 0, width, height);
        cairo_clip(cairo);
        cairo_scale(cairo, width / frame->Width(), height / frame->Height());
        cairo_surface_mark_dirty(frame->Cairo());
        cairo_set_source_surface(cairo, frame->Cairo(), 0, 0);
        cairo_pattern_set_filter(cairo_get_source(cairo), CAIRO_FILTER_BILINEAR);
        cairo_pattern_set_extend(cairo_get_source(cairo), CAIRO_EXTEND_PAD);
        cairo_paint(cairo);
    }
    cairo_destroy(cairo);
}

} // namespace shell
