// The master clock as the picture asks it: which moment of the stream is heard now.
#pragma once

#include "host/filters/ClockLine.h"
#include "platform/dshow_api.h"

namespace filters {

enum class ClockState : std::uint8_t {
    kNone,    // there is no sound to follow
    kPending, // sound is on its way
    kRunning,
};

struct IPresentationClock : IUnknown {
    // The state; with kRunning `*now` is the place on the stream's line.
    virtual ClockState StreamTime(Ticks* now) = 0;
};

inline constexpr IID kPresentationClockId = {0x3B7C1E10,
                                             0x52A4,
                                             0x4D0C,
                                             {0x9C, 0x11, 0x6E, 0x0F, 0x1D, 0x2A, 0x77, 0x10}};

} // namespace filters
