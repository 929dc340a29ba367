// Dynamic label, MOT and the X-PAD that carries both.
#include <gtest/gtest.h>

#include "host/medmb/PadDecoder.h"
#include "host/medmb/RadioChannel.h"

namespace medmb {
namespace {

using wire::ByteVector;
using wire::DynamicLabelSegment;

ByteVector Bytes(std::string_view text) {
    return {text.begin(), text.end()};
}

std::vector<ByteVector> LabelSegments(const std::string& text, bool toggle, int charset = 15) {
    std::vector<ByteVector> segments;
    const ByteVector bytes = Bytes(text);
    for (std::size_t at = 0; at < bytes.size(); at += wire::kLabelSegmentBytes) {
        DynamicLabelSegment segment;
        segment.toggle = toggle;
        segment.first = at == 0;
        segment.last = at + wire::kLabelSegmentBytes >= bytes.size();
        segment.charset = charset;
        segment.segment = static_cast<int>(at / wire::kLabelSegmentBytes);
        segment.text = wire::ByteSpan(bytes).subspan(at, std::min(wire::kLabelSegmentBytes, bytes.size() - at));
        segments.emplace_back();
        wire::AppendDynamicLabelSegment(segments.back(), segment);
    }
    return segments;
}

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

struct Sent {
    std::vector<ByteVector> header;
    std::vector<ByteVector> body;
};

Sent MakeObject(std::uint16_t id, const std::string& name, const ByteVector& body, std::size_t segmentBytes = 100,
                bool compressed = false) {
    wire::MotHeader header;
    header.bodySize = body.size();
    header.contentType = wire::kMotContentImage;
    header.contentSubtype = wire::kMotImageJfif;
    header.contentName = name;
    ByteVector parameters;
    if (compressed)
        wire::AppendMotParameter(parameters, wire::kMotParameterCompressionType, ByteVector{1});
    const auto split = [&](const ByteVector& data, int type) {
        std::vector<ByteVector> groups;
        for (std::size_t at = 0; at < data.size(); at += segmentBytes) {
            ByteVector segment;
            wire::AppendMotSegment(segment,
                                   {0, wire::ByteSpan(data).subspan(at, std::min(segmentBytes, data.size() - at))});
            wire::MscDataGroup group;
            group.type = type;
            group.hasSegment = group.hasTransportId = true;
            group.segment = static_cast<int>(at / segmentBytes);
            group.lastSegment = at + segmentBytes >= data.size();
            group.transportId = id;
            group.data = segment;
            groups.emplace_back();
            wire::AppendMscDataGroup(groups.back(), group);
        }
        return groups;
    };
    return {split(wire::WriteMotHeader(header, parameters), wire::kDataGroupMotHeader),
            split(body, wire::kDataGroupMotBody)};
}

std::optional<MotObject> PushGroup(MotAssembler& assembler, const ByteVector& bytes) {
    const auto group = wire::ParseMscDataGroup(bytes);
    return group ? assembler.Push(*group) : std::nullopt;
}

ByteVector Body(int seed, std::size_t size) {
    ByteVector body(size);
    for (std::size_t i = 0; i < size; ++i)
        body[i] = static_cast<std::uint8_t>(seed * 31 + static_cast<int>(i) * 7);
    return body;
}

TEST(MotAssembler, HeaderAndSegmentsInAnyOrder) {
    const Sent sent = MakeObject(1, "a.jpg", Body(1, 450));
    std::vector<ByteVector> groups = sent.body;
    groups.push_back(sent.header[0]);
    for (std::size_t turn = 0; turn < groups.size(); ++turn) {
        MotAssembler assembler;
        std::rotate(groups.begin(), groups.begin() + 1, groups.end());
        for (std::size_t i = 0; i + 1 < groups.size(); ++i)
            EXPECT_FALSE(PushGroup(assembler, groups[i]));
        const auto object = PushGroup(assembler, groups.back());
        ASSERT_TRUE(object);
        EXPECT_EQ(object->Name(), "a.jpg");
        EXPECT_EQ(object->body, Body(1, 450));
    }
}

TEST(MotAssembler, SeveralObjectsAtOnce) {
    const Sent a = MakeObject(1, "a.jpg", Body(1, 350));
    const Sent b = MakeObject(2, "b.jpg", Body(2, 350));
    MotAssembler assembler;
    EXPECT_FALSE(PushGroup(assembler, a.header[0]));
    EXPECT_FALSE(PushGroup(assembler, b.header[0]));
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_FALSE(PushGroup(assembler, a.body[i]));
        EXPECT_FALSE(PushGroup(assembler, b.body[i]));
    }
    EXPECT_EQ(PushGroup(assembler, b.body[3])->Name(), "b.jpg");
    EXPECT_EQ(PushGroup(assembler, a.body[3])->Name(), "a.jpg");
}

TEST(MotAssembler, EachObjectOnceUntilAnotherCameBetween) {
    const Sent a = MakeObject(1, "a.jpg", Body(1, 350));
    const Sent b = MakeObject(2, "b.jpg", Body(2, 350));
    MotAssembler assembler;
    const auto send = [&](const Sent& sent) {
        int count = 0;
        for (const auto& part : {sent.header, sent.body})
            for (const ByteVector& group : part)
                count += PushGroup(assembler, group) ? 1 : 0;
        return count;
    };
    EXPECT_EQ(send(a), 1);
    EXPECT_EQ(send(a), 0);
    EXPECT_EQ(send(b), 1);
    EXPECT_EQ(send(a), 1);
}

TEST(MotAssembler, ABodyOfAnotherSizeThanTheHeaderSaysIsNoObject) {
    const Sent a = MakeObject(1, "a.jpg", Body(1, 350));
    const Sent other = MakeObject(1, "a.jpg", Body(1, 340));
    MotAssembler assembler;
    EXPECT_FALSE(PushGroup(assembler, a.header[0]));
    for (const ByteVector& group : other.body)
        EXPECT_FALSE(PushGroup(assembler, group));
}

TEST(MotAssembler, ANewObjectUnderAnOldIdentifierBeginsAnew) {
    const Sent old = MakeObject(1, "old.jpg", Body(1, 350));
    const Sent now = MakeObject(1, "new.jpg", Body(2, 350));
    MotAssembler assembler;
    EXPECT_FALSE(PushGroup(assembler, old.header[0]));
    EXPECT_FALSE(PushGroup(assembler, old.body[0]));
    EXPECT_FALSE(PushGroup(assembler, now.header[0]));
    std::optional<MotObject> object;
    for (const ByteVector& group : now.body)
        object = PushGroup(assembler, group);
    ASSERT_TRUE(object);
    EXPECT_EQ(object->Name(), "new.jpg");
    EXPECT_EQ(object->body, Body(2, 350));
}

TEST(MotAssembler, TheTailFromBeforeTuningInIsNotMixedWithTheNextTurn) {
    const Sent a = MakeObject(1, "a.jpg", Body(1, 350));
    const Sent b = MakeObject(2, "b.jpg", Body(2, 350));
    MotAssembler assembler;
    EXPECT_FALSE(PushGroup(assembler, a.body[3]));
    EXPECT_FALSE(PushGroup(assembler, b.header[0]));
    for (const ByteVector& group : b.body)
        (void)PushGroup(assembler, group);
    EXPECT_FALSE(PushGroup(assembler, a.header[0]));
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_FALSE(PushGroup(assembler, a.body[i]));
    EXPECT_TRUE(PushGroup(assembler, a.body[3]));
}

TEST(MotAssembler, TwoObjectsInterleavedWithTheirHeadersInTheMiddle) {
    const Sent a = MakeObject(1, "a.jpg", Body(1, 350));
    const Sent b = MakeObject(2, "b.jpg", Body(2, 350));
    MotAssembler assembler;
    for (const std::size_t i : {3u, 0u}) {
        EXPECT_FALSE(PushGroup(assembler, a.body[i]));
        EXPECT_FALSE(PushGroup(assembler, b.body[i]));
    }
    EXPECT_FALSE(PushGroup(assembler, b.header[0]));
    EXPECT_FALSE(PushGroup(assembler, b.body[1]));
    EXPECT_FALSE(PushGroup(assembler, a.body[1]));
    EXPECT_EQ(PushGroup(assembler, b.body[2])->Name(), "b.jpg");
    EXPECT_FALSE(PushGroup(assembler, a.header[0]));
    EXPECT_EQ(PushGroup(assembler, a.body[2])->Name(), "a.jpg");
}

TEST(MotAssembler, TheTailOfAnOldObjectDoesNotCostTheNewOneItsTurn) {
    // Every object has the same identifier here, as some encoders do it.
    for (const std::size_t size : {349u, 250u}) {
        const Sent old = MakeObject(1, "old.jpg", Body(1, 350));
        const Sent now = MakeObject(1, "new.jpg", Body(2, size));
        MotAssembler assembler;
        EXPECT_FALSE(PushGroup(assembler, old.body[2]));
        EXPECT_FALSE(PushGroup(assembler, old.body[3]));
        EXPECT_FALSE(PushGroup(assembler, now.header[0]));
        std::optional<MotObject> object;
        for (const ByteVector& group : now.body)
            object = PushGroup(assembler, group);
        ASSERT_TRUE(object) << size;
        EXPECT_EQ(object->Name(), "new.jpg");
        EXPECT_EQ(object->body, Body(2, size));
    }
}

TEST(MotAssembler, ManyUnfinishedObjectsAreBounded) {
    MotAssembler assembler;
    for (int id = 0; id < 1000; ++id)
        EXPECT_FALSE(
            PushGroup(assembler, MakeObject(static_cast<std::uint16_t>(id), "x", Body(id, 8000), 8000 / 2).body[0]));
    const Sent last = MakeObject(999, "last.jpg", Body(999, 8000), 8000 / 2);
    EXPECT_FALSE(PushGroup(assembler, last.header[0]));
    EXPECT_TRUE(PushGroup(assembler, last.body[1]));
}

TEST(MotAssembler, WhatIsRefusedHasAReason) {
    wire::MotHeader header;
    header.contentType = wire::kMotContentImage;
    header.contentSubtype = wire::kMotImageJfif;
    EXPECT_EQ(RefuseSlide(header), "");
    header.contentSubtype = wire::kMotImagePng;
    EXPECT_NE(RefuseSlide(header).find("PNG"), std::string::npos);
    header.contentSubtype = wire::kMotImageJfif;
    header.compressed = true;
    EXPECT_NE(RefuseSlide(header).find("compressed"), std::string::npos);
    header.compressed = false;
    header.contentType = 1;
    EXPECT_NE(RefuseSlide(header), "");
    header.contentType = wire::kMotContentGeneral;
    EXPECT_NE(RefuseSlide(header), "");
    header.mimeType = "image/jpeg";
    EXPECT_EQ(RefuseSlide(header), "");
    header.mimeType = "image/png";
    EXPECT_NE(RefuseSlide(header).find("image/png"), std::string::npos);
}

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

TEST(RadioChannel, FindsTheFirstHalfOfATwentyFourKilohertzFrame) {
    ByteVector whole(384, 0);
    const ByteVector header = {0xFF, 0xF4, 0x84, 0xC0};
    std::copy(header.begin(), header.end(), whole.begin());
    // All allocations zero: the check sum covers two header bytes and 75 bits of zeros.
    const std::uint16_t crc = wire::AudioCrc(whole, 48, 4 * 4 + 7 * 3 + 19 * 2, wire::AudioCrc(whole, 16, 16));
    wire::Put16(whole, 4, crc);
    const ByteVector first(whole.begin(), whole.begin() + 192);
    const ByteVector second(whole.begin() + 192, whole.end());
    RadioChannel radio;
    EXPECT_FALSE(radio.Push(second));
    EXPECT_FALSE(radio.Push(first));
    auto frame = radio.Push(second);
    ASSERT_TRUE(frame);
    EXPECT_FALSE(frame->damaged);
    EXPECT_EQ(frame->bytes.size(), 384u);
    // A lost half: the next whole one is found again.
    EXPECT_FALSE(radio.Push(first));
    radio.Gap();
    EXPECT_FALSE(radio.Push(second));
    EXPECT_FALSE(radio.Push(first));
    frame = radio.Push(second);
    ASSERT_TRUE(frame);
    EXPECT_FALSE(frame->damaged);
    // Damaged, and told so.
    ByteVector wrong = first;
    wrong[7] ^= 0x80;
    EXPECT_FALSE(radio.Push(wrong));
    frame = radio.Push(second);
    ASSERT_TRUE(frame);
    EXPECT_TRUE(frame->damaged);
    EXPECT_EQ(radio.Count().bad, 1u);
}

TEST(RadioChannel, FramesWithoutCheckSumAreBelievedWhenThereIsNoOtherKind) {
    ByteVector without(384, 0);
    const ByteVector header = {0xFF, 0xFD, 0x84, 0x00};
    std::copy(header.begin(), header.end(), without.begin());
    RadioChannel radio;
    for (int i = 0; i < 3; ++i)
        EXPECT_FALSE(radio.Push(without)->damaged);
    // In a stream with check sums the missing one is a wrong bit.
    ByteVector with = without;
    with[1] = 0xFC;
    const std::size_t bits = 2 * (11 * 4 + 12 * 3 + 4 * 2);
    wire::Put16(with, 4, wire::AudioCrc(with, 48, bits, wire::AudioCrc(with, 16, 16)));
    EXPECT_FALSE(radio.Push(with)->damaged);
    EXPECT_TRUE(radio.Push(without)->damaged);
    EXPECT_FALSE(radio.Push(with)->damaged);
}

} // namespace
} // namespace medmb
