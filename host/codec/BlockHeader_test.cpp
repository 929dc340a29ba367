#include "host/codec/BlockHeader.h"

#include <array>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace codec;

// The start of a 44.1 kHz mono block of 173 bytes.
constexpr std::array<std::uint8_t, 10> kMono{0x15, 0xA4, 0x80, 0xE0, 0x50, 0x7F, 0x50, 0xB8, 0x00, 0xFC};

TEST(BlockHeader, ReadsTheFieldsOfARealBlock) {
    BlockHeader header;
    ASSERT_EQ(ReadBlockHeader(kMono, *FindRate(44100), 1, header), BsacStatus::kOk);
    EXPECT_EQ(header.frameLength, 173U);
    EXPECT_FALSE(header.segmented);
    EXPECT_EQ(header.topLayer, 32);
    EXPECT_EQ(header.baseSnfThreshold, 0);
    EXPECT_EQ(header.channel[0].maxScalefactor, 224);
    EXPECT_EQ(header.baseBand, 10);
    EXPECT_EQ(header.channel[0].cbandSiType, 1);
    EXPECT_EQ(header.channel[0].baseScalefactorModel, 7);
    EXPECT_EQ(header.channel[0].enhScalefactorModel, 7);
    EXPECT_EQ(header.channel[0].maxSfbSiLength, 5);
    EXPECT_EQ(header.windowSequence, WindowSequence::kLong);
    EXPECT_EQ(header.windowShape, WindowShape::kSine);
    EXPECT_EQ(header.maxSfb, 46);
    EXPECT_FALSE(header.noisePresent);
    EXPECT_EQ(header.stereoMask, StereoMask::kNone);
    EXPECT_FALSE(header.channel[0].tnsPresent);
    EXPECT_EQ(header.bits, 72U);
}

TEST(BlockHeader, WritesTheBytesItRead) {
    BlockHeader header;
    ASSERT_EQ(ReadBlockHeader(kMono, *FindRate(44100), 1, header), BsacStatus::kOk);
    wire::BitWriter writer;
    WriteBlockHeader(header, writer);
    EXPECT_EQ(writer.Take(), std::vector<std::uint8_t>(kMono.begin(), kMono.begin() + 9));
}

TEST(BlockHeader, RefusesAHeaderThatRunsOutOfBytes) {
    for (std::size_t size = 0; size < 9; ++size) {
        BlockHeader header;
        EXPECT_NE(ReadBlockHeader(std::span(kMono).first(size), *FindRate(44100), 1, header), BsacStatus::kOk) << size;
    }
}

TEST(BlockHeader, RefusesAHeaderLongerThanItsFrameLength) {
    std::array<std::uint8_t, 10> bytes = kMono;
    bytes[0] = 0x01; // frame_length 8, header 9 bytes
    bytes[1] = 0x04;
    BlockHeader header;
    EXPECT_EQ(ReadBlockHeader(bytes, *FindRate(44100), 1, header), BsacStatus::kBadHeader);
}

BlockHeader StereoShort() {
    BlockHeader header;
    header.frameLength = 300;
    header.channels = 2;
    header.windowSequence = WindowSequence::kShort;
    header.maxSfb = 14;
    header.grouping = 0b0110100;
    header.stereoMask = StereoMask::kInfoPerBand;
    return header;
}

TEST(BlockHeader, RefusesMoreBandsThanTheRateHas) {
    BlockHeader header = StereoShort();
    header.maxSfb = 15; // 15 bands below 32 kHz, 14 above
    wire::BitWriter writer;
    WriteBlockHeader(header, writer);
    BlockHeader got;
    EXPECT_EQ(ReadBlockHeader(writer.Bytes(), *FindRate(24000), 2, got), BsacStatus::kOk);
    EXPECT_EQ(ReadBlockHeader(writer.Bytes(), *FindRate(48000), 2, got), BsacStatus::kTooManyBands);
}

TEST(BlockHeader, ShortWindowsHaveFourBitsOfBandsAndSevenOfGrouping) {
    BlockHeader header = StereoShort();
    wire::BitWriter writer;
    WriteBlockHeader(header, writer);
    BlockHeader got;
    ASSERT_EQ(ReadBlockHeader(writer.Bytes(), *FindRate(48000), 2, got), BsacStatus::kOk);
    EXPECT_EQ(got.maxSfb, 14);
    EXPECT_EQ(got.grouping, 0b0110100);
    EXPECT_EQ(got.stereoMask, StereoMask::kInfoPerBand);
    EXPECT_EQ(got.bits, header.bits);
}

TEST(BlockHeader, TnsCoefficientsAreSignedAndMayBeCompressed) {
    BlockHeader header;
    header.frameLength = 100;
    ChannelHeader& channel = header.channel[0];
    channel.tnsPresent = true;
    channel.tns[0].filterCount = 1;
    channel.tns[0].fineResolution = true;
    TnsFilter& filter = channel.tns[0].filters[0];
    filter.length = 40;
    filter.order = 3;
    filter.downwards = true;
    filter.compressed = true;
    filter.coefficients = {3, -4, -1};
    wire::BitWriter writer;
    WriteBlockHeader(header, writer);
    BlockHeader got;
    ASSERT_EQ(ReadBlockHeader(writer.Bytes(), *FindRate(48000), 1, got), BsacStatus::kOk);
    const TnsFilter& read = got.channel[0].tns[0].filters[0];
    EXPECT_EQ(read.length, 40);
    EXPECT_EQ(read.order, 3);
    EXPECT_TRUE(read.downwards);
    EXPECT_TRUE(read.compressed);
    EXPECT_EQ(read.coefficients, filter.coefficients);
}

TEST(BlockHeader, LongTermPredictionIsRefused) {
    BlockHeader header;
    header.frameLength = 100;
    wire::BitWriter writer;
    WriteBlockHeader(header, writer);
    std::vector<std::uint8_t> bytes(writer.Bytes().begin(), writer.Bytes().end());
    // The last field of a mono header: bit 64, the first of the ninth byte.
    bytes[8] |= 0x80;
    BlockHeader got;
    EXPECT_EQ(ReadBlockHeader(bytes, *FindRate(48000), 1, got), BsacStatus::kLongTermPredictor);
}

} // namespace
