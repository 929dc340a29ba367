#include "host/wire/Pes.h"

#include <gtest/gtest.h>

namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(Pes, HeaderOfAForeignMuxersFirstSoundPacket) {
    // SL-packetized stream, 188 bytes, aligned, PTS 63000.
    const Bytes bytes = {0x00, 0x00, 0x01, 0xFA, 0x00, 0xBC, 0x84, 0x80, 0x05, 0x21, 0x00, 0x03, 0xEC, 0x31};
    auto header = wire::PesHeader::Parse(bytes);
    ASSERT_TRUE(header);
    EXPECT_EQ(header->streamId, wire::kStreamIdSlPacketized);
    EXPECT_EQ(header->packetLength, 188);
    EXPECT_TRUE(header->dataAligned);
    EXPECT_EQ(header->pts, 63000u);
    EXPECT_EQ(header->dts, std::nullopt);
    EXPECT_EQ(header->size, 14u);
    EXPECT_EQ(header->Write(188 - 8), bytes);
}

TEST(Pes, BothStampsWithAllTheirBits) {
    const wire::PesHeader header{.streamId = wire::kStreamIdVideo, .pts = 0x1'FFFF'FFFFull, .dts = 0x1'2345'6789ull};
    const Bytes bytes = header.Write(70000);
    EXPECT_EQ(bytes,
              (Bytes{0, 0, 1, 0xE0, 0, 0, 0x80, 0xC0, 10, 0x3F, 0xFF, 0xFF, 0xFF, 0xFF, 0x19, 0x8D, 0x15, 0xCF, 0x13}));
    const auto again = wire::PesHeader::Parse(bytes);
    ASSERT_TRUE(again);
    EXPECT_EQ(again->packetLength, 0) << "too long for its field";
    EXPECT_EQ(again->pts, header.pts);
    EXPECT_EQ(again->dts, header.dts);
}

TEST(Pes, StuffingAfterTheStampsBelongsToTheHeader) {
    const auto header = wire::PesHeader::Parse(Bytes{0, 0, 1, 0xFA, 0, 9, 0x80, 0x00, 3, 0xFF, 0xFF, 0xFF, 1, 2, 3});
    ASSERT_TRUE(header);
    EXPECT_EQ(header->size, 12u);
}

TEST(Pes, RefusesDamage) {
    EXPECT_FALSE(wire::PesHeader::Parse(Bytes{0, 0, 1, 0xFA, 0, 3, 0x80, 0}));
    EXPECT_FALSE(wire::PesHeader::Parse(Bytes{0, 0, 2, 0xFA, 0, 3, 0x80, 0, 0}));
    EXPECT_FALSE(wire::PesHeader::Parse(Bytes{0, 0, 1, 0xFA, 0, 3, 0x40, 0, 0})) << "no optional header";
    EXPECT_FALSE(wire::PesHeader::Parse(Bytes{0, 0, 1, 0xFA, 0, 3, 0x80, 0x80, 4, 1, 1, 1, 1})) << "stamp too short";
    EXPECT_FALSE(wire::PesHeader::Parse(Bytes{0, 0, 1, 0xFA, 0, 3, 0x80, 0x40, 5, 1, 1, 1, 1, 1})) << "DTS alone";
    EXPECT_FALSE(wire::PesHeader::Parse(Bytes{0, 0, 1, 0xFA, 0, 3, 0x80, 0x80, 5, 1, 1, 1, 1})) << "cut off";
}

} // namespace
