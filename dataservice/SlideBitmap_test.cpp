#include "dataservice/SlideBitmap.h"

#include <array>
#include <cstring>

#include <gtest/gtest.h>

TEST(SlideBitmap, HeaderIsTopDownFiveSixFive) {
    std::array<BYTE, kSlideHeaderBytes> header;
    header.fill(0xEE);
    BuildSlideHeader(header);
    const BYTE expected[kSlideHeaderBytes] = {
        40, 0, 0, 0, 0x40, 0x01, 0, 0, 0x10, 0xFF, 0xFF, 0xFF, 1, 0, 16, 0,    3, 0, 0,    0,    0, 0, 0,    0, 0, 0,
        0,  0, 0, 0, 0,    0,    0, 0, 0,    0,    0,    0,    0, 0, 0,  0xF8, 0, 0, 0xE0, 0x07, 0, 0, 0x1F, 0, 0, 0};
    EXPECT_EQ(std::memcmp(header.data(), expected, sizeof expected), 0);
}
