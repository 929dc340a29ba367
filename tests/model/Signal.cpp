// The signal indicator, and radio that loses its signal.
#include <cstdio>

#include "tests/model/Model.h"

namespace model {

namespace {

constexpr int kGood = 8;   // above: radio plays
constexpr int kAbsent = 6; // at or below: ten seconds to the notice
constexpr int kLimits[] = {11, 13, 15, 17, 19, 21};

int LevelOf(int average) {
    int level = 0;
    for (const int limit : kLimits)
        level += average >= limit ? 1 : 0;
    return level;
}

} // namespace

void Model::PollSignal() {
    if (!hasTuner)
        return;
    if (snrDebug != 0) {
        Note("tuner.GetRSSI");
        seenRssi = in.rssi;
        seenRssiValue = in.rssiValue;
    }
    Note("tuner.GetSNR");
    Reading(static_cast<int>(in.snr));
}

void Model::Reading(int snr) {
    if (snr < 0) {
        lastLevel = -1;
        sampleCount = 0;
        At(10).state = 2;
        KillTimer(kNoSignalTimer);
        armed = false;
        return;
    }
    if (CurrentType() == kRadioType)
        FollowRadio(snr);
    if (snrDebug != 0) {
        At(10).state = 1;
        At(10).text = std::to_string(snr);
        char text[64];
        std::snprintf(text, sizeof text, "RSSI: %2.2f, %d", static_cast<double>(seenRssi), seenRssiValue);
        At(9).shown = true;
        At(9).text = text;
        return;
    }
    samples[sampleCount % 4] = snr;
    int sum = 0;
    for (int i = 0; i <= (sampleCount < 3 ? sampleCount : 3); ++i)
        sum += samples[i];
    const int average = sum / (sampleCount < 3 ? sampleCount + 1 : 4);
    ++sampleCount;
    const int newLevel = LevelOf(average);
    if (newLevel == lastLevel)
        return;
    At(10).state = 0;
    lastLevel = level = newLevel;
}

void Model::FollowRadio(int snr) {
    if (snr > kGood) {
        if (noSignal || signalWait) {
            if (!onAir && noSignal)
                PostTo(kView, kOnAirNotice);
            else
                onAir = true;
            RunDAB();
        }
        if (armed) {
            KillTimer(kNoSignalTimer);
            armed = false;
        }
        return;
    }
    if (!signalWait) {
        signalWait = true;
        Stop();
    }
    if (snr <= kAbsent && !armed) {
        armed = true;
        StartTimer(kNoSignalTimer, 10000);
    }
}

} // namespace model
