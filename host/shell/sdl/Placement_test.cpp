#include "host/shell/sdl/Placement.h"

#include <gtest/gtest.h>

namespace shell::sdl {

TEST(Placement, AWindowOfTheScreensShapeIsFilled) {
    EXPECT_EQ(PlaceScreen(800, 480), (Box{0, 0, 800, 480}));
    EXPECT_EQ(PlaceScreen(1600, 960), (Box{0, 0, 1600, 960}));
}

TEST(Placement, AWiderWindowLeavesBlackAtTheSides) {
    EXPECT_EQ(PlaceScreen(1920, 1080), (Box{60, 0, 1800, 1080}));
}

TEST(Placement, ATallerWindowLeavesBlackAboveAndBelow) {
    EXPECT_EQ(PlaceScreen(400, 1000), (Box{0, 380, 400, 240}));
}

TEST(Placement, AWindowWithoutSizeIsNoDivisionByZero) {
    EXPECT_EQ(PlaceScreen(0, 0), (Box{0, 0, 0, 0}));
    EXPECT_EQ(ToScreen({5, 5}, 0, 0), (Point{-1, -1}));
}

TEST(Placement, PartsThatTouchOnTheScreenTouchInTheOutput) {
    const Box screen = PlaceScreen(1000, 601);
    const Box left = ToOutput({0, 0, 333, 480}, screen);
    const Box right = ToOutput({333, 0, 467, 480}, screen);
    EXPECT_EQ(left.x + left.width, right.x);
    EXPECT_EQ(right.x + right.width, screen.x + screen.width);
}

TEST(Placement, APointIsFoundAgainInAScaledWindow) {
    EXPECT_EQ(ToScreen({399, 239}, 800, 480), (Point{399, 239}));
    EXPECT_EQ(ToScreen({1599, 959}, 1600, 960), (Point{799, 479}));
    EXPECT_EQ(ToScreen({200, 120}, 400, 240), (Point{400, 240}));
}

TEST(Placement, APointBesideTheScreenLiesOutsideOfIt) {
    EXPECT_LT(ToScreen({10, 500}, 1920, 1080).x, 0);
    EXPECT_GE(ToScreen({1900, 500}, 1920, 1080).x, kScreenWidth);
}

TEST(Placement, PartsOfAFinerScreenLieWhereThoseOfTheUsualDo) {
    const Box screen = PlaceScreen(1920, 1080);
    EXPECT_EQ(ToOutput({200, 120, 666, 2}, screen, 2), ToOutput({100, 60, 333, 1}, screen));
    EXPECT_EQ(ToOutput({0, 0, 1600, 960}, {0, 0, 1600, 960}, 2), (Box{0, 0, 1600, 960}));
    EXPECT_EQ(ToOutput({0, 1, 1600, 1}, {0, 0, 1600, 960}, 2), (Box{0, 1, 1600, 1}));
}

TEST(Placement, ALargeOutputIsDrawnFinely) {
    EXPECT_EQ(ScaleFor(800, 480), 1);
    EXPECT_EQ(ScaleFor(400, 240), 1);
    EXPECT_EQ(ScaleFor(1000, 600), 1) << "a quarter larger";
    EXPECT_EQ(ScaleFor(1001, 601), 2);
    EXPECT_EQ(ScaleFor(1600, 960), 2);
    EXPECT_EQ(ScaleFor(1920, 480), 1) << "wide, but the screen in it is no larger";
    EXPECT_EQ(ScaleFor(0, 0), 1);
}

TEST(Placement, AShapeThatMakesNoSenseFillsTheBox) {
    EXPECT_EQ(FitInside({1, 2, 30, 40}, 0), (Box{1, 2, 30, 40}));
    EXPECT_EQ(FitInside({0, 0, 400, 300}, 16.0 / 9), (Box{0, 37, 400, 225}));
}

} // namespace shell::sdl
