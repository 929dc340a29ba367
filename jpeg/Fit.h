// How a picture is fitted into the target: pure arithmetic, no pixels.
#pragma once

#include <cstddef>

namespace jpeg {

// A worked example: 300x400 into 320x240. Taller than the target but not wider, so the height decides: 180x240 at
// (70, 0). 400/240 is the larger ratio, so heights choose the reduction: 240 > 400>>1, none. A resampling pass follows.
struct Fit {
    int width = 0; // fitted size, pixels; a side of 0 means that nothing is written
    int height = 0;
    int offsetX = 0; // of the fitted rectangle in the target, pixels
    int offsetY = 0;
    int reduction = 0;  // s: the transform delivers 1/2^s of the size, 0..3
    bool exact = false; // the transform lands on the fitted size: no resampling pass

    [[nodiscard]] bool Empty() const { return width <= 0 || height <= 0; }
};

// Sides of the picture are 1 or more; a target without area gives an empty fit.
[[nodiscard]] Fit FitPicture(int pictureWidth, int pictureHeight, int targetWidth, int targetHeight);

// Where the fitted rectangle begins in a destination of `targetWidth` x `targetHeight`, for the three formats.
struct Placement {
    std::size_t rgb565 = 0; // bytes
    std::size_t rgb24 = 0;  // bytes
    std::size_t luma = 0;   // bytes from the Y plane
    std::size_t chroma = 0; // bytes from a chroma plane
};
[[nodiscard]] Placement PlaceFit(const Fit& fit, int targetWidth, int targetHeight);

} // namespace jpeg
