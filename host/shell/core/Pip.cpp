// The small window: what the shell does, and the base's part of it.
#include "host/shell/core/Access.h"
#include "host/shell/core/BaseImpl.h"
#include "host/shell/core/ShellCore.h"

namespace shell {

namespace {

constexpr RECT kDefaultSmallPlace = {472, 232, 792, 472}; // 320 x 240, lower right corner
constexpr int kLeastSide = 120;

// A stored rectangle comes from a file that anyone may have written.
bool IsUsable(const RECT& place) {
    return place.right - place.left >= kLeastSide && place.bottom - place.top >= kLeastSide && place.left >= 0 &&
           place.top >= 0 && place.right <= kScreenWidth && place.bottom <= kScreenHeight;
}

std::string PlaceText(const RECT& place) {
    return std::to_string(place.left) + " " + std::to_string(place.top) + " " + std::to_string(place.right) + " " +
           std::to_string(place.bottom);
}

} // namespace

bool ShellCore::Minimize() {
    if (!view || document.IsMinimized()) {
        return false;
    }
    if (!IsUsable(*view->GetPIPRect())) {
        view->ResetPIPosition();
    }
    if (!view->CanMinimize(view->GetPIPRect())) {
        return false;
    }
    smallPlace = *view->GetPIPRect();
    smallMoved = false;
    log.Note("small " + PlaceText(smallPlace));
    view->TransferToPIP();
    view->MoveToPIPWindow(&kScreen, &smallPlace);
    return true;
}

void ShellCore::MoveSmall(const RECT& place) {
    if (!view || !document.IsMinimized() || !IsUsable(place)) {
        return;
    }
    if (PlaceText(place) == PlaceText(smallPlace)) {
        return;
    }
    const RECT before = smallPlace;
    smallPlace = place;
    smallMoved = true;
    log.Note("small " + PlaceText(smallPlace));
    view->MoveToPIPWindow(&before, &smallPlace);
}

void ShellCore::Restore() {
    if (!view || !document.IsMinimized()) {
        return;
    }
    log.Note("full");
    view->MoveToPIPWindow(&smallPlace, &kScreen);
    // The stored rectangle itself when the user left it there; a rectangle of our own makes the view save it.
    view->RestoreFromPIP(smallMoved ? &smallPlace : view->GetPIPRect());
}

} // namespace shell

using shell::ShellCore;

int CVelBaseView::CanMinimize(const RECT* rect) {
    const ShellCore* core = ShellCore::Current();
    return core && rect && !IsRectEmpty(rect) && !core->document.IsMinimized();
}

void CVelBaseView::TransferToPIP() {
    if (ShellCore* core = ShellCore::Current()) {
        core->document.SetMinimized(true);
        shell::ApplyControls(*this);
    }
}

void CVelBaseView::MoveToPIPWindow(const RECT* /*oldRect*/, const RECT* newRect) {
    ShellCore* core = ShellCore::Current();
    shell::Window* window = core ? core->windows.Find(m_hWnd) : nullptr;
    if (!window || !newRect) {
        return;
    }
    core->windows.Place(*window, *newRect);
    const bool small = window->Width() < shell::kScreenWidth || window->Height() < shell::kScreenHeight;
    for (const auto& element : m_pFactory->elements) {
        element->PlaceFor(small, window->Width(), window->Height());
    }
    core->ScreenChanged();
}

void CVelBaseView::RestoreFromPIP(const RECT* rect) {
    if (rect && rect != &m_rcPIP) {
        m_rcPIP = *rect;
    }
    ShellCore* core = ShellCore::Current();
    if (!core) {
        return;
    }
    core->document.SetMinimized(false);
    if (shell::Window* window = core->windows.Find(m_hWnd)) {
        core->windows.Place(*window, shell::kScreen);
    }
    for (const auto& element : m_pFactory->elements) {
        element->PlaceFor(false, shell::kScreenWidth, shell::kScreenHeight);
    }
    shell::ApplyControls(*this);
    core->ScreenChanged();
}

const RECT* CVelBaseView::GetPIPRect() {
    return &m_rcPIP;
}

void CVelBaseView::ResetPIPosition() {
    m_rcPIP = shell::kDefaultSmallPlace;
}
