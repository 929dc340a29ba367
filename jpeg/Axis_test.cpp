#include "jpeg/Axis.h"

#include <gtest/gtest.h>

#include <vector>

namespace jpeg {
namespace {

TEST(Axis, LiteralShrink) {
    Axis axis;
    ASSERT_EQ(axis.Open(5, 3), Status::kOk); // positions 0 0 1 1 2
    EXPECT_EQ(axis[0].first, 0);
    EXPECT_EQ(axis[0].count, 2);
    EXPECT_EQ(axis[1].first, 2);
    EXPECT_EQ(axis[1].count, 2);
    EXPECT_EQ(axis[2].first, 4);
    EXPECT_EQ(axis[2].count, 1);
}

TEST(Axis, LiteralStretch) {
    Axis axis;
    ASSERT_EQ(axis.Open(2, 5), Status::kOk);
    const std::vector<int> wanted = {0, 0, 0, 1, 1};
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(axis[i].first, wanted[static_cast<std::size_t>(i)]);
        EXPECT_EQ(axis[i].count, 1);
    }
}

TEST(Axis, NoRowOrColumnStaysUnwritten) {
    for (int output = 1; output <= 64; ++output) {
        for (int source = 1; source <= 300; ++source) {
            Axis axis;
            ASSERT_EQ(axis.Open(source, output), Status::kOk);
            int next = 0;
            for (int i = 0; i < output; ++i) {
                ASSERT_GE(axis[i].count, 1);
                if (source >= output) {
                    ASSERT_EQ(axis[i].first, next) << "every source position counts once";
                    next += axis[i].count;
                } else {
                    ASSERT_LT(axis[i].first, source);
                }
            }
            if (source >= output) {
                ASSERT_EQ(next, source);
            }
        }
    }
}

TEST(RowSteps, RowsCompleteInOrder) {
    Axis axis;
    ASSERT_EQ(axis.Open(3, 2), Status::kOk); // rows 0 and 1, then row 2
    RowSteps steps;
    steps.Open(axis);
    EXPECT_TRUE(steps.Opens(0));
    EXPECT_EQ(steps.TakeCompleted(0), -1);
    EXPECT_FALSE(steps.Opens(1));
    EXPECT_EQ(steps.TakeCompleted(1), 0);
    EXPECT_TRUE(steps.Opens(2));
    EXPECT_EQ(steps.TakeCompleted(2), 1);
    EXPECT_EQ(steps.TakeCompleted(2), -1);
}

TEST(RowSteps, AStretchedRowCompletesSeveral) {
    Axis axis;
    ASSERT_EQ(axis.Open(1, 3), Status::kOk);
    RowSteps steps;
    steps.Open(axis);
    EXPECT_EQ(steps.TakeCompleted(0), 0);
    EXPECT_EQ(steps.TakeCompleted(0), 1);
    EXPECT_EQ(steps.TakeCompleted(0), 2);
    EXPECT_EQ(steps.TakeCompleted(0), -1);
}

} // namespace
} // namespace jpeg
