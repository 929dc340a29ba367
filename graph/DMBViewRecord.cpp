// Recording television to the card, and playing recordings.
#include <new>

#include "graph/DMBFilterControl.h"
#include "graph/RecordName.h"
#include "platform/velshell/VelDocument.h"
#include "view/DMBView.h"
#include "view/DMBViewIds.h"

void CVelDMBView::OnClickRecord() {
    if (GetCurrentType() != kSessionDMB)
        return;
    const int mode = GetPlayMode();
    if (mode == kPlayModePlaying) {
        BeginRecording();
    } else if (mode == kPlayModeRecording) {
        StopRecoring();
        PostMessageW(m_hWnd, WM_PLAYER_MSGBOX, kTextRecordStopped, kBoxNotice);
    }
}

void CVelDMBView::BeginRecording() {
    WString folder = kCardFolder;
    ULARGE_INTEGER freeBytes{};
    if (!IsAccessableSDMMC() || !GetDiskFreeSpaceExW(folder.c_str(), &freeBytes, nullptr, nullptr)) {
        PostMessageW(GetMainWindow(), WM_PLAYER_MSGBOX, kTextCardError, kBoxError);
        return;
    }
    if (!HasSpaceFor(RecordLimit(GetRecordTime()), freeBytes.QuadPart)) {
        PostMessageW(m_hWnd, WM_PLAYER_MSGBOX, kTextNoSpace, kBoxError);
        return;
    }
    folder += kRecordFolder;
    if (!GetDocument()->MakeDirectory(folder.c_str())) {
        PostMessageW(m_hWnd, WM_PLAYER_MSGBOX, kTextNoSpace, kBoxError);
        return;
    }
    ChannelRecord record;
    const WString label = m_ChannelList.GetRecordAt(m_nCurChannel, record) ? WidenChannelLabel(record) : WString();
    m_tRecordStart = CurrentTime();
    const WString path = folder + FormatRecordName(label, LocalTimeOf(m_tRecordStart));
    if (m_pFilterControl == nullptr || m_pFilterControl->SetDMBCaputerFileName(path.c_str()) != S_OK ||
        StartRecording() != S_OK) {
        PostMessageW(GetMainWindow(), WM_PLAYER_MSGBOX, kTextCardError, kBoxError);
        return;
    }
    CheckRecordButton(IsToolVisibled());
    PostMessageW(m_hWnd, WM_PLAYER_MSGBOX, kTextRecordStarted, kBoxNotice);
    SetTimer(m_hWnd, eRECORD_TIMER, kRecordTick, nullptr);
}

HRESULT CVelDMBView::StartRecording() {
    const HRESULT result = m_pFilterControl != nullptr ? m_pFilterControl->StartDMBCapture() : E_FAIL;
    if (result == S_OK)
        SetPlayMode(kPlayModeRecording);
    return result;
}

HRESULT CVelDMBView::StopRecoring() {
    const HRESULT result = m_pFilterControl != nullptr ? m_pFilterControl->StopDMBCapture() : E_FAIL;
    SetPlayMode(kPlayModePlaying);
    KillTimer(m_hWnd, eRECORD_TIMER);
    CheckRecordButton(IsToolVisibled());
    return result;
}

void CVelDMBView::CheckRecordButton(int redraw) {
    GButton* button = m_pToolButtons[3];
    if (button == nullptr)
        return;
    const int mode = GetPlayMode();
    if (GetCurrentType() != kSessionDMB || (mode != kPlayModeRecording && mode != kPlayModePlaying))
        button->SetState(kButtonDisabled, redraw);
    else if (mode == kPlayModeRecording)
        SwapPIPButton(button, 1, redraw);
    else if (button->GetState() == kButtonDisabled)
        button->SetState(kButtonNormal, redraw);
    else
        SwapPIPButton(button, 0, redraw);
}

void CVelDMBView::PlayDMBFile(const WCHAR* path) {
    if (GetPlayMode() == kPlayModePlaying) {
        Stop();
        if (IsToolVisibled())
            PostMessageW(m_hWnd, WM_DMB_SHOWCHLABEL, 0, 0);
    }
    if (m_pFilterControl == nullptr)
        m_pFilterControl = new (std::nothrow) CDMBFilterControl(m_pGraph);
    ReleaseInterface(0);
    if (m_pFilterControl == nullptr || m_pFilterControl->InitDMBFilters(path, 1) != S_OK)
        return;
    ConnectInterface();
    KillTimer(m_hWnd, eSIGNAL_TIMER);
    UpdateAntena(-1);
    m_strFileName = path;
    m_nFileIndex = 0;
    RunDMB();
}

int CVelDMBView::AllowFileList(const WCHAR* path) {
    const int type = GetDocument()->CheckFileType(path);
    return type == kFileTypeDMB || type == kFileTypeTS ? type : 0;
}
