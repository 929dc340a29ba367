// What the clock references of a recording (ISO/IEC 13818-1 2.4.2.2) tell about its time: from its beginning and its end alone.
#pragma once

#include "host/filters/ClockLine.h"
#include "host/filters/PacketSync.h"

#include <functional>
#include <optional>

namespace filters {

struct ClockReference {
    std::uint64_t byte = 0; // of the file, to about a kilobyte
    std::uint64_t base = 0; // 90 kHz, 33 bits
};

// The references of one PID in bytes that lie in their file from `from` on.
[[nodiscard]] std::vector<ClockReference> ClockReferencesIn(ByteSpan bytes, std::uint64_t from, std::uint16_t pid);

// From one reference to another one behind it; the counter wraps every 26.5 hours.
[[nodiscard]] Ticks TicksBetween(std::uint64_t firstBase, std::uint64_t laterBase);

struct RecordingTimes {
    std::uint16_t clockPid = 0x1FFF;
    ClockReference first;
    Ticks duration = 0;  // from the first reference to the last, or, where the clock jumps, a guess by the pace
    bool steady = false; // one clock from the first byte to the last
    Ticks seen = 0;      // how much of it the beginning showed
};

// `head` are the first bytes of a file of `size` bytes, `tail` its last; they may overlap. Nothing without a programme that can be
// played, or without two references.
[[nodiscard]] std::optional<RecordingTimes> MeasureTimes(ByteSpan head, ByteSpan tail, std::uint64_t size);

// How much of a file tells its time with certainty.
inline constexpr std::size_t kHeadBytes = 1u << 20;
inline constexpr std::size_t kTailBytes = 512u << 10;

// Bytes of a file: where, and how many at most.
using FilePart = std::function<Bytes(std::uint64_t from, std::size_t size)>;

// How long a file plays. Reads less than 100 KiB of most files, and more only where that leaves doubt. Nothing when it cannot be
// known.
[[nodiscard]] std::optional<Ticks> PlayingTime(std::uint64_t size, const FilePart& read);

} // namespace filters
