#include "host/codec/AnalysisBank.h"

#include <algorithm>
#include <cstddef>

namespace codec {

namespace {
constexpr unsigned kShortLines = 128;
constexpr unsigned kFirstShort = 448;
} // namespace

AnalysisBank::AnalysisBank()
    : longTransform(av::Mdct::Direction::kForward, kBlockSamples, 2.0F),
      shortTransform(av::Mdct::Direction::kForward, kShortLines, 2.0F) {}

void AnalysisBank::Run(std::span<const float, 2 * kBlockSamples> samples, WindowSequence sequence,
                       WindowShape leftShape, WindowShape rightShape, Spectrum& spectrum) {
    if (sequence != WindowSequence::kShort) {
        std::copy(samples.begin(), samples.end(), work.begin());
        ApplyLongWindow(slopes, sequence, leftShape, rightShape, work.data());
        longTransform.Run(spectrum.data(), work.data());
        return;
    }
    for (unsigned w = 0; w < kShortWindows; ++w) {
        const auto left = static_cast<std::size_t>(w == 0 ? leftShape : rightShape);
        const auto right = static_cast<std::size_t>(rightShape);
        const float* source = samples.data() + kFirstShort + static_cast<std::size_t>(w) * kShortLines;
        for (std::size_t n = 0; n < kShortLines; ++n) {
            work[n] = source[n] * slopes.shortSlope[left][n];
            work[kShortLines + n] = source[kShortLines + n] * slopes.shortSlope[right][kShortLines - 1 - n];
        }
        shortTransform.Run(&spectrum[static_cast<std::size_t>(w) * kShortLines], work.data());
    }
}

} // namespace codec
