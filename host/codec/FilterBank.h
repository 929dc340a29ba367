// From spectra to samples: inverse transform, windows, overlap (ISO/IEC 14496-3, 4.6.11).
#pragma once

#include <array>
#include <span>

#include "host/codec/BlockHeader.h"
#include "host/codec/Reconstruction.h"
#include "host/codec/av/InverseMdct.h"

namespace codec {

// The rising halves of the windows, by WindowShape; falling halves are their mirror image.
struct WindowSlopes {
    std::array<std::array<float, 1024>, 2> longSlope;
    std::array<std::array<float, 128>, 2> shortSlope;

    WindowSlopes();
};

// The synthesis side of one channel.
class FilterBank {
public:
    FilterBank();

    // As before the first block: nothing to overlap with, sine windows.
    void Reset();

    // The 1024 samples that this block completes, until the next call. The left slope has the shape of the block before.
    std::span<const float, kBlockSamples> Run(const Spectrum& spectrum, WindowSequence sequence, WindowShape shape);

    [[nodiscard]] WindowShape Shape() const { return previousShape; }

private:
    using Half = std::array<float, kBlockSamples>;

    // Adds the window's first half to `sum`, puts the second half into `next`.
    void RunShort(const Spectrum& spectrum, WindowShape shape, Half& sum, Half& next);
    void RunLong(const Spectrum& spectrum, WindowSequence sequence, WindowShape shape, Half& sum, Half& next);

    WindowSlopes slopes;
    av::InverseMdct longTransform;
    av::InverseMdct shortTransform;
    // The second half of the last window, which waits for the next block, and the samples of the last block; they change
    // places with every block.
    std::array<Half, 2> halves{};
    unsigned newest = 0;
    WindowShape previousShape = WindowShape::kSine;
};

} // namespace codec
