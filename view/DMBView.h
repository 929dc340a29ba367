// The view: television, radio and recordings on the shell's screen.
//
// One object per view window, created by the shell through its run-time class name and used on the window thread only (the
// setting accessors alone may be called from any thread). Its operations are spread over wings, one per concern; README.md
// tells which source holds which behaviour.
#pragma once

#include <vector>

#include "dataservice/SlideBitmap.h"
#include "platform/medmblib.h"
#include "platform/types.h"
#include "platform/velshell/VelPlayerView.h"
#include "platform/wince.h"
#include "tuner/ChannelList.h"
#include "tuner/ChannelTable.h"

class CDMBFilterControl;

// What runs, or what is selected.
enum SessionType : int {
    kSessionNone = -1,
    kSessionDMB = 0,  // television
    kSessionDAB = 1,  // radio
    kSessionFile = 2, // a recording plays
};

class DMB_API CVelDMBView : public CVelPlayerView {
public:
    // ---- Object (DMBView.cpp) ------------------------------------------------------------------------------------------
    static GObject* CreateObject();
    static const GRuntimeClass classCVelDMBView;
    static const GMessageMap messageMap;

    const GRuntimeClass* GetRuntimeClass() const override;
    ~CVelDMBView() override;
    const GMessageMap* GetMessageMap() const override;
    void OnDraw(HDC dc) override; // DMBViewDraw.cpp
    const WCHAR* GetAlias() const override;
    void Destroy() override;                                                 // DMBViewSession.cpp
    void HoldForBackView(int hold) override;                                 // DMBViewSession.cpp
    int CanMinimize(const RECT* rect) override;                              // DMBViewPip.cpp
    void TransferToPIP() override;                                           // DMBViewPip.cpp
    void MoveToPIPWindow(const RECT* oldRect, const RECT* newRect) override; // DMBViewPip.cpp
    void RestoreFromPIP(const RECT* rect) override;                          // DMBViewPip.cpp
    void ShowControls(int show, int redraw) override;                        // DMBViewDraw.cpp
    int AllowFileList(const WCHAR* path) override;                           // DMBViewRecord.cpp
    void ReleaseInterface(int argument) override;                            // DMBViewSession.cpp
    void Pause() override;                                                   // DMBViewSession.cpp
    int Stop() override;                                                     // DMBViewSession.cpp
    void LoadProfile() override;                                             // DMBViewProfile.cpp
    void SaveProfile() override;                                             // DMBViewProfile.cpp

    // Widget facet.
    void Paint(HDC dc) override;
    const WCHAR* GetResourceName() const override;
    void Theme() override; // DMBViewDraw.cpp

    // ---- Settings (DMBView.cpp) ----------------------------------------------------------------------------------------
    // Any thread. A setter clamps to its range and raises the profile's dirty flag only when the stored value changes.
    [[nodiscard]] unsigned GetPIPOnOff() const; // always 1, on purpose
    void SetPIPOnOff(unsigned value);           // 0..1
    [[nodiscard]] unsigned GetDLSOnOff() const;
    void SetDLSOnOff(unsigned value); // 0..1
    [[nodiscard]] unsigned GetPIPSize() const;
    void SetPIPSize(unsigned value); // 0..1
    [[nodiscard]] unsigned GetPIPPos() const;
    void SetPIPPos(unsigned value); // 0..3
    [[nodiscard]] unsigned GetDLSPos() const;
    void SetDLSPos(unsigned value); // 0..1
    [[nodiscard]] unsigned GetRecordTime() const;
    void SetRecordTime(unsigned value); // 0..4
    [[nodiscard]] unsigned GetRatioOnOff() const;
    // Window thread. A changed value is applied at once to a playing or recording television or file session.
    void SetRatioOnOff(unsigned value);
    [[nodiscard]] int IsDebugMode() const;
    // One byte per row of ChannelTable; a row is scanned when its byte is not zero.
    [[nodiscard]] BYTE* GetScanFrequency();
    void SetScanFrequency(const BYTE* bytes);
    [[nodiscard]] unsigned GetSNRDebug() const;
    // Window thread. Shows or hides the signal-quality texts; not persisted.
    void SetSNRDebug(unsigned value);

    // ---- Session (DMBViewSession.cpp) ----------------------------------------------------------------------------------
    // 1 when a graph controller exists afterwards, 0 when the graph could not be created.
    int CreateGraphBuilder();
    // Always 1.
    int ReleaseGraphBuilder();

