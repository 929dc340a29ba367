#include "host/wire/BitReader.h"

#include <array>

#include <gtest/gtest.h>

namespace {

constexpr std::array<std::uint8_t, 6> kBytes{0x15, 0xA4, 0x80, 0xE0, 0x50, 0x7F};

TEST(BitReader, ReadsTheMostSignificantBitFirst) {
    wire::BitReader reader(kBytes);
    EXPECT_EQ(reader.Read(11), 173U);
    EXPECT_EQ(reader.Read(4), 2U);
    EXPECT_FALSE(reader.ReadFlag());
    EXPECT_EQ(reader.Position(), 16U);
    EXPECT_EQ(reader.Remaining(), 32U);
    EXPECT_EQ(reader.Peek(32), 0x80E0507FU);
    EXPECT_EQ(reader.Read(32), 0x80E0507FU);
    EXPECT_FALSE(reader.Overrun());
}

TEST(BitReader, ReadsWidthsOf0And32AtEveryOffset) {
    std::array<std::uint8_t, 12> bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<std::uint8_t>(i * 37 + 11);
    const auto bitAt = [&](std::size_t bit) { return bytes[bit >> 3] >> (7 - (bit & 7)) & 1U; };
    for (std::size_t start = 0; start <= 64; ++start) {
        for (unsigned width = 0; width <= 32; ++width) {
            wire::BitReader reader(bytes, start, 96);
            std::uint32_t expected = 0;
            for (unsigned i = 0; i < width; ++i)
                expected = expected << 1 | bitAt(start + i);
            EXPECT_EQ(reader.Read(width), expected) << start << " " << width;
            EXPECT_EQ(reader.Position(), start + width);
        }
    }
}

TEST(BitReader, GivesZeroBitsPastTheEndAndRemembersIt) {
    wire::BitReader reader(kBytes, 0, 12);
    reader.Skip(8);
    EXPECT_EQ(reader.Read(8), 0xA0U); // 1010, then four missing bits
    EXPECT_TRUE(reader.Overrun());
    EXPECT_EQ(reader.Remaining(), 0U);
    EXPECT_EQ(reader.Read(32), 0U);
}

TEST(BitReader, AnEmptyReaderReadsZeros) {
    wire::BitReader reader;
    EXPECT_EQ(reader.Read(0), 0U);
    EXPECT_FALSE(reader.Overrun());
    EXPECT_EQ(reader.Read(5), 0U);
    EXPECT_TRUE(reader.Overrun());
}

TEST(BitReader, LimitsARangeToTheSpan) {
    wire::BitReader beyond(kBytes, 100, 200);
    EXPECT_EQ(beyond.Remaining(), 0U);
    wire::BitReader inside(kBytes, 40, 200);
    EXPECT_EQ(inside.Remaining(), 8U);
    EXPECT_EQ(inside.Read(8), 0x7FU);
}

TEST(BitReader, AlignsToTheByte) {
    wire::BitReader reader(kBytes);
    reader.AlignToByte();
    EXPECT_EQ(reader.Position(), 0U);
    reader.Skip(1);
    reader.AlignToByte();
    EXPECT_EQ(reader.Position(), 8U);
    EXPECT_FALSE(reader.Overrun());
}

} // namespace
