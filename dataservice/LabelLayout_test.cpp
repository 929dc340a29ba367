#include "dataservice/LabelLayout.h"

#include <gtest/gtest.h>

// Edge case: three short texts that fit are all drawn, oldest first, each with its prefix and a line break.
TEST(LabelLayout, ThreeShortTextsAreAllDrawnOldestFirst) {
    const SIZE extents[] = {{100, 20}, {120, 20}, {90, 20}};
    EXPECT_EQ(FirstLabelToDraw(extents, 200, 60), 0u);
    const WString history[] = {WTEXT("a"), WTEXT("b"), WTEXT("c")};
    EXPECT_EQ(JoinLabels(history, 0), WTEXT("▶ a\n▶ b\n▶ c\n"));
}

TEST(LabelLayout, OlderTextsThatDoNotFitAreLeftOut) {
    const SIZE extents[] = {{100, 20}, {201, 20}, {90, 20}}; // the middle one needs two lines
    EXPECT_EQ(FirstLabelToDraw(extents, 200, 60), 1u);
    EXPECT_EQ(FirstLabelToDraw(extents, 200, 59), 2u);
    const WString history[] = {WTEXT("a"), WTEXT("b"), WTEXT("c")};
    EXPECT_EQ(JoinLabels(history, 2), WTEXT("▶ c\n"));
}

// Edge case: a newest text that alone does not fit draws the whole history from entry 0; the area clips it.
TEST(LabelLayout, NewestTextThatDoesNotFitDrawsEverything) {
    const SIZE extents[] = {{100, 20}, {2000, 20}};
    EXPECT_EQ(FirstLabelToDraw(extents, 200, 60), 0u);
    const SIZE single[] = {{2000, 20}};
    EXPECT_EQ(FirstLabelToDraw(single, 200, 60), 0u);
}

TEST(LabelLayout, ExactFitCounts) {
    const SIZE extents[] = {{200, 20}, {400, 20}};
    EXPECT_EQ(FirstLabelToDraw(extents, 200, 60), 0u);
}

TEST(LabelLayout, EmptyAreaDividesByNothing) {
    const SIZE extents[] = {{200, 20}};
    EXPECT_EQ(FirstLabelToDraw(extents, 0, 60), 0u);
    EXPECT_EQ(FirstLabelToDraw(extents, -5, 60), 0u);
    const SIZE flat[] = {{200, 0}};
    EXPECT_EQ(FirstLabelToDraw(flat, 100, 60), 0u);
}
