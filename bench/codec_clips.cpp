#include "bench/codec_clips.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <iterator>
#include <numbers>
#include <random>

namespace bench {

namespace {

void Append(Clip& clip, double left, double right) {
    const auto sample = [](double x) {
        return static_cast<std::int16_t>(std::lround(std::clamp(x, -32768.0, 32767.0)));
    };
    if (clip.channels == 2) {
        clip.samples.push_back(sample(left));
        clip.samples.push_back(sample(right));
    } else {
        clip.samples.push_back(sample((left + right) / 2));
    }
}

} // namespace

Clip HarmonicMusic(unsigned rate, unsigned channels, double seconds) {
    constexpr double kNotes[] = {220.0, 277.18, 329.63, 440.0, 246.94, 369.99};
    constexpr double kNoteSeconds = 0.4;
    constexpr int kPartials = 12;
    Clip clip{"harmonic music", rate, channels, {}};
    for (std::size_t n = 0; n < static_cast<std::size_t>(seconds * rate); ++n) {
        const double t = static_cast<double>(n) / rate;
        double left = 0;
        double right = 0;
        for (int voice = 0; voice < 3; ++voice) {
            const double age = std::fmod(t + voice * kNoteSeconds / 3, kNoteSeconds);
            const int note = static_cast<int>((t + voice * kNoteSeconds / 3) / kNoteSeconds);
            const double pitch =
                kNotes[static_cast<std::size_t>(note * (voice + 1)) % std::size(kNotes)] * (1 + voice) / 2;
            for (int h = 1; h <= kPartials && pitch * h < 0.45 * rate; ++h) {
                const double attack = std::min(1.0, age / 0.005);
                const double tone = 3500.0 / h * attack * std::exp(-age * (3 + h)) *
                                    std::sin(2 * std::numbers::pi * pitch * h * t + h * voice);
                left += tone * (voice == 0 ? 1.0 : voice == 1 ? 0.35 : 0.7);
                right += tone * (voice == 1 ? 1.0 : voice == 0 ? 0.35 : 0.7);
            }
        }
        Append(clip, left, right);
    }
    return clip;
}

Clip Castanets(unsigned rate, unsigned channels, double seconds) {
    constexpr double kInterval = 1.0 / 6;
    Clip clip{"castanets", rate, channels, {}};
    std::mt19937 random(5);
    const auto noise = [&random] { return static_cast<double>(random()) / 2147483648.0 - 1; };
    for (std::size_t n = 0; n < static_cast<std::size_t>(seconds * rate); ++n) {
        const double t = static_cast<double>(n) / rate;
        const double age = std::fmod(t + kInterval / 2, kInterval);
        const int click = static_cast<int>((t + kInterval / 2) / kInterval);
        const double pitch = 1900 + 170 * (click % 4);
        const double sound = 14000 * (std::exp(-age * 90) * std::sin(2 * std::numbers::pi * pitch * age) +
                                      0.5 * std::exp(-age * 140) * std::sin(2 * std::numbers::pi * 1.73 * pitch * age) +
                                      0.3 * std::exp(-age * 400) * noise());
        Append(clip, click % 2 == 0 ? sound : 0.4 * sound, click % 2 == 0 ? 0.4 * sound : sound);
    }
    return clip;
}

Clip Speech(unsigned rate, unsigned channels) {
    Clip clip{"speech", rate, channels, {}};
    FILE* pipe = ::popen("espeak-ng --stdout 'The harbour was quiet that morning, and the boats lay side by side. "
                         "Nobody had expected the ferry to leave before the fog had lifted.' 2>/dev/null",
                         "r");
    if (pipe == nullptr)
        return clip;
    std::vector<unsigned char> bytes;
    unsigned char chunk[4096];
    for (std::size_t got = 0; (got = std::fread(chunk, 1, sizeof chunk, pipe)) > 0;)
        bytes.insert(bytes.end(), chunk, chunk + got);
    if (::pclose(pipe) != 0)
        return clip;
    constexpr std::size_t kHeader = 44; // of the WAV file that espeak-ng writes: 22050 Hz, mono
    constexpr double kSpeechRate = 22050;
    std::vector<double> voice;
    for (std::size_t i = kHeader; i + 1 < bytes.size(); i += 2)
        voice.push_back(static_cast<std::int16_t>(bytes[i] | bytes[i + 1] << 8));
    // Band-limited interpolation: a windowed sinc of 32 samples.
    constexpr int kTaps = 16;
    const double step = kSpeechRate / rate;
    const double delay = 6; // samples that the right ear hears later
    const auto at = [&](double position) {
        double sum = 0;
        const auto middle = static_cast<std::ptrdiff_t>(std::floor(position));
        for (std::ptrdiff_t k = middle - kTaps + 1; k <= middle + kTaps; ++k) {
            if (k < 0 || k >= static_cast<std::ptrdiff_t>(voice.size()))
                continue;
            const double x = position - static_cast<double>(k);
            const double sinc = x == 0 ? 1 : std::sin(std::numbers::pi * x) / (std::numbers::pi * x);
            sum += voice[static_cast<std::size_t>(k)] * sinc * (0.5 + 0.5 * std::cos(std::numbers::pi * x / kTaps));
        }
        return sum;
    };
    for (double position = 0; position < static_cast<double>(voice.size()); position += step)
        Append(clip, at(position), 0.7 * at(position - delay * step));
    return clip;
}

} // namespace bench
