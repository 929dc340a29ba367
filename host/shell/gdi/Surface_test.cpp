#include "host/shell/gdi/Surface.h"

#include <cairo.h>
#include <fstream>
#include <gtest/gtest.h>
#include <unistd.h>

namespace shell {

TEST(Surface, APictureFileReadsBackAsItWas) {
    const auto file = std::filesystem::temp_directory_path() / ("dmb-surface-" + std::to_string(getpid()) + ".png");
    Surface surface(3, 2);
    surface.PixelRow(1)[2] = 0xFF123456;
    surface.PixelRow(0)[0] = 0x80400000; // half transparent
    ASSERT_TRUE(surface.WritePng(file));
    const auto read = Surface::ReadPng(file);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->Width(), 3);
    EXPECT_EQ(read->Height(), 2);
    EXPECT_EQ(read->PixelAt(2, 1), 0xFF123456u);
    EXPECT_EQ(read->PixelAt(0, 0), 0x80400000u);
    std::ofstream(file) << "no picture";
    EXPECT_FALSE(Surface::ReadPng(file));
    std::filesystem::remove(file);
    EXPECT_FALSE(Surface::ReadPng(file));
    EXPECT_FALSE(surface.WritePng("/nowhere/a.png"));
}

TEST(Surface, AFinePictureHasTwiceThePixelsAndTheSameSize) {
    Surface fine(3, 2, 2);
    EXPECT_EQ(fine.Width(), 3);
    EXPECT_EQ(fine.Bounds().bottom, 2);
    EXPECT_EQ(fine.PixelWidth(), 6);
    EXPECT_EQ(fine.PixelHeight(), 4);
    fine.Fill({1, 1, 3, 2}, 0xFF123456);
    EXPECT_EQ(fine.PixelAt(2, 2), 0xFF123456u);
    EXPECT_EQ(fine.PixelAt(5, 3), 0xFF123456u);
    EXPECT_EQ(fine.PixelAt(1, 2), 0u);
    EXPECT_EQ(fine.PixelAt(2, 1), 0u);
}

TEST(Surface, TheDrawingLibraryCountsInUnits) {
    Surface fine(4, 4, 2);
    cairo_t* cairo = cairo_create(fine.Cairo());
    cairo_set_source_rgb(cairo, 1, 0, 0);
    cairo_rectangle(cairo, 1, 1, 1, 0.5);
    cairo_fill(cairo);
    cairo_destroy(cairo);
    EXPECT_EQ(fine.PixelAt(2, 2), 0xFFFF0000u);
    EXPECT_EQ(fine.PixelAt(3, 2), 0xFFFF0000u);
    EXPECT_EQ(fine.PixelAt(2, 3), 0u) << "half a unit is one pixel";
    EXPECT_EQ(fine.PixelAt(4, 2), 0u);
}

TEST(Surface, ChangingTheScaleKeepsThePicture) {
    Surface surface(4, 2);
    surface.Fill({0, 0, 2, 2}, 0xFF00FF00);
    surface.Rescale(2);
    EXPECT_EQ(surface.Width(), 4);
    EXPECT_EQ(surface.PixelWidth(), 8);
    EXPECT_EQ(surface.PixelAt(0, 0), 0xFF00FF00u);
    EXPECT_EQ(surface.PixelAt(2, 3), 0xFF00FF00u);
    EXPECT_EQ(surface.PixelAt(6, 0), 0u);
    surface.Rescale(1);
    EXPECT_EQ(surface.PixelWidth(), 4);
    EXPECT_EQ(surface.PixelAt(0, 1), 0xFF00FF00u);
    EXPECT_EQ(surface.PixelAt(3, 1), 0u);
}

TEST(Surface, AFinePictureFileIsReadInUnits) {
    const auto file = std::filesystem::temp_directory_path() / ("dmb-fine-" + std::to_string(getpid()) + ".png");
    Surface fine(3, 2, 2);
    fine.PixelRow(3)[5] = 0xFF654321;
    ASSERT_TRUE(fine.WritePng(file));
    const auto plain = Surface::ReadPng(file);
    ASSERT_TRUE(plain);
    EXPECT_EQ(plain->Width(), 6);
    const auto read = Surface::ReadPng(file, 2);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->Width(), 3);
    EXPECT_EQ(read->Scale(), 2);
    EXPECT_EQ(read->PixelAt(5, 3), 0xFF654321u);
    ASSERT_TRUE(Surface(3, 2).WritePng(file));
    EXPECT_FALSE(Surface::ReadPng(file, 2)) << "half a unit is no size";
    std::filesystem::remove(file);
}

TEST(Surface, SidesAreClamped) {
    EXPECT_EQ(Surface(1, 1, 0).Scale(), 1);
    EXPECT_EQ(Surface(1, 1, 9).Scale(), kMaxScale);
    EXPECT_EQ(Surface(0, -5).Width(), 1);
    EXPECT_EQ(Surface(1 << 20, 1).Width(), kMaxSurfaceSide);
}

} // namespace shell
