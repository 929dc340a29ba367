#include "jpeg/RgbToYuv.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

namespace jpeg {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes Words(const std::vector<std::uint16_t>& pixels) {
    Bytes bytes(pixels.size() * 2);
    std::memcpy(bytes.data(), pixels.data(), bytes.size());
    return bytes;
}

TEST(RgbToYuv, TablesByTheirFormula) {
    EXPECT_EQ(kRgbToYuvTables[0][255], 76); // 19595 * 255 >> 16
    EXPECT_EQ(kRgbToYuvTables[1][255], 149);
    EXPECT_EQ(kRgbToYuvTables[2][255], 29); // only blue to luma rounds
    EXPECT_EQ(kRgbToYuvTables[3][1], 255);  // -11058 >> 16 is -1
    EXPECT_EQ(kRgbToYuvTables[4][0], 0);
    EXPECT_EQ(kRgbToYuvTables[5][0], 128);
    EXPECT_EQ(kRgbToYuvTables[5][255], 255);
    EXPECT_EQ(kRgbToYuvTables[6][255], static_cast<std::uint8_t>(-107));
    EXPECT_EQ(kRgbToYuvTables[7][255], static_cast<std::uint8_t>(-21));
}

// Edge case: 0xFFFF gives Y 249, U 126, V 125.
TEST(RgbToYuv, PureWhite) {
    Bytes out(3);
    ASSERT_TRUE(ConvertRgbToYuv(Words({0xFFFF}).data(), RgbLayout::k565, 1, 1, out.data()));
    EXPECT_EQ(out, (Bytes{249, 126, 125}));
}

// Edge case: 3x3 gives 9 Y bytes and 4 of U and of V.
TEST(RgbToYuv, ThreeByThreeGivesNineAndFourAndFour) {
    Bytes out(9 + 4 + 4 + 1, 77);
    ASSERT_TRUE(ConvertRgbToYuv(Words(std::vector<std::uint16_t>(9, 0)).data(), RgbLayout::k565, 3, 3, out.data()));
    for (int i = 0; i < 9; ++i) {
        EXPECT_EQ(out[static_cast<std::size_t>(i)], 0);
    }
    for (int i = 9; i < 17; ++i) {
        EXPECT_EQ(out[static_cast<std::size_t>(i)], 128);
    }
    EXPECT_EQ(out[17], 77);
}

// Red, green, blue, black: chroma values that tell the pixels apart.
TEST(RgbToYuv, ChromaComesFromTheFirstPixelOfAPairOnEvenRows) {
    const Bytes source = {255, 0, 0, 0, 255, 0, 0, 0, 255, 0, 0, 0, //
                          9,   9, 9, 9, 9,   9, 9, 9, 9,   9, 9, 9};
    Bytes out(8 + 2 + 2);
    ASSERT_TRUE(ConvertRgbToYuv(source.data(), RgbLayout::k24, 4, 2, out.data()));
    const auto u = [](int r, int g, int b) {
        return static_cast<std::uint8_t>(kRgbToYuvTables[3][r] + kRgbToYuvTables[4][g] + kRgbToYuvTables[5][b]);
    };
    EXPECT_EQ(out[8], u(255, 0, 0));
    EXPECT_EQ(out[9], u(0, 0, 255));
}

TEST(RgbToYuv, TheLastRowOfAnOddHeightTakesTheSecondPixel) {
    const Bytes source = {255, 0, 0, 0, 255, 0, 0, 0, 255};
    Bytes out(3 + 2 + 2);
    ASSERT_TRUE(ConvertRgbToYuv(source.data(), RgbLayout::k24, 3, 1, out.data()));
    const auto u = [](int r, int g, int b) {
        return static_cast<std::uint8_t>(kRgbToYuvTables[3][r] + kRgbToYuvTables[4][g] + kRgbToYuvTables[5][b]);
    };
    EXPECT_EQ(out[3], u(0, 255, 0)); // the second of the pair
    EXPECT_EQ(out[4], u(0, 0, 255)); // an odd last column has its own
}

TEST(RgbToYuv, BlueToUServesAsRedToV) {
    const Bytes source = {200, 0, 0};
    Bytes out(3);
    ASSERT_TRUE(ConvertRgbToYuv(source.data(), RgbLayout::k24, 1, 1, out.data()));
    EXPECT_EQ(out[2], kRgbToYuvTables[5][200]);
}

TEST(RgbToYuv, RefusesNoPixels) {
    Bytes out(8, 77);
    const Bytes source(8);
    EXPECT_FALSE(ConvertRgbToYuv(source.data(), RgbLayout::k565, 0, 2, out.data()));
    EXPECT_FALSE(ConvertRgbToYuv(source.data(), RgbLayout::k565, 2, 0, out.data()));
    EXPECT_FALSE(ConvertRgbToYuv(nullptr, RgbLayout::k565, 2, 2, out.data()));
    EXPECT_EQ(out, Bytes(8, 77));
}

} // namespace
} // namespace jpeg
