// From samples to spectra: windows and the forward transform.
#pragma once

#include <array>
#include <span>

#include "host/codec/BlockHeader.h"
#include "host/codec/FilterBank.h"
#include "host/codec/Reconstruction.h"
#include "host/codec/av/Mdct.h"

namespace codec {

class AnalysisBank {
public:
    AnalysisBank();

    // The spectrum of 2048 samples: 1024 that the block before has seen, and 1024 new ones.
    void Run(std::span<const float, 2 * kBlockSamples> samples, WindowSequence sequence, WindowShape leftShape,
             WindowShape rightShape, Spectrum& spectrum);

private:
    WindowSlopes slopes;
    av::Mdct longTransform;
    av::Mdct shortTransform;
    alignas(av::Mdct::kAlignment) std::array<float, 2 * kBlockSamples> work{};
};

} // namespace codec
