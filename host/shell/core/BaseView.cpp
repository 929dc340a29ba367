// CVelBaseView: a view's title, boxes, timeout, and its requests to the shell.
#include "host/ce/Text.h"
#include "host/shell/core/Access.h"
#include "host/shell/core/BaseImpl.h"
#include "host/shell/core/ShellCore.h"

using shell::ShellCore;

const GRuntimeClass CVelBaseView::classCVelBaseView = {"CVelBaseView", nullptr, &GView::classGView};

const GMessageMap CVelBaseView::messageMap = [] {
    static const GMessageEntry rows[] = {
        GMap::OnCreate<&CVelBaseView::OnCreate>(),
        GMap::OnKeyUp<&CVelBaseView::OnKeyUp>(),
        {shell::kVideoMessage, 0, 0,
         [](GView* self, WPARAM show, LPARAM) -> LRESULT {
             ShellCore* core = ShellCore::Current();
             core->video.visible = show != 0;
             core->log.Note(show ? "video on" : "video off");
             static_cast<CVelBaseView*>(self)->RefreshWindow();
             return 0;
         }},
        {shell::kBoxMessage, 0, 0,
         [](GView* self, WPARAM textId, LPARAM style) -> LRESULT {
             auto* view = static_cast<CVelBaseView*>(self);
             const auto id = static_cast<WORD>(textId);
             ShellCore::Current()->boxes.Post(view, view->GetResourceName(), id, view->GetMessageW(id),
                                              static_cast<int>(style));
             return 0;
         }},
        {WM_COMMAND, shell::kCommandFullSize, shell::kCommandFullSize,
         [](GView*, WPARAM, LPARAM) -> LRESULT {
             ShellCore::Current()->Restore();
             return 0;
         }},
        {WM_COMMAND, shell::kCommandSmallSize, shell::kCommandSmallSize,
         [](GView*, WPARAM, LPARAM) -> LRESULT {
             ShellCore::Current()->Minimize();
             return 0;
         }},
    };
    return GMessageMap{&GView::messageMap, rows, 6};
}();

CVelBaseView::CVelBaseView() : m_pBase(new BaseImpl) {
    // What the user sees survives a change of the skin.
    m_pFactory->themed = [this] {
        for (const auto& element : m_pFactory->elements) {
            const shell::Role role = element->State().description->role;
            if (role == shell::Role::TitleBar || role == shell::Role::StationName) {
                element->SetText(shell::TitleFor(role, m_pBase->title).c_str(), 0);
            } else if (role == shell::Role::RecordSign) {
                element->Show(m_pBase->recordSign, 0);
            } else if (role == shell::Role::Toggle) {
                element->SetState(m_pBase->toggleEnabled ? kButtonNormal : kButtonDisabled, 0);
            }
        }
        shell::ApplyControls(*this);
        if (ShellCore* core = ShellCore::Current()) {
            core->ApplyReason();
        }
    };
}

CVelBaseView::~CVelBaseView() {
    delete m_pBase;
}

const GRuntimeClass* CVelBaseView::GetRuntimeClass() const {
    return &classCVelBaseView;
}

const GMessageMap* CVelBaseView::GetMessageMap() const {
    return &messageMap;
}

void CVelBaseView::OnDraw(HDC dc) {
    DoPaint(dc);
}

int CVelBaseView::OnCreate(CREATESTRUCTW* parameters) {
    return GView::OnCreate(parameters);
}

void CVelBaseView::OnKeyUp(UINT key, UINT repeatCount, UINT flags) {
    constexpr UINT kEscape = 27, kHome = 36;
    ShellCore* core = ShellCore::Current();
    if (core && key == kEscape) {
        (void)core->boxes.Force(kDialogCancel); // a view closes only those boxes that it keeps in mind
    } else if (core && key == kHome) {
        (void)core->ShowHome();
    }
    GView::OnKeyUp(key, repeatCount, flags);
}

const WCHAR* CVelBaseView::GetAlias() const {
    return u"";
}

