#include "host/filters/RecordingTimes.h"

#include <algorithm>
#include <cmath>

#include "host/filters/ProgramTables.h"

namespace filters {

namespace {

constexpr std::uint64_t kBaseMask = (std::uint64_t{1} << 33) - 1;
// More than any recording of this system lasts: such a length is a jump of the clock.
constexpr Ticks kLongest = 13 * 3600 * kTicksPerSecond;
// References are due ten times a second: what is further apart has a jump in between.
constexpr Ticks kLargestStep = kTicksPerSecond;
// The pace of a beginning shorter than this is no measure for the rest.
constexpr Ticks kEnoughSeen = kTicksPerSecond / 2;

// The PID of the programme's clock, once the programme is known.
std::optional<std::uint16_t> ClockPidOf(ByteSpan head, bool whole) {
    ProgramTables tables;
    std::optional<std::uint16_t> pid;
    PacketSync sync;
    const auto push = [&](ByteSpan data) {
        const auto packet = wire::TsPacket::Parse(data);
        if (!pid && packet && !packet->header.transportError && packet->hasPayload && packet->header.scrambling == 0 &&
            tables.IsTable(packet->header.pid) && tables.Push(*packet, false))
            pid = tables.Current()->clockPid;
    };
    constexpr std::size_t kStep = 16384;
    for (std::size_t at = 0; at < head.size() && !pid; at += kStep)
        sync.Push(head.subspan(at, std::min(kStep, head.size() - at)), push);
    if (whole)
        sync.Finish(push);
    return pid;
}

// How much time the references tell, and in how many bytes; steps that are jumps of the clock count for neither.
struct Pace {
    Ticks time = 0;
    std::uint64_t bytes = 0;

    explicit Pace(const std::vector<ClockReference>& references) {
        for (std::size_t i = 1; i < references.size(); ++i) {
            const Ticks step = TicksBetween(references[i - 1].base, references[i].base);
            if (step > kLargestStep)
                continue;
            time += step;
            bytes += references[i].byte - references[i - 1].byte;
        }
    }
};

} // namespace

std::vector<ClockReference> ClockReferencesIn(ByteSpan bytes, std::uint64_t from, std::uint16_t pid) {
    std::vector<ClockReference> list;
    PacketSync sync;
    std::uint64_t byte = from;
    const auto push = [&](ByteSpan data) {
        const auto packet = wire::TsPacket::Parse(data);
        if (packet && !packet->header.transportError && packet->header.pid == pid && packet->header.pcr)
            list.push_back({byte, *packet->header.pcr / 300});
    };
    // In small steps, to know where each one lies.
    constexpr std::size_t kStep = 1024;
    for (std::size_t at = 0; at < bytes.size(); at += kStep) {
        byte = from + at;
        sync.Push(bytes.subspan(at, std::min(kStep, bytes.size() - at)), push);
    }
    sync.Finish(push);
    return list;
}

Ticks TicksBetween(std::uint64_t firstBase, std::uint64_t laterBase) {
    return static_cast<Ticks>((laterBase - firstBase) & kBaseMask);
}

std::optional<RecordingTimes> MeasureTimes(ByteSpan head, ByteSpan tail, std::uint64_t size) {
    const auto pid = ClockPidOf(head, head.size() >= size);
    if (!pid)
        return std::nullopt;
    const std::vector<ClockReference> early = ClockReferencesIn(head, 0, *pid);
    const std::vector<ClockReference> late =
        ClockReferencesIn(tail, size - std::min<std::uint64_t>(tail.size(), size), *pid);
    if (early.size() < 2 || late.empty())
        return std::nullopt;
    RecordingTimes times;
    times.clockPid = *pid;
    times.first = early.front();
    const Pace pace(early);
    times.seen = pace.time;
    const Ticks measured = TicksBetween(times.first.base, late.back().base);
    times.steady = measured > 0 && measured < kLongest;
    // What the file would last at the pace of its beginning: a jump of the clock shows in the difference.
    double guess = 0;
    if (pace.bytes > 0) {
        guess = static_cast<double>(pace.time) / static_cast<double>(pace.bytes) * static_cast<double>(size);
        times.steady = times.steady && std::abs(static_cast<double>(measured) - guess) < 0.5 * guess;
    }
    times.duration =
        times.steady ? measured : static_cast<Ticks>(std::clamp(guess, 0.0, static_cast<double>(kLongest)));
    return times;
}

std::optional<Ticks> PlayingTime(std::uint64_t size, const FilePart& read) {
    constexpr std::size_t kFirstLook = 16; // part of what certainty takes
    for (std::size_t part = kFirstLook;; part /= 4) {
        const std::uint64_t tailBytes = std::min<std::uint64_t>(kTailBytes / part, size);
        const Bytes head = read(0, kHeadBytes / part);
        const auto times = MeasureTimes(head, read(size - tailBytes, static_cast<std::size_t>(tailBytes)), size);
        const bool certain = times && times->steady && times->seen >= kEnoughSeen;
        if (!certain && part > 1 && head.size() < size && !head.empty())
            continue;
        return times && times->duration > 0 ? std::optional(times->duration) : std::nullopt;
    }
}

} // namespace filters
