// Events: the graph's, the timers' and the keys'.
#include "graph/DMBFilterControl.h"
#include "graph/DMBFilterIds.h"
#include "graph/RecordName.h"
#include "platform/velshell/VelDocument.h"
#include "view/DMBView.h"
#include "view/DMBViewIds.h"

namespace {

// Reports of a missing signal since it was last there; shared by all views of the module, on purpose.
LONG noSignalReports = 0;
constexpr LONG kNoSignalReportsTolerated = 5;

} // namespace

// ---- Graph events ------------------------------------------------------------------------------------------------------

LRESULT CVelDMBView::OnMediaNotify(WPARAM, LPARAM) {
    LONG code = 0;
    LONG_PTR param1 = 0;
    LONG_PTR param2 = 0;
    // A handler may release the event interface, so it is looked at anew each time.
    while (m_pEvent != nullptr && SUCCEEDED(m_pEvent->GetEvent(&code, &param1, &param2, 0))) {
        m_pEvent->FreeEventParams(code, param1, param2);
        switch (code) {
        case EC_COMPLETE:
            StopDMB();
            break;
        case EC_VIDEOFRAMEREADY:
            ShowInfo(nullptr, 1);
            if (m_uSNRDebug == 0)
                EnableToggle(1);
            CheckRecordButton(IsToolVisibled());
            break;
        case IDMB_EVENT_AUDIO_CHANGE:
            StopDMB();
            if (m_pFilterControl != nullptr)
                m_pFilterControl->HandleAudioChange();
            RunDMB();
            break;
        case IDMB_EVENT_PAD:
            OnLabelEvent();
            break;
        case IDMB_EVENT_MOT:
            OnSlideEvent();
            break;
        case IDMB_EVENT_TIME_RESET:
            ResetDMB();
            break;
        case IDMB_EVENT_NO_SIGNAL:
            OnNoSignalEvent();
            break;
        case IDMB_EVENT_SIGNAL:
            OnSignalEvent();
            break;
        default:
            break;
        }
    }
    return 0;
}

void CVelDMBView::OnNoSignalEvent() {
    if (m_bNoSignal != 0)
        return;
    if (++noSignalReports <= kNoSignalReportsTolerated)
        return;
    if (GetCurrentType() == kSessionDMB) {
        if (m_pVideoWindow != nullptr)
            PostMessageW(m_hWnd, WM_PLAYER_VIDEO, kVideoHide, 0);
        CheckRecordButton(IsToolVisibled());
    }
    ShowInfo(GetMessageW(NoSignalText()), 1);
    ShowControls(1, 1);
    EnableToggle(0);
    m_bNoSignal = 1;
}

void CVelDMBView::OnSignalEvent() {
    noSignalReports = 0;
    if (m_bNoSignal == 0 || GetCurrentType() != kSessionDMB)
        return;
    ShowInfo(nullptr, 1);
    if (m_uSNRDebug == 0)
        EnableToggle(1);
    m_bNoSignal = 0;
    CheckRecordButton(IsToolVisibled());
    if (m_pVideoWindow != nullptr)
        PostMessageW(m_hWnd, WM_PLAYER_VIDEO, kVideoShow, 0);
}

LRESULT CVelDMBView::OnUpdateInfo(WPARAM id, LPARAM text) {
    if (id == 0)
        ShowInfo(reinterpret_cast<const WCHAR*>(text), 1);
    else
        ShowInfo(GetMessageW(static_cast<WORD>(id & 0xFFFF)), 1);
    return 0;
}

WORD CVelDMBView::NoSignalText() const {
    return GetDocument()->IsMinimized() ? kTextNoSignalShort : kTextNoSignal;
}

// ---- Timers ------------------------------------------------------------------------------------------------------------

