// Opening the channel list and acting on what was picked.
#include <algorithm>

#include "graph/RecordName.h"
#include "tuner/DMBChListDlg.h"
#include "view/DMBView.h"
#include "view/DMBViewIds.h"

void CVelDMBView::OnClickList() {
    const WString folder = WString(kCardFolder) + kRecordFolder;
    CDMBChListDlg dialog(this, folder.c_str(), std::clamp<int>(GetCurrentType(), kTabDMB, kTabFiles));
    std::vector<LONG> positions[2]; // line of a tab -> position in the channel list
    ChannelRecord record;
    for (LONG position = 0; m_ChannelList.GetRecordAt(position, record); ++position) {
        if (record.kind != kKindDMB && record.kind != kKindDAB)
            continue;
        const auto tab = static_cast<ChannelListTab>(record.kind);
        dialog.AddLine(tab, GetChannelName(static_cast<int>(record.frequency)) + WTEXT(" ") +
                                atou(record.label, kChannelLabelBytes, 0));
        positions[tab].push_back(position);
    }

    const int result = dialog.DoModal();
    const int selection = dialog.GetSelection();
    if (result == kDialogOk && selection >= 0) {
        switch (const int tab = dialog.GetTab()) {
        case kTabDMB:
        case kTabDAB:
            SetChannelLabel(dialog.GetLine(static_cast<ChannelListTab>(tab), selection));
            PostMessageW(m_hWnd, WM_DMB_CHANGECHANNEL,
                         static_cast<WPARAM>(positions[tab].at(static_cast<std::size_t>(selection))), 0);
            break;
        case kTabFiles:
            PlayDMBFile((dialog.GetFolder() + dialog.GetFileLines().at(static_cast<std::size_t>(selection))).c_str());
            break;
        default:
            break;
        }
        return;
    }
    // A count of -1 (no list file) takes the first branch, on purpose.
    if (m_nChannelCount != 0 && m_nCurChannel >= m_nChannelCount) {
        ShowInfo(GetMessageW(kTextPickChannel), 0);
    } else if (m_nChannelCount < 1) {
        ShowInfo(GetMessageW(kTextNoChannel), 0);
    } else {
        SetTimer(m_hWnd, eTOGGLE_TIMER, kListGuard, nullptr);
        m_bToggleGuard = 1;
    }
}
