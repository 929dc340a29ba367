#include "host/wire/Crc.h"

#include <gtest/gtest.h>

namespace {

constexpr std::array<std::uint8_t, 9> kCheck = {'1', '2', '3', '4', '5', '6', '7', '8', '9'};

TEST(Crc, CheckValuesOfTheTwoPolynomials) {
    // The values every catalogue of CRCs lists for the digits 1 to 9: GENIBUS, CMS and MPEG-2.
    static_assert(wire::Crc16(kCheck) == 0xD64E);
    static_assert(wire::AudioCrc(kCheck, 0, 72) == 0xAEE7); // CMS
    static_assert(wire::Crc32(kCheck) == 0x0376E6E7);
}

TEST(Crc, AppendedSumsHoldAndOneWrongBitBreaksThem) {
    std::vector<std::uint8_t> bytes(kCheck.begin(), kCheck.end());
    wire::AppendCrc16(bytes);
    EXPECT_EQ(bytes[9], 0xD6);
    EXPECT_EQ(bytes[10], 0x4E);
    EXPECT_TRUE(wire::Crc16Matches(bytes));
    bytes[3] ^= 0x10;
    EXPECT_FALSE(wire::Crc16Matches(bytes));
    EXPECT_FALSE(wire::Crc16Matches(std::span(bytes).first(1)));

    std::vector<std::uint8_t> section(kCheck.begin(), kCheck.end());
    wire::AppendCrc32(section);
    EXPECT_EQ(wire::Crc32(section), 0u);
}

TEST(Crc, ProgramAssociationSectionOfAForeignMuxer) {
    const std::vector<std::uint8_t> section = {0x00, 0xB0, 0x0D, 0x00, 0x01, 0xC1, 0x00, 0x00,
                                               0x00, 0x01, 0xE1, 0x00, 0xE8, 0xF9, 0x5E, 0x7D};
    EXPECT_EQ(wire::Crc32(section), 0u);
}

} // namespace
