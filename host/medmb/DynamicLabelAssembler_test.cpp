#include <gtest/gtest.h>

#include "host/medmb/DynamicLabelAssembler.h"
#include "tests/medmb/PadParts.h"

namespace medmb {
namespace {

using namespace medmb_test;

std::optional<std::string> Push(DynamicLabelAssembler& assembler, const ByteVector& segment) {
    const auto parsed = wire::ParseDynamicLabelSegment(segment);
    const auto text = parsed ? assembler.Push(*parsed) : std::nullopt;
    if (!text)
        return std::nullopt;
    return std::string(text->bytes.begin(), text->bytes.end());
}

const std::string kLong = "0123456789ABCDEF-second segment-and the third one";

TEST(DynamicLabelAssembler, SegmentsInAnyOrderAndOnce) {
    const auto segments = LabelSegments(kLong, false);
    ASSERT_EQ(segments.size(), 4u);
    DynamicLabelAssembler assembler;
    EXPECT_FALSE(Push(assembler, segments[3]));
    EXPECT_FALSE(Push(assembler, segments[1]));
    EXPECT_FALSE(Push(assembler, segments[0]));
    EXPECT_EQ(Push(assembler, segments[2]), kLong);
    for (const ByteVector& segment : segments)
        EXPECT_FALSE(Push(assembler, segment));
}

TEST(DynamicLabelAssembler, TheToggleBitBeginsANewLabel) {
    DynamicLabelAssembler assembler;
    const auto old = LabelSegments(kLong, false);
    EXPECT_FALSE(Push(assembler, old[0]));
    EXPECT_FALSE(Push(assembler, old[1]));
    const auto next = LabelSegments("short", true);
    EXPECT_EQ(Push(assembler, next[0]), "short");
    // The rest of the old one no longer finds its beginning.
    EXPECT_FALSE(Push(assembler, old[2]));
    EXPECT_FALSE(Push(assembler, old[3]));
}

TEST(DynamicLabelAssembler, TwoTogglesMissedDoNotMixTwoTexts) {
    DynamicLabelAssembler assembler;
    const auto old = LabelSegments("0123456789ABCDEF-old text", false);
    const auto now = LabelSegments("FEDCBA9876543210-new text", false);
    EXPECT_FALSE(Push(assembler, old[0]));
    EXPECT_FALSE(Push(assembler, now[0]));
    EXPECT_EQ(Push(assembler, now[1]), "FEDCBA9876543210-new text");
}

TEST(DynamicLabelAssembler, ATextThatComesBackIsNewAndARepeatedOneIsNot) {
    DynamicLabelAssembler assembler;
    EXPECT_EQ(Push(assembler, LabelSegments("one", false)[0]), "one");
    EXPECT_EQ(Push(assembler, LabelSegments("two", true)[0]), "two");
    EXPECT_EQ(Push(assembler, LabelSegments("one", false)[0]), "one");
    EXPECT_FALSE(Push(assembler, LabelSegments("one", true)[0]));
}

TEST(DynamicLabelAssembler, CommandsNeverReachTheText) {
    DynamicLabelAssembler assembler;
    EXPECT_EQ(Push(assembler, LabelSegments("one", false)[0]), "one");
    DynamicLabelSegment plus;
    plus.first = plus.last = plus.isCommand = true;
    plus.command = wire::kLabelCommandDlPlus;
    const ByteVector tags = Bytes("\x01\x04");
    plus.text = tags;
    ByteVector bytes;
    wire::AppendDynamicLabelSegment(bytes, plus);
    EXPECT_FALSE(Push(assembler, bytes));
    DynamicLabelSegment remove = plus;
    remove.command = wire::kLabelCommandRemove;
    remove.text = {};
    bytes.clear();
    wire::AppendDynamicLabelSegment(bytes, remove);
    EXPECT_FALSE(Push(assembler, bytes));
    // After "remove" the same text is shown again.
    EXPECT_EQ(Push(assembler, LabelSegments("one", false)[0]), "one");
}

} // namespace
} // namespace medmb
