#include "host/wire/TsPacket.h"

#include <array>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Bytes = std::array<std::uint8_t, wire::kTsPacketSize>;

Bytes WithHead(std::initializer_list<std::uint8_t> head, std::uint8_t fill) {
    Bytes bytes;
    bytes.fill(fill);
    std::copy(head.begin(), head.end(), bytes.begin());
    return bytes;
}

TEST(TsPacket, ClockReferenceAloneFillsAPacket) {
    // A foreign muxer's first packet: PID 0x114, adaptation field only, discontinuity and PCR of 0.
    const Bytes bytes = WithHead({0x47, 0x01, 0x14, 0x2F, 0xB7, 0x10, 0x00, 0x00, 0x00, 0x00, 0x7E, 0x00}, 0xFF);
    const auto packet = wire::TsPacket::Parse(bytes);
    ASSERT_TRUE(packet);
    EXPECT_EQ(packet->header.pid, 0x114);
    EXPECT_EQ(packet->header.continuity, 15);
    EXPECT_FALSE(packet->hasPayload);
    EXPECT_EQ(packet->header.pcr, 0u);

    Bytes written;
    EXPECT_EQ(wire::WriteTsPacket(written, packet->header, {}), 0u);
    EXPECT_EQ(written, bytes);
}

TEST(TsPacket, StuffingLeadsAShortPayload) {
    // A foreign muxer's PAT packet: 0xA6 bytes of adaptation field, pointer field, section.
    Bytes bytes = WithHead({0x47, 0x40, 0x00, 0x30, 0xA6, 0x00}, 0xFF);
    const std::array<std::uint8_t, 17> payload = {0x00, 0x00, 0xB0, 0x0D, 0x00, 0x01, 0xC1, 0x00, 0x00,
                                                  0x00, 0x01, 0xE1, 0x00, 0xE8, 0xF9, 0x5E, 0x7D};
    std::copy(payload.begin(), payload.end(), bytes.end() - 17);
    const auto packet = wire::TsPacket::Parse(bytes);
    ASSERT_TRUE(packet);
    EXPECT_TRUE(packet->header.payloadUnitStart);
    EXPECT_EQ(packet->header.pid, 0);
    EXPECT_EQ(std::vector(packet->payload.begin(), packet->payload.end()), std::vector(payload.begin(), payload.end()));

    Bytes written;
    EXPECT_EQ(wire::WriteTsPacket(written, packet->header, payload), payload.size());
    EXPECT_EQ(written, bytes);
}

TEST(TsPacket, OneMissingByteIsASingleStuffingByte) {
    const std::vector<std::uint8_t> payload(183, 0x55);
    Bytes written;
    EXPECT_EQ(wire::WriteTsPacket(written, {.pid = 0x1234, .continuity = 5}, payload), 183u);
    EXPECT_EQ(written, [] {
        Bytes expected = WithHead({0x47, 0x12, 0x34, 0x35, 0x00}, 0x55);
        return expected;
    }());
    const auto packet = wire::TsPacket::Parse(written);
    ASSERT_TRUE(packet);
    EXPECT_EQ(packet->payload.size(), 183u);
}

TEST(TsPacket, PcrUsesAll33BitsAndTheExtension) {
    const wire::TsHeader header{.pid = 0x101, .randomAccess = true, .pcr = 0x1'FFFF'FFFFull * 300 + 299};
    Bytes written;
    EXPECT_EQ(wire::WriteTsPacket(written, header, std::vector<std::uint8_t>(200, 1)), 176u);
    const Bytes expected = WithHead({0x47, 0x01, 0x01, 0x30, 0x07, 0x50, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x2B}, 0x01);
    EXPECT_EQ(written, expected);
    EXPECT_EQ(wire::TsPacket::Parse(written)->header, header);
}

TEST(TsPacket, RefusesWhatIsNoPacket) {
    EXPECT_FALSE(wire::TsPacket::Parse(WithHead({0x46, 0, 0, 0x10}, 0)));
    EXPECT_FALSE(wire::TsPacket::Parse(WithHead({0x47, 0, 0, 0x00}, 0))) << "reserved adaptation_field_control";
    EXPECT_FALSE(wire::TsPacket::Parse(WithHead({0x47, 0, 0, 0x20, 184}, 0)));
    EXPECT_FALSE(wire::TsPacket::Parse(WithHead({0x47, 0, 0, 0x30, 183}, 0)));
    EXPECT_FALSE(wire::TsPacket::Parse(WithHead({0x47, 0, 0, 0x30, 6, 0x10}, 0))) << "PCR that does not fit";
    EXPECT_FALSE(wire::TsPacket::Parse(std::vector<std::uint8_t>(187, 0x47)));
}

TEST(TsPacket, NullPacket) {
    Bytes written;
    wire::WriteNullPacket(written);
    EXPECT_EQ(written, WithHead({0x47, 0x1F, 0xFF, 0x10}, 0xFF));
    EXPECT_EQ(wire::TsPacket::Parse(written)->header.pid, wire::kNullPid);
}

} // namespace
