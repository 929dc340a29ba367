#include "host/shell/core/WindowTree.h"

#include "host/shell/gdi/ImagePainter.h"

#include <algorithm>

namespace shell {

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

void WindowTree::Place(Window& window, const RECT& place) {
    const int oldWidth = window.Width();
    const int oldHeight = window.Height();
    window.place = place;
    if (!window.surface || window.Width() != oldWidth || window.Height() != oldHeight) {
        window.surface = std::make_unique<Surface>(window.Width(), window.Height());
    }
    window.invalid = Region(window.Client());
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
    for (int y = 0; y < screen.Height(); ++y) {
        std::fill(screen.Row(y), screen.Row(y) + screen.Width(), kOpaque);
    }
    for (const auto& window : windows) {
        if (!window->visible) {
            continue;
        }
        if (window->kind == WindowKind::View && video.visible) {
            under(window->place);
        }
        DrawOver(screen, *window->surface, window->place.left, window->place.top);
    }
}

void WindowTree::Compose(Surface& screen, const VideoPlane& video) const {
    ComposeWith(screen, video, [&](const RECT& place) { video.Paint(screen, place); });
}

void WindowTree::ComposeAround(Surface& screen, const VideoPlane& video) const {
    ComposeWith(screen, video, [&screen](const RECT& place) {
        const RECT bounds = screen.Bounds();
        RECT hole;
        if (!IntersectRect(&hole, &place, &bounds)) {
            return;
        }
        for (int y = hole.top; y < hole.bottom; ++y) {
            std::fill(screen.Row(y) + hole.left, screen.Row(y) + hole.right, 0u);
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
