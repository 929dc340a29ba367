// The channel scan: one blocking walk over the channel table, from stopping what plays to showing the new list.
#include <cstring>

#include "platform/velshell/VelDialog.h"
#include "view/DMBView.h"
#include "view/DMBViewIds.h"

namespace {

constexpr DWORD kScanPause = 20;        // ms after each visited row
constexpr int kSlotsClearedByScan = 10; // the other slots keep what the scan before left in them, on purpose

// Adds a block's television and radio services to the running counts.
void CountServices(const _tag_DMB_CHANNEL_INFO& block, int& tvCount, int& radioCount) {
    for (const _tag_DMB_SERVICE_INFO& service : block.service) {
        if (service.szLabel[0] == '\0')
            break;
        if (service.nServiceType == DMB_SERVICE_TYPE_DMB_VIDEO)
            ++tvCount;
        else if (service.nServiceType == DMB_SERVICE_TYPE_DAB_AUDIO)
            ++radioCount;
    }
}

void SetButtonState(GButton* button, int state) {
    if (button != nullptr)
        button->SetState(state, 1);
}

} // namespace

void CVelDMBView::ShowScanCounts(int tvCount, int radioCount) {
    if (m_pScanText != nullptr)
        m_pScanText->SetText(FormatW(WTEXT("  %d                       %d "), tvCount, radioCount).c_str(), 1);
}

void CVelDMBView::OnClickScan() {
    if (CVelDialog* dialog = CVelDialog::FromHandle(GetFrontWindow()))
        dialog->EndDialog(0);

    CloseDMBDAB();
    KillTimer(m_hWnd, eCHANGE_TIMER);
    KillTimer(m_hWnd, eSTART_TIMER);
    m_nPendingChannel = -1;
    m_nLastDMBChannel = -1;
    m_nLastDABChannel = -1;

    ShowInfo(nullptr, 1);
    SetTitle(nullptr);
    for (GButton* button : m_pToolButtons)
        SetButtonState(button, kButtonDisabled);
    for (GButton* button : m_pChannelButtons)
        SetButtonState(button, kButtonDisabled);
    SetButtonState(Find(kElementToggleFull), kButtonDisabled);
    ShowControls(1, 0);
    EnableToggle(0);
    if (m_pScanBox != nullptr)
        m_pScanBox->Show(1, 1);
    if (m_pScanText != nullptr)
        m_pScanText->Show(1, 1);

    m_bScanning = 1;
    WriteSetting(m_bProfileDirty, 1);
    m_nCurChannel = -1;
    SetPlayMode(kPlayModeStopped);
    std::memset(scanResults, 0, kSlotsClearedByScan * sizeof scanResults[0]);
    ShowScanCounts(0, 0);
    foundBlockCount = 0;

    int found = 0;
    int tvCount = 0;
    int radioCount = 0;
    for (int row = 1; row <= kChannelTableRows; ++row) {
        if (m_ScanFrequency[row - 1] == 0)
            continue;
        _tag_DMB_CHANNEL_INFO& slot = scanResults[found];
        const bool answered = m_pLiveControl != nullptr &&
                              m_pLiveControl->GetChannel(static_cast<int>(ChannelTable[row - 1].frequency), &slot) != 0;
        DrawProgressBar(row, kChannelTableRows);
        if (answered) {
            CountServices(slot, tvCount, radioCount);
            ShowScanCounts(tvCount, radioCount);
            ++found;
        }
        Sleep(kScanPause);
    }
    if (found > 0)
        foundBlockCount = found;
    UpdateChList(1);

    if (m_pScanText != nullptr) {
        m_pScanText->SetText(nullptr, 0);
        m_pScanText->Show(0, 1);
    }
    if (m_pScanBox != nullptr)
        m_pScanBox->Show(0, m_nChannelCount == 0);
    for (int i = 0; i < 3; ++i) // the fourth, record, stays disabled on purpose
        SetButtonState(m_pToolButtons[i], kButtonNormal);
    for (GButton* button : m_pChannelButtons)
        SetButtonState(button, kButtonNormal);
    SetButtonState(Find(kElementToggleFull), kButtonNormal);
    m_bScanning = 0;

    if (m_nChannelCount == 0)
        PostMessageW(m_hWnd, WM_PLAYER_MSGBOX, kTextNoChannels, kBoxNotice);
    else
        OnClickList();
}
