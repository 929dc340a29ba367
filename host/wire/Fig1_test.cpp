#include "host/wire/Fig1.h"

#include <string>

#include <gtest/gtest.h>

namespace wire {
namespace {

ByteVector Bytes(const std::string& hex) {
    ByteVector bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
        bytes.push_back(static_cast<std::uint8_t>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    return bytes;
}

TEST(Fig1, EnsembleLabel) {
    const ByteVector data = Bytes("00e1a05445535420524144494f20384220202007f8");
    const auto label = ParseFig1(data);
    ASSERT_TRUE(label);
    EXPECT_EQ(label->target.of, LabelOf::Ensemble);
    EXPECT_EQ(label->target.id, 0xE1A0u);
    EXPECT_EQ(label->charset, 0);
    EXPECT_EQ(std::string(label->text.begin(), label->text.end()), "TEST RADIO 8B   ");
    EXPECT_EQ(label->shortMask, 0x07F8);
    ByteVector out;
    AppendFig1(out, *label);
    EXPECT_EQ(out, data);
}

TEST(Fig1, ProgrammeLabel) {
    const auto label = ParseFig1(Bytes("01e20153494e5553204b414e414c20564f4c4cf800"));
    ASSERT_TRUE(label);
    EXPECT_EQ(label->target.of, LabelOf::Programme);
    EXPECT_EQ(label->target.id, 0xE201u);
    EXPECT_EQ(label->text.back(), 'L');
}

TEST(Fig1, DataServiceLabelHasALongIdentifier) {
    Label label;
    label.target = {LabelOf::Data, 0xF1E00401, 0, true};
    label.text.fill(' ');
    ByteVector data;
    AppendFig1(data, label);
    EXPECT_EQ(data.size(), 23u);
    EXPECT_EQ(data[0], 0x05);
    const auto again = ParseFig1(data);
    ASSERT_TRUE(again);
    EXPECT_EQ(again->target, label.target);
}

TEST(Fig1, ComponentLabelsOfBothKinds) {
    for (const bool longId : {false, true}) {
        Label label;
        label.charset = 15;
        label.target = {LabelOf::Component, longId ? 0xF1E00401u : 0xE201u, 3, longId};
        ByteVector data;
        AppendFig1(data, label);
        const auto again = ParseFig1(data);
        ASSERT_TRUE(again);
        EXPECT_EQ(again->target, label.target);
        EXPECT_EQ(again->charset, 15);
    }
}

TEST(Fig1, LabelsOfOtherEnsemblesAndCutLabelsAreNone) {
    ByteVector data = Bytes("01e20153494e5553204b414e414c20564f4c4cf800");
    EXPECT_FALSE(ParseFig1(ByteSpan(data).first(20)));
    EXPECT_FALSE(ParseFig1({}));
    data[0] = 0x09;
    EXPECT_FALSE(ParseFig1(data));
    data[0] = 0x02;
    EXPECT_FALSE(ParseFig1(data));
}

TEST(Fig2, AForeignLabelInTwoSegments) {
    const ByteVector first = Bytes("09e20310ed959ceab5adebb0a9ec86a120eb9dbc");
    const ByteVector second = Bytes("19e203eb9494ec98a4");
    const auto a = ParseFig2(first);
    const auto b = ParseFig2(second);
    ASSERT_TRUE(a);
    ASSERT_TRUE(b);
    EXPECT_EQ(a->target.id, 0xE203u);
    EXPECT_EQ(a->segment, 0);
    EXPECT_EQ(a->segmentCount, 2);
    EXPECT_FALSE(a->ucs2);
    EXPECT_EQ(b->segment, 1);
    std::string text(a->text.begin(), a->text.end());
    text.append(b->text.begin(), b->text.end());
    EXPECT_EQ(text, "한국방송 라디오");
    ByteVector out;
    AppendFig2(out, *a);
    EXPECT_EQ(out, first);
    out.clear();
    AppendFig2(out, *b);
    EXPECT_EQ(out, second);
}

TEST(Fig2, CharacterFlagsAreSkipped) {
    const ByteVector data = Bytes("01e20300f0004142");
    const auto segment = ParseFig2(data);
    ASSERT_TRUE(segment);
    EXPECT_EQ(std::string(segment->text.begin(), segment->text.end()), "AB");
    EXPECT_FALSE(ParseFig2(Bytes("01e20300f000")));
}

} // namespace
} // namespace wire