int CVelBaseView::IsClosable() {
    return 1;
}

int CVelBaseView::IsVolatile() {
    return 1;
}

void CVelBaseView::Destroy() {}

void CVelBaseView::Active() {}

void CVelBaseView::Deactive() {}

void CVelBaseView::HoldForBackView(int /*hold*/) {}

void CVelBaseView::SetTitle(const WCHAR* title) {
    m_pBase->title = title ? title : u"";
    if (ShellCore* core = ShellCore::Current()) {
        if (!m_pBase->title.empty()) {
            core->lastTitle = m_pBase->title;
        }
        core->log.Note("title " + ce::ToUtf8(m_pBase->title));
    }
    for (const auto& element : m_pFactory->elements) {
        const shell::Role role = element->State().description->role;
        if (role == shell::Role::TitleBar || role == shell::Role::StationName) {
            element->SetText(shell::TitleFor(role, m_pBase->title).c_str(), 0);
        }
    }
}

void CVelBaseView::SetFMTStatus(int status) {
    m_pBase->receptionStatus = status;
}

void CVelBaseView::SetAudioLevel(int level) {
    m_pBase->audioLevel = level;
}

int CVelBaseView::IsActivated() const {
    const ShellCore* core = ShellCore::Current();
    return core && core->view == this && m_pBase->active;
}

void CVelBaseView::SwapPIPButton(GButton* button, int alternative, int redraw) {
    if (button) {
        static_cast<shell::Element*>(button)->SetFace(alternative, redraw != 0);
    }
}

void CVelBaseView::OnCloseView() {
    if (HWND main = GetMainWindow()) {
        PostMessageW(main, shell::kCloseViewMessage, 0, 0);
    }
}

int CVelBaseView::MsgBox(WORD textId, int style) {
    ShellCore* core = ShellCore::Current();
    return core ? core->boxes.Ask(this, GetResourceName(), textId, GetMessageW(textId), style) : int{kDialogFailed};
}

int CVelBaseView::ForceIDOKtoMsgBox() {
    ShellCore* core = ShellCore::Current();
    return core && core->boxes.Force(kDialogOk);
}

int CVelBaseView::ForceIDCancelToMsgBox() {
    ShellCore* core = ShellCore::Current();
    return core && core->boxes.Force(kDialogCancel);
}

UINT CVelBaseView::GetMenuTimeout() const {
    return m_pBase->menuTimeout;
}

void CVelBaseView::ResetMenuTimeout(UINT milliseconds) {
    m_pBase->menuTimeout = milliseconds;
    if (m_hWnd && m_pBase->controlsShown) {
        SetTimer(m_hWnd, shell::kMenuTimer, milliseconds, nullptr);
    }
}

namespace shell {

WString TitleFor(Role role, const WString& title) {
    if (role != Role::StationName || title.empty() || title.front() != u'[') {
        return title;
    }
    const std::size_t end = title.find(u"] ");
    return end == WString::npos ? title : title.substr(end + 2);
}

void ShowRecordSign(CVelBaseView& view, bool on) {
    VelShellAccess::Base(view).recordSign = on;
    for (const auto& element : VelShellAccess::Widgets(view).elements) {
        if (element->State().description->role == Role::RecordSign) {
            element->Show(on, 0);
        }
    }
}

void ApplyControls(CVelBaseView& view) {
    ShellCore* core = ShellCore::Current();
    if (!core) {
        return;
    }
    const bool shown = VelShellAccess::Base(view).controlsShown;
    const bool small = core->document.IsMinimized() != 0;
    for (const auto& element : VelShellAccess::Widgets(view).elements) {
        const ControlGroup group = element->State().description->control;
        if (group != ControlGroup::None) {
            const bool fits = group == ControlGroup::Both || (group == ControlGroup::Small) == small;
            element->Show(shown && fits, 0);
        }
    }
    if (small != core->reasonIsSmall) {
        core->ApplyReason();
    }
}

} // namespace shell
