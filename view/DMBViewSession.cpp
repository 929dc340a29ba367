// Sessions: the graph and tuner objects, running and stopping television, radio and recordings, and the shell's life-cycle
// calls. The order of effects is the behaviour; each operation is one function in that order.
#include <cstdlib>
#include <new>

#include "graph/DMBFilterControl.h"
#include "graph/DMBFilterIds.h"
#include "platform/velshell/VelDocument.h"
#include "view/DMBView.h"
#include "view/DMBViewIds.h"

namespace {

// Settle time between stopping a television graph and closing its filters, in ms.
constexpr DWORD kSettleBeforeClose = 250;

template <typename Interface> void ReleaseAndNull(Interface*& pointer) {
    if (pointer != nullptr) {
        pointer->Release();
        pointer = nullptr;
    }
}

IGraphBuilder* CreateGraph() {
    IGraphBuilder* graph = nullptr;
    if (FAILED(CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IGraphBuilder,
                                reinterpret_cast<void**>(&graph))))
        return nullptr;
    return graph;
}

} // namespace

// ---- Graph and tuner objects -------------------------------------------------------------------------------------------

int CVelDMBView::OnCreate(CREATESTRUCTW* parameters) {
    const int result = CVelPlayerView::OnCreate(parameters);
    if (result == -1)
        return -1;
    m_pGraph = CreateGraph();
    if (m_pGraph != nullptr)
        m_pFilterControl = new (std::nothrow) CDMBFilterControl(m_pGraph);
    EnableToggle(0);
    return result;
}

int CVelDMBView::CreateGraphBuilder() {
    if (m_pFilterControl != nullptr)
        return 1;
    m_pGraph = CreateGraph();
    if (m_pGraph == nullptr)
        return 0;
    m_pFilterControl = new (std::nothrow) CDMBFilterControl(m_pGraph);
    return 1;
}

int CVelDMBView::ReleaseGraphBuilder() {
    delete m_pFilterControl;
    m_pFilterControl = nullptr;
    ReleaseAndNull(m_pVideoWindow);
    ReleaseAndNull(m_pControl);
    ReleaseAndNull(m_pSeeking);
    ReleaseAndNull(m_pAudio);
    ReleaseAndNull(m_pGraph);
    return 1;
}

void CVelDMBView::OnCmdPreload() {
    if (m_pFilterControl != nullptr)
        m_pLiveStream = new (std::nothrow) CDMBLiveStream; // a new one on every preload, on purpose
    if (m_pFilterControl != nullptr && m_pLiveStream != nullptr) {
        if (m_pLiveControl == nullptr) {
            m_pLiveControl = new (std::nothrow) CDMBLiveControl;
            if (m_pLiveControl != nullptr && !m_pLiveControl->Open()) {
                delete m_pLiveControl;
                m_pLiveControl = nullptr;
            }
        }
        const WString path = WString(GetDocument()->GetProfileDirectory()) + kChannelListFileName;
        m_nChannelCount = m_ChannelList.LoadChannelList(path.c_str());
        if (m_nChannelCount < 1)
            ShowInfo(GetMessageW(kTextNoChannel), 1);
        else if (m_nCurChannel < 0 || m_nCurChannel >= m_nChannelCount)
            ShowInfo(GetMessageW(kTextPickChannel), 1);
        else
            PostMessageW(m_hWnd, WM_DMB_CHANGECHANNEL, static_cast<WPARAM>(m_nCurChannel), 0);
    }
    CVelPlayerView::OnCmdPreload();
}

// ---- Session types -----------------------------------------------------------------------------------------------------

int CVelDMBView::GetCurrentType() const {
    if (m_nFileIndex >= 0)
        return kSessionFile;
    if (m_nCurChannel < 0)
        return kSessionNone;
    ChannelRecord record;
    return m_ChannelList.GetRecordAt(m_nCurChannel, record) ? static_cast<int>(record.kind) : int{kSessionNone};
}

int CVelDMBView::GetLastType() const {
    if (m_nLastChannel < 0)
        return m_nFileIndex >= 0 ? kSessionDMB : kSessionNone; // a playing file is torn down like television
    ChannelRecord record;
    return m_ChannelList.GetRecordAt(m_nLastChannel, record) ? static_cast<int>(record.kind) : int{kSessionNone};
}

// ---- Running and stopping ----------------------------------------------------------------------------------------------

