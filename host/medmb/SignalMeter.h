// A stand-in for the radio side, which ETI does not have: signal-to-noise ratio and strength from what the last second's
// frames suffered.
//
//   no error at all                          30 dB
//   share e of wrong FIBs (or lost frames)   30 - 48 e down to 6 dB at one half, then 12 (1 - e) down to 0
//   corrected bytes a packet, mean c         30 - 1.5 c, that is 18 dB where the code is at its limit of 8
//   share u of packets beyond repair, or     30 - 48 u down to 6 dB at one half, then 12 (1 - u) down to 0
//     of audio frames with a wrong check sum
//
// The least of these counts. Before the first frame it is 0.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace medmb {

// What one frame of 24 ms brought.
struct FrameQuality {
    int fibs = 0;
    int fibErrors = 0;
    int packets = 0;
    int packetsBad = 0;
    int bytesCorrected = 0;
    int audioFrames = 0;
    int audioFramesBad = 0;
    bool missing = false;
};

class SignalMeter {
public:
    static constexpr std::size_t kWindowFrames = 42; // one second

    void Add(const FrameQuality& quality);
    void AddMissing(std::uint64_t frames);
    void Reset() { *this = SignalMeter(); }

    // dB, 0 to 30.
    [[nodiscard]] float SignalToNoise() const;
    // dBm, as if noise lay at -110: only a number to look at.
    [[nodiscard]] float Strength() const;
    // Share of wrong FIBs and lost frames in per mille, the integer beside the strength.
    [[nodiscard]] int FibErrorPerMille() const;
    [[nodiscard]] bool Any() const { return started; }
    // No usable frame for the whole window.
    [[nodiscard]] bool Lost() const;

private:
    struct Shares {
        double fib = 0;
        double payload = 0;
        double correctedBytes = 0; // a packet
    };
    [[nodiscard]] Shares Measure() const;

    std::array<FrameQuality, kWindowFrames> window{};
    std::size_t next = 0;
    std::size_t filled = 0;
    bool started = false;
};

} // namespace medmb
