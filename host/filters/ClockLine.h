// One line of time out of the stream's counters that wrap, jump and pause.
//
// The programme clock reference (ISO/IEC 13818-1 2.4.2.2) leads. Times on the line are ticks of 90 kHz and go on
// for ever: a wrap of the counter is followed, and after a jump (a loop of the transmitter, another studio) the line
// continues where it was, so that what comes later is later on the line, too. How long the jump itself took, the packets tell: the
// stream's rate does not change with its clock.
#pragma once

#include <cstdint>
#include <optional>

namespace filters {

using Ticks = std::int64_t; // 90 kHz
inline constexpr Ticks kTicksPerSecond = 90000;
inline constexpr Ticks kTicksPerMs = 90;

class ClockLine {
public:
    // A reference of 27 MHz. `announced`: the stream says itself that its clock is another one from here on.
    // `packets`: how many packets the stream has had so far; without a count a jump takes no time.
    // True when the clock jumped.
    bool OnReference(std::uint64_t pcr27MHz, bool announced, std::uint64_t packets = 0);

    // The place of a stamp of `bits` bits that counts `resolution` to the second: nearest to the last reference, or,
    // without one, to the last stamp. `older`: it was sent before the last jump. Nothing when it lies more than ten seconds away: it
    // belongs to another clock.
    [[nodiscard]] std::optional<Ticks> Place(std::uint64_t stamp, unsigned bits, std::uint32_t resolution,
                                             bool older = false);

    // The last reference on the line.
    [[nodiscard]] std::optional<Ticks> Now() const { return now_; }
    // Counts jumps since the beginning.
    [[nodiscard]] unsigned Jumps() const { return jumps_; }

    // The line begins anew at the next reference, at the time that the stream itself tells.
    void Reset() { *this = ClockLine(); }

private:
    [[nodiscard]] Ticks SinceLast(std::uint64_t packets) const;

    std::uint64_t lastBase_ = 0; // 33 bits
    std::optional<Ticks> now_;
    Ticks shift_ = 0;                // line minus the counter unwrapped since the last jump
    Ticks shiftBefore_ = 0;          // the same before that jump
    Ticks runBegin_ = 0;             // the line at the first reference since the last jump
    std::uint64_t runPackets_ = 0;   // packets then
    std::uint64_t lastPackets_ = 0;  // packets at the last reference
    std::optional<Ticks> lastStamp_; // without references: the latest place
    unsigned jumps_ = 0;
};

} // namespace filters
