// GView: a window's default answers; GMessage: numbered texts.
#include "host/ce/Text.h"
#include "host/shell/core/ShellCore.h"

#include <iterator>

using shell::ShellCore;

const GRuntimeClass GView::classGView = {"GView", nullptr, &GObject::classGObject};

const GMessageMap GView::messageMap = [] {
    static const auto pointOf = [](LPARAM packed) {
        return POINT{static_cast<SHORT>(packed & 0xFFFF), static_cast<SHORT>((packed >> 16) & 0xFFFF)};
    };
    static const GMessageEntry rows[] = {
        GMap::OnCreate<&GView::OnCreate>(),
        GMap::OnTimer<&GView::OnTimer>(),
        GMap::OnKeyUp<&GView::OnKeyUp>(),
        GMap::OnLButtonDown<&GView::OnLButtonDown>(),
        {WM_LBUTTONUP, 0, 0,
         [](GView* self, WPARAM, LPARAM lParam) -> LRESULT {
             ShellCore* core = ShellCore::Current();
             if (shell::Window* window = core->windows.Find(self->GetSafeHwnd())) {
                 core->TouchUp(*window, pointOf(lParam));
             }
             return 0;
         }},
        {shell::kTouchMoveMessage, 0, 0,
         [](GView* self, WPARAM, LPARAM lParam) -> LRESULT {
             ShellCore* core = ShellCore::Current();
             if (shell::Window* window = core->windows.Find(self->GetSafeHwnd())) {
                 core->TouchMove(*window, pointOf(lParam));
             }
             return 0;
         }},
        {shell::kWheelMessage, 0, 0,
         [](GView* self, WPARAM, LPARAM notches) -> LRESULT {
             ShellCore* core = ShellCore::Current();
             if (shell::Window* window = core->windows.Find(self->GetSafeHwnd())) {
                 core->Wheel(*window, static_cast<int>(notches));
             }
             return 0;
         }},
    };
    return GMessageMap{nullptr, rows, static_cast<UINT>(std::size(rows))};
}();

GView::GView() = default;
GView::~GView() = default;

const GRuntimeClass* GView::GetRuntimeClass() const {
    return &classGView;
}

const GMessageMap* GView::GetMessageMap() const {
    return &messageMap;
}

void GView::OnDraw(HDC /*dc*/) {}

CVelDocument* GView::GetDocument() const {
    ShellCore* core = ShellCore::Current();
    return core ? &core->document : nullptr;
}

int GView::OnCreate(CREATESTRUCTW* /*parameters*/) {
    return 0;
}

void GView::OnTimer(UINT_PTR id) {
    if (ShellCore* core = ShellCore::Current()) {
        core->log.Note("host timer " + std::to_string(id));
    }
}

void GView::OnKeyUp(UINT key, UINT /*repeatCount*/, UINT /*flags*/) {
    if (ShellCore* core = ShellCore::Current()) {
        core->log.Note("host key " + std::to_string(key));
    }
}

void GView::OnLButtonDown(UINT /*flags*/, POINT point) {
    ShellCore* core = ShellCore::Current();
    if (shell::Window* window = core ? core->windows.Find(m_hWnd) : nullptr) {
        core->TouchDown(*window, point);
    }
}

void GView::BringToTop() {
    ShellCore* core = ShellCore::Current();
    if (core && core->windows.Find(m_hWnd)) {
        core->RaiseBelowDialogs(m_hWnd);
    }
}

HWND GView::GetMainWindow() {
    const ShellCore* core = ShellCore::Current();
    return core && core->main ? core->main->GetSafeHwnd() : nullptr;
}

RECT GView::GetMainWindowRect() {
    return shell::kScreen;
}

HWND GView::GetFrontWindow() {
    ShellCore* core = ShellCore::Current();
    const std::vector<shell::Window*> windows = core ? core->InputWindows() : std::vector<shell::Window*>{};
    return windows.empty() ? nullptr : windows.front()->handle;
}

// ---- GMessage ----

GMessage::GMessage() = default;
GMessage::~GMessage() = default;

const WCHAR* GMessage::GetMessageW(WORD id) const {
    const ShellCore* core = ShellCore::Current();
    return core ? core->skins.Text(m_strMessageResource, id, core->language) : u"";
}

WString GMessage::atou(const char* text, int byteCount, int /*flags*/) {
    if (!text || byteCount <= 0) {
        return {};
    }
    const std::string_view bytes(text, static_cast<std::size_t>(byteCount));
    return ce::NarrowToWide(bytes.substr(0, bytes.find('\0')));
}

void GMessage::SetMessageResource(const WCHAR* resourceName) {
    m_strMessageResource = resourceName;
}
