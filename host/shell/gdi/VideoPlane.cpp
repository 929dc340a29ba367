#include "host/shell/gdi/VideoPlane.h"

#include <algorithm>
#include <cairo.h>
#include <utility>

namespace shell {

namespace {

std::size_t PixelCount(int width, int height) {
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
}

bool FitsSurface(int width, int height) {
    return width >= 1 && height >= 1 && width <= kMaxSurfaceSide && height <= kMaxSurfaceSide;
}

} // namespace

// With the lock held.
void VideoPlane::MakeFrame(int width, int height, double aspect) {
    if (!frame || frame->Width() != width || frame->Height() != height) {
        frame = std::make_unique<Surface>(width, height);
    }
    frameAspect = aspect > 0.1 && aspect < 10 ? aspect : static_cast<double>(width) / height;
    pending = nullptr;
    ++frames;
}

void VideoPlane::Present(int width, int height, std::span<const std::uint32_t> pixels, double aspect) {
    if (!FitsSurface(width, height) || pixels.size() < PixelCount(width, height)) {
        return;
    }
    std::function<void()> notify;
    {
        const std::lock_guard lock(mutex);
        MakeFrame(width, height, aspect);
        std::transform(pixels.begin(), pixels.begin() + static_cast<std::ptrdiff_t>(PixelCount(width, height)),
                       frame->PixelRow(0), [](std::uint32_t pixel) { return pixel | kOpaque; });
        notify = listener;
    }
    if (notify) {
        notify();
    }
}

void VideoPlane::PresentLater(int width, int height, double aspect,
                              std::function<void(std::span<std::uint32_t>)> fill) {
    if (!FitsSurface(width, height)) {
        return;
    }
    std::function<void()> notify;
    {
        const std::lock_guard lock(mutex);
        MakeFrame(width, height, aspect);
        pending = std::move(fill);
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
        pending = nullptr;
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
    if (frame && pending) {
        const std::span<std::uint32_t> pixels(frame->PixelRow(0), PixelCount(frame->Width(), frame->Height()));
        std::fill(pixels.begin(), pixels.end(), 0);
        std::exchange(pending, nullptr)(pixels);
        std::transform(pixels.begin(), pixels.end(), pixels.begin(),
                       [](std::uint32_t pixel) { return pixel | kOpaque; });
    }
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
