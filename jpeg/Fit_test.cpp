#include "jpeg/Fit.h"

#include <gtest/gtest.h>

#include <array>

namespace jpeg {
namespace {

struct Case {
    int width;
    int height;
    std::array<int, 6> wanted; // fitted width and height, offsets, reduction, exact
};

void Check(const Case& c, int targetWidth = 320, int targetHeight = 240) {
    const Fit fit = FitPicture(c.width, c.height, targetWidth, targetHeight);
    const std::array<int, 6> got = {fit.width, fit.height, fit.offsetX, fit.offsetY, fit.reduction, fit.exact ? 1 : 0};
    EXPECT_EQ(got, c.wanted) << c.width << "x" << c.height;
}

// Edge case: 160x120 is placed unscaled at (80, 60).
TEST(Fit, ASmallPictureIsPlacedUnscaledInTheMiddle) {
    Check({160, 120, {160, 120, 80, 60, 0, 1}});
    Check({320, 240, {320, 240, 0, 0, 0, 1}});
    Check({1, 1, {1, 1, 159, 119, 0, 1}});
}

// Edge case: 300x400 gives 180x240 at a horizontal offset of 70.
TEST(Fit, ThreeHundredByFourHundredKeepsItsShape) {
    Check({300, 400, {180, 240, 70, 0, 0, 0}});
}

// Edge case: 640x480 is exact at s = 1.
TEST(Fit, SixHundredFortyByFourHundredEightyIsHalvedExactly) {
    Check({640, 480, {320, 240, 0, 0, 1, 1}});
    Check({641, 481, {320, 240, 0, 0, 1, 1}});
}

// Edge case: 2560x1920 is exact at s = 3.
TEST(Fit, TwentyFiveSixtyByNineteenTwentyIsAnEighthExactly) {
    Check({2560, 1920, {320, 240, 0, 0, 3, 1}});
    Check({2567, 1927, {320, 240, 0, 0, 3, 1}});
    Check({2568, 1928, {320, 240, 0, 0, 3, 0}});
}

// Edge case: 1000x240 is squeezed to 320x240.
TEST(Fit, AThousandByTwoHundredFortyIsSqueezed) {
    Check({1000, 240, {320, 240, 0, 0, 0, 0}});
}

TEST(Fit, FourHundredSquaredLosesItsShape) {
    Check({400, 400, {320, 240, 0, 0, 0, 0}});
}

TEST(Fit, OneDirectionTooLarge) {
    Check({1000, 100, {320, 32, 0, 104, 1, 0}});
    Check({320, 400, {320, 240, 0, 0, 0, 0}});
    Check({100, 2000, {12, 240, 154, 0, 3, 0}});
}

TEST(Fit, TheReductionFollowsTheLargerRatio) {
    Check({1280, 960, {320, 240, 0, 0, 2, 1}});
    Check({1287, 967, {320, 240, 0, 0, 2, 0}});
    Check({2000, 250, {320, 240, 0, 0, 0, 0}}); // 2000/320 is larger: heights decide
    Check({500, 4000, {320, 240, 0, 0, 0, 0}}); // 4000/240 is larger: widths decide
}

TEST(Fit, AnExtremeShapeFitsToNothing) {
    EXPECT_TRUE(FitPicture(1, 20000, 320, 240).Empty());
    EXPECT_TRUE(FitPicture(20000, 10, 320, 240).Empty());
    EXPECT_FALSE(FitPicture(3, 400, 320, 240).Empty());
}

TEST(Fit, ATargetWithoutAreaFitsToNothing) {
    EXPECT_TRUE(FitPicture(10, 10, 0, 240).Empty());
    EXPECT_TRUE(FitPicture(10, 10, 320, -1).Empty());
}

TEST(Fit, PlacementByFormat) {
    const Placement even = PlaceFit(FitPicture(300, 400, 320, 240), 320, 240);
    EXPECT_EQ(even.rgb565, 140u);
    EXPECT_EQ(even.rgb24, 210u);
    EXPECT_EQ(even.luma, 70u);
    EXPECT_EQ(even.chroma, 35u);
    // 100x75 in 320x240: 165 rows are free, 82 of them above.
    const Placement odd = PlaceFit(FitPicture(100, 75, 320, 240), 320, 240);
    EXPECT_EQ(odd.rgb565, 164u * 320 + 2 * 110);
    EXPECT_EQ(odd.rgb24, 82u * 320 * 3 + 330);
    EXPECT_EQ(odd.luma, 82u * 320 + 110);
    EXPECT_EQ(odd.chroma, 41u * 160 + 55);
}

} // namespace
} // namespace jpeg
