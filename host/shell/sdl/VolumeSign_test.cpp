#include "host/shell/sdl/VolumeSign.h"

#include "host/shell/sdl/Placement.h"

#include <gtest/gtest.h>
#include <vector>

namespace shell::sdl {

namespace {

std::vector<std::uint32_t> Drawn(int scale, bool muted) {
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(kScreenWidth) * kScreenHeight * scale * scale);
    DrawVolumeSign(pixels, scale, 50, muted);
    return pixels;
}

} // namespace

TEST(VolumeSign, IsTheSameSignOnAFinerScreen) {
    for (const bool muted : {false, true}) {
        const auto coarse = Drawn(1, muted);
        const auto fine = Drawn(2, muted);
        int whole = 0;
        int split = 0;
        for (int y = 0; y < kScreenHeight; ++y) {
            for (int x = 0; x < kScreenWidth; ++x) {
                const std::uint32_t one = coarse[static_cast<std::size_t>(y) * kScreenWidth + x];
                const std::uint32_t* four = &fine[static_cast<std::size_t>(2 * y) * 2 * kScreenWidth + 2 * x];
                const int same = (four[0] == one) + (four[1] == one) + (four[2 * kScreenWidth] == one) +
                                 (four[2 * kScreenWidth + 1] == one);
                whole += same == 4 ? 1 : 0;
                split += same < 4 ? 1 : 0;
                ASSERT_GE(same, 2) << x << "," << y;
            }
        }
        EXPECT_GT(split, 10) << "the steps of slanted edges are cut";
        EXPECT_LT(split, 120);
    }
}

TEST(VolumeSign, TooFewPixelsAreLeftAlone) {
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(kScreenWidth) * kScreenHeight);
    DrawVolumeSign(pixels, 2, 50, false);
    EXPECT_EQ(pixels, std::vector<std::uint32_t>(pixels.size()));
}

} // namespace shell::sdl
