#include "host/filters/SoundFramer.h"

#include "host/wire/BitWriter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>

using namespace filters;

namespace {

std::vector<SoundFrame> FramesOf(SoundFramer& framer, ByteSpan piece) {
    std::vector<SoundFrame> frames;
    framer.Push(piece, [&](const SoundFrame& frame) { frames.push_back(frame); });
    return frames;
}

// A frame of ADTS, 48 kHz stereo, with this content.
Bytes Adts(const Bytes& content, bool withCheckSum = false) {
    const std::size_t header = withCheckSum ? 9 : 7;
    const std::size_t size = content.size() + header;
    Bytes frame = {0xFF,
                   static_cast<std::uint8_t>(withCheckSum ? 0xF0 : 0xF1),
                   0x4C,
                   static_cast<std::uint8_t>(0x80 | size >> 11),
                   static_cast<std::uint8_t>(size >> 3),
                   static_cast<std::uint8_t>(size << 5 | 0x1F),
                   0xFC};
    frame.resize(header);
    frame.insert(frame.end(), content.begin(), content.end());
    return frame;
}

Bytes Loas(const Bytes& element) {
    Bytes frame(3 + element.size());
    frame[0] = 0x56;
    frame[1] = static_cast<std::uint8_t>(0xE0 | element.size() >> 8);
    frame[2] = static_cast<std::uint8_t>(element.size());
    std::copy(element.begin(), element.end(), frame.begin() + 3);
    return frame;
}

// An element of LATM with the configuration of AAC-LC, 48 kHz, stereo, and as many payloads.
Bytes LatmElement(bool withConfig, unsigned payloads, const Bytes& payload) {
    wire::BitWriter bits;
    bits.WriteFlag(!withConfig);
    if (withConfig) {
        bits.Write(0, 1); // version
        bits.Write(1, 1); // same framing
        bits.Write(payloads - 1, 6);
        bits.Write(0, 4 + 3); // one programme, one layer
        bits.Write(0x1190, 16);
        bits.Write(0, 3); // a length with each frame
        bits.Write(0xFF, 8);
        bits.Write(0, 2); // no other data, no check sum
    }
    for (unsigned i = 0; i < payloads; ++i) {
        for (std::size_t left = payload.size();; left -= 255) {
            bits.Write(left < 255 ? static_cast<std::uint32_t>(left) : 255, 8);
            if (left < 255)
                break;
        }
        bits.WriteBytes(payload);
    }
    return bits.Take();
}

Bytes Joined(std::initializer_list<Bytes> pieces) {
    Bytes all;
    for (const Bytes& piece : pieces)
        all.insert(all.end(), piece.begin(), piece.end());
    return all;
}

} // namespace

TEST(SoundFramer, TakesAdtsFramesOverTheEdgesOfPieces) {
    SoundFramer framer(UnitLayout::kAdts);
    const Bytes stream = Joined({Adts({1, 2, 3}), Adts({4}, true), Adts({5, 6})});
    auto frames = FramesOf(framer, ByteSpan(stream).first(15));
    EXPECT_TRUE(frames.empty()) << "the first frame is believed when the next one follows";
    frames = FramesOf(framer, ByteSpan(stream).subspan(15));
    ASSERT_EQ(frames.size(), 3u);
    EXPECT_EQ(frames[0].bytes, (Bytes{1, 2, 3}));
    EXPECT_EQ(frames[1].bytes, (Bytes{4}));
    EXPECT_EQ(frames[2].bytes, (Bytes{5, 6}));
    EXPECT_EQ(frames[0].format.codec, AudioCodec::kAac);
    EXPECT_EQ(frames[0].format.configuration, (Bytes{0x11, 0x90}));
    EXPECT_FALSE(frames[0].beginsHere);
    EXPECT_FALSE(frames[1].beginsHere);
    EXPECT_TRUE(frames[2].beginsHere);
}