    // ---- Channels and signal ---------------------------------------------------------------------------------------------
    [[nodiscard]] WString GetChannelName(int frequency) const; // DMBViewChannels.cpp
    // One signal-to-noise reading in dB; a negative one resets the indicator.
    void UpdateAntena(int snr); // DMBViewSignal.cpp

protected:
    CVelDMBView();
    void ResetProfile(); // DMBViewProfile.cpp

private:
    friend class DMBViewPeer;  // tests and the script runner; declared only
    friend struct DMBViewRows; // the rows of the message map

    // ---- Settings helpers ------------------------------------------------------------------------------------------------
    void StoreSetting(LONG& setting, unsigned value, unsigned maximum);
    static void TrimEndSpace(char* text, int length); // DMBViewProfile.cpp

    // ---- Session (DMBViewSession.cpp) ------------------------------------------------------------------------------------
    int OnCreate(CREATESTRUCTW* parameters);
    void OnCmdPreload();
    [[nodiscard]] int GetCurrentType() const; // of the selection
    [[nodiscard]] int GetLastType() const;    // of the session to be torn down
    HRESULT RunDMB();
    HRESULT StopDMB();
    HRESULT RunDAB();
    HRESULT StopDAB();
    HRESULT CloseDMBDAB();
    void ResetDMB();
    int ChangeDMBDAB();
    void OnClickToggleDMB(UINT id);
    void ToggleDMBButton();
    LRESULT OnAir(WPARAM wParam, LPARAM lParam);
    void OnClickExit();

    // ---- Events (DMBViewEvents.cpp) --------------------------------------------------------------------------------------
    LRESULT OnMediaNotify(WPARAM wParam, LPARAM lParam);
    LRESULT OnUpdateInfo(WPARAM id, LPARAM text);
    void OnTimer(UINT_PTR id);
    void OnKeyUp(UINT key, UINT repeatCount, UINT flags);
    void OnLButtonDown(UINT flags, POINT point);
    void OnNoSignalEvent();
    void OnSignalEvent();
    [[nodiscard]] WORD NoSignalText() const; // the short form for a small window

    // ---- Screen (DMBViewDraw.cpp) ----------------------------------------------------------------------------------------
    void ShowToolButtons(int show, int redraw);
    void ShowAudioBG(int show, int redraw);
    void ShowInfo(const WCHAR* text, int redraw);
    LRESULT OnShowChLabel(WPARAM index, LPARAM useIndex);
    void DrawProgressBar(int position, int total);

    // ---- Picture-in-picture (DMBViewPip.cpp) -----------------------------------------------------------------------------
    void FitToPIP(SIZE size);

    // ---- Channels --------------------------------------------------------------------------------------------------------
    // List file (DMBViewChannels.cpp).
    void UpdateChList(int save);
    // Scan (DMBViewScan.cpp).
    void OnClickScan();
    void ShowScanCounts(int tvCount, int radioCount);
    // Selection and stepping (DMBViewSelect.cpp).
    LRESULT OnChangeChannel(WPARAM index, LPARAM label);
    LRESULT ChangeChUpDown(WPARAM delayMs, LPARAM step);
    void OnClickChannelUpDown(UINT buttonId);
    [[nodiscard]] int FindChannelByLabel(const WCHAR* label) const;
    void PostLabelReset();
    void SetChannelLabel(const WString& text);
    void PostChannelLabel(const WString& label, WORD textId);
    HRESULT RetryLater(UINT milliseconds);
    // Signal indicator (DMBViewSignal.cpp).
    void FollowRadioSignal(int snr);
    void ShowSignalFigures(int snr);
    void ShowSignalBars(int snr);
    // List (DMBViewList.cpp).
    void OnClickList();
    // Settings (DMBViewSettings.cpp).
    void OnClickSetting();

    // ---- Recording (DMBViewRecord.cpp) -----------------------------------------------------------------------------------
    void OnClickRecord();
    void BeginRecording();
    void CheckRecordButton(int redraw);
    HRESULT StartRecording();
    HRESULT StopRecoring(); // the name is written so on purpose: the shell links to it
    void PlayDMBFile(const WCHAR* path);

