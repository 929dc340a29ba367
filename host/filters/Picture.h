// A decoded picture: 4:2:0, 8 bits, the planes Y, U, V one after another without gaps.
#pragma once

#include "host/filters/ClockLine.h"
#include "host/filters/PacketSync.h"

namespace filters {

struct Picture {
    int width = 0; // luminance samples; chrominance planes have half of it, rounded up, in both directions
    int height = 0;
    double aspect = 4.0 / 3; // width to height as it should be seen
    Ticks time = 0;
    Bytes i420;

    [[nodiscard]] std::size_t LumaBytes() const {
        return static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    }
    [[nodiscard]] std::size_t ChromaBytes() const {
        return static_cast<std::size_t>((width + 1) / 2) * static_cast<std::size_t>((height + 1) / 2);
    }
};

} // namespace filters
