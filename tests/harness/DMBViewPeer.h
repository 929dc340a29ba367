// The tests' way into the view: its fields by name, and the private operations that no message reaches.
#pragma once

#include "view/DMBView.h"

class DMBViewPeer {
public:
    explicit DMBViewPeer(CVelDMBView& view) : v(view) {}

    LONG& CurChannel() { return v.m_nCurChannel; }
    LONG& LastChannel() { return v.m_nLastChannel; }
    LONG& PendingChannel() { return v.m_nPendingChannel; }
    LONG& LastDMBChannel() { return v.m_nLastDMBChannel; }
    LONG& LastDABChannel() { return v.m_nLastDABChannel; }
    LONG& ChannelCount() { return v.m_nChannelCount; }
    LONG& FileIndex() { return v.m_nFileIndex; }
    WString& FileName() { return v.m_strFileName; }
    LONG& StartRetries() { return v.m_nStartRetries; }
    LONG& OnAirFlag() { return v.m_bOnAir; }
    LONG& NoSignal() { return v.m_bNoSignal; }
    LONG& SignalWait() { return v.m_bSignalWait; }
    LONG& ChangeBusy() { return v.m_bChangeBusy; }
    LONG& MsgBoxUp() { return v.m_bMsgBoxUp; }
    LONG& Scanning() { return v.m_bScanning; }
    LONG& ToggleGuard() { return v.m_bToggleGuard; }
    LONG& ProfileDirty() { return v.m_bProfileDirty; }
    LONG& RecordTimeField() { return v.m_uRecordTime; }
    LONG& RatioField() { return v.m_uRatioOnOff; }
    LONG& PIPOnOffField() { return v.m_uPIPOnOff; }
    LONG& SNRDebugField() { return v.m_uSNRDebug; }
    RECT& PipRect() { return v.m_rcPIP; }
    RECT& InfoRect() { return v.m_rcInfo; }
    RECT& DlsRect() { return v.m_rcDLS; }
    RECT& SlideRect() { return v.m_rcSlide; }
    _tag_DMB_RSSI_PARAM& Rssi() { return v.m_nRSSI; }
    TimeSeconds& RecordStart() { return v.m_tRecordStart; }
    ChannelList& List() { return v.m_ChannelList; }
    BYTE* ScanMask() { return v.m_ScanFrequency; }
    _tag_DMB_CHANNEL_INFO* ScanResults() { return v.scanResults; }
    LONG& FoundBlockCount() { return v.foundBlockCount; }
    std::vector<WString>& Labels() { return v.m_arrDLS; }
    CriticalSection& LabelLock() { return v.m_csDLS; }
    CriticalSection& SlideLock() { return v.m_csSLS; }
    LONG& SlideReady() { return v.m_bSlideReady; }
    DWORD& SlideHeaderSize() { return v.m_nSlideHeaderSize; }
    BYTE*& SlideDib() { return v.m_pSlideDib; }
    BYTE*& MotBody() { return v.m_pMotBody; }
    DWORD& MotBodySize() { return v.m_nMotBodySize; }
    CDMBLiveStream*& LiveStream() { return v.m_pLiveStream; }
    CDMBLiveControl*& LiveControl() { return v.m_pLiveControl; }
    CDMBFilterControl*& FilterControl() { return v.m_pFilterControl; }
    IGraphBuilder*& Graph() { return v.m_pGraph; }
    IMediaControl*& Control() { return v.m_pControl; }
    IMediaEventEx*& Event() { return v.m_pEvent; }
    IVideoWindow*& VideoWindow() { return v.m_pVideoWindow; }

    [[nodiscard]] int CurrentType() const { return v.GetCurrentType(); }
    [[nodiscard]] int LastType() const { return v.GetLastType(); }
    void ResetProfile() { v.ResetProfile(); }
    static void TrimEndSpace(char* text, int length) { CVelDMBView::TrimEndSpace(text, length); }
    void UpdateChList(int save) { v.UpdateChList(save); }
    void FitToPIP(SIZE size) { v.FitToPIP(size); }
    void DrawProgressBar(int position, int total) { v.DrawProgressBar(position, total); }
    void ShowInfo(const WCHAR* text) { v.ShowInfo(text, 1); }
    int StartDecode(unsigned char* data, int size) { return v.StartDecode(data, size); }
    HRESULT StopDMB() { return v.StopDMB(); }
    HRESULT RunDMB() { return v.RunDMB(); }
    HRESULT RunDAB() { return v.RunDAB(); }
    HRESULT StopDAB() { return v.StopDAB(); }
    void BeginRecording() { v.BeginRecording(); }
    HRESULT StartRecording() { return v.StartRecording(); }
    int ChangeDMBDAB() { return v.ChangeDMBDAB(); }
    void PlayDMBFile(const WCHAR* path) { v.PlayDMBFile(path); }
    LRESULT ChangeChUpDown(UINT delay, int step) { return v.ChangeChUpDown(delay, step); }
    LRESULT OnChangeChannel(LONG index, const WCHAR* label) {
        return v.OnChangeChannel(static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(label));
    }

private:
    CVelDMBView& v;
};
