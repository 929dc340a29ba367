#include "host/headend/Melody.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstdint>
#include <cstdlib>
#include <numbers>
#include <string_view>

namespace headend {

namespace {

// Partials of a voice and how it dies away.
struct Timbre {
    std::array<double, 5> partials;
    double decay;  // seconds to 1/e
    double attack; // seconds
};

constexpr Timbre kBell{{1, 0.45, 0.2, 0.12, 0.05}, 0.9, 0.004};
constexpr Timbre kFlute{{1, 0.18, 0.08, 0.02, 0}, 2.5, 0.04};
constexpr Timbre kPluck{{1, 0.6, 0.4, 0.25, 0.15}, 0.45, 0.003};
constexpr Timbre kReed{{1, 0.3, 0.35, 0.1, 0.12}, 1.6, 0.02};
constexpr Timbre kBass{{1, 0.5, 0.15, 0.05, 0}, 0.8, 0.006};

// Notes are "NAME OCTAVE : beats"; R is a rest.
struct Tune {
    const char* name;
    double beatsAMinute;
    Timbre lead;
    const char* notes;
    const char* bass;
};

constexpr Tune kTunes[] = {
    // Korean folk song.
    {"arirang", 96, kReed,
     "G4:1.5 A4:.5 G4:.5 A4:.5 C5:1.5 D5:.5 C5:.5 D5:.5 E5:1 D5:.5 E5:.5 C5:.5 A4:.5 G4:1.5 A4:.5 G4:.5 A4:.5 "
     "C5:1.5 D5:.5 C5:.5 D5:.5 E5:.5 D5:.5 C5:.5 A4:.5 G4:.5 A4:.5 C5:1.5 D5:.5 C5:1 C5:3 "
     "G5:2 G5:1 G5:1 E5:1 D5:1 E5:1 D5:.5 E5:.5 C5:.5 A4:.5 G4:1.5 A4:.5 G4:.5 A4:.5 "
     "C5:1.5 D5:.5 C5:.5 D5:.5 E5:.5 D5:.5 C5:.5 A4:.5 G4:.5 A4:.5 C5:1.5 D5:.5 C5:1 C5:3",
     "C3:2 G3:1 C3:2 G3:1 A2:2 E3:1 G2:2 D3:1 C3:2 G3:1 C3:2 A2:1 F2:2 G2:1 C3:3 "
     "C3:2 G3:1 C3:2 G3:1 A2:2 E3:1 G2:2 D3:1 C3:2 G3:1 C3:2 A2:1 F2:2 G2:1 C3:3"},
    // Beethoven, ninth symphony.
    {"joy", 112, kBell,
     "E5:1 E5:1 F5:1 G5:1 G5:1 F5:1 E5:1 D5:1 C5:1 C5:1 D5:1 E5:1 E5:1.5 D5:.5 D5:2 "
     "E5:1 E5:1 F5:1 G5:1 G5:1 F5:1 E5:1 D5:1 C5:1 C5:1 D5:1 E5:1 D5:1.5 C5:.5 C5:2 "
     "D5:1 D5:1 E5:1 C5:1 D5:1 E5:.5 F5:.5 E5:1 C5:1 D5:1 E5:.5 F5:.5 E5:1 D5:1 C5:1 D5:1 G4:2 "
     "E5:1 E5:1 F5:1 G5:1 G5:1 F5:1 E5:1 D5:1 C5:1 C5:1 D5:1 E5:1 D5:1.5 C5:.5 C5:2",
     "C3:2 G3:2 C3:2 G3:2 A2:2 E3:2 G2:2 G3:2 C3:2 G3:2 C3:2 G3:2 A2:2 E3:2 G2:2 C3:2 "
     "G2:2 C3:2 G2:2 A2:2 G2:2 E3:2 F2:2 G2:2 C3:2 G3:2 C3:2 G3:2 A2:2 E3:2 G2:2 C3:2"},
    // Pachelbel, canon.
    {"canon", 84, kPluck,
     "F#5:.5 A5:.5 D5:.5 A4:.5 E5:.5 A5:.5 C#5:.5 A4:.5 D5:.5 F#5:.5 B4:.5 F#4:.5 C#5:.5 F#5:.5 A4:.5 F#4:.5 "
     "B4:.5 D5:.5 G4:.5 D4:.5 A4:.5 D5:.5 F#4:.5 D4:.5 B4:.5 D5:.5 G4:.5 D4:.5 C#5:.5 E5:.5 A4:.5 E4:.5 "
     "F#5:1 E5:1 E5:1 D5:1 D5:1 C#5:1 B4:1 A4:1 B4:1 G4:1 A4:1 F#4:1 G4:1 B4:1 A4:1 C#5:1",
     "D3:2 A2:2 B2:2 F#2:2 G2:2 D2:2 G2:2 A2:2 D3:2 A2:2 B2:2 F#2:2 G2:2 D2:2 G2:2 A2:2"},
    // Grieg, Morning.
    {"morning", 132, kFlute,
     "G5:1 E5:1 D5:1 C5:1 D5:1 E5:1 G5:1 E5:1 D5:1 C5:1 D5:.5 E5:.5 D5:.5 E5:.5 "
     "G5:1 E5:1 G5:1 A5:1 E5:1 A5:1 G5:1 E5:1 D5:1 C5:3 "
     "B5:1 G5:1 F#5:1 E5:1 F#5:1 G5:1 B5:1 G5:1 F#5:1 E5:1 F#5:.5 G5:.5 F#5:.5 G5:.5 "
     "B5:1 G5:1 B5:1 C6:1 G5:1 C6:1 B5:1 G5:1 F#5:1 E5:3",
     "C3:3 G3:3 C3:3 A2:3 C3:3 F2:3 G2:3 C3:3 E3:3 B3:3 E3:3 C3:3 E3:3 A2:3 B2:3 E3:3"},
    // Dvorak, Largo of the ninth symphony.
    {"largo", 66, kFlute,
     "E4:.75 G4:.25 G4:1 E4:.75 D4:.25 C4:1 D4:.75 E4:.25 G4:.75 E4:.25 D4:2 "
     "E4:.75 G4:.25 G4:1 E4:.75 D4:.25 C4:1 D4:.75 E4:.25 D4:.75 C4:.25 C4:2 "
     "A4:.75 C5:.25 C5:1 B4:.5 G4:.5 A4:1 A4:.5 C5:.5 B4:.5 G4:.5 A4:2 "
     "E4:.75 G4:.25 G4:1 E4:.75 D4:.25 C4:1 D4:.75 E4:.25 D4:.75 C4:.25 C4:2",
     "C3:2 A2:2 F2:2 G2:2 C3:2 A2:2 G2:2 C3:2 A2:2 E3:2 F2:2 A2:2 C3:2 A2:2 G2:2 C3:2"},
    // Twelve bars of blues.
    {"blues", 126, kReed,
     "C5:.75 D#5:.25 E5:1 G5:1 A5:.5 G5:.5 R:1 C5:.5 D#5:.5 E5:1 C5:1 C5:.75 D#5:.25 E5:1 G5:1 A5:1 A#5:2 G5:1 E5:1 "
     "F5:.75 G#5:.25 A5:1 C6:1 A5:1 F5:2 R:2 C5:.75 D#5:.25 E5:1 G5:1 A5:1 G5:2 E5:1 C5:1 "
     "D5:.75 F5:.25 G5:1 B5:1 G5:1 F5:.75 G#5:.25 A5:1 F5:1 D#5:1 C5:2 R:.5 C5:.5 D#5:.5 E5:.5 G5:1 F5:1 D5:1 B4:1",
     "C3:1 E3:1 G3:1 A3:1 A#3:1 A3:1 G3:1 E3:1 C3:1 E3:1 G3:1 A3:1 A#3:1 A3:1 G3:1 E3:1 "
     "F3:1 A3:1 C4:1 A3:1 F3:1 A3:1 G#3:1 F3:1 C3:1 E3:1 G3:1 A3:1 A#3:1 A3:1 G3:1 E3:1 "
     "G3:1 B3:1 D4:1 B3:1 F3:1 A3:1 C4:1 A3:1 C3:1 E3:1 G3:1 A3:1 G3:1 F3:1 D3:1 G2:1"},
    // Beethoven, For Elise.
    {"elise", 132, kBell,
     "E5:.5 D#5:.5 E5:.5 D#5:.5 E5:.5 B4:.5 D5:.5 C5:.5 A4:1.5 C4:.5 E4:.5 A4:.5 B4:1.5 E4:.5 G#4:.5 B4:.5 C5:1.5 "
     "E4:.5 "
     "E5:.5 D#5:.5 E5:.5 D#5:.5 E5:.5 B4:.5 D5:.5 C5:.5 A4:1.5 C4:.5 E4:.5 A4:.5 B4:1.5 E4:.5 C5:.5 B4:.5 A4:3 "
     "B4:.5 C5:.5 D5:.5 E5:1.5 G4:.5 F5:.5 E5:.5 D5:1.5 F4:.5 E5:.5 D5:.5 C5:1.5 E4:.5 D5:.5 C5:.5 B4:2",
     "R:4 A2:1 E3:1 A3:1 E2:1 E3:1 G#3:1 A2:1 E3:1 R:4 A2:1 E3:1 A3:1 E2:1 E3:1 G#3:1 A2:1 E3:1 A3:1 R:1.5 C3:1 G3:1 "
     "C4:1 G2:1 G3:1 B3:1 A2:1 E3:1 A3:1 E2:2"},
};

const Tune* FindTune(std::string_view name) {
    for (const Tune& tune : kTunes) {
        if (name == tune.name)
            return &tune;
    }
    return nullptr;
}

struct Note {
    double hertz = 0; // 0: a rest
    double beats = 0;
};

double HertzOf(std::string_view name) {
    constexpr std::array<int, 7> kSemitones = {9, 11, 0, 2, 4, 5, 7}; // A to G above C
    if (name.empty() || name[0] < 'A' || name[0] > 'G')
        return 0;
    int semitone = kSemitones[static_cast<std::size_t>(name[0] - 'A')];
    if (name.size() > 2 && name[1] == '#')
        ++semitone;
    const int octave = name.back() - '0';
    return 440.0 * std::pow(2.0, (semitone - 9) / 12.0 + octave - 4);
}

std::vector<Note> ParseNotes(std::string_view text) {
    std::vector<Note> notes;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(' '), text.size());
        const std::string_view word = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        const std::size_t colon = word.find(':');
        if (colon != std::string_view::npos)
            notes.push_back({HertzOf(word.substr(0, colon)), std::strtod(word.data() + colon + 1, nullptr)});
    }
    return notes;
}

