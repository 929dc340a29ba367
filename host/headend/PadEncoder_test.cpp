#include "host/headend/PadEncoder.h"

#include <map>
#include <set>

#include <gtest/gtest.h>

#include "host/wire/DynamicLabel.h"
#include "host/wire/Mot.h"

namespace {

using headend::PadSettings;
using wire::ByteVector;

// A frame's end taken apart as EN 300 401 7.4 tells it, step by step and with state of its own.
class Reader {
public:
    void Take(const ByteVector& frame, std::size_t scfCrcBytes) {
        const std::size_t end = frame.size() - 2;
        const wire::FPad fPad = wire::ParseFPad(frame[end], frame[end + 1]);
        if (fPad.xPad == wire::XPadKind::None)
            return;
        ++frames;
        ByteVector logical(frame.rend() - static_cast<std::ptrdiff_t>(end - scfCrcBytes), frame.rend());
        if (fPad.xPad == wire::XPadKind::Short) {
            logical.resize(4);
            if (fPad.contentsIndicator)
                Subfield(logical[0] & 0x1F, wire::ByteSpan(logical).subspan(1));
            else
                Subfield(Continued(lastType), logical);
            return;
        }
        if (!fPad.contentsIndicator) {
            ++withoutIndicators;
            Subfield(Continued(lastType), wire::ByteSpan(logical).first(lastTotal));
            return;
        }
        const auto list = wire::ParseContentsIndicators(logical);
        lastTotal = list.TotalBytes();
        largest = std::max(largest, lastTotal);
        std::size_t at = list.listBytes;
        for (std::size_t i = 0; i < list.count; ++i) {
            Subfield(list.items[i].type, wire::ByteSpan(logical).subspan(at, list.items[i].length));
            at += list.items[i].length;
        }
    }

    std::vector<std::pair<bool, ByteVector>> texts; // toggle, bytes
    std::vector<int> charsets;
    int removals = 0;
    std::vector<ByteVector> dlPlus;
    std::map<int, ByteVector> bodies; // by transport id, when complete
    std::map<int, wire::MotHeader> headers;
    int damagedGroups = 0;
    int frames = 0;
    int withoutIndicators = 0;
    std::size_t largest = 0;

private:
    static int Continued(int type) {
        return type == wire::kXPadLabelStart || type == wire::kXPadMotStart ? type + 1 : type;
    }

    void Subfield(int type, wire::ByteSpan bytes) {
        lastType = type;
        switch (type) {
        case wire::kXPadDataGroupLength:
            groupSize = wire::ParseDataGroupLength(bytes).value_or(0);
            return;
        case wire::kXPadLabelStart:
            label.clear();
            [[fallthrough]];
        case wire::kXPadLabelStart + 1:
            wire::AppendBytes(label, bytes);
            if (label.size() >= 2 && label.size() >= wire::DynamicLabelSegmentBytes(label[0], label[1]) &&
                !labelDone(label))
                Label();
            return;
        case wire::kXPadMotStart:
            group.clear();
            [[fallthrough]];
        case wire::kXPadMotStart + 1:
            if (groupSize == 0)
                return;
            wire::AppendBytes(group, bytes);
            if (group.size() >= groupSize)
                Group();
            return;
        default:
            ADD_FAILURE() << "application type " << type;
        }
    }

    static bool labelDone(const ByteVector& bytes) { return bytes.size() > 64; }

    void Label() {
        const ByteVector whole = label;
        label.assign(65, 0); // nothing more of it
        const auto segment = wire::ParseDynamicLabelSegment(whole);
        ASSERT_TRUE(segment);
        if (segment->isCommand) {
            if (segment->command == wire::kLabelCommandRemove)
                ++removals;
            else
                dlPlus.emplace_back(segment->text.begin(), segment->text.end());
            return;
        }
        if (segment->first) {
            text.clear();
            charset = segment->charset;
        }
        wire::AppendBytes(text, segment->text);
        if (segment->last) {
            texts.emplace_back(segment->toggle, text);
            charsets.push_back(charset);
        }
    }

    void Group() {
        const auto parsed = wire::ParseMscDataGroup(wire::ByteSpan(group).first(groupSize));
        groupSize = 0;
        if (!parsed) {
            ++damagedGroups;
            return;
        }
        const auto segment = wire::ParseMotSegment(parsed->data);
        ASSERT_TRUE(segment);
        if (parsed->type == wire::kDataGroupMotHeader) {
            headers[parsed->transportId] = wire::ParseMotHeader(segment->data).value();
        } else {
            auto& pieces = segments[parsed->transportId];
            pieces[parsed->segment] = {segment->data.begin(), segment->data.end()};
            if (parsed->lastSegment)
                last[parsed->transportId] = parsed->segment;
        }
        const auto id = parsed->transportId;
        if (headers.count(id) == 0 || last.count(id) == 0 ||
            segments[id].size() != static_cast<std::size_t>(last[id]) + 1)
            return;
        ByteVector body;
        for (const auto& [number, bytes] : segments[id])
            wire::AppendBytes(body, bytes);
        bodies[id] = body;
    }