TEST(SoundFramer, BelievesNoWordByChance) {
    SoundFramer framer(UnitLayout::kAdts);
    // What looks like a header of mono sound stands in the middle of a frame whose beginning is missing.
    const Bytes stream =
        Joined({{9, 9, 0xFF, 0xF1, 0x4C, 0x40, 0x01, 0x5F, 0xFC, 9, 9}, Adts({1, 2, 3}), Adts({4, 5})});
    const auto frames = FramesOf(framer, stream);
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(frames[0].bytes, (Bytes{1, 2, 3}));
    EXPECT_EQ(frames[0].format.channels, 2);
}

TEST(SoundFramer, KeepsTheConfigurationOfLatm) {
    SoundFramer framer(UnitLayout::kLatm);
    const Bytes payload(300, 0x5A);
    EXPECT_TRUE(FramesOf(framer, Loas(LatmElement(false, 1, payload))).empty()) << "nobody knows what it is";
    auto frames = FramesOf(framer, Loas(LatmElement(true, 2, payload)));
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(frames[0].bytes, payload);
    EXPECT_EQ(frames[1].bytes, payload);
    EXPECT_EQ(frames[0].format.sampleRate, 48000);
    EXPECT_TRUE(frames[0].beginsHere);
    EXPECT_FALSE(frames[1].beginsHere) << "a stamp belongs to the first";
    framer.Reset();
    EXPECT_EQ(FramesOf(framer, Loas(LatmElement(false, 2, payload))).size(), 2u);
    // Cut short: what is whole comes out.
    Bytes element = LatmElement(false, 2, payload);
    element.resize(element.size() - 10);
    EXPECT_EQ(FramesOf(framer, Loas(element)).size(), 1u);
}

TEST(SoundFramer, ReadsTheHeadersOfMpegAudio) {
    struct Case {
        Bytes header;
        AudioCodec codec;
        int sampleRate;
        int channels;
        int samples;
        std::size_t bytes;
    };
    const Case cases[] = {
        {{0xFF, 0xFD, 0xA4, 0x00}, AudioCodec::kLayerTwo, 48000, 2, 1152, 576},   // 192 kbit/s
        {{0xFF, 0xFD, 0xA2, 0x00}, AudioCodec::kLayerTwo, 44100, 2, 1152, 627},   // 44.1 kHz with padding
        {{0xFF, 0xF5, 0x84, 0xC0}, AudioCodec::kLayerTwo, 24000, 1, 1152, 384},   // 64 kbit/s, mono
        {{0xFF, 0xFB, 0x94, 0x00}, AudioCodec::kLayerThree, 48000, 2, 1152, 384}, // 128 kbit/s
        {{0xFF, 0xF3, 0x84, 0x00}, AudioCodec::kLayerThree, 24000, 2, 576, 192},  // 64 kbit/s
        {{0xFF, 0xE3, 0x84, 0x00}, AudioCodec::kLayerThree, 12000, 2, 576, 384},  // a quarter of the rate
    };
    for (const Case& c : cases) {
        SoundFramer framer(UnitLayout::kMpegAudio);
        Bytes frame = c.header;
        frame.resize(c.bytes);
        const auto frames = FramesOf(framer, frame);
        ASSERT_EQ(frames.size(), 1u) << (&c - cases);
        EXPECT_EQ(frames[0].format.codec, c.codec);
        EXPECT_EQ(frames[0].format.sampleRate, c.sampleRate);
        EXPECT_EQ(frames[0].format.channels, c.channels);
        EXPECT_EQ(frames[0].format.samplesPerUnit, c.samples);
        EXPECT_EQ(frames[0].bytes.size(), c.bytes);
    }
    // Layer I, a free bit rate, reserved values.
    for (const Bytes& header :
         {Bytes{0xFF, 0xFF, 0x94, 0}, {0xFF, 0xFD, 0x04, 0}, {0xFF, 0xED, 0xA4, 0}, {0xFF, 0xFD, 0xAC, 0}}) {
        SoundFramer framer(UnitLayout::kMpegAudio);
        Bytes frame = header;
        frame.resize(2000);
        EXPECT_TRUE(FramesOf(framer, frame).empty());
    }
}
