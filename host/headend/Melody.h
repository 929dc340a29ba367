// Sound for the stations: little tunes out of the public domain, test tones, and the beep that goes with the sync flash.
#pragma once

#include <string>
#include <vector>

namespace headend {

struct SoundSettings {
    std::string melody = "silence"; // a name of MelodyNames(), "silence", or "tone:HZ" / "tone:LEFT/RIGHT"
    int sampleRate = 48000;
    int channels = 2;
    double beepEvery = 0; // seconds; 0 = no beep. The first beep is at 0.
};

inline constexpr double kBeepSeconds = 0.1;

[[nodiscard]] std::vector<std::string> MelodyNames();
[[nodiscard]] bool IsMelody(const std::string& name);

// Interleaved samples, -1..1, of [from, from + seconds) of a sound that is the same every time.
[[nodiscard]] std::vector<float> RenderSound(const SoundSettings& settings, double from, double seconds);

} // namespace headend
