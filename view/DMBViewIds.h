// Every number the view shares with the shell, its skin, its timers and its filters. Constants only.
#pragma once

#include "platform/types.h"
#include "platform/wince.h"

// ---- Window messages ---------------------------------------------------------------------------------------------------
inline constexpr UINT WM_DMB_MEDIANOTIFY = WM_USER + 1;     // the graph has events: 0, 0
inline constexpr UINT WM_DMB_ONAIR = WM_USER + 2;           // a radio service has signal: 0, 0
inline constexpr UINT WM_PLAYER_VIDEO = WM_USER + 5;        // to the shell: kVideoShow or kVideoHide, 0
inline constexpr UINT WM_PLAYER_MSGBOX = WM_USER + 7;       // to the shell: text id, box style
inline constexpr UINT WM_DMB_CHANGECHANNEL = WM_USER + 100; // channel index or -1, label to select or 0
inline constexpr UINT WM_DMB_UPDATEINFO = WM_USER + 101;    // text id or 0, wide text when the id is 0
inline constexpr UINT WM_DMB_CHUPDOWN = WM_USER + 102;      // commit delay in ms, step +1 or -1
inline constexpr UINT WM_DMB_SHOWCHLABEL = WM_USER + 103;   // channel index, non-zero: use it, 0: the current channel

inline constexpr WPARAM kVideoShow = 0x180418;
inline constexpr WPARAM kVideoHide = 0;

// ---- Commands ----------------------------------------------------------------------------------------------------------
inline constexpr UINT kCmdFullSize = 17; // the shell's: back to full size
inline constexpr UINT kCmdExit = 18;
inline constexpr UINT kCmdScan = 20;
inline constexpr UINT kCmdList = 21;
inline constexpr UINT kCmdSetting = 22;
inline constexpr UINT kCmdRecord = 23;
inline constexpr UINT kCmdChannelDown = 24;
inline constexpr UINT kCmdChannelUp = 25;
inline constexpr UINT kCmdToggleSmall = 26;
inline constexpr UINT kCmdToggleFull = 27;
inline constexpr UINT kCmdToggleFace = 96;
inline constexpr UINT kCmdDecodeSlide = 97;
inline constexpr UINT kCmdPreload = 64954;

// ---- Timers ------------------------------------------------------------------------------------------------------------
inline constexpr UINT_PTR eRECORD_TIMER = 200;      // length limit of a recording, every second
inline constexpr UINT_PTR eSIGNAL_TIMER = 201;      // signal poll
inline constexpr UINT_PTR eNOSIGNAL_TIMER = 202;    // a weak radio signal becomes "no signal"
inline constexpr UINT_PTR eCHANGE_TIMER = 203;      // commits a stepped channel
inline constexpr UINT_PTR eSTART_TIMER = 204;       // retries a channel that did not start
inline constexpr UINT_PTR eTOGGLE_TIMER = 205;      // ends the guard after a toggle or the list
inline constexpr UINT_PTR eSCAN_TIMER = 206;        // scan key
inline constexpr UINT_PTR eSCANPREP_TIMER = 207;    // scan key while small
inline constexpr UINT_PTR eCHANGEGUARD_TIMER = 208; // ends the guard after a stepped change

inline constexpr UINT kRecordTick = 1000;
inline constexpr UINT kSignalPollDMB = 3000;
inline constexpr UINT kSignalPollDAB = 500;
inline constexpr UINT NOSIGNAL_TIMEOUT = 10000;
inline constexpr UINT kStepDelay = 1000;
inline constexpr UINT kRetryGraph = 100;
inline constexpr UINT kRetryTuner = 5000;
inline constexpr UINT kToggleGuard = 3000;
inline constexpr UINT kListGuard = 200;
inline constexpr UINT kScanKeyDelay = 100;
inline constexpr UINT kChangeGuard = 3000;

// ---- Keys (key-up) -----------------------------------------------------------------------------------------------------
inline constexpr UINT kKeyEscape = 27;
inline constexpr UINT kKeyChannelDown = 33; // Page Up
inline constexpr UINT kKeyChannelUp = 34;   // Page Down
inline constexpr UINT kKeyScan = 180;
inline constexpr UINT kKeyRecord = 193;
inline constexpr UINT kKeyOk = 195;

// ---- Texts of the view's table -----------------------------------------------------------------------------------------
inline constexpr WORD kTextNoChannels = 1001;  // box: the scan found nothing
inline constexpr WORD kTextNoChannel = 1002;   // no such channel, or no list
inline constexpr WORD kTextStepWaits = 1004;   // after the label while a step waits
inline constexpr WORD kTextPickChannel = 1005; // a list, but no valid saved channel
inline constexpr WORD kTextNoSignal = 1008;
inline constexpr WORD kTextRecordStopped = 1009; // box
inline constexpr WORD kTextNoSpace = 1010;       // box: not enough space, or no folder
inline constexpr WORD kTextStopRecording = 1011; // box: really stop the recording?
inline constexpr WORD kTextNoSignalShort = 1012; // the same for a small window
inline constexpr WORD kTextRecordStarted = 1013; // box
inline constexpr WORD kTextNoDAB = 1014;         // box
inline constexpr WORD kTextNoDMB = 1015;         // box
inline constexpr WORD kTextTuned = 1016;         // after the label once tuned
// Text of the main window's table.
inline constexpr WORD kTextCardError = 5; // box: card absent or refused

// ---- Skin elements -----------------------------------------------------------------------------------------------------
inline constexpr UINT kElementToolGroup = 2;
inline constexpr UINT kElementDebugText = 9;
inline constexpr UINT kElementAntenna = 10;
inline constexpr UINT kElementScan = 20;
inline constexpr UINT kElementList = 21;
inline constexpr UINT kElementSetting = 22;
inline constexpr UINT kElementRecord = 23;
inline constexpr UINT kElementChannelDown = 24;
inline constexpr UINT kElementChannelUp = 25;
inline constexpr UINT kElementToggleSmall = 26;
inline constexpr UINT kElementToggleFull = 27;
inline constexpr UINT kElementAudioBG = 42;
inline constexpr UINT kElementInfo = 43;
inline constexpr UINT kElementSlide = 45;
inline constexpr UINT kElementScanBox = 49;
inline constexpr UINT kElementScanText = 50;
inline constexpr UINT kElementDLS = 51;

inline constexpr WORD kBitmapProgress = 2001; // 1x8 strip