// One period of samples over and over: the tune starts again at its end.
class Tape {
public:
    Tape(const Tune& tune, int sampleRate) : rate(sampleRate) {
        const double beat = 60 / tune.beatsAMinute;
        const std::vector<Note> lead = ParseNotes(tune.notes);
        double beats = 0;
        for (const Note& note : lead)
            beats += note.beats;
        samples.resize(static_cast<std::size_t>(std::lround(beats * beat * rate)));
        Play(lead, beat, tune.lead, 0.26);
        Play(ParseNotes(tune.bass), beat, kBass, 0.2);
    }

    [[nodiscard]] float At(std::int64_t index) const {
        const auto size = static_cast<std::int64_t>(samples.size());
        return samples[static_cast<std::size_t>(((index % size) + size) % size)];
    }

private:
    void Play(const std::vector<Note>& notes, double beat, const Timbre& timbre, double gain) {
        double at = 0;
        for (const Note& note : notes) {
            if (note.hertz > 0)
                Strike(static_cast<std::size_t>(at * rate), note.hertz, note.beats * beat, timbre, gain);
            at += note.beats * beat;
        }
    }

    // The note rings a little beyond its length, around the end of the tape if need be.
    void Strike(std::size_t start, double hertz, double seconds, const Timbre& timbre, double gain) {
        const double release = 0.12;
        const auto length = static_cast<std::size_t>((seconds + release) * rate);
        for (std::size_t partial = 0; partial < timbre.partials.size(); ++partial) {
            const double frequency = hertz * static_cast<double>(partial + 1);
            if (timbre.partials[partial] == 0 || frequency > rate * 0.45)
                continue;
            const double decay = timbre.decay / (1 + 0.5 * static_cast<double>(partial));
            std::complex<double> phasor(0, -gain * timbre.partials[partial]);
            const std::complex<double> step =
                std::polar(std::exp(-1 / (decay * rate)), 2 * std::numbers::pi * frequency / rate);
            for (std::size_t i = 0; i < length; ++i) {
                const double time = static_cast<double>(i) / rate;
                const double envelope = std::min({1.0, time / timbre.attack, (seconds + release - time) / release});
                samples[(start + i) % samples.size()] += static_cast<float>(phasor.real() * envelope);
                phasor *= step;
            }
        }
    }