    int lastType = 0;
    std::size_t lastTotal = 0;
    ByteVector label;
    ByteVector text;
    int charset = 0;
    ByteVector group;
    std::size_t groupSize = 0;
    std::map<int, std::map<int, ByteVector>> segments;
    std::map<int, int> last;
};

ByteVector Bytes(std::string_view text) {
    return {text.begin(), text.end()};
}

ByteVector Body(std::size_t size, int seed) {
    ByteVector body(size);
    for (std::size_t i = 0; i < size; ++i)
        body[i] = static_cast<std::uint8_t>(i * 13 + i / 255 + static_cast<std::size_t>(seed));
    return body;
}

Reader Play(const PadSettings& settings, double seconds) {
    headend::PadEncoder encoder(settings);
    Reader reader;
    for (int i = 0; i < static_cast<int>(seconds / 0.024); ++i) {
        ByteVector frame(480);
        encoder.Fill(frame, 4, i * 0.024);
        reader.Take(frame, 4);
    }
    return reader;
}

class PadSizes : public ::testing::TestWithParam<std::size_t> {};

TEST_P(PadSizes, TextsAndSlidesComeOut) {
    PadSettings settings{.padBytes = GetParam()};
    settings.texts = {{0, 15, Bytes("The first text, longer than one segment of sixteen bytes")},
                      {3, 0, Bytes("short")},
                      {6, 0, {}},
                      {8, 0, Bytes("The first text, longer than one segment of sixteen bytes")}};
    settings.slides = {
        {.from = 0, .transportId = 7, .contentName = "a.jpg", .contentSubtype = 1, .body = Body(2500, 1)},
        {.from = 9, .transportId = 8, .contentName = "b.png", .contentSubtype = 3, .body = Body(1999, 2)}};
    const Reader reader = Play(settings, 14);
    EXPECT_LE(reader.largest, GetParam());
    ASSERT_FALSE(reader.texts.empty());
    EXPECT_EQ(reader.texts.front().second, settings.texts[0].bytes);
    EXPECT_EQ(reader.charsets.front(), 15);
    EXPECT_EQ(reader.texts.back().second, settings.texts[3].bytes);
    EXPECT_GE(reader.removals, 1);
    EXPECT_EQ(reader.damagedGroups, 0);
    EXPECT_EQ(reader.bodies.at(7), settings.slides[0].body);
    EXPECT_EQ(reader.bodies.at(8), settings.slides[1].body);
    EXPECT_EQ(reader.headers.at(7).contentName, "a.jpg");
    EXPECT_EQ(reader.headers.at(8).contentSubtype, 3);
    EXPECT_EQ(reader.headers.at(8).bodySize, 1999u);
    EXPECT_GT(reader.withoutIndicators, reader.frames / 3) << "frames without indicators are the usual case";
}

INSTANTIATE_TEST_SUITE_P(Pad, PadSizes, ::testing::Values(16, 23, 46, 58, 88, 100, 196));

TEST(PadEncoder, TheToggleTellsNewTextsFromRepeatedOnes) {
    PadSettings settings{.padBytes = 40};
    settings.texts = {{0, 0, Bytes("one")}, {5, 0, Bytes("two")}};
    const Reader reader = Play(settings, 10);
    ASSERT_GE(reader.texts.size(), 5u);
    for (const auto& [toggle, text] : reader.texts)
        EXPECT_EQ(toggle, text == Bytes("one") ? reader.texts.front().first : !reader.texts.front().first);
}

TEST(PadEncoder, ShortFormCarriesTexts) {
    PadSettings settings{.padBytes = 4};
    settings.texts = {{0, 0, Bytes("A text over the four bytes of each frame")}};
    const Reader reader = Play(settings, 3);
    ASSERT_FALSE(reader.texts.empty());
    EXPECT_EQ(reader.texts.front().second, settings.texts[0].bytes);
}

TEST(PadEncoder, FullLengthTextTakesEightSegments) {
    PadSettings settings{.padBytes = 58};
    settings.texts = {{0, 0, ByteVector(128, 'x')}};
    const Reader reader = Play(settings, 2);
    ASSERT_FALSE(reader.texts.empty());
    EXPECT_EQ(reader.texts.front().second.size(), 128u);
}

TEST(PadEncoder, ShuffledSegmentsStillMakeTheObject) {
    PadSettings settings{.padBytes = 88};
    settings.slides = {{.from = 0, .transportId = 1, .contentName = "x", .body = Body(5000, 3), .shuffled = true}};
    const Reader reader = Play(settings, 5);
    EXPECT_EQ(reader.bodies.at(1), settings.slides[0].body);
}

TEST(PadEncoder, DlPlusTagsFollowTheText) {
    PadSettings settings{.padBytes = 58};
    settings.texts = {{0, 15, Bytes("Song - Singer"), headend::MakeDlPlus({{1, 0, 4}, {4, 7, 6}}, true)}};
    const Reader reader = Play(settings, 1);
    ASSERT_FALSE(reader.dlPlus.empty());
    EXPECT_EQ(reader.dlPlus.front(), (ByteVector{0x0D, 1, 0, 3, 4, 7, 5}));
}

TEST(PadEncoder, NothingToSayLeavesTheFieldsEmpty) {
    headend::PadEncoder encoder(PadSettings{.padBytes = 58});
    ByteVector frame(480, 0xEE);
    encoder.Fill(frame, 4, 0);
    EXPECT_EQ(frame[478], 0);
    EXPECT_EQ(frame[479], 0);
    EXPECT_EQ(frame[473], 0xEE) << "the X-PAD is left alone";
}

} // namespace
