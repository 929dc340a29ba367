#include "host/wire/Pad.h"

#include <string>

#include <gtest/gtest.h>

#include "host/wire/DynamicLabel.h"

namespace wire {
namespace {

TEST(Pad, FPadAsSeenOnAir) {
    EXPECT_EQ(ParseFPad(0x00, 0x00).xPad, XPadKind::None);
    EXPECT_EQ(ParseFPad(0x10, 0x02).xPad, XPadKind::Short);
    EXPECT_TRUE(ParseFPad(0x10, 0x02).contentsIndicator);
    EXPECT_FALSE(ParseFPad(0x10, 0x00).contentsIndicator);
    EXPECT_EQ(ParseFPad(0x20, 0x02).xPad, XPadKind::Variable);
    EXPECT_EQ(ParseFPad(0x30, 0x02).xPad, XPadKind::None);
    EXPECT_EQ(ParseFPad(0x80, 0x00).type, 2);
    const auto bytes = WriteFPad({0, XPadKind::Variable, true});
    EXPECT_EQ(bytes[0], 0x20);
    EXPECT_EQ(bytes[1], 0x02);
}

TEST(Pad, ContentsIndicatorsEndAtTheMarkerOrAtFour) {
    // (16,2) (4,3), end.
    const auto two = ParseContentsIndicators(ByteVector{0x82, 0x03, 0x00, 0xAA});
    EXPECT_EQ(two.count, 2u);
    EXPECT_EQ(two.items[0].type, 2);
    EXPECT_EQ(two.items[0].length, 16u);
    EXPECT_EQ(two.items[1].length, 4u);
    EXPECT_EQ(two.listBytes, 3u);
    EXPECT_EQ(two.TotalBytes(), 23u);
    const auto four = ParseContentsIndicators(ByteVector{0x01, 0xEC, 0x82, 0x03, 0x55});
    EXPECT_EQ(four.count, 4u);
    EXPECT_EQ(four.listBytes, 4u);
    EXPECT_EQ(four.items[1].length, 48u);
    const auto none = ParseContentsIndicators(ByteVector{0x00});
    EXPECT_EQ(none.count, 0u);
    EXPECT_EQ(none.listBytes, 1u);
    for (const std::size_t length : kXPadLengths) {
        const ByteVector byte = {WriteContentsIndicator({13, length}), 0};
        const auto list = ParseContentsIndicators(byte);
        EXPECT_EQ(list.items[0].length, length);
        EXPECT_EQ(list.items[0].type, 13);
    }
}

TEST(Pad, DataGroupLengthIndicator) {
    ByteVector bytes;
    AppendDataGroupLength(bytes, 1024);
    ASSERT_EQ(bytes.size(), 4u);
    EXPECT_EQ(ParseDataGroupLength(bytes), 1024u);
    bytes[1] ^= 1;
    EXPECT_FALSE(ParseDataGroupLength(bytes));
    EXPECT_FALSE(ParseDataGroupLength(ByteSpan(bytes).first(3)));
}

TEST(DynamicLabel, FirstSegmentCarriesTheCharset) {
    DynamicLabelSegment segment;
    segment.toggle = true;
    segment.first = true;
    segment.charset = 15;
    const std::string text = "0123456789ABCDEF";
    const ByteVector bytes(text.begin(), text.end());
    segment.text = bytes;
    ByteVector out;
    AppendDynamicLabelSegment(out, segment);
    EXPECT_EQ(out.size(), 20u);
    EXPECT_EQ(out[0], 0xCF);
    EXPECT_EQ(out[1], 0xF0);
    out.push_back(0x00); // padding of the subfield
    const auto again = ParseDynamicLabelSegment(out);
    ASSERT_TRUE(again);
    EXPECT_TRUE(again->toggle);
    EXPECT_TRUE(again->first);
    EXPECT_FALSE(again->last);
    EXPECT_EQ(again->charset, 15);
    EXPECT_EQ(again->text.size(), 16u);
}

TEST(DynamicLabel, LaterSegmentsCarryTheirNumber) {
    DynamicLabelSegment segment;
    segment.last = true;
    segment.segment = 5;
    const ByteVector text = {'x'};
    segment.text = text;
    ByteVector out;
    AppendDynamicLabelSegment(out, segment);
    EXPECT_EQ(out[0], 0x20);
    EXPECT_EQ(out[1], 0x50);
    const auto again = ParseDynamicLabelSegment(out);
    ASSERT_TRUE(again);
    EXPECT_EQ(again->segment, 5);
    EXPECT_TRUE(again->last);
}

TEST(DynamicLabel, CommandsAreNoText) {
    DynamicLabelSegment remove;
    remove.first = remove.last = true;
    remove.isCommand = true;
    remove.command = kLabelCommandRemove;
    ByteVector out;
    AppendDynamicLabelSegment(out, remove);
    EXPECT_EQ(out.size(), 4u);
    auto again = ParseDynamicLabelSegment(out);
    ASSERT_TRUE(again);
    EXPECT_EQ(again->command, kLabelCommandRemove);
    EXPECT_TRUE(again->text.empty());

    DynamicLabelSegment plus = remove;
    plus.command = kLabelCommandDlPlus;
    const ByteVector tags = {0x01, 0x04, 0x00, 0x0B, 0x01, 0x0F, 0x07};
    plus.text = tags;
    out.clear();
    AppendDynamicLabelSegment(out, plus);
    EXPECT_EQ(DynamicLabelSegmentBytes(out[0], out[1]), out.size());
    again = ParseDynamicLabelSegment(out);
    ASSERT_TRUE(again);
    EXPECT_EQ(again->command, kLabelCommandDlPlus);
    EXPECT_EQ(again->text.size(), 7u);
}

TEST(DynamicLabel, AWrongCheckSumIsNoSegment) {
    DynamicLabelSegment segment;
    segment.first = true;
    const ByteVector text = {'a', 'b'};
    segment.text = text;
    ByteVector out;
    AppendDynamicLabelSegment(out, segment);
    for (std::uint8_t& byte : out) {
        byte ^= 0x20;
        EXPECT_FALSE(ParseDynamicLabelSegment(out) && ParseDynamicLabelSegment(out)->text.size() == 2);
        byte ^= 0x20;
    }
    EXPECT_FALSE(ParseDynamicLabelSegment(ByteSpan(out).first(3)));
}

} // namespace
} // namespace wire
