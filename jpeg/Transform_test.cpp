#include "jpeg/Transform.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>
#include <random>
#include <vector>

namespace jpeg {
namespace {

QuantTable FlatTable(int quantiser) {
    QuantTable table;
    table.sent = true;
    table.values.fill(static_cast<std::uint8_t>(quantiser));
    return table;
}

using Samples = std::array<std::uint8_t, 64>;

Samples Apply(TransformFunction transform, const std::array<std::int16_t, 64>& values, const Dequantiser& dequantiser,
              int last = 63) {
    Samples samples{};
    Block block{};
    std::copy(values.begin(), values.end(), block.values.begin());
    transform(block.values.data(), dequantiser, last, samples.data(), 8);
    return samples;
}

// The last coefficient of a full block that is not 0.
int LastOf(const std::array<std::int16_t, 64>& values) {
    int last = 63;
    while (last > 0 && values[kZigzag[last]] == 0) {
        --last;
    }
    return last;
}

// Coefficients of a plausible block: large ones first, most of them 0.
std::array<std::int16_t, 64> RandomBlock(std::mt19937& random, int reach) {
    std::array<std::int16_t, 64> values{};
    const int count = std::uniform_int_distribution<int>(1, 64)(random);
    for (int k = 0; k < count; ++k) {
        const int size = std::max(1, reach / (1 + k / 2));
        values[kZigzag[k]] = static_cast<std::int16_t>(std::uniform_int_distribution<int>(-size, size)(random));
    }
    return values;
}

TEST(Transform, MultipliersHoldTheScaleFactors) {
    const Dequantiser dequantiser = MakeDequantiser(FlatTable(16), 0);
    EXPECT_EQ(dequantiser.multiplier[0], 64u);                        // 16 * 16384 >> 12
    EXPECT_EQ(dequantiser.multiplier[1], (16u * 22725 + 2048) >> 12); // cos(pi/16) sqrt(2)
    EXPECT_EQ(dequantiser.multiplier[9], (16u * 31521 + 2048) >> 12); // its square
    EXPECT_EQ(dequantiser.multiplier[63], (16u * 1247 + 2048) >> 12);
}

TEST(Transform, ReducedMultipliersFollowTheKeptCoefficients) {
    QuantTable table;
    for (int k = 0; k < 64; ++k) {
        table.values[k] = static_cast<std::uint8_t>(k + 1);
    }
    // Natural order 0 1 / 8 9 is 0 1 / 2 4 in zig-zag order.
    const Dequantiser quarter = MakeDequantiser(table, 2);
    EXPECT_EQ(quarter.multiplier[0], 4u);
    EXPECT_EQ(quarter.multiplier[2], (3u * 22725 + 2048) >> 12);
    EXPECT_EQ(quarter.multiplier[3], (5u * 31521 + 2048) >> 12);
}

TEST(Transform, DcAloneFillsTheBlock) {
    for (int reduction = 0; reduction < 4; ++reduction) {
        const Dequantiser dequantiser = MakeDequantiser(FlatTable(8), reduction);
        const int side = KeptSide(reduction);
        std::array<std::int16_t, 64> values{};
        values[0] = 10; // 10 * 32 >> 5 = 10
        const Samples samples = Apply(TransformFor(reduction), values, dequantiser, 0);
        for (int y = 0; y < side; ++y) {
            for (int x = 0; x < side; ++x) {
                EXPECT_EQ(samples[y * 8 + x], 138);
            }
        }
        EXPECT_EQ(Apply(TransformFor(reduction), values, dequantiser), samples);
    }
}

TEST(Transform, ShiftsTruncateTowardsMinusInfinity) {
    const Dequantiser dequantiser = MakeDequantiser(FlatTable(1), 3);
    std::array<std::int16_t, 64> values{};
    values[0] = -1; // -4 >> 5 = -1
    EXPECT_EQ(Apply(TransformFor(3), values, dequantiser)[0], 127);
    values[0] = 7; // 28 >> 5 = 0
    EXPECT_EQ(Apply(TransformFor(3), values, dequantiser)[0], 128);
}

TEST(Transform, OutputsAreLimitedToBytes) {
    const Dequantiser dequantiser = MakeDequantiser(FlatTable(255), 0);
    std::array<std::int16_t, 64> values{};
    for (const int dc : {2047, -2048, 32767, -32768}) {
        values[0] = static_cast<std::int16_t>(dc);
        values[1] = 1;
        EXPECT_EQ(Apply(TransformFor(0), values, dequantiser)[0], dc > 0 ? 255 : 0) << dc;
    }
}

// A literal block: the first difference of a horizontal ramp, worked out by hand from the butterfly.
TEST(Transform, OneHorizontalFrequencyAtAQuarter) {
    const Dequantiser dequantiser = MakeDequantiser(FlatTable(16), 2);
    std::array<std::int16_t, 64> values{};
    values[0] = 0;
    values[1] = 10; // 10 * 89 = 890: odd6 = (890 * 473 >> 8) - 890 = 754, odd5 = (890 * 362 >> 8) - 754 = 504
    const Samples samples = Apply(TransformFor(2), values, dequantiser);
    // Column pass leaves 890 in both rows. 754 >> 5 = 23, 504 >> 5 = 15: (151 + 143) >> 1 = 147.
    EXPECT_EQ(samples[0], 147);
    // -504 >> 5 = -16, -754 >> 5 = -24: (112 + 104) >> 1 = 108.
    EXPECT_EQ(samples[1], 108);
    EXPECT_EQ(samples[8], 147);
    EXPECT_EQ(samples[9], 108);
}

TEST(Transform, VectorPathsEqualThePortableOnes) {
    std::mt19937 random(1);
    for (int reduction = 0; reduction < 4; ++reduction) {
        for (int round = 0; round < 20000; ++round) {
            const int quantiser = std::uniform_int_distribution<int>(1, 255)(random);
            const int reach = std::array<int, 5>{3, 60, 400, 2047, 32767}[static_cast<std::size_t>(round % 5)];
            const Dequantiser dequantiser = MakeDequantiser(FlatTable(quantiser), reduction);
            const auto values = RandomBlock(random, reach);
            ASSERT_EQ(Apply(TransformFor(reduction), values, dequantiser),
                      Apply(PlainTransformFor(reduction), values, dequantiser))
                << "reduction " << reduction << " quantiser " << quantiser << " reach " << reach;
        }
    }
}

// What is promised to be 0 may be left out, never what is not: blocks of every length.
TEST(Transform, KnowingTheLastCoefficientChangesNothing) {
    std::mt19937 random(4);
    for (int last = 0; last < 64; ++last) {
        for (const int reach : {3, 60, 400, 2047, 32767}) {
            for (int round = 0; round < 50; ++round) {
                std::array<std::int16_t, 64> values{};
                for (int k = 0; k <= last; ++k) {
                    values[kZigzag[k]] =
                        static_cast<std::int16_t>(std::uniform_int_distribution<int>(-reach, reach)(random));
                }
                const int quantiser = std::uniform_int_distribution<int>(1, 255)(random);
                const Dequantiser dequantiser = MakeDequantiser(FlatTable(quantiser), 0);
                const Samples wanted = Apply(PlainTransformFor(0), values, dequantiser);
                ASSERT_EQ(Apply(TransformFor(0), values, dequantiser, LastOf(values)), wanted) << last << " " << reach;
                ASSERT_EQ(Apply(PlainTransformFor(0), values, dequantiser, LastOf(values)), wanted);
            }
        }
    }
    // A reduced size is told of the whole block's last coefficient.
    const Dequantiser half = MakeDequantiser(FlatTable(200), 1);
    const std::array<std::int16_t, 64> large{30000, 9000, -9000, 20000};
    for (const int last : {1, 9, 10, 63}) {
        EXPECT_EQ(Apply(TransformFor(1), large, half, last), Apply(PlainTransformFor(1), large, half)) << last;
    }
}

// Close to the limit of the 16-bit lanes on either side.
TEST(Transform, VectorPathsEqualThePortableOnesAtTheirLimit) {
    std::mt19937 random(2);
    const Dequantiser dequantiser = MakeDequantiser(FlatTable(1), 0);
    for (int round = 0; round < 20000; ++round) {
        std::array<std::int16_t, 64> values{};
        const int count = std::uniform_int_distribution<int>(1, 8)(random);
        for (int i = 0; i < count; ++i) {
            const int at = std::uniform_int_distribution<int>(0, 63)(random);
            values[at] =
                static_cast<std::int16_t>(std::uniform_int_distribution<int>(-4500 / count, 4500 / count)(random));
        }
        ASSERT_EQ(Apply(TransformFor(0), values, dequantiser), Apply(PlainTransformFor(0), values, dequantiser));
        ASSERT_EQ(Apply(TransformFor(1), values, MakeDequantiser(FlatTable(1), 1)),
                  Apply(PlainTransformFor(1), values, MakeDequantiser(FlatTable(1), 1)));
    }
}

TEST(Transform, FullSizeIsNearTheCosineSum) {
    std::mt19937 random(3);
    double worst = 0;
    for (int round = 0; round < 500; ++round) {
        const int quantiser = std::uniform_int_distribution<int>(8, 40)(random);
        const auto values = RandomBlock(random, 800 / quantiser);
        const Samples samples = Apply(TransformFor(0), values, MakeDequantiser(FlatTable(quantiser), 0));
        for (int y = 0; y < 8; ++y) {
            for (int x = 0; x < 8; ++x) {
                double sum = 128;
                for (int v = 0; v < 8; ++v) {
                    for (int u = 0; u < 8; ++u) {
                        const double scale = (u == 0 ? std::sqrt(0.125) : 0.5) * (v == 0 ? std::sqrt(0.125) : 0.5);
                        sum += scale * values[v * 8 + u] * quantiser *
                               std::cos((2 * x + 1) * u * std::numbers::pi / 16) *
                               std::cos((2 * y + 1) * v * std::numbers::pi / 16);
                    }
                }
                worst = std::max(worst, std::abs(std::clamp(sum, 0.0, 255.0) - samples[y * 8 + x]));
            }
        }
    }
    EXPECT_LE(worst, 8.0); // 8-bit constants and truncation; measured 4.1
}

} // namespace
} // namespace jpeg
