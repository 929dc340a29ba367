#include "host/shell/gdi/Stretch.h"

#include "platform/gdi.h"

#include <array>
#include <gtest/gtest.h>

namespace shell {

namespace {

Surface Row(std::initializer_list<std::uint32_t> pixels) {
    Surface surface(static_cast<int>(pixels.size()), 1);
    std::copy(pixels.begin(), pixels.end(), surface.PixelRow(0));
    return surface;
}

std::vector<std::uint32_t> Stretched(const Surface& from, int width, const RECT& clip) {
    Surface to(width, 1);
    StretchPixels(from, from.Bounds(), to, to.Bounds(), std::array{clip});
    return {to.PixelRow(0), to.PixelRow(0) + width};
}

} // namespace

TEST(Stretch, OneToOneMakesPixelsOpaque) {
    EXPECT_EQ(Stretched(Row({1, 2, 3}), 3, {0, 0, 3, 1}),
              (std::vector<std::uint32_t>{0xFF000001, 0xFF000002, 0xFF000003}));
}

TEST(Stretch, EnlargingToAnOddSizeCoversEveryPixel) {
    EXPECT_EQ(Stretched(Row({1, 2}), 5, {0, 0, 5, 1}),
              (std::vector<std::uint32_t>{0xFF000001, 0xFF000001, 0xFF000001, 0xFF000002, 0xFF000002}));
}

TEST(Stretch, ShrinkingUsesEverySourcePixelOnce) {
    EXPECT_EQ(Stretched(Row({0xF, 0x6, 0x3, 0xC, 0x8}), 2, {0, 0, 2, 1}),
              (std::vector<std::uint32_t>{0xFF000000u | (0xF & 0x6 & 0x3), 0xFF000000u | (0xC & 0x8)}));
}

TEST(Stretch, OnlyTheClipIsPainted) {
    EXPECT_EQ(Stretched(Row({7}), 4, {1, 0, 3, 1}), (std::vector<std::uint32_t>{0, 0xFF000007, 0xFF000007, 0}));
}

TEST(Stretch, TargetsOutsideTheSurfaceAreCut) {
    const Surface from = Row({1, 2, 3, 4});
    Surface to(2, 1);
    StretchPixels(from, from.Bounds(), to, {-1, 0, 3, 1}, std::array{to.Bounds()});
    EXPECT_EQ(to.PixelAt(0, 0), 0xFF000002u);
    EXPECT_EQ(to.PixelAt(1, 0), 0xFF000003u);
    StretchPixels(from, from.Bounds(), to, {5, 5, 9, 9}, std::array{to.Bounds()});
}

TEST(Stretch, BetweenFineSurfacesPixelsStayWhatTheyAre) {
    Surface from(2, 1, 2);
    for (int y = 0; y < 2; ++y) {
        for (int x = 0; x < 4; ++x) {
            from.PixelRow(y)[x] = static_cast<std::uint32_t>(10 * y + x);
        }
    }
    Surface to(2, 1, 2);
    StretchPixels(from, from.Bounds(), to, to.Bounds(), std::array{RECT{1, 0, 2, 1}});
    EXPECT_EQ(to.PixelAt(1, 0), 0u) << "outside the clip";
    EXPECT_EQ(to.PixelAt(2, 0), 0xFF000002u);
    EXPECT_EQ(to.PixelAt(3, 1), 0xFF00000Du);
}

TEST(Stretch, OnAFinerSurfaceTheStepsAreSmoothedInsideTheTargetOnly) {
    Surface to(4, 1, 2);
    StretchPixels(Row({0xFFFF00, 0x00FFFF}), {0, 0, 2, 1}, to, {1, 0, 3, 1}, std::array{to.Bounds()});
    EXPECT_EQ(to.PixelAt(1, 0), 0u);
    EXPECT_EQ(to.PixelAt(2, 0), 0xFFFFFF00u) << "nothing from beside the picture";
    EXPECT_EQ(to.PixelAt(5, 1), 0xFF00FFFFu);
    EXPECT_EQ(to.PixelAt(6, 0), 0u);
    const std::uint32_t before = to.PixelAt(3, 0);
    const std::uint32_t after = to.PixelAt(4, 0);
    EXPECT_EQ(before >> 24, 0xFFu);
    EXPECT_NEAR(static_cast<double>(before >> 16 & 0xFF), 255 * 0.75, 3);
    EXPECT_NEAR(static_cast<double>(after >> 16 & 0xFF), 255 * 0.25, 3);
}

TEST(Dib, HeadersThatAreNoPictureAreRefused) {
    const auto accepted = [](const auto& change) {
        struct {
            BITMAPINFOHEADER header;
            DWORD masks[3];
        } dib = {{40, 4, -4, 1, 16, BI_BITFIELDS, 0, 0, 0, 0, 0}, {0xF800, 0x07E0, 0x001F}};
        change(dib.header, dib.masks);
        return ReadDibHeader(&dib).has_value();
    };
    EXPECT_TRUE(accepted([](auto&, auto&) {}));
    EXPECT_FALSE(accepted([](auto& h, auto&) { h.biSize = 12; }));
    EXPECT_FALSE(accepted([](auto& h, auto&) { h.biWidth = 0; }));
    EXPECT_FALSE(accepted([](auto& h, auto&) { h.biWidth = 1 << 30; }));
    EXPECT_FALSE(accepted([](auto& h, auto&) { h.biHeight = 0; }));
    EXPECT_FALSE(accepted([](auto& h, auto&) { h.biHeight = INT32_MIN; }));
    EXPECT_FALSE(accepted([](auto& h, auto&) { h.biPlanes = 2; }));
    EXPECT_FALSE(accepted([](auto& h, auto&) { h.biBitCount = 8; }));
    EXPECT_FALSE(accepted([](auto& h, auto&) { h.biCompression = 1; }));
    EXPECT_FALSE(accepted([](auto&, auto& m) { m[1] = 0x0505; })) << "a mask with holes";
    EXPECT_FALSE(accepted([](auto&, auto& m) { m[2] = 0; }));
}

TEST(Dib, TwentyFourBitRowsEndAtFourBytes) {
    const BITMAPINFOHEADER header = {40, 1, 2, 1, 24, BI_RGB, 0, 0, 0, 0, 0};
    const BYTE pixels[] = {3, 2, 1, 0, 6, 5, 4, 0};
    const auto read = ReadDibHeader(&header);
    ASSERT_TRUE(read);
    const Surface surface = DibToSurface(*read, pixels);
    EXPECT_EQ(surface.PixelAt(0, 0), 0xFF040506u);
    EXPECT_EQ(surface.PixelAt(0, 1), 0xFF010203u);
}

} // namespace shell
