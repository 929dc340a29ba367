// The numbers of the tables, written down here a second time on purpose: the model shares none with the view.
#pragma once

#include <cstdint>

namespace model {

// Messages.
enum Message : unsigned {
    kKeyReleased = 0x101,
    kCommand = 0x111,
    kTimerTick = 0x113,
    kGraphNotice = 0x401,
    kOnAirNotice = 0x402,
    kVideoRequest = 0x405,
    kBoxRequest = 0x407,
    kChangeChannel = 0x464,
    kUpdateInfo = 0x465,
    kStep = 0x466,
    kShowLabel = 0x467,
    kCloseView = 0x400 + 300, // the shell's own
};

// Timers of the view, and those of the shell in it and in a notice.
enum TimerId : unsigned {
    kMenuTimer = 1,
    kNoticeTimer = 1,
    kRecordTimer = 200,
    kSignalTimer,
    kNoSignalTimer,
    kChangeTimer,
    kStartTimer,
    kToggleTimer,
    kScanTimer,
    kScanPrepTimer,
    kChangeGuardTimer,
};

// Play modes, session types, graph events.
enum Mode { kStopped = 2, kPlaying = 4, kPaused = 5, kRecording = 8 };
enum Type { kNone = -1, kTelevision = 0, kRadioType = 1, kFileType = 2 };
enum Event {
    kComplete = 1,
    kClockChanged = 0x0D, // the graph's own, when it first chooses a clock
    kFirstPicture = 0x49,
    kAudioChange = 0xA201,
    kPadText = 0xA301,
    kSlideReady = 0xA310,
    kTimeReset = 0xB000,
    kSignalGone = 0xB100,
    kSignalBack = 0xB101,
};

inline constexpr std::int64_t kShowVideo = 0x180418;
inline constexpr int kRecordSeconds[5] = {300, 600, 900, 1800, 3600};

// Row of the frequency table to Hz: channels 7 to 13, blocks A to C.
[[nodiscard]] constexpr unsigned FrequencyOf(int row) {
    return 175280000U + 6000000U * static_cast<unsigned>(row / 3) + 1728000U * static_cast<unsigned>(row % 3);
}

} // namespace model
