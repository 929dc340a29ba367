#include "host/codec/AnalysisBank.h"

#include <algorithm>
#include <cstddef>

namespace codec {

namespace {
constexpr unsigned kShortLines = 128;
constexpr unsigned kFlat = 448; // samples before and after the short slope of a start or stop window

void MultiplyRising(std::span<const float> slope, float* samples) {
    for (std::size_t n = 0; n < slope.size(); ++n)
        samples[n] *= slope[n];
}

void MultiplyFalling(std::span<const float> slope, float* samples) {
    for (std::size_t n = 0; n < slope.size(); ++n)
        samples[n] *= slope[slope.size() - 1 - n];
}

// Multiplies 2048 samples with the window of a long, start or stop block.
void ApplyLongWindow(const WindowSlopes& slopes, WindowSequence sequence, WindowShape leftShape, WindowShape rightShape,
                     float* samples) {
    const auto left = static_cast<std::size_t>(leftShape);
    const auto right = static_cast<std::size_t>(rightShape);
    if (sequence == WindowSequence::kStop) {
        std::fill_n(samples, kFlat, 0.0F);
        MultiplyRising(slopes.shortSlope[left], samples + kFlat);
    } else {
        MultiplyRising(slopes.longSlope[left], samples);
    }
    float* second = samples + kBlockSamples;
    if (sequence == WindowSequence::kStart) {
        MultiplyFalling(slopes.shortSlope[right], second + kFlat);
        std::fill_n(second + kFlat + kShortLines, kFlat, 0.0F);
    } else {
        MultiplyFalling(slopes.longSlope[right], second);
    }
}

} // namespace

AnalysisBank::AnalysisBank() : longTransform(kBlockSamples, 2.0F), shortTransform(kShortLines, 2.0F) {}

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
        const float* source = samples.data() + kFlat + static_cast<std::size_t>(w) * kShortLines;
        for (std::size_t n = 0; n < kShortLines; ++n) {
            work[n] = source[n] * slopes.shortSlope[left][n];
            work[kShortLines + n] = source[kShortLines + n] * slopes.shortSlope[right][kShortLines - 1 - n];
        }
        shortTransform.Run(&spectrum[static_cast<std::size_t>(w) * kShortLines], work.data());
    }
}

} // namespace codec
