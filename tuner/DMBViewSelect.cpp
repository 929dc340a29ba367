// Channel selection and stepping.
#include "graph/DMBFilterControl.h"
#include "platform/velshell/VelDocument.h"
#include "tuner/ChannelStep.h"
#include "view/DMBView.h"
#include "view/DMBViewIds.h"

namespace {

// Wait after releasing the graph, and after making the new one, in ms.
constexpr DWORD kGraphPause = 100;
// A kind of record that is tuned and saved, and for which nothing is started.
constexpr LONG kKindWithoutSession = 3;

} // namespace

// Clears the information line and gives the title back to the current channel.
void CVelDMBView::PostLabelReset() {
    PostMessageW(m_hWnd, WM_DMB_UPDATEINFO, 0, reinterpret_cast<LPARAM>(WTEXT("")));
    PostMessageW(m_hWnd, WM_DMB_SHOWCHLABEL, 0, 0);
}

void CVelDMBView::SetChannelLabel(const WString& text) {
    const std::size_t length = text.copy(m_szChannelLabel, std::size(m_szChannelLabel) - 1);
    m_szChannelLabel[length] = 0;
}

// The text is posted by pointer and may change before the message is handled; the field it lives in never moves.
void CVelDMBView::PostChannelLabel(const WString& label, WORD textId) {
    SetChannelLabel(FormatW(WTEXT("%s %s"), label, GetMessageW(textId)));
    PostMessageW(m_hWnd, WM_DMB_UPDATEINFO, 0, reinterpret_cast<LPARAM>(m_szChannelLabel));
}

// The position of the first record with this label, or -1.
int CVelDMBView::FindChannelByLabel(const WCHAR* label) const {
    ChannelRecord record;
    for (int position = 0; m_ChannelList.GetRecordAt(position, record); ++position) {
        if (WidenChannelLabel(record) == label)
            return position;
    }
    return -1;
}

LRESULT CVelDMBView::OnChangeChannel(WPARAM wParam, LPARAM lParam) {
    auto index = static_cast<LONG>(wParam);
    const auto* wanted = reinterpret_cast<const WCHAR*>(lParam);
    // 1
    if (index == -1 && wanted == nullptr)
        return E_FAIL;
    // 2
    if (GetPlayMode() == kPlayModeRecording) {
        m_bMsgBoxUp = 1;
        const int answer = MsgBox(kTextStopRecording, kBoxOkCancel);
        m_bMsgBoxUp = 0;
        if (answer != kAnswerOk) {
            PostLabelReset();
            return E_FAIL;
        }
        StopRecoring();
    }
    // 3
    if (index == -1) {
        index = FindChannelByLabel(wanted);
        if (index == -1) {
            PostLabelReset();
            return E_FAIL;
        }
    }
    ChannelRecord record;
    if (!m_ChannelList.GetRecordAt(index, record)) {
        ShowInfo(GetMessageW(kTextNoChannel), 1);
        return E_FAIL;
    }
    const WString label = WidenChannelLabel(record);
    // 4, 5
    const int mode = GetPlayMode();
    if (mode == kPlayModePlaying || mode == kPlayModeRecording) {
        if (index == m_nCurChannel) {
            PostLabelReset();
            return E_FAIL;
        }
        Stop();
        ShowControls(1, 1);
        EnableToggle(0);
    }
    // 6
    if (index != m_nCurChannel) {
        m_nCurChannel = index;
        WriteSetting(m_bProfileDirty, 1);
    }
    // 7
    const int lastType = GetLastType();
    if (lastType == kSessionDAB && GetDocument()->IsMinimized())
        InvalidateRect(m_hWnd, nullptr, TRUE);
    if (lastType != GetCurrentType())
        PostMessageW(m_hWnd, WM_COMMAND, kCmdToggleFace, 0);
    // 8
    if (m_pLiveStream != nullptr)
        m_pLiveStream->Close();
    ReleaseInterface(0);
    KillTimer(m_hWnd, eSTART_TIMER);
    ReleaseGraphBuilder();
    Sleep(kGraphPause);
    // 9
    if (!CreateGraphBuilder())
        return RetryLater(kRetryGraph);
    // 10
    Sleep(kGraphPause);
    if (m_pLiveControl == nullptr ||
        !m_pLiveControl->SetChannel(static_cast<int>(record.frequency), LibraryServiceType(record),
                                    static_cast<int>(record.serviceId), 0)) {
        OnUpdateInfo(NoSignalText(), 0);
        return RetryLater(kRetryTuner);
    }
    // 11
    PostChannelLabel(label, kTextTuned);
    // 12
    if (record.kind == kKindWithoutSession) {
        SaveProfile();
        return S_OK;
    }
    // 13
    m_bNoSignal = 0;
    m_bSignalWait = 0;
    m_nStartRetries = 0;
    // 14
    if (record.kind == kKindDMB) {
        if (m_pFilterControl == nullptr || m_pFilterControl->InitDMBFilters(nullptr, 0) != S_OK || !ConnectInterface())
            return RetryLater(kRetryGraph);
        RunDMB();
        m_nLastDMBChannel = m_nCurChannel;
    } else if (record.kind == kKindDAB) {
        if (m_pFilterControl != nullptr && m_pFilterControl->InitDABFilters() == S_OK) {
            ConnectInterface();
            RunDAB();
            m_nLastDABChannel = m_nCurChannel;
        } // a radio graph that cannot be built is not reported, on purpose
    }
    // 15
    m_nLastChannel = m_nCurChannel;
    PostMessageW(m_hWnd, WM_DMB_SHOWCHLABEL, 0, 0);
    SaveProfile();
    return S_OK;
}

