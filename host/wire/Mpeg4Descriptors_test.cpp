#include "host/wire/Mpeg4Objects.h"

#include <gtest/gtest.h>

namespace {

using Bytes = std::vector<std::uint8_t>;

// A foreign muxer's object descriptor update: picture (id 20) with its clock on stream 0x101, and BSAC sound
// (id 10).
const Bytes kUpdate = {0x01, 0x5D, 0x01, 0x2A, 0x05, 0x1F, 0x03, 0x26, 0x02, 0x01, 0x24, 0x01, 0x01, 0x04, 0x0D, 0x21,
                       0x11, 0x00, 0xEA, 0x60, 0x00, 0x0B, 0xB8, 0x00, 0x00, 0x06, 0x1A, 0x80, 0x06, 0x10, 0x00, 0xC6,
                       0x00, 0x01, 0x5F, 0x90, 0x00, 0x01, 0x5F, 0x90, 0x21, 0x21, 0x00, 0x00, 0x00, 0x03, 0x01, 0x2F,
                       0x02, 0x9F, 0x03, 0x2B, 0x01, 0x01, 0x05, 0x04, 0x14, 0x40, 0x15, 0x00, 0x18, 0x00, 0x00, 0x01,
                       0x77, 0x00, 0x00, 0x01, 0x77, 0x00, 0x05, 0x05, 0xB1, 0x91, 0x08, 0x00, 0x00, 0x06, 0x10, 0x00,
                       0xC6, 0x00, 0x01, 0x5F, 0x90, 0x00, 0x01, 0x5F, 0x90, 0x21, 0x21, 0x00, 0x00, 0x00, 0x03};

// The same muxer's IOD descriptor, as it stands in the programme map.
const Bytes kIod = {0x10, 0x01, 0x02, 0x53, 0x00, 0x4F, 0x01, 0x0C, 0xFE, 0xFE, 0x04, 0x03, 0x24, 0x00, 0x01,
                    0x00, 0x04, 0x0D, 0x01, 0x05, 0x00, 0x00, 0xFA, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
                    0x00, 0x06, 0x10, 0x00, 0xC6, 0x00, 0x01, 0x5F, 0x90, 0x00, 0x01, 0x5F, 0x90, 0x21, 0x21,
                    0x00, 0x00, 0x00, 0x03, 0x03, 0x24, 0x00, 0x02, 0x00, 0x04, 0x0D, 0x02, 0x0D, 0x00, 0x00,
                    0x16, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x06, 0x10, 0x00, 0xC6, 0x00, 0x01,
                    0x5F, 0x90, 0x00, 0x01, 0x5F, 0x90, 0x21, 0x21, 0x00, 0x00, 0x00, 0x03};

TEST(Mpeg4Descriptors, ObjectDescriptorUpdate) {
    const auto update = wire::ObjectDescriptorUpdate::Parse(kUpdate);
    ASSERT_TRUE(update);
    ASSERT_EQ(update->objects.size(), 2u);
    const wire::ObjectDescriptor& picture = update->objects[0];
    EXPECT_EQ(picture.id, 20);
    ASSERT_EQ(picture.streams.size(), 1u);
    EXPECT_EQ(picture.streams[0].esId, 0x201);
    EXPECT_EQ(picture.streams[0].clockEsId, 0x101);
    EXPECT_EQ(picture.streams[0].decoder.objectType, wire::kObjectTypeH264);
    EXPECT_EQ(picture.streams[0].decoder.streamType, wire::kStreamVisual);
    EXPECT_EQ(picture.streams[0].decoder.bufferSize, 60000u);
    EXPECT_EQ(picture.streams[0].decoder.maxBitrate, 768000u);
    EXPECT_TRUE(picture.streams[0].decoder.specificInfo.empty());

    const wire::EsDescriptor& sound = update->objects.at(1).streams.at(0);
    EXPECT_EQ(sound.decoder.objectType, wire::kObjectTypeMpeg4Audio);
    EXPECT_EQ(sound.decoder.specificInfo, (Bytes{0xB1, 0x91, 0x08, 0x00, 0x00}));
    EXPECT_EQ(sound.sl, (wire::SlConfig{.useAccessUnitStart = true,
                                        .useAccessUnitEnd = true,
                                        .useTimeStamps = true,
                                        .useIdle = true,
                                        .timeStampResolution = 90000,
                                        .ocrResolution = 90000,
                                        .timeStampLength = 33,
                                        .ocrLength = 33}));
    EXPECT_EQ(update->Write(), kUpdate);
}

TEST(Mpeg4Descriptors, InitialObjectDescriptor) {
    const auto iod = wire::IodDescriptor::Parse(kIod);
    ASSERT_TRUE(iod);
    EXPECT_EQ(iod->id, 1);
    EXPECT_EQ(iod->visualProfile, 0xFE);
    ASSERT_EQ(iod->streams.size(), 2u);
    EXPECT_EQ(iod->streams[0].decoder.streamType, wire::kStreamObjectDescriptor);
    EXPECT_EQ(iod->streams[1].decoder.streamType, wire::kStreamScene);
    EXPECT_EQ(iod->Write(), kIod);
}

TEST(Mpeg4Descriptors, SizesMayBePaddedToFourBytes) {
    // 8.3.3 allows leading groups of zero; many muxers always write four.
    const Bytes bytes = {0x03, 0x80, 0x80, 0x80, 0x02, 0xAA, 0xBB, 0x99};
    std::span<const std::uint8_t> rest = bytes;
    const auto descriptor = wire::Mp4Descriptor::Take(rest);
    ASSERT_TRUE(descriptor);
    EXPECT_EQ(descriptor->body.size(), 2u);
    EXPECT_EQ(rest.size(), 1u);
}

TEST(Mpeg4Descriptors, SizesBeyond127TakeTwoBytes) {
    Bytes out;
    wire::Mp4Descriptor::Put(out, 0x05, Bytes(200, 7));
    EXPECT_EQ(Bytes(out.begin(), out.begin() + 4), (Bytes{0x05, 0x81, 0x48, 7}));
    std::span<const std::uint8_t> rest = out;
    EXPECT_EQ(wire::Mp4Descriptor::Take(rest)->body.size(), 200u);
}

TEST(Mpeg4Descriptors, EveryTruncationIsRefusedOrHarmless) {
    for (std::size_t size = 1; size < kUpdate.size(); ++size)
        EXPECT_FALSE(wire::ObjectDescriptorUpdate::Parse(std::span(kUpdate).first(size))) << size;
    for (std::size_t size = 0; size < kIod.size(); ++size)
        EXPECT_FALSE(wire::IodDescriptor::Parse(std::span(kIod).first(size))) << size;
    const Bytes endless = {0x03, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    std::span<const std::uint8_t> rest = endless;
    EXPECT_FALSE(wire::Mp4Descriptor::Take(rest));
}

TEST(Mpeg4Descriptors, SlConfigWithDurationAndSequenceNumbers) {
    const Bytes body = {0x00, 0xFD, 0x00, 0x00, 0x03, 0xE8, 0x00, 0x00, 0x00, 0x00, 0x20, 0x00,
                        0x10, 0x00, 0x42, 0x8B, 0x00, 0x00, 0x75, 0x30, 0x03, 0xE9, 0x03, 0xE9};
    const auto config = wire::SlConfig::Parse(body);
    ASSERT_TRUE(config);
    EXPECT_TRUE(config->hasDuration);
    EXPECT_EQ(config->timeScale, 30000u);
    EXPECT_EQ(config->accessUnitDuration, 1001);
    EXPECT_EQ(config->accessUnitLengthLength, 16);
    EXPECT_EQ(config->degradationPriorityLength, 4);
    EXPECT_EQ(config->accessUnitSequenceLength, 5);
    EXPECT_EQ(config->packetSequenceLength, 2);
    EXPECT_EQ(config->Write(), body);

    EXPECT_EQ(wire::SlConfig::Parse(Bytes{0x02})->predefined, 2);
    Bytes tooLong = body;
    tooLong[10] = 65;
    EXPECT_FALSE(wire::SlConfig::Parse(tooLong)) << "a time stamp of 65 bits";
}

} // namespace
