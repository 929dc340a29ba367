// The shell's windows: who is where, who is in front, what must be painted.
#pragma once

#include "host/shell/gdi/Context.h"
#include "host/shell/gdi/VideoPlane.h"
#include "platform/velshell/GEngine.h"
#include "platform/velshell/GWorkspace.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace shell {

enum class WindowKind { Main, View, Dialog, MessageBox };

struct Window {
    HWND handle = nullptr;
    WindowKind kind = WindowKind::Main;
    GView* view = nullptr;
    GFactory* widgets = nullptr;
    RECT place = {}; // on the screen
    bool visible = false;
    bool dims = false;                // what lies under it is darkened: it waits for an answer
    std::unique_ptr<Surface> surface; // as large as the window
    Region invalid;                   // in client coordinates
    bool painting = false;

    [[nodiscard]] int Width() const { return place.right - place.left; }
    [[nodiscard]] int Height() const { return place.bottom - place.top; }
    [[nodiscard]] RECT Client() const { return {0, 0, Width(), Height()}; }
};

class WindowTree {
public:
    // A new window in front of all others, hidden.
    Window& Add(HWND handle, WindowKind kind, GView& view, GFactory& widgets, const RECT& place);
    void Remove(HWND handle);
    [[nodiscard]] Window* Find(HWND handle);
    [[nodiscard]] std::size_t Count() const { return windows.size(); }

    // Moves and sizes a window; its surface is made anew when the size changes.
    void Place(Window& window, const RECT& place) const;
    // How many pixels a unit is wide on every window. They keep what they show and want painting.
    void SetScale(int newScale);
    void Raise(HWND handle);
    // The window in front at a point of the screen, or null.
    [[nodiscard]] Window* At(POINT point);
    // The visible window in front that wants painting, lowest first, or null.
    [[nodiscard]] Window* NextToPaint();

    // All visible windows on one picture; the moving picture lies under the view.
    void Compose(Surface& screen, const VideoPlane& video) const;
    // Where the moving picture lies, or nothing when none shows.
    [[nodiscard]] std::optional<RECT> VideoPlace(const VideoPlane& video) const;
    // The same picture with a hole where the moving picture would be.
    void ComposeAround(Surface& screen, const VideoPlane& video) const;

private:
    [[nodiscard]] bool IsCovered(const Window& window) const;
    // `under` draws what lies directly under the view while the moving picture shows.
    void ComposeWith(Surface& screen, const VideoPlane& video, const std::function<void(const RECT&)>& under) const;

    std::vector<std::unique_ptr<Window>> windows; // lowest first
    int scale = 1;
};

} // namespace shell
