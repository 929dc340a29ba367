#include "host/codec/Reconstruction.h"

#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

#include "host/codec/BlockEncoder.h"
#include "host/codec/TemporalNoiseShaping.h"

namespace {

using namespace codec;

// A block with room for everything, encoded (which alters nothing then) and reconstructed.
class ReconstructionTest : public ::testing::Test {
protected:
    ReconstructionTest() {
        BlockHeader& header = content.header;
        header.frameLength = 1000;
        header.channels = 2;
        header.baseBand = 31;
        header.maxSfb = 49;
        for (ChannelHeader& channel : header.channel) {
            channel.maxScalefactor = 100;
            channel.cbandSiType = 31;
            channel.baseScalefactorModel = channel.enhScalefactorModel = 7;
        }
        for (unsigned c = 0; c < 2; ++c) {
            content.info.cbandSi[c].fill(22);
            content.info.level[c].fill(100);
        }
    }

    void Run() {
        wire::BitWriter writer;
        ASSERT_TRUE(encoder.Encode(rate, content, writer));
        reconstruction.Run(rate, content.header, encoder.Geometry(), content.info, encoder.Planes(), spectra);
    }

    const RateTables& rate = *FindRate(48000);
    BlockContent content;
    BlockEncoder encoder;
    Reconstruction reconstruction;
    Spectra spectra{};
};

TEST_F(ReconstructionTest, LinesGrowWithThePowerOfFourThirdsAndTheScalefactor) {
    content.lines[0][0] = 8;
    content.lines[0][1] = -27;
    content.lines[0][2] = 1000;
    content.lines[0][3] = -8000;
    content.lines[0][4] = 1; // second band
    content.info.level[0][1] = 92;
    Run();
    EXPECT_FLOAT_EQ(spectra[0][0], 16);
    EXPECT_FLOAT_EQ(spectra[0][1], -81);
    EXPECT_FLOAT_EQ(spectra[0][2], 10000);
    EXPECT_FLOAT_EQ(spectra[0][3], -160000);
    EXPECT_FLOAT_EQ(spectra[0][4], 0.25F);
    EXPECT_EQ(spectra[1][0], 0);
}

TEST_F(ReconstructionTest, MiddleAndSideAddWithoutAHalf) {
    content.header.stereoMask = StereoMask::kMsPerBand;
    content.info.stereo[0] = StereoInfo::kMidSide;
    content.lines[0][0] = 8;
    content.lines[1][0] = 1;
    content.lines[0][4] = 8;
    content.lines[1][4] = 1;
    Run();
    EXPECT_FLOAT_EQ(spectra[0][0], 17);
    EXPECT_FLOAT_EQ(spectra[1][0], 15);
    EXPECT_FLOAT_EQ(spectra[0][4], 16);
    EXPECT_FLOAT_EQ(spectra[1][4], 1);
}

TEST_F(ReconstructionTest, MiddleAndSideEverywhereNeedsNoFlags) {
    content.header.stereoMask = StereoMask::kMsEverywhere;
    content.lines[0][500] = 8;
    content.lines[1][500] = -1;
    Run();
    EXPECT_FLOAT_EQ(spectra[0][500], 15);
    EXPECT_FLOAT_EQ(spectra[1][500], 17);
}

TEST_F(ReconstructionTest, IntensityCopiesTheLeftChannelWithPositionAndPhase) {
    content.header.stereoMask = StereoMask::kInfoPerBand;
    content.info.stereo[0] = StereoInfo::kInPhase;
    content.info.stereo[1] = StereoInfo::kOutOfPhase;
    content.info.level[1][0] = 4;
    content.info.level[1][1] = -4;
    content.lines[0][0] = 8;
    content.lines[0][4] = 8;
    content.lines[1][0] = 5; // overwritten
    Run();
    EXPECT_FLOAT_EQ(spectra[1][0], 8);
    EXPECT_FLOAT_EQ(spectra[1][4], -32);
}

TEST_F(ReconstructionTest, IntensityPositionsAlternateAroundZero) {
    for (int code = 0; code < 64; ++code)
        EXPECT_EQ(PositionCode(PositionFromCode(code)), code);
    EXPECT_EQ(PositionFromCode(1), -1);
    EXPECT_EQ(PositionFromCode(2), 1);
    EXPECT_EQ(PositionFromCode(63), -32);
}

double Power(const Spectrum& spectrum, unsigned first, unsigned end) {
    double sum = 0;
    for (unsigned i = first; i < end; ++i)
        sum += static_cast<double>(spectrum[i]) * spectrum[i];
    return sum;
}

TEST_F(ReconstructionTest, NoiseHasTheEnergyThatWasSent) {
    content.header.noisePresent = true;
    content.header.noiseStartSfb = 40;
    for (unsigned c = 0; c < 2; ++c) {
        content.info.noiseStart[c] = 80;
        for (unsigned sfb = 40; sfb < 49; ++sfb) {
            content.info.noise[c][sfb] = true;
            content.info.level[c][sfb] = static_cast<std::int16_t>(c == 0 ? 60 : 52);
        }
    }
    Run();
    for (unsigned sfb = 40; sfb < 49; ++sfb) {
        const unsigned first = rate.longBands[sfb];
        const unsigned end = rate.longBands[sfb + 1];
        EXPECT_NEAR(Power(spectra[0], first, end) / std::exp2(30), 1, 1e-3);
        EXPECT_NEAR(Power(spectra[1], first, end) / std::exp2(26), 1, 1e-3);
    }
    double product = 0;
    for (unsigned i = rate.longBands[40]; i < 1024; ++i)
        product += static_cast<double>(spectra[0][i]) * spectra[1][i];
    EXPECT_LT(std::abs(product), 0.3 * std::exp2(28) * 9) << "the channels are independent";
}

TEST_F(ReconstructionTest, NoiseModesMakeBothChannelsAlike) {
    content.header.noisePresent = true;
    content.header.stereoMask = StereoMask::kInfoPerBand;
    for (unsigned sfb : {40U, 41U}) {
        content.info.stereo[sfb] = StereoInfo::kOutOfPhase;
        for (unsigned c = 0; c < 2; ++c) {
            content.info.noiseStart[c] = 60;
            content.info.noise[c][sfb] = true;
            content.info.level[c][sfb] = 60;
        }
    }
    content.info.noiseMode[40] = 1;
    content.info.noiseMode[41] = 2;
    Run();
    for (unsigned i = rate.longBands[40]; i < rate.longBands[41]; ++i)
        EXPECT_EQ(spectra[1][i], spectra[0][i]);
    for (unsigned i = rate.longBands[41]; i < rate.longBands[42]; ++i)
        EXPECT_EQ(spectra[1][i], -spectra[0][i]);
}

TEST_F(ReconstructionTest, ANoiseBandOfTheRightChannelStaysNoiseWhereIntensityIsMarked) {
    content.header.noisePresent = true;
    content.header.stereoMask = StereoMask::kInfoPerBand;
    for (unsigned sfb : {40U, 41U}) { // noise on the right alone, and plain intensity
        content.info.stereo[sfb] = StereoInfo::kInPhase;
        content.lines[0][rate.longBands[sfb]] = 8;
    }
    content.info.noise[1][40] = true;
    content.info.noiseStart[1] = 24;
    content.info.level[1][40] = 24;
    content.info.level[1][41] = 4;
    Run();
    EXPECT_NEAR(Power(spectra[1], rate.longBands[40], rate.longBands[41]), 4096, 1) << "2^(24 / 2)";
    EXPECT_FLOAT_EQ(spectra[0][rate.longBands[40]], 16);
    EXPECT_FLOAT_EQ(spectra[1][rate.longBands[41]], 8) << "half of the left line";
    EXPECT_EQ(spectra[1][rate.longBands[41] + 1], 0);
}

TEST_F(ReconstructionTest, LinesOfAGroupGoBackToTheirWindows) {
    BlockHeader& header = content.header;
    header.windowSequence = WindowSequence::kShort;
    header.maxSfb = 14;
    header.grouping = 0b1100000; // groups of 3, 1, 1, 1, 1, 1 windows
    // Line 4 * i + k of window b of the first group is at 12 * i + 4 * b + k.
    content.lines[0][12 * 1 + 4 * 2 + 3] = 1;
    content.lines[0][3 * 128 + 5] = 8; // the second group's window
    Run();
    EXPECT_FLOAT_EQ(spectra[0][2 * 128 + 7], 1);
    EXPECT_FLOAT_EQ(spectra[0][3 * 128 + 5], 16);
    EXPECT_NEAR(Power(spectra[0], 0, 1024), 1 + 256, 1e-3);
}

TEST(TemporalNoiseShaping, PredictionFollowsFromReflectionCoefficients) {
    TnsWindow window;
    window.fineResolution = true;
    TnsFilter filter;
    filter.order = 2;
    filter.coefficients = {4, -3};
    const double k1 = std::sin(4 * std::numbers::pi / 2 / 7.5);
    const double k2 = std::sin(-3 * std::numbers::pi / 2 / 8.5);
    const TnsPrediction a = TnsPredictionOf(window, filter);
    EXPECT_DOUBLE_EQ(a[1], k1 + k1 * k2);
    EXPECT_DOUBLE_EQ(a[2], k2);
    window.fineResolution = false;
    EXPECT_DOUBLE_EQ(TnsPredictionOf(window, filter)[2], std::sin(-3 * std::numbers::pi / 2 / 4.5));
}

TEST(TemporalNoiseShaping, FiltersFromTheTopOfAllBandsInEitherDirection) {
    const RateTables& rate = *FindRate(48000);
    BlockHeader header;
    header.maxSfb = 40;
    TnsWindow window;
    window.filterCount = 1;
    window.fineResolution = true;
    window.filters[0].length = 12; // 49 - 12 = band 37, and not more than 40 bands
    window.filters[0].order = 1;
    window.filters[0].coefficients[0] = 4;
    const double k = std::sin(4 * std::numbers::pi / 2 / 7.5);
    const unsigned first = rate.longBands[37];
    const unsigned end = rate.longBands[40];
    std::array<float, 1024> lines{};
    lines[first - 1] = lines[first] = lines[end - 1] = lines[end] = 1;
    ApplyTns(rate, header, window, lines);
    EXPECT_FLOAT_EQ(lines[first - 1], 1) << "below the filter";
    EXPECT_FLOAT_EQ(lines[first + 1], static_cast<float>(-k));
    EXPECT_FLOAT_EQ(lines[first + 2], static_cast<float>(k * k));
    EXPECT_FLOAT_EQ(lines[end], 1) << "above the filter";
    lines.fill(0);
    lines[end - 1] = 1;
    window.filters[0].downwards = true;
    ApplyTns(rate, header, window, lines);
    EXPECT_FLOAT_EQ(lines[end - 2], static_cast<float>(-k));
    EXPECT_FLOAT_EQ(lines[first - 1], 0);
}

TEST(TemporalNoiseShaping, ResonantFiltersStayFinite) {
    const RateTables& rate = *FindRate(48000);
    BlockHeader header;
    header.maxSfb = 49;
    TnsWindow window;
    window.filterCount = 3;
    window.fineResolution = true;
    for (TnsFilter& filter : window.filters) {
        filter.length = 49;
        filter.order = 31;
        filter.coefficients.fill(-8);
    }
    std::array<float, 1024> lines;
    lines.fill(0x1p59F);
    ApplyTns(rate, header, window, lines);
    for (unsigned i = 0; i < rate.longBands[40]; ++i)
        ASSERT_LE(std::abs(lines[i]), kLargestLine);
}

} // namespace
