#include "host/wire/SlPacket.h"

#include <gtest/gtest.h>

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr wire::SlConfig kTelevision{.useAccessUnitStart = true,
                                     .useAccessUnitEnd = true,
                                     .useTimeStamps = true,
                                     .useIdle = true,
                                     .timeStampResolution = 90000,
                                     .ocrResolution = 90000,
                                     .timeStampLength = 33,
                                     .ocrLength = 33};

TEST(SlPacket, CompositionTimeAlone) {
    // A foreign muxer's picture packet: start, end, no clock, CTS 63000.
    const Bytes bytes = {0xC4, 0x00, 0x01, 0xEC, 0x30, 0x00, 0x00};
    const auto header = wire::SlHeader::Parse(bytes, kTelevision);
    ASSERT_TRUE(header);
    EXPECT_TRUE(header->accessUnitStart);
    EXPECT_TRUE(header->accessUnitEnd);
    EXPECT_EQ(header->clockReference, std::nullopt);
    EXPECT_EQ(header->decodingTime, std::nullopt);
    EXPECT_EQ(header->compositionTime, 63000u);
    EXPECT_EQ(header->size, 5u);
    EXPECT_EQ(header->Write(kTelevision), Bytes(bytes.begin(), bytes.begin() + 5));
}

TEST(SlPacket, ClockReferenceAndCompositionTime) {
    // The same muxer's first sound packet: OCR 1350, CTS 63000.
    const Bytes bytes = {0xE0, 0x00, 0x00, 0x2A, 0x32, 0x00, 0x00, 0xF6, 0x18};
    const auto header = wire::SlHeader::Parse(bytes, kTelevision);
    ASSERT_TRUE(header);
    EXPECT_EQ(header->clockReference, 1350u);
    EXPECT_EQ(header->compositionTime, 63000u);
    EXPECT_EQ(header->size, 9u);
    EXPECT_EQ(header->Write(kTelevision), bytes);
}

TEST(SlPacket, ContinuationHasNoTimes) {
    const auto header = wire::SlHeader::Parse(Bytes{0x40}, kTelevision);
    ASSERT_TRUE(header);
    EXPECT_FALSE(header->accessUnitStart);
    EXPECT_TRUE(header->accessUnitEnd);
    EXPECT_EQ(header->size, 1u);
}

TEST(SlPacket, IdlePacketsEndAfterTheFlags) {
    const auto header = wire::SlHeader::Parse(Bytes{0x10}, kTelevision);
    ASSERT_TRUE(header);
    EXPECT_TRUE(header->idle);
    EXPECT_EQ(header->size, 1u);
}

TEST(SlPacket, CutOffHeaderIsRefused) {
    const Bytes bytes = {0xC4, 0x00, 0x01, 0xEC};
    EXPECT_FALSE(wire::SlHeader::Parse(bytes, kTelevision));
    EXPECT_FALSE(wire::SlHeader::Parse({}, kTelevision));
}

TEST(SlPacket, PredefinedConfigurationHasNoHeader) {
    const auto header = wire::SlHeader::Parse(Bytes{0xC4}, {.predefined = 1});
    ASSERT_TRUE(header);
    EXPECT_EQ(header->size, 0u);
    EXPECT_TRUE(header->accessUnitStart);
    EXPECT_TRUE(header->Write({.predefined = 1}).empty());
}

TEST(SlPacket, EveryFieldAtOnce) {
    const wire::SlConfig config{.useAccessUnitStart = true,
                                .useRandomAccessPoint = true,
                                .usePadding = true,
                                .useTimeStamps = true,
                                .timeStampLength = 12,
                                .ocrLength = 8,
                                .accessUnitLengthLength = 10,
                                .instantBitrateLength = 4,
                                .degradationPriorityLength = 3,
                                .accessUnitSequenceLength = 4,
                                .packetSequenceLength = 6};
    // start 1, OCR flag 1, padding 1 101, packet 010101, priority 1 110, OCR 10100101, RAP 1, AU number 1001,
    // DTS 1, CTS 1, bit rate 1, DTS 000011110000, CTS 111100001111, length 0000000111, bit rate 0110, two
    // bits to the byte.
    const Bytes bytes = {0b11110101, 0b01011110, 0b10100101, 0b11001111, 0b00001111,
                         0b00001111, 0b00001111, 0b00000001, 0b11011000};
    const auto header = wire::SlHeader::Parse(bytes, config);
    ASSERT_TRUE(header);
    EXPECT_EQ(header->paddingBits, 5);
    EXPECT_EQ(header->packetSequence, 0b010101u);
    EXPECT_EQ(header->degradationPriority, 0b110u);
    EXPECT_EQ(header->clockReference, 0b10100101u);
    EXPECT_TRUE(header->randomAccess);
    EXPECT_EQ(header->accessUnitSequence, 0b1001u);
    EXPECT_EQ(header->decodingTime, 0b000011110000u);
    EXPECT_EQ(header->compositionTime, 0b111100001111u);
    EXPECT_EQ(header->accessUnitLength, 7u);
    EXPECT_EQ(header->instantBitrate, 0b0110u);
    EXPECT_EQ(header->Write(config), bytes);
}

} // namespace
