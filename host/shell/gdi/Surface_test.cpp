#include "host/shell/gdi/Surface.h"

#include <fstream>
#include <gtest/gtest.h>
#include <unistd.h>

namespace shell {

TEST(Surface, APictureFileReadsBackAsItWas) {
    const auto file = std::filesystem::temp_directory_path() / ("dmb-surface-" + std::to_string(getpid()) + ".png");
    Surface surface(3, 2);
    surface.Row(1)[2] = 0xFF123456;
    surface.Row(0)[0] = 0x80400000; // half transparent
    ASSERT_TRUE(surface.WritePng(file));
    const auto read = Surface::ReadPng(file);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->Width(), 3);
    EXPECT_EQ(read->Height(), 2);
    EXPECT_EQ(read->At(2, 1), 0xFF123456u);
    EXPECT_EQ(read->At(0, 0), 0x80400000u);
    std::ofstream(file) << "no picture";
    EXPECT_FALSE(Surface::ReadPng(file));
    std::filesystem::remove(file);
    EXPECT_FALSE(Surface::ReadPng(file));
    EXPECT_FALSE(surface.WritePng("/nowhere/a.png"));
}

TEST(Surface, SidesAreClamped) {
    EXPECT_EQ(Surface(0, -5).Width(), 1);
    EXPECT_EQ(Surface(1 << 20, 1).Width(), kMaxSurfaceSide);
}

} // namespace shell
