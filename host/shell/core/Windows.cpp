// Windows from birth to death, messages through their maps, painting.
#include "host/shell/core/Access.h"
#include "host/shell/core/MainWindow.h"
#include "host/shell/core/ShellCore.h"
#include "host/shell/gdi/Stretch.h"

#include <array>

namespace shell {

Window* ShellCore::CreateWindowFor(GView& object, GFactory& widgets, WindowKind kind, const RECT& place,
                                   const std::string& logName) {
    const HWND handle = ce.loop().AddWindow([this](HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        return Dispatch(window, message, wParam, lParam);
    });
    log.NameWindow(handle, logName);
    windows.Add(handle, kind, object, widgets, place);
    VelShellAccess::SetHandle(object, handle);
    VelShellAccess::Widgets(widgets).window = handle;
    CREATESTRUCTW parameters{place.left, place.top, place.right - place.left, place.bottom - place.top};
    if (ce.loop().Send(handle, WM_CREATE, 0, reinterpret_cast<LPARAM>(&parameters)) == -1) {
        DestroyWindowOf(object);
        return nullptr;
    }
    return windows.Find(handle);
}

void ShellCore::DestroyWindowOf(GView& object) {
    const HWND handle = object.GetSafeHwnd();
    Window* window = windows.Find(handle);
    if (!window) {
        return;
    }
    ce.loop().Send(handle, WM_DESTROY);
    ce.loop().RemoveWindow(handle);
    VelShellAccess::Widgets(*window->widgets).window = nullptr;
    VelShellAccess::SetHandle(object, nullptr);
    windows.Remove(handle);
    log.ForgetWindow(handle);
    ScreenChanged();
}

void ShellCore::RaiseBelowDialogs(HWND handle) {
    windows.Raise(handle);
    for (const HWND dialog : modalWindows) {
        windows.Raise(dialog);
    }
    if (const MessageBoxDialog* box = boxes.Front()) {
        windows.Raise(box->GetSafeHwnd());
    }
    ScreenChanged();
}

// Rows in order, a command by its range; then the base's rows.
LRESULT ShellCore::Dispatch(HWND handle, UINT message, WPARAM wParam, LPARAM lParam) {
    const Window* window = windows.Find(handle);
    if (!window) {
        return 0;
    }
    GView* object = window->view;
    const UINT id = static_cast<UINT>(wParam & 0xFFFF);
    for (const GMessageMap* map = object->GetMessageMap(); map; map = map->base) {
        for (UINT i = 0; i < map->count; ++i) {
            const GMessageEntry& row = map->entries[i];
            const bool matches =
                row.message == message && (message != WM_COMMAND || (id >= row.firstId && id <= row.lastId));
            if (matches) {
                return row.invoke(object, wParam, lParam);
            }
        }
    }
    return 0;
}

bool ShellCore::PaintOne() {
    boxes.Sweep();
    Window* window = windows.NextToPaint();
    if (!window) {
        return false;
    }
    PaintWindow(*window);
    return true;
}

void ShellCore::PaintWindow(Window& window) {
    if (window.painting || window.invalid.IsEmpty()) {
        return;
    }
    const Region region = window.invalid;
    window.invalid.Clear();
    window.painting = true;
    const HWND handle = window.handle;
    const HDC context = gdi.MakeWindowContext(handle, *window.surface, region);
    window.view->OnDraw(context);
    if (Context* over = gdi.Find(context); over && windows.Find(handle)) {
        PaintElements(VelShellAccess::Widgets(*window.widgets), *over, true);
    }
    gdi.EndContext(context);
    if (Window* still = windows.Find(handle)) {
        still->painting = false;
    }
    ScreenChanged();
}

void ShellCore::ScreenChanged() {
    if (screenListener) {
        screenListener();
    }
}

void ShellCore::SetScale(int newScale) {
    if (newScale == scale) {
        return;
    }
    scale = newScale;
    skins.DropFine();
    windows.SetScale(scale);
    while (PaintOne()) {
    }
    ScreenChanged();
}

void ShellCore::Redraw(HWND handle, const RECT& rect, bool atOnce) {
    Window* window = windows.Find(handle);
    if (!window) {
        return;
    }
    const RECT client = window->Client();
    RECT part;
    if (IntersectRect(&part, &rect, &client)) {
        window->invalid.Add(part);
    }
    if (atOnce && window->visible) {
        PaintWindow(*window);
    }
}

bool ShellCore::ShowsVideoBehind(HWND handle) const {
    return video.visible && view && view->GetSafeHwnd() == handle;
}

} // namespace shell

// ---- The calls of platform/gdi.h that name a window ----

using shell::ShellCore;

HDC GetDC(HWND handle) {
    ShellCore* core = ShellCore::Current();
    shell::Window* window = core ? core->windows.Find(handle) : nullptr;
    return window ? core->gdi.MakeWindowContext(handle, *window->surface, shell::Region(window->Client())) : nullptr;
}

int ReleaseDC(HWND window, HDC context) {
    ShellCore* core = ShellCore::Current();
    const shell::Context* found = core ? core->gdi.Find(context) : nullptr;
    if (!found || found->window != window || !window) {
        return 0;
    }
    bool painted = false;
    core->gdi.EndContext(context, &painted);
    if (painted) {
        core->ScreenChanged();
    }
    return 1;
}

BOOL InvalidateRect(HWND handle, const RECT* rectangle, BOOL /*erase*/) {
    ShellCore* core = ShellCore::Current();
    const shell::Window* window = core ? core->windows.Find(handle) : nullptr;
    if (!window) {
        return FALSE;
    }
    core->Redraw(handle, rectangle ? *rectangle : window->Client(), false);
    return TRUE;
}

BOOL GetClientRect(HWND handle, RECT* rectangle) {
    ShellCore* core = ShellCore::Current();
    const shell::Window* window = core ? core->windows.Find(handle) : nullptr;
    if (!window || !rectangle) {
        return FALSE;
    }
    *rectangle = window->Client();
    return TRUE;
}

HBITMAP LoadBitmapW(HINSTANCE /*module*/, const WCHAR* name) {
    ShellCore* core = ShellCore::Current();
    const auto number = reinterpret_cast<UINT_PTR>(name);
    const shell::SkinImage* picture =
        core && number <= 0xFFFF ? core->skins.Bitmap(static_cast<UINT>(number)) : nullptr;
    if (!picture) {
        return nullptr;
    }
    const shell::Surface& pixels = picture->At(core->scale);
    shell::Surface copy(pixels.Width(), pixels.Height(), pixels.Scale());
    shell::StretchPixels(pixels, copy.Bounds(), copy, copy.Bounds(), std::array{copy.Bounds()});
    return core->gdi.AddBitmap(std::move(copy), false);
}
