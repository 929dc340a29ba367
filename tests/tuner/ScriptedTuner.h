// A tuner that does what a test says: the second implementation of platform/medmblib.h.
//
// It is a shared library with the file name of the real one, so that the module, which asks for that name, gets this one when a
// test program has loaded it before. One script per process; window thread only.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "platform/medmblib.h"

namespace scripted {

struct DMB_MEDMB_API TunerScript {
    bool opens = true;
    // What a block carries, by frequency in Hz; a frequency that is not here does not answer.
    std::map<int, _tag_DMB_CHANNEL_INFO> blocks;
    // Does tuning succeed? Empty: always.
    std::function<bool(int frequency, int type, int id)> tunes;
    float snr = 30.0F;
    _tag_DMB_RSSI_PARAM rssi = {};
    // Called at the beginning of every GetChannel.
    std::function<void(int frequency)> onGetChannel;

    // Every call, one line each: "tuner.SetChannel 205280000 8 F1E00401 0".
    std::vector<std::string> log;
    // Also told every line, as it is written.
    std::function<void(const std::string&)> listener;
    int controlsAlive = 0;
    int streamsAlive = 0;

    // Adds a service to a block; the label is narrow text in the device's code page, padded with blanks.
    void AddService(int frequency, const std::string& label, int type, std::uint32_t id);
};

// The one script; Reset before each test.
DMB_MEDMB_API TunerScript& Tuner();
DMB_MEDMB_API void ResetTuner();

} // namespace scripted
