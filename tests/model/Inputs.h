// What surrounds the view in the randomised test: the tuner, the filters, the card and the user's answers, as plain data.
//
// Both sides read it: the world makes the real harness behave so, the model predicts from it. Standard library only.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

namespace model {

inline constexpr int kRows = 21; // of the frequency table

struct Service {
    std::string label; // as broadcast, up to 16 characters
    int type = 0;      // 8 television, 0 radio, others are ignored
    unsigned id = 0;
};

struct Record {
    unsigned frequency = 0;
    std::string label;
    unsigned id = 0;
    int kind = 0; // 0 television, 1 radio, 3 and others nothing that plays
};

// Filters, in the order of the scripted ones.
enum Kind { kParser, kBsac, kAudio, kVideo, kPicture, kRadio, kMp3, kKinds };

// How the user treats a question or a dialog that waits for nothing else.
struct Answer {
    enum Act { Ok, Cancel, EscapeKey, OkKey, Pick } act = Cancel;
    int tab = 0; // Pick: of the list
    int row = 0; // Pick: of the tab; in the settings it chooses a button
};

struct Inputs {
    bool graphExists = true; // a filter graph can be made
    bool tunerOpens = true;
    bool tunes = true;
    float snr = 30.0F;
    float rssi = -50.0F;
    int rssiValue = 3;
    std::array<std::vector<Service>, kRows> air; // an empty block does not answer

    std::array<bool, kKinds> createFails{};
    std::array<bool, kKinds> joinFails{};
    bool parserPinUnknown = false; // the parser does not know its second pin
    bool radioPinUnknown = false;
    bool pauseFails = false, runFails = false, stopFails = false; // of the audio renderer
    bool nameFails = false, captureFails = false;                 // the parser refuses a recording
    bool noAudioInfo = false;
    bool padFails = false, padMissing = false;
    std::string pad; // label text of the radio source
    bool padWide = false;

    bool cardIn = true;
    std::uint64_t freeBytes = std::uint64_t{1} << 33;
    bool profileLocked = false; // no file can be made
    enum Slide { NoSlide, BadSlide, GoodSlide } slide = NoSlide;

    std::deque<Answer> answers;
};

} // namespace model