HRESULT CVelDMBView::RunDMB() {
    if (m_pControl == nullptr)
        return E_FAIL;
    m_pControl->Run();
    SetPlayMode(kPlayModePlaying);
    if (m_pVideoWindow != nullptr) {
        const int preserve = static_cast<int>(ReadSetting(m_uRatioOnOff));
        if (IsPreserveAspectRatio() != preserve)
            SetPreserveAspectRatio(preserve);
        BringToTop();
        PostMessageW(m_hWnd, WM_PLAYER_VIDEO, kVideoShow, 0);
        if (!IsActivated()) {
            m_pVideoWindow->put_AutoShow(OAFALSE);
            m_pVideoWindow->put_Visible(OAFALSE);
        }
    }
    if (m_bNoSignal != 0) {
        ShowInfo(nullptr, 1);
        if (m_uSNRDebug == 0)
            EnableToggle(1);
        m_bNoSignal = 0;
        CheckRecordButton(IsToolVisibled());
    } else if (GetCurrentType() == kSessionDMB) {
        SetTimer(m_hWnd, eSIGNAL_TIMER, kSignalPollDMB, nullptr);
    }
    return S_OK;
}

HRESULT CVelDMBView::StopDMB() {
    if (m_pControl == nullptr)
        return E_FAIL;
    const int mode = GetPlayMode();
    if (mode != kPlayModePlaying && mode != kPlayModePaused && mode != kPlayModeRecording)
        return S_OK;
    m_pControl->Stop();
    if (mode == kPlayModeRecording)
        StopRecoring();
    SetPlayMode(kPlayModeStopped);
    return S_OK;
}

HRESULT CVelDMBView::RunDAB() {
    if (m_pGraph == nullptr || m_pControl == nullptr)
        return S_OK;
    ReleaseAndNull(m_pVideoWindow); // radio has no picture
    m_pControl->Run();
    SetPlayMode(kPlayModePlaying);
    if (m_bNoSignal == 0 && m_bSignalWait == 0) {
        SetTimer(m_hWnd, eSIGNAL_TIMER, kSignalPollDAB, nullptr);
    } else {
        m_bNoSignal = 0;
        m_bSignalWait = 0;
    }
    return S_OK;
}

HRESULT CVelDMBView::StopDAB() {
    if (m_pControl == nullptr)
        return E_FAIL;
    const HRESULT result = m_pControl->Stop();
    if (FAILED(result))
        return result;
    {
        const SectionLock lock(m_csSLS);
        m_bSlideReady = 0;
    }
    {
        const SectionLock lock(m_csDLS);
        m_arrDLS.clear();
    }
    if (m_bNoSignal == 0 && m_bSignalWait == 0)
        ShowAudioBG(0, 1);
    SetPlayMode(kPlayModeStopped);
    return result;
}

HRESULT CVelDMBView::CloseDMBDAB() {
    const int type = GetLastType();
    KillTimer(m_hWnd, eSIGNAL_TIMER);
    UpdateAntena(-1);
    if (type == kSessionDMB) {
        StopDMB();
        Sleep(kSettleBeforeClose);
        if (m_pFilterControl != nullptr)
            m_pFilterControl->CloseDMBFilters();
        if (m_pVideoWindow != nullptr)
            PostMessageW(m_hWnd, WM_PLAYER_VIDEO, kVideoHide, 0);
    } else if (type == kSessionDAB) {
        StopDAB();
        if (m_pFilterControl != nullptr)
            m_pFilterControl->CloseDABFilters();
        ShowAudioBG(0, 1);
    }
    // A closed controller keeps the addresses of filters that are gone, and an event or an answer of the session may still come.
    if (m_pFilterControl != nullptr && (type == kSessionDMB || type == kSessionDAB))
        *m_pFilterControl = CDMBFilterControl(m_pGraph);
    m_nLastChannel = -1;
    m_nFileIndex = -1;
    return S_OK;
}

void CVelDMBView::ResetDMB() {
    const int mode = GetPlayMode();
    if (mode != kPlayModePlaying && mode != kPlayModeRecording)
        return;
    Stop();
    ReleaseInterface(0);
    m_bNoSignal = 0;
    m_bSignalWait = 0;
    const int type = GetCurrentType();
    if (type == kSessionDMB && m_pFilterControl != nullptr && m_pFilterControl->InitDMBFilters(nullptr, 0) == S_OK) {
        ConnectInterface();
        RunDMB();
        m_nLastDMBChannel = m_nLastChannel = m_nCurChannel;
        return;
    }
    if (type == kSessionDAB && m_pFilterControl != nullptr && m_pFilterControl->InitDABFilters() == S_OK) {
        ConnectInterface();
        RunDAB();
        m_nLastDABChannel = m_nCurChannel;
    }
    m_nLastChannel = m_nCurChannel;
}

// ---- Television and radio ----------------------------------------------------------------------------------------------

