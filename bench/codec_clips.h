// The programme that the codec benchmarks run on: made here, so that anyone gets the same.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace bench {

struct Clip {
    std::string name;
    unsigned rate = 0;
    unsigned channels = 0;
    std::vector<std::int16_t> samples; // interleaved

    [[nodiscard]] std::size_t Frames() const { return samples.size() / channels; }
    [[nodiscard]] double Seconds() const { return static_cast<double>(Frames()) / rate; }
};

// Three voices of plucked strings with twelve partials each, spread over left and right.
[[nodiscard]] Clip HarmonicMusic(unsigned rate, unsigned channels, double seconds);

// Clicks as of castanets: two quickly fading resonances and a burst of noise, six a second, now left, now right.
[[nodiscard]] Clip Castanets(unsigned rate, unsigned channels, double seconds);

// A sentence spoken by espeak-ng, slightly nearer to the left. Empty when that program is not installed.
[[nodiscard]] Clip Speech(unsigned rate, unsigned channels);

} // namespace bench
