#include "dialogs/DMBSettingDlg.h"

#include <iterator>

#include "dialogs/DMBDebugDlg.h"
#include "dialogs/Selector.h"
#include "view/DMBView.h"

namespace {

constexpr UINT kDebugButton = 7;
constexpr UINT kLengthText = 11;
constexpr UINT kPreviousLength = 12;
constexpr UINT kNextLength = 13;
constexpr UINT kRatioOn = 14;
constexpr UINT kRatioOff = 15;
constexpr UINT kRatioSelector = 16;

constexpr UINT kLengthTexts = 1000; // 1000 to 1004: the five lengths
constexpr UINT kLongest = 4;

} // namespace

struct DMBSettingRows {
    static constexpr GMessageEntry kRows[] = {
        GMap::OnCommand<&CDMBSettingDlg::OnClickDebug>(kDebugButton),
        GMap::OnCommandRange<&CDMBSettingDlg::OnClickLength>(kPreviousLength, kNextLength),
        GMap::OnCommandRange<&CDMBSettingDlg::OnClickRatio>(kRatioOn, kRatioOff),
    };
};

const GMessageMap CDMBSettingDlg::messageMap = {&CVelDialog::messageMap, DMBSettingRows::kRows,
                                                static_cast<UINT>(std::size(DMBSettingRows::kRows))};

CDMBSettingDlg::CDMBSettingDlg(CVelDMBView* view) : CVelDialog(view), m_pView(view) {}

const GMessageMap* CDMBSettingDlg::GetMessageMap() const {
    return &messageMap;
}

const WCHAR* CDMBSettingDlg::GetResourceName() const {
    return WTEXT("VelDMBSettings");
}

int CDMBSettingDlg::OnInitDialog() {
    if (!CVelDialog::OnInitDialog())
        return 0;
    const GImage* background = GetBackground();
    if (background == nullptr) {
        OutputDebugStringW(WTEXT("DMBSettingDlg: no exist resources\n"));
        return 0;
    }
    const POINT place = CentreOn(GetMainWindowRect(), background->GetWidth(), background->GetHeight());
    PlaceTopmost(place.x, place.y, background->GetWidth(), background->GetHeight());
    m_pRecordTimeText = Find(kLengthText);
    m_uRecordTime = m_pView->GetRecordTime();
    ShowRecordTime(0);
    m_uRatioOnOff = m_pView->GetRatioOnOff();
    PlaceSelector(*this, kRatioSelector, m_uRatioOnOff, 0);
    if (m_pView->IsDebugMode())
        ShowButton(kDebugButton, 1, 0);
    m_bLoaded = true;
    return 1;
}

void CDMBSettingDlg::ShowRecordTime(int redraw) {
    if (m_pRecordTimeText != nullptr)
        m_pRecordTimeText->SetText(GetMessageW(static_cast<WORD>(kLengthTexts + m_uRecordTime)), redraw);
}

void CDMBSettingDlg::OnClickLength(UINT id) {
    if (id == kPreviousLength)
        m_uRecordTime = m_uRecordTime == 0 ? kLongest : m_uRecordTime - 1;
    else
        m_uRecordTime = m_uRecordTime >= kLongest ? 0 : m_uRecordTime + 1;
    ShowRecordTime(1);
}

void CDMBSettingDlg::OnClickRatio(UINT id) {
    const UINT chosen = id == kRatioOn ? 1 : 0;
    if (chosen == m_uRatioOnOff)
        return;
    m_uRatioOnOff = chosen;
    PlaceSelector(*this, kRatioSelector, m_uRatioOnOff, 1);
}

void CDMBSettingDlg::OnOK() {
    if (!m_bLoaded) {
        OnCancel(); // values that were never read are never stored
        return;
    }
    m_pView->SetRecordTime(m_uRecordTime);
    m_pView->SetRatioOnOff(m_uRatioOnOff);
    CVelDialog::OnOK();
}

void CDMBSettingDlg::OnClickDebug() {
    CDMBDebugDlg dialog(m_pView);
    dialog.DoModal();
    OnCancel();
}
