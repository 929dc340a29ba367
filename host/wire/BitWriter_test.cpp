#include "host/wire/BitWriter.h"

#include <array>
#include <random>
#include <utility>

#include <gtest/gtest.h>

#include "host/wire/BitReader.h"

namespace {

TEST(BitWriter, WritesTheMostSignificantBitFirst) {
    wire::BitWriter writer;
    writer.Write(173, 11);
    writer.Write(2, 4);
    writer.WriteFlag(false);
    writer.Write(0x80E0507F, 32);
    EXPECT_EQ(writer.BitCount(), 48U);
    EXPECT_EQ(writer.Take(), (std::vector<std::uint8_t>{0x15, 0xA4, 0x80, 0xE0, 0x50, 0x7F}));
    EXPECT_EQ(writer.BitCount(), 0U);
}

TEST(BitWriter, IgnoresBitsAboveTheWidth) {
    wire::BitWriter writer;
    writer.Write(0xFFFFFFFF, 3);
    writer.Write(0xFFFFFFF0, 5);
    writer.Write(0xFFFFFFFF, 0);
    EXPECT_EQ(writer.Take(), (std::vector<std::uint8_t>{0xF0}));
}

TEST(BitWriter, AlignsWithEitherFill) {
    wire::BitWriter writer;
    writer.AlignToByte(true);
    EXPECT_EQ(writer.BitCount(), 0U);
    writer.Write(0, 3);
    writer.AlignToByte(true);
    writer.Write(1, 1);
    writer.AlignToByte();
    EXPECT_EQ(writer.Take(), (std::vector<std::uint8_t>{0x1F, 0x80}));
}

TEST(BitWriter, WritesBytesAtAnyBitPosition) {
    wire::BitWriter writer;
    const std::array<std::uint8_t, 2> source{0xAB, 0xCD};
    writer.WriteBytes(source);
    writer.Write(1, 4);
    writer.WriteBytes(source);
    EXPECT_EQ(writer.Take(), (std::vector<std::uint8_t>{0xAB, 0xCD, 0x1A, 0xBC, 0xD0}));
}

TEST(BitWriter, IsTheInverseOfTheReader) {
    std::mt19937 random(1);
    wire::BitWriter writer;
    std::vector<std::pair<std::uint32_t, unsigned>> fields;
    for (int i = 0; i < 2000; ++i) {
        const auto width = static_cast<unsigned>(random() % 33);
        const auto value = static_cast<std::uint32_t>(width == 32 ? random() : random() & ((1U << width) - 1));
        fields.emplace_back(value, width);
        writer.Write(value, width);
    }
    wire::BitReader reader(writer.Bytes());
    for (const auto& [value, width] : fields)
        EXPECT_EQ(reader.Read(width), value);
    EXPECT_FALSE(reader.Overrun());
}

} // namespace
