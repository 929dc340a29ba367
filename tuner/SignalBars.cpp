#include "tuner/SignalBars.h"

#include <algorithm>

namespace {

// Level = index of the first threshold above the average. The last one never changes the result: the level above all
// thresholds is 6 as well.
constexpr int kLevelThresholds[kAntennaLevels] = {11, 13, 15, 17, 19, 21, 24};

constexpr int kSignalGood = 8;   // above: a usable radio signal
constexpr int kSignalAbsent = 6; // at or below: the no-signal timer starts

int LevelOf(int average) {
    for (int level = 0; level < kAntennaLevels; ++level) {
        if (average < kLevelThresholds[level])
            return level;
    }
    return kAntennaLevels - 1;
}

} // namespace

int SignalBars::Add(int snr) {
    samples[sampleCount % kWindow] = snr;
    const LONG summed = std::min<LONG>(sampleCount + 1, kWindow);
    LONGLONG sum = 0;
    for (LONG i = 0; i < summed; ++i)
        sum += samples[i];
    const int average = static_cast<int>(sum / summed);
    // The count only has to stay in step with the ring once it is full.
    ++sampleCount;
    if (sampleCount >= 2 * kWindow)
        sampleCount -= kWindow;

    const int level = LevelOf(average);
    if (level == lastLevel)
        return kNoLevel;
    lastLevel = level;
    return level;
}

void SignalBars::Reset() {
    sampleCount = 0;
    lastLevel = kNoLevel;
}

RadioSignalAction DecideRadioSignal(int snr, const RadioSignalState& state) {
    RadioSignalAction action;
    if (snr > kSignalGood) {
        const bool recovering = state.noSignalShown || state.signalWait;
        if (recovering) {
            if (!state.onAir) {
                action.postOnAir = state.noSignalShown;
                action.setOnAir = !state.noSignalShown;
            }
            action.restart = true;
        }
        action.disarm = state.noSignalArmed;
        return action;
    }
    action.stop = !state.signalWait;
    action.arm = snr <= kSignalAbsent && !state.noSignalArmed;
    return action;
}