    int rate;
    std::vector<float> samples;
};

// "tone:440" or "tone:440/880": left and right, 0 when it is no tone.
std::array<double, 2> ToneOf(const std::string& name) {
    if (name.rfind("tone:", 0) != 0)
        return {0, 0};
    char* end = nullptr;
    const double left = std::strtod(name.c_str() + 5, &end);
    const double right = *end == '/' ? std::strtod(end + 1, nullptr) : left;
    return {left, right};
}

void AddBeeps(std::vector<float>& samples, const SoundSettings& settings, std::int64_t first) {
    const double period = settings.beepEvery * settings.sampleRate;
    const auto channels = static_cast<std::size_t>(settings.channels);
    for (std::size_t i = 0; i < samples.size() / channels; ++i) {
        const double inPeriod = std::fmod(static_cast<double>(first) + static_cast<double>(i), period);
        const double time = inPeriod / settings.sampleRate;
        if (time >= kBeepSeconds)
            continue;
        const double edge = std::min({1.0, time / 0.003, (kBeepSeconds - time) / 0.003});
        const auto beep = static_cast<float>(0.3 * edge * std::sin(2 * std::numbers::pi * 1000 * time));
        for (std::size_t channel = 0; channel < channels; ++channel)
            samples[i * channels + channel] = samples[i * channels + channel] * 0.4f + beep;
    }
}

} // namespace