HRESULT CVelDMBView::RetryLater(UINT milliseconds) {
    PostMessageW(m_hWnd, WM_DMB_SHOWCHLABEL, 0, 0);
    SetTimer(m_hWnd, eSTART_TIMER, milliseconds, nullptr);
    return E_FAIL;
}

LRESULT CVelDMBView::ChangeChUpDown(WPARAM delayMs, LPARAM step) {
    if (ReadSetting(m_bChangeBusy) != 0 || m_nChannelCount <= 0)
        return E_FAIL;
    ChannelRecord record;
    if (m_nCurChannel < 0 && m_ChannelList.GetRecordAt(0, record)) {
        PostMessageW(m_hWnd, WM_DMB_CHANGECHANNEL, 0, 0);
        return S_OK;
    }
    const LONG from = m_nPendingChannel >= 0 ? m_nPendingChannel : m_nCurChannel;
    const auto kindAt = [this](int position) -> std::optional<int> {
        ChannelRecord candidate;
        if (!m_ChannelList.GetRecordAt(position, candidate))
            return std::nullopt;
        return candidate.kind;
    };
    const std::optional<int> next =
        StepChannel(from, static_cast<int>(step), m_nChannelCount, GetCurrentType(), kindAt);
    if (!next || !m_ChannelList.GetRecordAt(*next, record))
        return E_FAIL;
    KillTimer(m_hWnd, eCHANGE_TIMER);
    PostChannelLabel(WidenChannelLabel(record), kTextStepWaits);
    PostMessageW(m_hWnd, WM_DMB_SHOWCHLABEL, static_cast<WPARAM>(*next), 1);
    m_nPendingChannel = *next;
    SetTimer(m_hWnd, eCHANGE_TIMER, static_cast<UINT>(delayMs), nullptr);
    return S_OK;
}

void CVelDMBView::OnClickChannelUpDown(UINT buttonId) {
    ResetMenuTimeout(GetMenuTimeout());
    if (buttonId == kCmdChannelDown)
        PostMessageW(m_hWnd, WM_DMB_CHUPDOWN, kStepDelay, -1);
    else if (buttonId == kCmdChannelUp)
        PostMessageW(m_hWnd, WM_DMB_CHUPDOWN, kStepDelay, +1);
}
