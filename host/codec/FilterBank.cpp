#include "host/codec/FilterBank.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace codec {

namespace {

constexpr unsigned kShortLines = 128;
constexpr unsigned kFlat = 448; // samples before and after the short slope of a start or stop window

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

void MultiplyRising(std::span<const float> slope, float* samples) {
    for (std::size_t n = 0; n < slope.size(); ++n)
        samples[n] *= slope[n];
}

void MultiplyFalling(std::span<const float> slope, float* samples) {
    for (std::size_t n = 0; n < slope.size(); ++n)
        samples[n] *= slope[slope.size() - 1 - n];
}

} // namespace

WindowSlopes::WindowSlopes() {
    MakeSineSlope(longSlope[0]);
    MakeSineSlope(shortSlope[0]);
    MakeKaiserBesselSlope(4, longSlope[1]);
    MakeKaiserBesselSlope(6, shortSlope[1]);
}

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

FilterBank::FilterBank()
    : longTransform(av::Mdct::Direction::kInverse, kBlockSamples, 1.0F / kBlockSamples),
      shortTransform(av::Mdct::Direction::kInverse, kShortLines, 1.0F / kShortLines) {}

void FilterBank::Reset() {
    overlap.fill(0);
    previousShape = WindowShape::kSine;
}

// Eight windows of 256 samples, each 128 after the one before, in the middle of 2048 samples.
void FilterBank::RunShort(const Spectrum& spectrum, WindowShape shape) {
    work.fill(0);
    alignas(av::Mdct::kAlignment) std::array<float, 2 * kShortLines> window;
    for (unsigned w = 0; w < kShortWindows; ++w) {
        shortTransform.Run(window.data(), &spectrum[static_cast<std::size_t>(w) * kShortLines]);
        const WindowShape leftShape = w == 0 ? previousShape : shape;
        MultiplyRising(slopes.shortSlope[static_cast<std::size_t>(leftShape)], window.data());
        MultiplyFalling(slopes.shortSlope[static_cast<std::size_t>(shape)], window.data() + kShortLines);
        float* target = &work[kFlat + static_cast<std::size_t>(w) * kShortLines];
        for (std::size_t n = 0; n < window.size(); ++n)
            target[n] += window[n];
    }
}

void FilterBank::Run(const Spectrum& spectrum, WindowSequence sequence, WindowShape shape,
                     std::span<float, kBlockSamples> samples) {
    if (sequence == WindowSequence::kShort) {
        RunShort(spectrum, shape);
    } else {
        longTransform.Run(work.data(), spectrum.data());
        ApplyLongWindow(slopes, sequence, previousShape, shape, work.data());
    }
    for (std::size_t n = 0; n < kBlockSamples; ++n)
        samples[n] = overlap[n] + work[n];
    std::copy_n(work.begin() + kBlockSamples, kBlockSamples, overlap.begin());
    previousShape = shape;
}

} // namespace codec
