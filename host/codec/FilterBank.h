// From spectra to samples: inverse transform, windows, overlap (ISO/IEC 14496-3, 4.6.11).
#pragma once

#include <array>
#include <span>

#include "host/codec/BlockHeader.h"
#include "host/codec/Reconstruction.h"
#include "host/codec/av/Mdct.h"

namespace codec {

// The rising halves of the windows, by WindowShape; falling halves are their mirror image.
struct WindowSlopes {
    std::array<std::array<float, 1024>, 2> longSlope;
    std::array<std::array<float, 128>, 2> shortSlope;

    WindowSlopes();
};

// Multiplies 2048 samples with the window of a long, start or stop block.
void ApplyLongWindow(const WindowSlopes& slopes, WindowSequence sequence, WindowShape leftShape, WindowShape rightShape,
                     float* samples);

// The synthesis side of one channel.
class FilterBank {
public:
    FilterBank();

    // As before the first block: nothing to overlap with, sine windows.
    void Reset();

    // The 1024 samples that this block completes. The left slope has the shape of the block before. The spectrum is
    // aligned as Spectra is.
    void Run(const Spectrum& spectrum, WindowSequence sequence, WindowShape shape,
             std::span<float, kBlockSamples> samples);

    [[nodiscard]] WindowShape Shape() const { return previousShape; }

private:
    void RunShort(const Spectrum& spectrum, WindowShape shape);

    WindowSlopes slopes;
    av::Mdct longTransform;
    av::Mdct shortTransform;
    alignas(av::Mdct::kAlignment) std::array<float, 2 * kBlockSamples> work{};
    std::array<float, kBlockSamples> overlap{};
    WindowShape previousShape = WindowShape::kSine;
};

} // namespace codec
