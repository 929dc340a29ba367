// Sound of any rate and channel count to the stereo of the device, by libswresample; a little faster or slower on demand.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace filters {

class Resampler {
public:
    static constexpr int kChannels = 2;

    explicit Resampler(int deviceRate);
    ~Resampler();
    Resampler(const Resampler&) = delete;
    Resampler& operator=(const Resampler&) = delete;

    // Takes samples of the format and appends stereo frames. Sound of the device's own rate passes unchanged until the first
    // call of SetSpeed with another value than 0.
    void Push(std::span<const std::int16_t> interleaved, int sampleRate, int channels, std::vector<std::int16_t>& out);
    // How much faster than written the sound is to play, in millionths: 100 leaves out one sample in ten thousand.
    void SetSpeed(int millionths);
    // Forgets what is inside.
    void Reset();

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace filters
