// Fingers and keys.
#include "host/shell/core/Access.h"
#include "host/shell/core/ShellCore.h"

namespace shell {

namespace {

Element* ElementAt(const GFactory::Impl& widgets, POINT point) {
    for (auto it = widgets.elements.rbegin(); it != widgets.elements.rend(); ++it) {
        const RECT& rect = (*it)->GetRect();
        const bool inside =
            point.x >= rect.left && point.x < rect.right && point.y >= rect.top && point.y < rect.bottom;
        if (inside && (*it)->CanBePressed()) {
            return it->get();
        }
    }
    return nullptr;
}

} // namespace

void ShellCore::TouchDown(Window& window, POINT client) {
    GFactory::Impl& widgets = VelShellAccess::Widgets(*window.widgets);
    widgets.pressed = ElementAt(widgets, client);
    if (widgets.pressed) {
        widgets.pressed->SetHeld(true);
        if (window.kind == WindowKind::View) {
            view->ResetMenuTimeout(view->GetMenuTimeout());
        }
    } else if (window.kind == WindowKind::View) {
        // A touch beside every button brings the controls back, or sends them away from the picture.
        const bool shown = view->IsToolVisibled() != 0;
        if (!shown || video.visible) {
            view->ShowControls(!shown, 1);
        }
    } else if (window.kind == WindowKind::MessageBox && boxes.Front() && boxes.Front()->style == kBoxNotice) {
        boxes.Force(kDialogOk);
    }
}

void ShellCore::TouchUp(Window& window, POINT client) {
    GFactory::Impl& widgets = VelShellAccess::Widgets(*window.widgets);
    Element* pressed = std::exchange(widgets.pressed, nullptr);
    if (!pressed) {
        return;
    }
    pressed->SetHeld(false);
    if (ElementAt(widgets, client) == pressed) {
        Click(window, *pressed);
    }
}

bool ShellCore::Click(Window& window, const Element& element) {
    if (!element.CanBePressed() || window.widgets->OnPreClick(element.GetId()) != 0) {
        return false;
    }
    ce.loop().Post(window.handle, WM_COMMAND, element.GetId());
    return true;
}

bool ShellCore::TakesInput(const Window& window) const {
    return modalWindows.empty() || window.handle == modalWindows.back() || window.kind == WindowKind::MessageBox;
}

// A box that nobody waits for does not keep the user from what lies beside it.
std::vector<Window*> ShellCore::InputWindows() {
    std::vector<Window*> result;
    const bool viewInFront = view && !homeInFront;
    const HWND top = !modalWindows.empty() ? modalWindows.back()
                     : viewInFront         ? view->GetSafeHwnd()
                                           : main->GetSafeHwnd();
    const MessageBoxDialog* box = boxes.Front();
    if (box && box->GetSafeHwnd() != top) {
        result.push_back(windows.Find(box->GetSafeHwnd()));
    }
    if (Window* window = windows.Find(top)) {
        result.push_back(window);
    }
    return result;
}

Window* ShellCore::KeyWindow() {
    const MessageBoxDialog* box = boxes.Front();
    const bool asks = box && !modalWindows.empty() && box->GetSafeHwnd() == modalWindows.back();
    if (asks && view && box->parent == view) {
        return windows.Find(view->GetSafeHwnd()); // a view closes its boxes by key itself
    }
    const std::vector<Window*> candidates = InputWindows();
    return candidates.empty() ? nullptr : candidates.back();
}

} // namespace shell
