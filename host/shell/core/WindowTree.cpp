#include "host/shell/core/WindowTree.h"

#include "host/shell/gdi/ImagePainter.h"

#include <algorithm>

namespace shell {

namespace {

// Under a window that waits for an answer everything is at 40 percent of its light; so is what shines through a hole.
void Darken(Surface& screen) {
    constexpr std::uint32_t kLight = 102; // of 256
    for (int y = 0; y < screen.PixelHeight(); ++y) {
        std::uint32_t* row = screen.PixelRow(y);
        for (int x = 0; x < screen.PixelWidth(); ++x) {
            const std::uint32_t pixel = row[x];
            const std::uint32_t clear = (255 - (pixel >> 24)) * kLight >> 8;
            row[x] = (255 - clear) << 24 | ((pixel & 0xFF00FF) * kLight >> 8 & 0xFF00FF) |
                     ((pixel & 0x00FF00) * kLight >> 8 & 0x00FF00);
        }
    }
}

// A line around a window that does not fill the screen, so that it stands out from what lies behind it.
void FrameSmall(Surface& screen, const RECT& place) {
    constexpr LONG kLine = 2;
    constexpr std::uint32_t kFrame = kOpaque | 0x5A6B82;
    if (place.right - place.left >= screen.Width() && place.bottom - place.top >= screen.Height()) {
        return;
    }
    const LONG left = std::max(place.left - kLine, LONG{0}), top = std::max(place.top - kLine, LONG{0});
    const LONG right = std::min(place.right + kLine, LONG{screen.Width()});
    const LONG bottom = std::min(place.bottom + kLine, LONG{screen.Height()});
    screen.Fill({left, top, right, bottom}, kFrame);
}

} // namespace

Window& WindowTree::Add(HWND handle, WindowKind kind, GView& view, GFactory& widgets, const RECT& place) {
    auto window = std::make_unique<Window>();
    window->handle = handle;
    window->kind = kind;
    window->view = &view;
    window->widgets = &widgets;
    Place(*window, place);
    windows.push_back(std::move(window));
    return *windows.back();
}

void WindowTree::Remove(HWND handle) {
    std::erase_if(windows, [handle](const auto& window) { return window->handle == handle; });
}

Window* WindowTree::Find(HWND handle) {
    const auto found = std::find_if(windows.begin(), windows.end(), [&](const auto& w) { return w->handle == handle; });
    return found == windows.end() ? nullptr : found->get();
}

void WindowTree::Place(Window& window, const RECT& place) const {
    const int oldWidth = window.Width();
    const int oldHeight = window.Height();
    window.place = place;
    if (!window.surface || window.Width() != oldWidth || window.Height() != oldHeight) {
        window.surface = std::make_unique<Surface>(window.Width(), window.Height(), scale);
    }
    window.invalid = Region(window.Client());
}

void WindowTree::SetScale(int newScale) {
    scale = newScale;
    for (const auto& window : windows) {
        window->surface->Rescale(scale);
        window->invalid = Region(window->Client());
    }
}

void WindowTree::Raise(HWND handle) {
    const auto found = std::find_if(windows.begin(), windows.end(), [&](const auto& w) { return w->handle == handle; });
    if (found != windows.end()) {
        std::rotate(found, found + 1, windows.end());
    }
}

Window* WindowTree::At(POINT point) {
    const auto hit = std::find_if(windows.rbegin(), windows.rend(), [point](const auto& w) {
        return w->visible && point.x >= w->place.left && point.x < w->place.right && point.y >= w->place.top &&
               point.y < w->place.bottom;
    });
    return hit == windows.rend() ? nullptr : hit->get();
}

Window* WindowTree::NextToPaint() {
    const auto next = std::find_if(windows.begin(), windows.end(),
                                   [](const auto& w) { return w->visible && !w->painting && !w->invalid.IsEmpty(); });
    return next == windows.end() ? nullptr : next->get();
}

void WindowTree::ComposeWith(Surface& screen, const VideoPlane& video,
                             const std::function<void(const RECT&)>& under) const {
    screen.Fill(screen.Bounds(), kOpaque);
    const auto shows = [this](const Window& window) { return window.visible && !IsCovered(window); };
    const auto lastDimming = std::find_if(windows.rbegin(), windows.rend(),
                                          [&](const auto& window) { return shows(*window) && window->dims; });
    for (const auto& window : windows) {
        if (!shows(*window)) {
            continue;
        }
        if (lastDimming != windows.rend() && window == *lastDimming) {
            Darken(screen);
        }
        if (window->kind == WindowKind::View) {
            FrameSmall(screen, window->place);
            if (video.visible) {
                under(window->place);
            }
        }
        DrawOver(screen, *window->surface, window->place.left, window->place.top);
    }
}

// A dialog that opened another one waits out of sight.
bool WindowTree::IsCovered(const Window& window) const {
    if (window.kind != WindowKind::Dialog) {
        return false;
    }
    const auto self = std::find_if(windows.begin(), windows.end(), [&](const auto& w) { return w.get() == &window; });
    return std::any_of(self + 1, windows.end(),
                       [](const auto& w) { return w->visible && w->kind == WindowKind::Dialog; });
}

void WindowTree::Compose(Surface& screen, const VideoPlane& video) const {
    ComposeWith(screen, video, [&](const RECT& place) { video.Paint(screen, place); });
}

void WindowTree::ComposeAround(Surface& screen, const VideoPlane& video) const {
    ComposeWith(screen, video, [&screen](const RECT& place) {
        const RECT bounds = screen.Bounds();
        RECT hole;
        if (IntersectRect(&hole, &place, &bounds)) {
            screen.Fill(hole, 0);
        }
    });
}

std::optional<RECT> WindowTree::VideoPlace(const VideoPlane& video) const {
    for (const auto& window : windows) {
        if (window->kind == WindowKind::View && window->visible && video.visible) {
            return window->place;
        }
    }
    return std::nullopt;
}

} // namespace shell