int CVelDMBView::ChangeDMBDAB() {
    int type = GetCurrentType();
    if (type == kSessionNone) {
        if (m_nChannelCount == 0)
            return 0;
        type = kSessionDAB;
    }
    if (type == kSessionFile)
        return 0;
    if (type == kSessionDMB && m_nLastDABChannel > -1) {
        PostMessageW(m_hWnd, WM_DMB_CHANGECHANNEL, static_cast<WPARAM>(m_nLastDABChannel), 0);
        return 1;
    }
    if (type == kSessionDAB && m_nLastDMBChannel >= 0) {
        PostMessageW(m_hWnd, WM_DMB_CHANGECHANNEL, static_cast<WPARAM>(m_nLastDMBChannel), 0);
        return 1;
    }
    ChannelRecord record;
    for (int index = 0; m_ChannelList.GetRecordAt(index, record); ++index) {
        if (record.kind != type) {
            PostMessageW(m_hWnd, WM_DMB_CHANGECHANNEL, static_cast<WPARAM>(index), 0);
            return 1;
        }
    }
    PostMessageW(m_hWnd, WM_PLAYER_MSGBOX, type == kSessionDMB ? kTextNoDAB : kTextNoDMB, kBoxNotice);
    return 0;
}

void CVelDMBView::OnClickToggleDMB(UINT) {
    if (m_bToggleGuard != 0)
        return;
    SetTimer(m_hWnd, eTOGGLE_TIMER, kToggleGuard, nullptr);
    m_bToggleGuard = 1;
    ChangeDMBDAB();
}

void CVelDMBView::ToggleDMBButton() {
    GButton* toggle = Find(GetDocument()->IsMinimized() ? kElementToggleSmall : kElementToggleFull);
    if (toggle != nullptr)
        SwapPIPButton(toggle, GetCurrentType() == kSessionDMB, IsToolVisibled());
}

LRESULT CVelDMBView::OnAir(WPARAM, LPARAM) {
    if (GetCurrentType() == kSessionDAB) {
        ShowInfo(nullptr, 1);
        if (!GetDocument()->IsMinimized())
            ShowAudioBG(1, 1);
        m_bOnAir = 1;
    }
    return 0;
}

// ---- The shell's life-cycle calls --------------------------------------------------------------------------------------

int CVelDMBView::Stop() {
    const int type = GetCurrentType();
    if (type == kSessionDMB)
        StopDMB();
    else if (type == kSessionDAB)
        StopDAB();
    m_bOnAir = 0;
    return 1;
}

void CVelDMBView::Pause() {
    if (GetPlayMode() != kPlayModePlaying || m_pControl == nullptr)
        return;
    if (SUCCEEDED(m_pControl->Pause()))
        SetPlayMode(kPlayModePaused);
}

void CVelDMBView::HoldForBackView(int hold) {
    if (m_pVideoWindow == nullptr || m_pGraph == nullptr)
        return;
    IBaseFilter* renderer = nullptr;
    if (FAILED(m_pGraph->FindFilterByName(kVideoRendererName, &renderer)) || renderer == nullptr)
        return;
    IVideoHoldControl* control = nullptr;
    if (SUCCEEDED(renderer->QueryInterface(IID_IVideoHoldControl, reinterpret_cast<void**>(&control))) &&
        control != nullptr) {
        if (hold != 0) {
            Pause();
            control->HoldVideo();
        } else {
            control->ResumeVideo();
            RunDMB();
        }
        control->Release();
    }
    renderer->Release();
}

void CVelDMBView::ReleaseInterface(int argument) {
    CloseDMBDAB();
    CVelPlayerView::ReleaseInterface(argument);
}

void CVelDMBView::OnClickExit() {
    if (m_bToggleGuard != 0)
        return;
    if (GetPlayMode() == kPlayModeRecording) {
        if (m_bMsgBoxUp != 0)
            return;
        if (MsgBox(kTextStopRecording, kBoxOkCancel) != kAnswerOk)
            return;
        StopRecoring();
    }
    OnCloseView();
}

void CVelDMBView::Destroy() {
    KillTimer(m_hWnd, eSIGNAL_TIMER);
    const int mode = GetPlayMode();
    if (mode == kPlayModePlaying || mode == kPlayModeRecording) {
        Stop();
        KillTimer(m_hWnd, eRECORD_TIMER);
    }
    if (m_pLiveControl != nullptr) {
        m_pLiveControl->Close();
        delete m_pLiveControl;
    }
    if (m_pLiveStream != nullptr) {
        m_pLiveStream->Close();
        delete m_pLiveStream;
    }
    m_bSlideReady = 0; // the base takes down a session that is still there, and that paints
    std::free(m_pMotBody);
    m_pMotBody = nullptr;
    m_nMotBodySize = 0;
    std::free(m_pSlideDib);
    m_pSlideDib = nullptr;
    m_nSlideHeaderSize = 0;
    CVelPlayerView::Destroy();
}
