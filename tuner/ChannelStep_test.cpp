#include "tuner/ChannelStep.h"

#include <vector>

#include <gtest/gtest.h>

namespace {

std::optional<int> Step(const std::vector<int>& kinds, int from, int step, int kind) {
    return StepChannel(from, step, static_cast<int>(kinds.size()), kind, [&](int position) -> std::optional<int> {
        return kinds.at(static_cast<std::size_t>(position));
    });
}

} // namespace

// Edge case: -1 from the first of five is the last, +1 from the last is the first.
TEST(ChannelStep, WrapsAtBothEnds) {
    const std::vector<int> kinds(5, 0);
    EXPECT_EQ(Step(kinds, 0, -1, 0), 4);
    EXPECT_EQ(Step(kinds, 4, +1, 0), 0);
}

// Edge case: television, radio, television: +1 from the first skips the radio.
TEST(ChannelStep, SkipsTheOtherKind) {
    EXPECT_EQ(Step({0, 1, 0}, 0, +1, 0), 2);
}

TEST(ChannelStep, TheOnlyOneOfItsKindLeadsToItself) {
    EXPECT_EQ(Step({1, 0, 1}, 1, +1, 0), 1);
    EXPECT_EQ(Step({1, 0, 1}, 1, -1, 0), 1);
}

TEST(ChannelStep, OnePassAndThenNothing) {
    EXPECT_EQ(Step({1, 1, 1}, 0, +1, 0), std::nullopt);
    EXPECT_EQ(Step({1, 1, 1}, 0, -1, 2), std::nullopt);
    EXPECT_EQ(Step({}, 0, +1, 0), std::nullopt);
}

TEST(ChannelStep, AStartOutsideTheListComesBackIntoIt) {
    EXPECT_EQ(Step({0, 0, 0}, -1, +1, 0), 0);
    EXPECT_EQ(Step({0, 0, 0}, 7, +1, 0), 0);
    EXPECT_EQ(Step({0, 0, 0}, -1, -1, 0), 2);
}
