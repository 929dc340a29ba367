// How far behind the transmitter's schedule live sound is played.
//
// Sound that waits is a reserve against an uneven source, and every millisecond of it is waited for at each channel change. A file and
// most receivers need next to none, a pipe that stutters or a network may need a good deal, and nobody knows beforehand. So the hold
// begins short. Sound that came too late for its place, after everything before it had been played, shows that the reserve was too
// small: the hold becomes a step longer. Sound that is missing altogether shows nothing, because no reserve helps against that.
//
// One hold belongs to a source: all graphs that play it, one after another, share it, and it never becomes shorter again. What made
// the source stutter will come back, and each time it does, it is heard.
#pragma once

#include "host/filters/ClockLine.h"

#include <algorithm>
#include <array>
#include <atomic>

namespace filters {

// Any thread may call.
class LiveHold {
public:
    // 90 kHz ticks.
    [[nodiscard]] Ticks Current() const { return kSteps[step_]; }
    void Lengthen() { step_ = std::min(step_ + 1, kSteps.size() - 1); }

    // The first ones are whole frames of layer II, of 24 ms each: 72 ms are three frames beside the one that plays.
    static constexpr std::array<Ticks, 4> kSteps = {72 * kTicksPerMs, 144 * kTicksPerMs, 216 * kTicksPerMs,
                                                    300 * kTicksPerMs};

private:
    std::atomic<std::size_t> step_{0};
};

} // namespace filters