    // ---- Radio text and slides -------------------------------------------------------------------------------------------
    // Texts (DMBViewLabel.cpp).
    void OnLabelEvent();
    void DrawLabels(HDC dc, const RECT& clip);
    // Slides (DMBViewSlide.cpp).
    void OnSlideEvent();
    void DecodeMotBody();
    int StartDecode(unsigned char* data, int size);
    void PaintImage(unsigned char* dib);

    // ---- Graph and tuner -------------------------------------------------------------------------------------------------
    CDMBLiveStream* m_pLiveStream = nullptr;       // owned; made at preload, deleted by Destroy
    CDMBLiveControl* m_pLiveControl = nullptr;     // owned; null when the tuner did not open
    CDMBFilterControl* m_pFilterControl = nullptr; // owned; bound to m_pGraph

    // ---- Channels --------------------------------------------------------------------------------------------------------
    ChannelList m_ChannelList;
    LONG m_nChannelCount = 0;    // entries of the list; -1 when its file could not be opened
    LONG m_nCurChannel = -1;     // selected, or last selected; persisted; the profile sets it
    LONG m_nLastChannel = -1;    // of the session that runs; -1 without one
    LONG m_nPendingChannel = -1; // target of a stepped change
    LONG m_nLastDMBChannel = -1; // targets of the television/radio toggle
    LONG m_nLastDABChannel = -1;
    LONG m_nStartRetries = 0;        // retunes since the last good change
    WCHAR m_szChannelLabel[64] = {}; // posted by pointer, so it never moves
    BYTE m_ScanFrequency[kChannelTableRows] = {};
    _tag_DMB_CHANNEL_INFO scanResults[kScanSlots] = {};
    LONG foundBlockCount = 0; // blocks that answered the last scan

    // ---- Recording and playback ------------------------------------------------------------------------------------------
    LONG m_nFileIndex = -1; // >= 0 while a recording plays
    WString m_strFileName;  // of the recording that plays
    TimeSeconds m_tRecordStart = 0;

    // ---- Settings (read and written with interlocked operations) ---------------------------------------------------------
    LONG m_uPIPOnOff = 0;
    LONG m_uDLSOnOff = 0;
    LONG m_uPIPSize = 0;
    LONG m_uPIPPos = 0;
    LONG m_uDLSPos = 0;
    LONG m_uRecordTime = 0; // index into the record lengths; persisted
    LONG m_uRatioOnOff = 0; // keep the aspect ratio; persisted
    LONG m_uSNRDebug = 0;   // window thread

    // ---- State flags -----------------------------------------------------------------------------------------------------
    LONG m_bOnAir = 0;                // a radio service is on air; texts and slides are accepted
    LONG m_bNoSignal = 0;             // the no-signal text is showing
    LONG m_bSignalWait = 0;           // a radio session stopped for a weak signal and waits for it
    LONG m_bChangeBusy = 0;           // a stepped change runs or succeeded less than 3 s ago; interlocked
    LONG m_bMsgBoxUp = 0;             // a message box is up
    LONG m_bScanning = 0;             // a scan runs; all keys are ignored
    LONG m_bToggleGuard = 0;          // a toggle or the list happened moments ago
    _tag_DMB_RSSI_PARAM m_nRSSI = {}; // last reading, while m_uSNRDebug is on

    // ---- Skin elements, found at every Theme; null when the skin lacks them ----------------------------------------------
    GButton* m_pToolButtons[4] = {};    // scan, list, settings, record
    GButton* m_pChannelButtons[2] = {}; // down, up
    GButton* m_pScanBox = nullptr;
    GButton* m_pScanText = nullptr;
    RECT m_rcInfo = {};  // full-size place of the information text, taken at the first small form
    RECT m_rcDLS = {};   // area of the radio text
    RECT m_rcSlide = {}; // area of the slide

    // ---- Radio text and slides -------------------------------------------------------------------------------------------
    CriticalSection m_csDLS;       // guards m_arrDLS and m_rcDLS
    CriticalSection m_csSLS;       // guards the slide members
    std::vector<WString> m_arrDLS; // history, oldest first, at most 4
    BYTE* m_pMotBody = nullptr;    // last slide file as read
    DWORD m_nMotBodySize = 0;      // its capacity
    BYTE* m_pSlideDib = nullptr;   // header and pixels
    DWORD m_nSlideHeaderSize = 0;  // 0 until the header is built
    LONG m_bSlideReady = 0;        // a decoded picture is in m_pSlideDib
};
