#include "tests/model/Steps.h"

#include <algorithm>
#include <iterator>
#include <numeric>

namespace model {

namespace {

const char* const kNames[Step::kCount] = {
    "open",      "settle",     "close",     "idle",      "wait",         "command",     "change",     "change by label",
    "step",      "show label", "show text", "on air",    "graph notice", "key",         "timer tick", "event",
    "hold",      "pause",      "stop",      "release",   "controls",     "small",       "move",       "full",
    "home",      "back",       "save all",  "snr debug", "ratio",        "record time", "mask",       "reading",
    "play file", "toggle",     "theme",     "preload",   "surroundings"};

// How often each kind comes, of a thousand or so.
constexpr int kWeights[] = {0, 0, 2,  160, 190, 110, 60, 8, 20, 8, 10, 20, 6, 70, 14, 130, 12, 8,  6,
                            5, 6, 10, 6,   14,  8,   12, 5, 6,  4, 5,  6,  8, 6,  6,  2,   1,  110};
static_assert(std::size(kWeights) == Step::kCount);

constexpr int kWaits[] = {1,    20,   99,   100,  101,  250,  499,  500,  501,  999,  1000,  1000,
                          1001, 1500, 2000, 2999, 3000, 3001, 4000, 5000, 5001, 9999, 10000, 10001};
constexpr int kLongWait = 301000;
constexpr int kCommands[] = {17, 18, 19, 20, 21, 22, 23, 23, 23, 24, 24, 25, 25, 26, 27, 27, 96, 97, 999};
constexpr unsigned kKeys[] = {27, 33, 34, 65, 180, 193, 193, 195};
constexpr int kTicks[] = {200, 201, 202, 203, 204, 205, 206, 207, 208, 999};
constexpr int kEvents[] = {kComplete,   kFirstPicture, kFirstPicture, kAudioChange, kPadText,    kPadText,    kPadText,
                           kSlideReady, kTimeReset,    kSignalGone,   kSignalGone,  kSignalGone, kSignalBack, 0x7777};
constexpr int kReadings[] = {-1, 0, 5, 6, 7, 8, 9, 10, 11, 13, 15, 17, 19, 21, 24, 30};
constexpr float kSignals[] = {0.0F, 5.9F, 6.0F, 6.9F, 7.0F, 8.0F, 8.99F, 9.0F, 12.0F, 16.5F, 20.0F, 23.9F, 30.0F};
constexpr const char* kLabels[] = {"NEWS", "MUSIC", "SPORT", "JAZZ", "MOVIE", "TV1", "SIXTEEN-LETTERS!", "A B"};
constexpr Place kPlaces[] = {{400, 100, 720, 400}, {300, 100, 720, 400}, {0, 0, 457, 300}, {0, 0, 458, 300},
                             {0, 0, 800, 240},     {0, 0, 320, 480},     {0, 0, 50, 50},   {472, 232, 792, 472}};

} // namespace

std::string Step::Describe() const {
    std::string line = kNames[kind];
    line += " " + std::to_string(a) + " " + std::to_string(b);
    if (!text.empty() && kind != Mask)
        line += " " + text;
    if (kind == Mask)
        line += " of " + std::to_string(std::count(text.begin(), text.end(), '\1'));
    if (kind == Move)
        line += " to " + std::to_string(place.left) + "," + std::to_string(place.right) + " x " +
                std::to_string(place.top) + "," + std::to_string(place.bottom);
    if (kind == Open) {
        line += listFile ? " list:" : " no list";
        for (const Record& record : channels)
            line += " " + record.label + "/" + std::to_string(record.kind);
        line += savedChannel ? " saved " + std::to_string(*savedChannel) : " nothing saved";
    }
    return line;
}

Step Walk::Next(const Model& model, Inputs& in) {
    Step step;
    in.answers.clear();
    if (!model.open) {
        step.kind = model.settled ? Step::Open : Step::Settle;
        if (step.kind == Step::Open)
            FillOpen(step);
        return step;
    }
    static const int total = std::accumulate(std::begin(kWeights), std::end(kWeights), 0);
    int pick = Below(total);
    int kind = 0;
    while (pick >= kWeights[kind])
        pick -= kWeights[kind++];
    step.kind = static_cast<Step::Kind>(kind);
    ChooseAnswers(in);
    Fill(step, in);
    constexpr int kOkKey = 195;
    if (step.kind == Step::Key && step.a == kOkKey && model.IsHeld())
        step.a = 'A'; // the home screen would open a view of its own
    return step;
}

void Walk::Fill(Step& step, Inputs& in) {
    switch (step.kind) {
    case Step::Wait:
        step.a = OneIn(300) ? kLongWait : OneOf(kWaits);
        break;
    case Step::Command:
        step.a = OneOf(kCommands);
        break;
    case Step::Change:
        step.a = Below(8) - 1;
        break;
    case Step::ChangeByLabel:
        step.a = OneIn(6) ? 0 : Model::kFirstText + Below(6);
        break;
    case Step::Step_:
        step.a = 1000;
        step.b = OneIn(2) ? 1 : -1;
        break;
    case Step::ShowLabel:
        step.a = Below(8) - 1;
        step.b = Below(2);
        break;
    case Step::ShowText: {
        constexpr int ids[] = {1002, 1008, 1012, 0x10000 + 1002};
        step.a = OneIn(2) ? OneOf(ids) : 0;
        constexpr int refs[] = {Model::kNull, Model::kEmpty, Model::kFirstText};
        step.b = step.a == 0 ? OneOf(refs) : 0;
        break;
    }
    case Step::Key:
        step.a = OneOf(kKeys);
        step.b = OneIn(5) ? 2 : 1;
        break;
    case Step::Tick:
        step.a = OneOf(kTicks);
        break;
    case Step::Event:
        step.a = Below(kKinds);
        step.b = OneOf(kEvents);
        break;
    case Step::Hold:
    case Step::Controls:
    case Step::SnrDebug:
    case Step::Ratio:
        step.a = Below(2);
        break;
    case Step::RecordTime:
        step.a = Below(7);
        break;
    case Step::Move:
        step.place = OneOf(kPlaces);
        break;
    case Step::Mask:
        for (int row = 0; row < kRows; ++row)
            step.text += static_cast<char>(OneIn(3) ? 0 : 1);
        if (OneIn(4))
            step.text.assign(kRows, '\0');
        break;
    case Step::Reading:
        step.a = OneOf(kReadings);
        break;
    case Step::Surroundings:
        ChangeSurroundings(in, step);
        break;
    default:
        break;
    }
}

void Walk::FillOpen(Step& step) {
    constexpr int kinds[] = {0, 0, 0, 1, 1, 1, 3, 7};
    const int records = OneIn(5) ? 0 : 1 + Below(6);
    for (int i = 0; i < records; ++i)
        step.channels.push_back(
            {FrequencyOf(Below(kRows)), OneOf(kLabels), static_cast<unsigned>(16 + i), OneOf(kinds)});
    step.listFile = !OneIn(8);
    if (!OneIn(4))
        step.savedChannel = Below(8) - 1;
    step.a = Below(5);
    step.b = Below(2);
}

void Walk::ChooseAnswers(Inputs& in) {
    constexpr Answer::Act acts[] = {Answer::Ok,    Answer::Ok,   Answer::Cancel, Answer::EscapeKey,
                                    Answer::OkKey, Answer::Pick, Answer::Pick};
    for (int i = Below(3); i > 0; --i)
        in.answers.push_back({OneOf(acts), Below(3), Below(5)});
}

// Faults come one at a time and mostly go again at once, so that sessions get anywhere.
void Walk::ChangeSurroundings(Inputs& in, Step& step) {
    const auto index = static_cast<std::size_t>(Below(kKinds));
    switch (Below(16)) {
    case 0:
    case 1:
    case 2:
    case 3: {
        Inputs good;
        good.air = in.air;
        good.snr = in.snr;
        good.answers = in.answers;
        in = good;
        step.text = "all well";
        break;
    }
    case 4:
    case 5:
    case 6:
        in.snr = OneOf(kSignals);
        step.text = "snr " + std::to_string(in.snr);
        break;
    case 7:
        ChangeAir(in);
        step.text = "air";
        break;
    case 8:
        in.tunes = OneIn(2);
        step.text = in.tunes ? "tunes" : "does not tune";
        break;
    case 9:
        in.createFails[index] = true;
        step.text = "filter " + std::to_string(index) + " cannot be made";
        break;
    case 10:
        in.joinFails[index] = true;
        step.text = "filter " + std::to_string(index) + " does not join";
        break;
    case 11: {
        bool* const faults[] = {&in.parserPinUnknown, &in.radioPinUnknown, &in.pauseFails,   &in.runFails,
                                &in.stopFails,        &in.nameFails,       &in.captureFails, &in.noAudioInfo,
                                &in.padFails,         &in.padMissing,      &in.profileLocked};
        const int which = Below(static_cast<int>(std::size(faults)));
        *faults[which] = true;
        step.text = "fault " + std::to_string(which);
        break;
    }
    case 12:
        in.graphExists = !OneIn(3);
        in.tunerOpens = !OneIn(3);
        step.text = std::string(in.graphExists ? "graph" : "no graph") + (in.tunerOpens ? ", tuner" : ", no tuner");
        break;
    case 13: {
        in.cardIn = !OneIn(3);
        constexpr std::uint64_t spaces[] = {0, 51118079, 51118080, 90439679, 267386880, std::uint64_t{1} << 32};
        in.freeBytes = OneOf(spaces);
        step.text = std::string(in.cardIn ? "card, free " : "no card, free ") + std::to_string(in.freeBytes);
        break;
    }
    case 14: {
        constexpr const char* pads[] = {"", "one", "two", "three", "four", "five", "six"};
        in.pad = OneOf(pads);
        in.padWide = OneIn(2);
        step.text = "label " + in.pad;
        break;
    }
    default:
        in.slide = static_cast<Inputs::Slide>(Below(3));
        in.rssi = static_cast<float>(Below(100)) / 8 - 70;
        in.rssiValue = Below(9);
        step.text = "slide " + std::to_string(in.slide);
        break;
    }
}

void Walk::ChangeAir(Inputs& in) {
    constexpr int types[] = {8, 8, 0, 0, 5};
    const int chance = OneOf({1, 2, 4, 12});
    for (auto& block : in.air) {
        block.clear();
        if (!OneIn(chance))
            continue;
        const int services = OneIn(20) ? 20 : Below(4);
        for (int i = 0; i < services; ++i)
            block.push_back({OneIn(12) ? " " : OneOf(kLabels), OneOf(types), static_cast<unsigned>(100 + Below(50))});
    }
}

} // namespace model