std::vector<std::string> MelodyNames() {
    std::vector<std::string> names;
    for (const Tune& tune : kTunes)
        names.emplace_back(tune.name);
    return names;
}

bool IsMelody(const std::string& name) {
    return name == "silence" || FindTune(name) != nullptr || ToneOf(name)[0] > 0;
}

std::vector<float> RenderSound(const SoundSettings& settings, double from, double seconds) {
    const auto channels = static_cast<std::size_t>(settings.channels);
    const auto first = static_cast<std::int64_t>(std::llround(from * settings.sampleRate));
    const auto count = static_cast<std::size_t>(std::llround(seconds * settings.sampleRate));
    std::vector<float> samples(count * channels);
    if (const Tune* tune = FindTune(settings.melody)) {
        const Tape tape(*tune, settings.sampleRate);
        // Two echoes, the first on the other side, make a room of it.
        const std::int64_t near = settings.sampleRate * 17 / 100;
        const std::int64_t far = settings.sampleRate * 29 / 100;
        for (std::size_t i = 0; i < count; ++i) {
            const std::int64_t at = first + static_cast<std::int64_t>(i);
            const float direct = tape.At(at);
            const float left = direct + 0.12f * tape.At(at - near) + 0.22f * tape.At(at - far);
            const float right = direct + 0.25f * tape.At(at - near) + 0.1f * tape.At(at - far);
            if (channels == 2) {
                samples[2 * i] = left;
                samples[2 * i + 1] = right;
            } else {
                samples[i] = (left + right) / 2;
            }
        }
    } else if (const auto tone = ToneOf(settings.melody); tone[0] > 0) {
        for (std::size_t i = 0; i < count * channels; ++i) {
            const double time = static_cast<double>(first + static_cast<std::int64_t>(i / channels));
            samples[i] = static_cast<float>(
                0.25 * std::sin(2 * std::numbers::pi * tone[i % channels] * time / settings.sampleRate));
        }
    }
    if (settings.beepEvery > 0)
        AddBeeps(samples, settings, first);
    for (float& sample : samples)
        sample = std::clamp(sample, -0.98f, 0.98f);
    return samples;
}

} // namespace headend
