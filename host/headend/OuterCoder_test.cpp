#include "host/headend/OuterCoder.h"

#include <fstream>
#include <iterator>

#include <gtest/gtest.h>

#include "tests/support/OuterData.h"

namespace {

wire::ByteVector ReadAll(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(OuterCoder, ParityOfANullPacket) {
    // Worked out by polynomial division in a few lines of Python that share nothing with the coder.
    std::array<std::uint8_t, 188> packet;
    packet.fill(0xFF);
    packet[0] = 0x47;
    packet[1] = 0x1F;
    packet[3] = 0x10;
    EXPECT_EQ(headend::ReedSolomonParity(packet),
              (std::array<std::uint8_t, 16>{0x43, 0xBF, 0x42, 0xC1, 0xE1, 0x18, 0xF8, 0x7F, 0x23, 0x90, 0xBA, 0x66,
                                            0x7D, 0xA8, 0x62, 0x6E}));
}

TEST(OuterCoder, BranchesDelayBySeventeenTurnsEach) {
    wire::ByteVector packets(188 * 24);
    for (std::size_t i = 0; i < packets.size(); ++i)
        packets[i] = static_cast<std::uint8_t>(i * 7 + i / 188);
    const wire::ByteVector coded = headend::OuterCode(packets, headend::InterleaverStart::kZeros);
    ASSERT_EQ(coded.size(), 204u * 24);
    // Byte 0 of each packet travels undelayed, byte 11 eleven packets later.
    EXPECT_EQ(coded[204 * 20], packets[188 * 20]);
    EXPECT_EQ(coded[204 * 20 + 11], packets[188 * 9 + 11]);
    EXPECT_EQ(coded[11], 0) << "nothing has come through the longest branch yet";
}

TEST(OuterCoder, ACyclicStreamHasNoSeam) {
    wire::ByteVector packets(188 * 24);
    for (std::size_t i = 0; i < packets.size(); ++i)
        packets[i] = static_cast<std::uint8_t>(i * 13 + i / 188);
    wire::ByteVector twice = packets;
    wire::AppendBytes(twice, packets);
    const wire::ByteVector once = headend::OuterCode(packets, headend::InterleaverStart::kCyclic);
    const wire::ByteVector reference = headend::OuterCode(twice, headend::InterleaverStart::kZeros);
    EXPECT_TRUE(std::equal(once.begin(), once.end(), reference.begin() + static_cast<std::ptrdiff_t>(once.size())));
}

TEST(OuterCoder, EqualsAForeignCodersOutput) {
    DMB_OUTER_DATA(plain, "dmb-ts/bsac_annexb.dmb");
    DMB_OUTER_DATA(coded, "dmb-ts/bsac_annexb.rs204il.bin");
    EXPECT_EQ(headend::OuterCode(ReadAll(plain), headend::InterleaverStart::kZeros), ReadAll(coded));
}

} // namespace