void CVelDMBView::OnTimer(UINT_PTR id) {
    switch (id) {
    case eRECORD_TIMER:
        if (CurrentTime() - m_tRecordStart >= RecordLimit(GetRecordTime()))
            PostMessageW(m_hWnd, WM_COMMAND, kCmdRecord, 0);
        break;
    case eSIGNAL_TIMER:
        if (m_pLiveControl != nullptr) {
            if (m_uSNRDebug != 0) {
                m_nRSSI = {};
                m_pLiveControl->GetRSSI(&m_nRSSI);
            }
            float snr = 0.0F;
            m_pLiveControl->GetSNR(&snr);
            UpdateAntena(static_cast<int>(snr));
        }
        break;
    case eNOSIGNAL_TIMER:
        KillTimer(m_hWnd, eNOSIGNAL_TIMER);
        Stop();
        ShowInfo(GetMessageW(NoSignalText()), 1);
        m_bNoSignal = 1;
        break;
    case eCHANGE_TIMER:
        KillTimer(m_hWnd, eCHANGE_TIMER);
        WriteSetting(m_bChangeBusy, 1);
        if (OnChangeChannel(static_cast<WPARAM>(m_nPendingChannel), 0) == S_OK)
            SetTimer(m_hWnd, eCHANGEGUARD_TIMER, kChangeGuard, nullptr);
        else
            WriteSetting(m_bChangeBusy, 0);
        m_nPendingChannel = -1;
        break;
    case eSTART_TIMER:
        if (m_nCurChannel > -1) {
            const LONG channel = m_nCurChannel;
            m_nCurChannel = -1; // else the change would refuse it as the one already playing
            ++m_nStartRetries;
            PostMessageW(m_hWnd, WM_DMB_CHANGECHANNEL, static_cast<WPARAM>(channel), 0);
        }
        break;
    case eTOGGLE_TIMER:
        KillTimer(m_hWnd, eTOGGLE_TIMER);
        m_bToggleGuard = 0;
        break;
    case eSCAN_TIMER:
        KillTimer(m_hWnd, eSCAN_TIMER);
        PostMessageW(m_hWnd, WM_COMMAND, kCmdScan, 0);
        break;
    case eSCANPREP_TIMER:
        KillTimer(m_hWnd, eSCANPREP_TIMER);
        if (!IsToolVisibled())
            ShowControls(1, 1);
        SetTimer(m_hWnd, eSCAN_TIMER, kScanKeyDelay, nullptr);
        break;
    case eCHANGEGUARD_TIMER:
        KillTimer(m_hWnd, eCHANGEGUARD_TIMER);
        WriteSetting(m_bChangeBusy, 0);
        break;
    default:
        CVelPlayerView::OnTimer(id);
        break;
    }
}

// ---- Keys and touches --------------------------------------------------------------------------------------------------

void CVelDMBView::OnKeyUp(UINT key, UINT repeatCount, UINT flags) {
    if (m_bScanning != 0)
        return;
    switch (key) {
    case kKeyEscape:
        if (m_bMsgBoxUp != 0 && ForceIDCancelToMsgBox()) {
            m_bMsgBoxUp = 0;
            return;
        }
        break;
    case kKeyChannelDown:
    case kKeyChannelUp:
        if (repeatCount == 1 && m_nChannelCount > 0) {
            ChangeChUpDown(kStepDelay, key == kKeyChannelUp ? +1 : -1);
            ShowControls(1, 1);
        }
        break;
    case kKeyScan:
        if (GetDocument()->IsMinimized()) {
            PostMessageW(GetMainWindow(), WM_COMMAND, kCmdFullSize, 0);
            SetTimer(m_hWnd, eSCANPREP_TIMER, kScanKeyDelay, nullptr);
        } else {
            if (!IsToolVisibled())
                ShowControls(1, 1);
            SetTimer(m_hWnd, eSCAN_TIMER, kScanKeyDelay, nullptr);
        }
        break;
    case kKeyRecord: {
        const int mode = GetPlayMode();
        if (GetCurrentType() == kSessionDMB && (mode == kPlayModePlaying || mode == kPlayModeRecording))
            PostMessageW(m_hWnd, WM_COMMAND, kCmdRecord, 0);
        break;
    }
    case kKeyOk:
        if (ForceIDOKtoMsgBox())
            m_bMsgBoxUp = 0;
        return;
    default:
        break;
    }
    CVelBaseView::OnKeyUp(key, repeatCount, flags);
}

void CVelDMBView::OnLButtonDown(UINT flags, POINT point) {
    GView::OnLButtonDown(flags, point);
}
