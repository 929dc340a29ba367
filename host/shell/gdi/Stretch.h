// Stretching pixels: enlarging repeats them, shrinking ANDs the eliminated ones together (the default mode of the device).
#pragma once

#include "host/shell/gdi/Surface.h"

#include <optional>
#include <span>

namespace shell {

// Stretches `source`, which must lie inside its surface, into `target` of another surface, painting only inside the clip
// rectangles (all in units). Pixels become opaque. Rectangles with no area draw nothing. On a finer surface the result is what the
// coarse one would show, with the steps between its pixels smoothed.
void StretchPixels(const Surface& from, const RECT& source, Surface& to, const RECT& target,
                   std::span<const RECT> clip);

// A device-independent bitmap as a surface: 16 bits (555, or with masks), 24 and 32 bits per pixel, either row order. 16-bit
// colours expand by repeating their upper bits. `info` must be readable up to its masks, `bits` for all rows. Nothing when the
// header describes something else.
struct DibHeader {
    int width = 0, height = 0;
    bool topDown = false;
    int bitsPerPixel = 0;
    std::uint32_t masks[3] = {};
};
[[nodiscard]] std::optional<DibHeader> ReadDibHeader(const void* info);
[[nodiscard]] Surface DibToSurface(const DibHeader& header, const void* bits);

} // namespace shell
