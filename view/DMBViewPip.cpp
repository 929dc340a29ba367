// Picture-in-picture: the view becomes a small window over another view, moves there and returns.
#include "platform/gdi.h"
#include "platform/velshell/VelDocument.h"
#include "view/DMBView.h"
#include "view/DMBViewIds.h"

namespace {

constexpr LONG kFullWidth = 800;
constexpr LONG kFullHeight = 480;

// The information text in a small window: 32 pixels high, 54 above the bottom edge.
constexpr LONG kInfoTopFromBottom = 86;
constexpr LONG kInfoBottomFromBottom = 54;
// Narrower windows show the short no-signal text.
constexpr LONG kShortTextBelow = 458;

// The radio text's margins in a small window.
constexpr LONG kLabelSideMargin = 10;
constexpr LONG kLabelVerticalMargin = 68;

} // namespace

int CVelDMBView::CanMinimize(const RECT* rect) {
    if (m_nChannelCount == 0 || m_nCurChannel < 0)
        return 0;
    return CVelPlayerView::CanMinimize(rect) != 0 ? 1 : 0;
}

void CVelDMBView::TransferToPIP() {
    CVelPlayerView::TransferToPIP();
    const GButton* info = Find(kElementInfo);
    if (IsRectEmpty(&m_rcInfo) && info != nullptr)
        m_rcInfo = info->GetRect();
    if (!IsToggleEnabled())
        ShowToolButtons(0, 0);
    if (GetCurrentType() == kSessionDAB)
        ShowAudioBG(0, 1);
    if (GButton* toggle = Find(kElementToggleSmall)) {
        SwapPIPButton(toggle, GetCurrentType() == kSessionDMB, 0);
        if (IsToolVisibled())
            toggle->Show(1, 0);
    }
    for (GButton* button : m_pChannelButtons) {
        if (button != nullptr)
            SwapPIPButton(button, 1, 1);
    }
}

void CVelDMBView::MoveToPIPWindow(const RECT* oldRect, const RECT* newRect) {
    const LONG newWidth = newRect->right - newRect->left;
    const LONG newHeight = newRect->bottom - newRect->top;
    const LONG grown = newWidth - (oldRect->right - oldRect->left);
    GButton* toggle = Find(kElementToggleSmall);
    if (grown != 0 && toggle != nullptr) {
        RECT rect = toggle->GetRect();
        rect.left += grown;
        rect.right += grown;
        toggle->SetRect(rect, 0);
    }
    FitToPIP({newWidth, newHeight});
    CVelPlayerView::MoveToPIPWindow(oldRect, newRect);
}

void CVelDMBView::FitToPIP(SIZE size) {
    if (GButton* info = Find(kElementInfo)) {
        const RECT rect = {info->GetRect().left, size.cy - kInfoTopFromBottom, size.cx,
                           size.cy - kInfoBottomFromBottom};
        const bool refresh = m_bNoSignal != 0 && info->IsVisible() && m_nCurChannel >= 0;
        if (refresh)
            info->SetText(GetMessageW(size.cx < kShortTextBelow ? kTextNoSignalShort : kTextNoSignal), 0);
        info->SetRect(rect, refresh ? 1 : 0);
    }
    const SectionLock lock(m_csDLS);
    if (size.cx == kFullWidth || size.cy == kFullHeight) {
        if (const GButton* label = Find(kElementDLS))
            m_rcDLS = label->GetRect();
    } else {
        m_rcDLS = {kLabelSideMargin, kLabelVerticalMargin, size.cx - kLabelSideMargin, size.cy - kLabelVerticalMargin};
    }
}

void CVelDMBView::RestoreFromPIP(const RECT* rect) {
    if (rect != &m_rcPIP) // the object, not its values: a rectangle from outside is to be saved
        WriteSetting(m_bProfileDirty, 1);
    ShowButton(kElementToggleSmall, 0, 0);
    for (GButton* button : m_pChannelButtons) {
        if (button != nullptr)
            SwapPIPButton(button, 0, 1);
    }
    if (!IsToggleEnabled())
        ShowToolButtons(1, 0);
    if (GetCurrentType() == kSessionDAB)
        ShowAudioBG(1, 0);
    if (GButton* toggle = Find(kElementToggleFull))
        SwapPIPButton(toggle, GetCurrentType() != kSessionDAB, 0); // another test than going small, on purpose
    if (GButton* info = Find(kElementInfo); info != nullptr && !IsRectEmpty(&m_rcInfo))
        info->SetRect(m_rcInfo, 0);
    CVelPlayerView::RestoreFromPIP(rect);
}
