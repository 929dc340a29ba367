// CVelToolView: the tool bar and the title bar.
#include "host/shell/core/Access.h"
#include "host/shell/core/BaseImpl.h"
#include "host/shell/core/ShellCore.h"

using shell::ShellCore;

const GRuntimeClass CVelToolView::classCVelToolView = {"CVelToolView", nullptr, &CVelBaseView::classCVelBaseView};

const GMessageMap CVelToolView::messageMap = {&CVelBaseView::messageMap, nullptr, 0};

CVelToolView::CVelToolView() = default;
CVelToolView::~CVelToolView() = default;

const GRuntimeClass* CVelToolView::GetRuntimeClass() const {
    return &classCVelToolView;
}

const GMessageMap* CVelToolView::GetMessageMap() const {
    return &messageMap;
}

void CVelToolView::ShowControls(int show, int redraw) {
    m_pBase->controlsShown = show != 0;
    shell::ApplyControls(*this);
    if (show) {
        ResetMenuTimeout(m_pBase->menuTimeout);
    } else if (m_hWnd) {
        KillTimer(m_hWnd, shell::kMenuTimer);
    }
    if (ShellCore* core = ShellCore::Current()) {
        core->log.Note(show ? "controls on" : "controls off");
        if (redraw && m_hWnd) {
            core->Redraw(m_hWnd, shell::kScreen, true);
        }
    }
}

void CVelToolView::EnableToggle(int enable) {
    m_pBase->toggleEnabled = enable != 0;
    for (const auto& element : m_pFactory->elements) {
        if (element->State().description->role == shell::Role::Toggle) {
            element->SetState(enable ? kButtonNormal : kButtonDisabled, 0);
        }
    }
}

int CVelToolView::IsTitleVisibled() {
    return m_pBase->controlsShown;
}

int CVelToolView::IsToolVisibled() {
    return m_pBase->controlsShown;
}

int CVelToolView::IsToggleEnabled() const {
    return m_pBase->toggleEnabled;
}

const GButton* CVelToolView::GetBarElement(int index) const {
    constexpr shell::Role kBars[] = {shell::Role::TitleBar, shell::Role::ToolBar};
    if (index < 0 || index > 1) {
        return nullptr;
    }
    for (const auto& element : m_pFactory->elements) {
        if (element->State().description->role == kBars[index]) {
            return element.get();
        }
    }
    return nullptr;
}
