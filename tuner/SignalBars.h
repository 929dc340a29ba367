// The antenna symbol: how signal-to-noise readings become one of seven levels.
#pragma once

#include "platform/types.h"

inline constexpr int kAntennaLevels = 7;
inline constexpr int kNoLevel = -1;

// A moving average over the last four readings, and the level drawn last.
class SignalBars {
public:
    // Takes a reading in dB and returns the level to draw, or nothing new (kNoLevel) when the level drawn last still holds.
    int Add(int snr);
    // Forgets the number of readings and the level drawn last. The readings themselves stay, unsummed, until overwritten.
    void Reset();

private:
    static constexpr int kWindow = 4;
    LONG samples[kWindow] = {};
    LONG sampleCount = 0;
    LONG lastLevel = kNoLevel;
};

// What a radio session does about a reading. Pure: the view carries it out.
struct RadioSignalState {
    bool noSignalShown; // m_bNoSignal
    bool signalWait;    // m_bSignalWait
    bool noSignalArmed; // timer 202 runs
    bool onAir;         // m_bOnAir
};
struct RadioSignalAction {
    bool disarm = false;    // kill the no-signal timer (after restart, when both)
    bool postOnAir = false; // announce that the service is back
    bool setOnAir = false;  // mark it on air without announcing
    bool restart = false;   // run the radio again
    bool stop = false;      // note the weak signal and stop the radio
    bool arm = false;       // start the no-signal timer
    friend bool operator==(const RadioSignalAction&, const RadioSignalAction&) = default;
};
[[nodiscard]] RadioSignalAction DecideRadioSignal(int snr, const RadioSignalState& state);
