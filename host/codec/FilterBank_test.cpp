#include "host/codec/FilterBank.h"

#include <cmath>
#include <numbers>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "host/codec/AnalysisBank.h"
#include "host/codec/av/InverseMdct.h"
#include "host/codec/av/Mdct.h"

namespace {

using namespace codec;

double Kernel(unsigned n, unsigned k, unsigned lines) {
    const double size = 2.0 * lines;
    return std::cos(2 * std::numbers::pi / size * (n + size / 4 + 0.5) * (k + 0.5));
}

TEST(Mdct, IsTheTransformOfTheStandardWithItsPolarity) {
    for (unsigned lines : {128U, 1024U}) {
        alignas(64) std::array<float, 1024> x{};
        alignas(64) std::array<float, 2048> y{};
        for (unsigned k = 0; k < lines; ++k)
            x[k] = static_cast<float>(100 * std::sin(0.37 * k * k + 1));
        av::InverseMdct inverse(lines, 1.0F / static_cast<float>(lines));
        inverse.Run(y.data() + lines / 2, x.data());
        for (unsigned n = 0; n < lines / 2; ++n) { // the quarters that the transform leaves to its user
            y[n] = -y[lines - 1 - n];
            y[2 * lines - 1 - n] = y[lines + n];
        }
        for (unsigned n = 0; n < 2 * lines; n += 13) {
            double sum = 0;
            for (unsigned k = 0; k < lines; ++k)
                sum += x[k] * Kernel(n, k, lines);
            EXPECT_NEAR(y[n], sum / lines, 1e-4) << n;
        }
        av::Mdct forward(lines, 2.0F);
        forward.Run(x.data(), y.data());
        for (unsigned k = 0; k < lines; k += 7) {
            double sum = 0;
            for (unsigned n = 0; n < 2 * lines; ++n)
                sum += y[n] * Kernel(n, k, lines);
            EXPECT_NEAR(x[k], 2 * sum, 2e-3) << k;
        }
    }
}

TEST(WindowSlopes, PowersOfASlopeAndItsMirrorImageSumToOne) {
    const WindowSlopes slopes;
    for (const auto& slope : slopes.longSlope) {
        for (std::size_t n = 0; n < slope.size(); ++n)
            EXPECT_NEAR(slope[n] * slope[n] + slope[1023 - n] * slope[1023 - n], 1, 1e-5);
    }
    for (const auto& slope : slopes.shortSlope) {
        for (std::size_t n = 0; n < slope.size(); ++n)
            EXPECT_NEAR(slope[n] * slope[n] + slope[127 - n] * slope[127 - n], 1, 1e-5);
    }
    // The first value of the Kaiser-Bessel window of alpha 4 (ISO/IEC 13818-7).
    EXPECT_NEAR(slopes.longSlope[1][0], 0.0002925, 1e-6);
    EXPECT_NEAR(slopes.longSlope[0][0], std::sin(std::numbers::pi / 4096), 1e-7);
}

TEST(FilterBank, AnalysisAndSynthesisGiveTheSamplesBackThroughAllSequencesAndShapes) {
    using enum WindowSequence;
    const WindowSequence kSequences[] = {kLong,  kStart, kShort, kStop, kLong, kStart,
                                         kShort, kShort, kStop,  kLong, kLong};
    std::mt19937 random(2);
    constexpr std::size_t kBlocks = std::size(kSequences);
    std::vector<float> samples((kBlocks + 1) * kBlockSamples);
    for (float& sample : samples)
        sample = static_cast<float>(static_cast<int>(random() % 60001) - 30000);
    AnalysisBank analysis;
    FilterBank synthesis;
    WindowShape before = WindowShape::kSine;
    Spectrum spectrum;
    for (std::size_t b = 0; b < kBlocks; ++b) {
        const auto shape = static_cast<WindowShape>(random() % 2);
        analysis.Run(std::span<const float>(samples).subspan(b * kBlockSamples).first<2 * kBlockSamples>(),
                     kSequences[b], before, shape, spectrum);
        const std::span<const float> output = synthesis.Run(spectrum, kSequences[b], shape);
        before = shape;
        for (std::size_t n = 0; n < kBlockSamples && b > 0; ++n)
            ASSERT_NEAR(output[n], samples[b * kBlockSamples + n], 0.05) << "block " << b << " sample " << n;
    }
}

TEST(FilterBank, ResetForgetsTheOverlap) {
    FilterBank bank;
    Spectrum spectrum{};
    spectrum.fill(1000);
    const auto run = [&] {
        const std::span<const float> samples = bank.Run(spectrum, WindowSequence::kLong, WindowShape::kKaiserBessel);
        return std::vector<float>(samples.begin(), samples.end());
    };
    const std::vector<float> first = run();
    EXPECT_NE(run(), first) << "now there is something to overlap with";
    bank.Reset();
    EXPECT_EQ(bank.Shape(), WindowShape::kSine);
    EXPECT_EQ(run(), first);
}

} // namespace
