// The X-PAD that carries labels and slides.
#include <gtest/gtest.h>

#include "host/medmb/PadDecoder.h"
#include "tests/medmb/PadParts.h"

namespace medmb {
namespace {

using namespace medmb_test;

// An audio frame that is nothing but PAD at its end.
ByteVector AudioFrame(const ByteVector& xPad, wire::XPadKind kind, bool indicators) {
    ByteVector frame(300, 0x11);
    constexpr std::size_t kScfCrc = 4;
    const std::size_t end = frame.size() - wire::kFPadBytes - kScfCrc;
    for (std::size_t i = 0; i < xPad.size(); ++i)
        frame[end - 1 - i] = xPad[i];
    const auto fPad = wire::WriteFPad({0, kind, indicators});
    frame[frame.size() - 2] = fPad[0];
    frame[frame.size() - 1] = fPad[1];
    return frame;
}

std::vector<std::string> Texts(const std::vector<PadEvent>& events) {
    std::vector<std::string> texts;
    for (const PadEvent& event : events)
        if (const auto* text = std::get_if<DynamicLabelText>(&event))
            texts.emplace_back(text->bytes.begin(), text->bytes.end());
    return texts;
}

ByteVector Join(std::initializer_list<ByteVector> parts, std::size_t size = 0) {
    ByteVector whole;
    for (const ByteVector& part : parts)
        wire::AppendBytes(whole, part);
    whole.resize(std::max(size, whole.size()), 0);
    return whole;
}

ByteVector Part(const ByteVector& bytes, std::size_t from, std::size_t length) {
    ByteVector part;
    for (std::size_t i = from; i < from + length; ++i)
        part.push_back(i < bytes.size() ? bytes[i] : 0);
    return part;
}

TEST(PadDecoder, ShortXPadWithAndWithoutIndicator) {
    const ByteVector segment = LabelSegments("short", false)[0]; // 9 bytes
    PadDecoder pad;
    EXPECT_TRUE(
        pad.Push(AudioFrame(Join({{wire::kXPadLabelStart}, Part(segment, 0, 3)}), wire::XPadKind::Short, true), 4)
            .empty());
    // A frame without X-PAD between does not end the group.
    EXPECT_TRUE(pad.Push(AudioFrame({}, wire::XPadKind::None, false), 4).empty());
    EXPECT_TRUE(pad.Push(AudioFrame(Part(segment, 3, 4), wire::XPadKind::Short, false), 4).empty());
    EXPECT_EQ(Texts(pad.Push(AudioFrame(Part(segment, 7, 4), wire::XPadKind::Short, false), 4)),
              std::vector<std::string>{"short"});
}

TEST(PadDecoder, VariableXPadContinuesTheLastApplicationWithoutIndicators) {
    const ByteVector segment = LabelSegments("a longer text..", false)[0]; // 19 bytes
    PadDecoder pad;
    // (6, 2), end marker: eight bytes in all, and so is the next.
    const ByteVector first = Join({{wire::WriteContentsIndicator({wire::kXPadLabelStart, 6}), 0}, Part(segment, 0, 6)});
    EXPECT_TRUE(pad.Push(AudioFrame(first, wire::XPadKind::Variable, true), 4).empty());
    EXPECT_TRUE(pad.Push(AudioFrame(Part(segment, 6, 8), wire::XPadKind::Variable, false), 4).empty());
    EXPECT_EQ(Texts(pad.Push(AudioFrame(Part(segment, 14, 8), wire::XPadKind::Variable, false), 4)),
              std::vector<std::string>{"a longer text.."});
}

TEST(PadDecoder, AStartAndItsContinuationTwiceInOneXPad) {
    const ByteVector one = LabelSegments("0123456789ABCDEF", false)[0]; // 20 bytes
    const ByteVector two = LabelSegments("FEDCBA9876543210", true)[0];
    const ByteVector indicators = {wire::WriteContentsIndicator({2, 16}), wire::WriteContentsIndicator({3, 4}),
                                   wire::WriteContentsIndicator({2, 16}), wire::WriteContentsIndicator({3, 4})};
    PadDecoder pad;
    const auto events = pad.Push(AudioFrame(Join({indicators, one, two}), wire::XPadKind::Variable, true), 4);
    EXPECT_EQ(Texts(events), (std::vector<std::string>{"0123456789ABCDEF", "FEDCBA9876543210"}));
}

TEST(PadDecoder, AfterAGapNothingIsContinued) {
    const ByteVector segment = LabelSegments("short", false)[0];
    PadDecoder pad;
    (void)pad.Push(AudioFrame(Join({{wire::kXPadLabelStart}, Part(segment, 0, 3)}), wire::XPadKind::Short, true), 4);
    pad.Gap();
    EXPECT_TRUE(pad.Push(AudioFrame(Part(segment, 3, 4), wire::XPadKind::Short, false), 4).empty());
    EXPECT_TRUE(pad.Push(AudioFrame(Part(segment, 7, 4), wire::XPadKind::Short, false), 4).empty());
}

// Sends groups through X-PADs of (4,1) (48,12) and continuations without indicators.
std::vector<std::string> SendGroups(PadDecoder& pad, const std::vector<ByteVector>& groups, bool announce, int type) {
    std::vector<std::string> names;
    const auto take = [&](const std::vector<PadEvent>& events) {
        for (const PadEvent& event : events)
            if (const auto* object = std::get_if<MotObject>(&event))
                names.push_back(object->Name());
    };
    for (const ByteVector& group : groups) {
        ByteVector indicators;
        ByteVector length;
        if (announce) {
            indicators.push_back(wire::WriteContentsIndicator({wire::kXPadDataGroupLength, 4}));
            wire::AppendDataGroupLength(length, group.size());
        }
        indicators.push_back(wire::WriteContentsIndicator({type, 48}));
        indicators.push_back(0);
        const ByteVector first = Join({indicators, length, Part(group, 0, 48)});
        take(pad.Push(AudioFrame(first, wire::XPadKind::Variable, true), 4));
        for (std::size_t at = 48; at < group.size(); at += first.size())
            take(pad.Push(AudioFrame(Part(group, at, first.size()), wire::XPadKind::Variable, false), 4));
    }
    return names;
}

TEST(PadDecoder, SlidesWithAndWithoutLengthIndicator) {
    for (const bool announce : {true, false}) {
        PadDecoder pad;
        const Sent sent = MakeObject(1, "a.jpg", Body(1, 350));
        EXPECT_TRUE(SendGroups(pad, sent.header, announce, 12).empty());
        EXPECT_EQ(SendGroups(pad, sent.body, announce, 12), std::vector<std::string>{"a.jpg"}) << announce;
        EXPECT_EQ(pad.Count().dataGroupErrors, 0u);
    }
}

TEST(PadDecoder, TheSignalledTypeCarriesTheSlideshow) {
    PadDecoder pad;
    pad.SetSlideshowType(16);
    const Sent sent = MakeObject(1, "a.jpg", Body(1, 350));
    EXPECT_TRUE(SendGroups(pad, sent.header, true, 12).empty());
    EXPECT_TRUE(SendGroups(pad, sent.body, true, 12).empty());
    (void)SendGroups(pad, sent.header, true, 16);
    EXPECT_EQ(SendGroups(pad, sent.body, true, 16).size(), 1u);
}

TEST(PadDecoder, AnotherApplicationsLengthIsNotTheSlideshows) {
    PadDecoder pad;
    const Sent sent = MakeObject(1, "a.jpg", Body(1, 350));
    const ByteVector other(40, 0x55);
    (void)SendGroups(pad, {other}, true, 14);
    EXPECT_TRUE(SendGroups(pad, sent.header, false, 12).empty());
    EXPECT_EQ(SendGroups(pad, sent.body, false, 12).size(), 1u);
    EXPECT_EQ(pad.Count().dataGroupErrors, 0u);
}

TEST(PadDecoder, DataGroupsWithoutCheckSum) {
    PadDecoder pad;
    Sent sent = MakeObject(1, "a.jpg", Body(1, 350));
    for (std::vector<ByteVector>* groups : {&sent.header, &sent.body})
        for (ByteVector& group : *groups) {
            group[0] &= 0xBF;
            group.resize(group.size() - 2);
        }
    for (const bool announce : {true, false}) {
        pad.Reset();
        EXPECT_TRUE(SendGroups(pad, sent.header, announce, 12).empty());
        EXPECT_EQ(SendGroups(pad, sent.body, announce, 12).size(), 1u) << announce;
    }
    EXPECT_EQ(pad.Count().dataGroupErrors, 0u);
}

TEST(PadDecoder, IndicatorsLongerThanTheFrameAreDamage) {
    ByteVector small(60, 0x11);
    const ByteVector indicators = {0xEC, 0xEC, 0xEC, 0xEC}; // four times 48 bytes
    for (std::size_t i = 0; i < indicators.size(); ++i)
        small[small.size() - 7 - i] = indicators[i];
    small[58] = 0x20;
    small[59] = 0x02;
    PadDecoder pad;
    EXPECT_TRUE(pad.Push(small, 4).empty());
    EXPECT_TRUE(pad.Push(ByteVector(5, 0), 4).empty());
}

} // namespace
} // namespace medmb
