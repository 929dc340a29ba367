// The sound card, behind whatever sound server runs: 16-bit stereo at 48 kHz.
//
// Start and Stop come from one thread at a time; the pull is called on the card's own thread between the two.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>

namespace shell::sdl {

class SoundCard {
public:
    using Pull = std::function<void(std::span<std::int16_t>)>;
    using Say = std::function<void(const std::string& line)>;

    // `say` is told, once until it changes, that there is no card.
    explicit SoundCard(Say say);
    ~SoundCard();
    SoundCard(const SoundCard&) = delete;
    SoundCard& operator=(const SoundCard&) = delete;

    // False when there is no card.
    [[nodiscard]] bool Start(Pull pull);
    // When it returns, no pull runs and none will come.
    void Stop();
    // From a pull until it is heard, in ms.
    [[nodiscard]] int LatencyMs() const { return latencyMs; }

private:
    static void OnPull(void* self, std::uint8_t* bytes, int count);

    Say say;
    Pull pull;
    std::uint32_t device = 0; // 0: none
    int latencyMs = 0;
    bool failed = false;
    bool initialised = false;
};

} // namespace shell::sdl
