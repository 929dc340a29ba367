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

constexpr UINT kFirstRow = 40, kLastRow = 49; // of a list
constexpr int kRowsPerNotch = 3;
constexpr ce::Millis kDoubleTap = 400;

CVelFileDialog* ListOf(const Window& window) {
    const bool isList = window.view->IsKindOf(&CVelFileDialog::classCVelFileDialog);
    return isList ? static_cast<CVelFileDialog*>(window.view) : nullptr;
}

LONG RowHeight(const GFactory& widgets) {
    const GButton* first = widgets.Find(kFirstRow);
    const GButton* second = widgets.Find(kFirstRow + 1);
    return first && second ? second->GetRect().top - first->GetRect().top : 0;
}

} // namespace

void ShellCore::TouchDown(Window& window, POINT client) {
    GFactory::Impl& widgets = VelShellAccess::Widgets(*window.widgets);
    finger = {true, {client.x + window.place.left, client.y + window.place.top}, window.place, Drag::None, 0};
    widgets.pressed = ElementAt(widgets, client);
    if (widgets.pressed) {
        widgets.pressed->SetHeld(true);
        if (window.kind == WindowKind::View) {
            view->ResetMenuTimeout(view->GetMenuTimeout());
        }
    } else if (window.kind == WindowKind::View && !document.IsMinimized()) {
        // A touch beside every button brings the controls back, or sends them away from the picture.
        const bool shown = view->IsToolVisibled() != 0;
        if (!shown || video.visible) {
            view->ShowControls(!shown, 1);
        }
    } else if (window.kind == WindowKind::MessageBox && boxes.Front() && boxes.Front()->style == kBoxNotice) {
        boxes.Force(kDialogOk);
    }
}

void ShellCore::TouchMove(Window& window, POINT point) {
    if (!finger.down) {
        return;
    }
    const bool isView = window.kind == WindowKind::View;
    const bool isSmall = isView && document.IsMinimized();
    if (finger.drag == Drag::None) {
        GFactory::Impl& widgets = VelShellAccess::Widgets(*window.widgets);
        if (!IsDrag(finger.from, point)) {
            return;
        }
        const UINT held = widgets.pressed ? widgets.pressed->GetId() : kFirstRow;
        if (isSmall) {
            finger.drag = DragOfSmall(finger.place, finger.from);
        } else if (isView && MakesSmall(finger.from, point)) {
            finger.drag = Drag::MakeSmall;
        } else if (ListOf(window) && held >= kFirstRow && held <= kLastRow) {
            finger.drag = Drag::ScrollList;
        } else {
            return;
        }
        // What the finger held at first is not pressed by a drag.
        if (Element* pressed = std::exchange(widgets.pressed, nullptr)) {
            pressed->SetHeld(false);
        }
        if (finger.drag == Drag::MakeSmall) {
            if (const GButton* button = window.widgets->Find(kCommandSmallSize)) {
                (void)Click(window, static_cast<const Element&>(*button));
            }
        }
    }
    if (finger.drag == Drag::MoveSmall && isSmall) {
        MoveSmall(MovedBy(finger.place, point.x - finger.from.x, point.y - finger.from.y));
    } else if (finger.drag == Drag::SizeSmall && isSmall) {
        MoveSmall(SizedTo(finger.place, point));
    } else if (finger.drag == Drag::ScrollList) {
        const int rows = RowsDragged(finger.from.y, point.y, RowHeight(*window.widgets));
        VelShellAccess::Scroll(*ListOf(window), rows - std::exchange(finger.rows, rows));
    }
}

void ShellCore::TouchUp(Window& window, POINT client) {
    GFactory::Impl& widgets = VelShellAccess::Widgets(*window.widgets);
    const bool dragged = std::exchange(finger, {}).drag != Drag::None;
    Element* pressed = std::exchange(widgets.pressed, nullptr);
    if (!pressed) {
        if (!dragged && window.kind == WindowKind::View && document.IsMinimized()) {
            TapSmall(window);
        }
        return;
    }
    pressed->SetHeld(false);
    if (ElementAt(widgets, client) == pressed) {
        Click(window, *pressed);
    }
}

void ShellCore::TapSmall(Window& window) {
    const ce::Millis now = ce.clock().Now();
    if (now - std::exchange(lastTap, now) < kDoubleTap) {
        lastTap = kNoTap;
        ce.loop().Post(window.handle, WM_COMMAND, kCommandFullSize);
        return;
    }
    const bool shown = view->IsToolVisibled() != 0;
    if (!shown || video.visible) {
        view->ShowControls(!shown, 1);
    }
}

void ShellCore::Wheel(Window& window, int notches) {
    if (CVelFileDialog* list = ListOf(window)) {
        VelShellAccess::Scroll(*list, -notches * kRowsPerNotch);
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
