#include "host/codec/FilterBank.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

#include "host/codec/Wide.h"

namespace codec {

namespace {

constexpr unsigned kShortLines = 128;
constexpr unsigned kFlat = 448; // samples before the first of eight short windows

void MakeSineSlope(std::span<float> slope) {
    for (std::size_t n = 0; n < slope.size(); ++n)
        slope[n] = static_cast<float>(
            std::sin(std::numbers::pi / 2 * (static_cast<double>(n) + 0.5) / static_cast<double>(slope.size())));
}

double BesselI0(double x) {
    double sum = 1;
    double term = 1;
    for (int k = 1; term > sum * 1e-17; ++k) {
        term *= (x / (2 * k)) * (x / (2 * k));
        sum += term;
    }
    return sum;
}

void MakeKaiserBesselSlope(double alpha, std::span<float> slope) {
    const std::size_t half = slope.size();
    const auto kernel = [&](std::size_t n) {
        const double t = 2.0 * static_cast<double>(n) / static_cast<double>(half) - 1.0;
        return BesselI0(std::numbers::pi * alpha * std::sqrt(std::max(0.0, 1.0 - t * t)));
    };
    double total = 0;
    for (std::size_t n = 0; n <= half; ++n)
        total += kernel(n);
    double sum = 0;
    for (std::size_t n = 0; n < half; ++n) {
        sum += kernel(n);
        slope[n] = static_cast<float>(std::sqrt(sum / total));
    }
}

// The transform gives the middle half of a window's samples; the outer quarters mirror it: the first quarter is the
// second one backwards with the other sign, the last one is the third one backwards.

// The rising half of a window of 2 * `half` samples, added to what lies at `target`. `middle` has half / 2 samples. The
// slope lies in the middle, with zeros before and ones behind it.
[[gnu::always_inline]] inline void AddRising(const float* __restrict middle, std::size_t half,
                                             std::span<const float> slope, float* __restrict target) {
    const std::size_t quarter = half / 2;
    const std::size_t bend = slope.size() / 2;
    for (std::size_t n = 0; n < bend; ++n) {
        target[quarter - 1 - n] -= middle[n] * slope[bend - 1 - n];
        target[quarter + n] += middle[n] * slope[bend + n];
    }
    for (std::size_t n = bend; n < quarter; ++n)
        target[quarter + n] += middle[n];
}

// The falling half: ones, the slope backwards, zeros. It takes the place of what lies at `target`.
[[gnu::always_inline]] inline void SetFalling(const float* __restrict middle, std::size_t half,
                                              std::span<const float> slope, float* __restrict target) {
    const std::size_t quarter = half / 2;
    const std::size_t bend = slope.size() / 2;
    const std::size_t flat = quarter - bend;
    std::copy_n(middle, flat, target);
    for (std::size_t n = 0; n < bend; ++n) {
        target[flat + n] = middle[flat + n] * slope[2 * bend - 1 - n];
        target[half - flat - 1 - n] = middle[flat + n] * slope[n];
    }
    std::fill_n(target + half - flat, flat, 0.0F);
}

using Slope = std::span<const float>;

// Both halves of a long window.
[[gnu::always_inline]] inline void OverlapAsIs(const float* middle, Slope rising, Slope falling, float* sum,
                                               float* next) {
    AddRising(middle, kBlockSamples, rising, sum);
    SetFalling(middle + kBlockSamples / 2, kBlockSamples, falling, next);
}

DMB_CODEC_WIDE void OverlapWide(const float* middle, Slope rising, Slope falling, float* sum, float* next) {
    OverlapAsIs(middle, rising, falling, sum, next);
}

void Overlap(const float* middle, Slope rising, Slope falling, float* sum, float* next) {
    if (HasWideVectors())
        OverlapWide(middle, rising, falling, sum, next);
    else
        OverlapAsIs(middle, rising, falling, sum, next);
}

} // namespace

WindowSlopes::WindowSlopes() {
    MakeSineSlope(longSlope[0]);
    MakeSineSlope(shortSlope[0]);
    MakeKaiserBesselSlope(4, longSlope[1]);
    MakeKaiserBesselSlope(6, shortSlope[1]);
}

FilterBank::FilterBank()
    : longTransform(kBlockSamples, 1.0F / kBlockSamples), shortTransform(kShortLines, 1.0F / kShortLines) {}

void FilterBank::Reset() {
    halves[0].fill(0);
    halves[1].fill(0);
    previousShape = WindowShape::kSine;
}

// Eight windows of 256 samples, each 128 after the one before, in the middle of 2048 samples.
void FilterBank::RunShort(const Spectrum& spectrum, WindowShape shape, Half& sum, Half& next) {
    std::array<float, 2 * kBlockSamples> windows{};
    for (unsigned w = 0; w < kShortWindows; ++w) {
        alignas(av::InverseMdct::kAlignment) std::array<float, kShortLines> middle;
        shortTransform.Run(middle.data(), &spectrum[static_cast<std::size_t>(w) * kShortLines]);
        const auto left = static_cast<std::size_t>(w == 0 ? previousShape : shape);
        const auto right = static_cast<std::size_t>(shape);
        float* target = &windows[kFlat + static_cast<std::size_t>(w) * kShortLines];
        AddRising(middle.data(), kShortLines, slopes.shortSlope[left], target);
        SetFalling(middle.data() + kShortLines / 2, kShortLines, slopes.shortSlope[right], target + kShortLines);
    }
    for (std::size_t n = 0; n < kBlockSamples; ++n)
        sum[n] += windows[n];
    std::copy(windows.begin() + kBlockSamples, windows.end(), next.begin());
}

void FilterBank::RunLong(const Spectrum& spectrum, WindowSequence sequence, WindowShape shape, Half& sum, Half& next) {
    const auto slope = [this](WindowShape of, bool isShort) {
        const auto index = static_cast<std::size_t>(of);
        return isShort ? Slope(slopes.shortSlope[index]) : Slope(slopes.longSlope[index]);
    };
    alignas(av::InverseMdct::kAlignment) Half middle;
    longTransform.Run(middle.data(), spectrum.data());
    Overlap(middle.data(), slope(previousShape, sequence == WindowSequence::kStop),
            slope(shape, sequence == WindowSequence::kStart), sum.data(), next.data());
}

std::span<const float, kBlockSamples> FilterBank::Run(const Spectrum& spectrum, WindowSequence sequence,
                                                      WindowShape shape) {
    Half& sum = halves[newest];
    newest ^= 1;
    if (sequence == WindowSequence::kShort)
        RunShort(spectrum, shape, sum, halves[newest]);
    else
        RunLong(spectrum, sequence, shape, sum, halves[newest]);
    previousShape = shape;
    return sum;
}

} // namespace codec
