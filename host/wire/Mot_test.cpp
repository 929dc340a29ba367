#include "host/wire/Mot.h"

#include <gtest/gtest.h>

#include "host/wire/MscDataGroup.h"

namespace wire {
namespace {

TEST(Mot, HeaderCoreBits) {
    // Body 12818 bytes, header 7, image, JFIF: 28 + 13 + 6 + 9 bits.
    const ByteVector core = {0x00, 0x03, 0x21, 0x20, 0x03, 0x84, 0x01};
    const auto header = ParseMotHeader(core);
    ASSERT_TRUE(header);
    EXPECT_EQ(header->bodySize, 12818u);
    EXPECT_EQ(header->headerSize, 7u);
    EXPECT_EQ(header->contentType, kMotContentImage);
    EXPECT_EQ(header->contentSubtype, kMotImageJfif);
    EXPECT_EQ(WriteMotHeader(*header), core);
}

TEST(Mot, ParametersOfAllLengths) {
    MotHeader header;
    header.bodySize = 100;
    header.contentType = kMotContentImage;
    header.contentSubtype = kMotImagePng;
    header.contentName = "0001.png";
    ByteVector parameters;
    AppendMotParameter(parameters, 1, {});
    AppendMotParameter(parameters, 2, ByteVector{9});
    AppendMotParameter(parameters, kMotParameterTriggerTime, ByteVector{0, 0, 0, 0});
    AppendMotParameter(parameters, 3, ByteVector(200, 0x22));
    const auto again = ParseMotHeader(WriteMotHeader(header, parameters));
    ASSERT_TRUE(again);
    EXPECT_EQ(again->contentName, "0001.png");
    EXPECT_EQ(again->contentNameCharset, 0);
    EXPECT_FALSE(again->compressed);
    AppendMotParameter(parameters, kMotParameterCompressionType, ByteVector{1});
    const auto compressed = ParseMotHeader(WriteMotHeader(header, parameters));
    ASSERT_TRUE(compressed);
    EXPECT_TRUE(compressed->compressed);
}

TEST(Mot, AHeaderWhoseLengthsDisagreeIsNone) {
    MotHeader header;
    header.contentName = "name.jpg";
    ByteVector bytes = WriteMotHeader(header);
    EXPECT_TRUE(ParseMotHeader(bytes));
    EXPECT_FALSE(ParseMotHeader(ByteSpan(bytes).first(bytes.size() - 1)));
    bytes[8] = 100; // length of the content name
    EXPECT_FALSE(ParseMotHeader(bytes));
    EXPECT_FALSE(ParseMotHeader(ByteSpan(bytes).first(6)));
}

TEST(Mot, Segments) {
    ByteVector bytes;
    AppendMotSegment(bytes, {2, ByteVector{1, 2, 3}});
    EXPECT_EQ(bytes, (ByteVector{0x40, 0x03, 1, 2, 3}));
    bytes.push_back(0); // padding
    const auto segment = ParseMotSegment(bytes);
    ASSERT_TRUE(segment);
    EXPECT_EQ(segment->repetition, 2);
    EXPECT_EQ(segment->data.size(), 3u);
    EXPECT_FALSE(ParseMotSegment(ByteSpan(bytes).first(4)));
}

TEST(MscDataGroup, FieldsAndCheckSum) {
    MscDataGroup group;
    group.type = kDataGroupMotBody;
    group.continuity = 5;
    group.repetition = 3;
    group.hasSegment = true;
    group.lastSegment = true;
    group.segment = 12;
    group.hasTransportId = true;
    group.transportId = 0x4711;
    const ByteVector data = {9, 8, 7};
    group.data = data;
    ByteVector bytes;
    AppendMscDataGroup(bytes, group);
    EXPECT_EQ(ByteVector(bytes.begin(), bytes.begin() + 7), (ByteVector{0x74, 0x53, 0x80, 0x0C, 0x12, 0x47, 0x11}));
    const auto again = ParseMscDataGroup(bytes);
    ASSERT_TRUE(again);
    EXPECT_EQ(again->segment, 12);
    EXPECT_TRUE(again->lastSegment);
    EXPECT_EQ(again->transportId, 0x4711);
    EXPECT_EQ(ByteVector(again->data.begin(), again->data.end()), data);
    bytes[8] ^= 1;
    EXPECT_FALSE(ParseMscDataGroup(bytes));
}

TEST(MscDataGroup, WithoutCheckSumAndWithAnExtensionField) {
    const auto group = ParseMscDataGroup(ByteVector{0x83, 0x00, 0xAA, 0xBB, 0x01});
    ASSERT_TRUE(group);
    EXPECT_EQ(group->type, 3);
    EXPECT_FALSE(group->hasSegment);
    EXPECT_EQ(group->data.size(), 1u);
    EXPECT_FALSE(ParseMscDataGroup(ByteVector{0x83, 0x00, 0xAA}));
    // A user access field too short for its identifier, with bytes behind it that are not the group's.
    const ByteVector longer = {0x14, 0x00, 0x11, 0x00, 0x00, 0x07};
    EXPECT_FALSE(ParseMscDataGroup(ByteSpan(longer).first(4)));
}

} // namespace
} // namespace wire
