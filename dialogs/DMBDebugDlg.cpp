#include "dialogs/DMBDebugDlg.h"

#include <cstring>
#include <iterator>

#include "dialogs/Selector.h"
#include "view/DMBView.h"

namespace {

constexpr UINT kRowButtons = 10; // 10 to 30, one per row of the channel table
constexpr UINT kSNROn = 31;
constexpr UINT kSNROff = 32;
constexpr UINT kSNRSelector = 33;

constexpr int kWidth = 780;
constexpr int kHeight = 320;

} // namespace

struct DMBDebugRows {
    static constexpr GMessageEntry kRows[] = {
        GMap::OnCommandRange<&CDMBDebugDlg::OnClickRow>(kRowButtons, kRowButtons + kChannelTableRows - 1),
        GMap::OnCommandRange<&CDMBDebugDlg::OnClickSNR>(kSNROn, kSNROff),
    };
};

const GMessageMap CDMBDebugDlg::messageMap = {&CVelDialog::messageMap, DMBDebugRows::kRows,
                                              static_cast<UINT>(std::size(DMBDebugRows::kRows))};

CDMBDebugDlg::CDMBDebugDlg(CVelDMBView* view) : CVelDialog(view), m_pView(view) {}

const GMessageMap* CDMBDebugDlg::GetMessageMap() const {
    return &messageMap;
}

const WCHAR* CDMBDebugDlg::GetResourceName() const {
    return WTEXT("VelDMBDebug");
}

int CDMBDebugDlg::OnInitDialog() {
    if (!CVelDialog::OnInitDialog())
        return 0;
    const POINT place = CentreOn(GetMainWindowRect(), kWidth, kHeight);
    PlaceTopmost(place.x, place.y, kWidth, kHeight);
    std::memcpy(m_ScanFrequency, m_pView->GetScanFrequency(), sizeof m_ScanFrequency);
    m_uSNRDebug = m_pView->GetSNRDebug();
    for (UINT row = 0; row < kChannelTableRows; ++row) {
        GButton* button = Find(kRowButtons + row);
        if (m_ScanFrequency[row] != 0 && button != nullptr)
            button->SetState(m_ScanFrequency[row], 0);
    }
    PlaceSelector(*this, kSNRSelector, m_uSNRDebug, 0);
    return 1;
}

void CDMBDebugDlg::OnClickRow(UINT id) {
    const UINT row = id - kRowButtons;
    GButton* button = Find(id);
    if (row >= kChannelTableRows || button == nullptr)
        return;
    m_ScanFrequency[row] = m_ScanFrequency[row] == 0 ? 1 : 0;
    button->SetState(m_ScanFrequency[row], 1);
}

void CDMBDebugDlg::OnClickSNR(UINT id) {
    const UINT chosen = id == kSNROn ? 1 : 0;
    if (chosen == m_uSNRDebug)
        return;
    m_uSNRDebug = chosen;
    PlaceSelector(*this, kSNRSelector, m_uSNRDebug, 1);
}

void CDMBDebugDlg::OnOK() {
    m_pView->SetScanFrequency(m_ScanFrequency);
    m_pView->SetSNRDebug(m_uSNRDebug);
    CVelDialog::OnOK();
}
