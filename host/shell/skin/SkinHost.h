// What widgets ask of the shell that shows them.
#pragma once

#include "host/shell/skin/SkinLibrary.h"

namespace shell {

class SkinHost {
public:
    [[nodiscard]] virtual GdiState& Gdi() = 0;
    [[nodiscard]] virtual const SkinLibrary& Skins() const = 0;
    [[nodiscard]] virtual Language CurrentLanguage() const = 0;
    // Marks a part of a window for painting, or paints it at once.
    virtual void Redraw(HWND window, const RECT& rect, bool atOnce) = 0;
    // Does moving picture lie behind this window, so that its background must stay transparent?
    [[nodiscard]] virtual bool ShowsVideoBehind(HWND window) const = 0;

protected:
    ~SkinHost() = default;
};

// The current shell, or null.
[[nodiscard]] SkinHost* CurrentSkinHost();

} // namespace shell
