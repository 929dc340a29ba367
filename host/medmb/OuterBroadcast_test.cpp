// Foreign recordings: what must come out of them, byte for byte.
#include <cstdio>
#include <memory>

#include <gtest/gtest.h>

#include "host/medmb/EtiFramer.h"
#include "host/medmb/ServiceReceiver.h"
#include "host/wire/LabelText.h"
#include "platform/medmblib.h"
#include "tests/support/OuterData.h"

namespace medmb {
namespace {

using wire::ByteVector;

ByteVector Unpack(const std::filesystem::path& path) {
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(("xz -dc '" + path.string() + "'").c_str(), "r"), pclose);
    ByteVector bytes;
    ByteVector chunk(1 << 16);
    while (const std::size_t got = std::fread(chunk.data(), 1, chunk.size(), pipe.get()))
        bytes.insert(bytes.end(), chunk.begin(), chunk.begin() + static_cast<std::ptrdiff_t>(got));
    return bytes;
}

ByteVector ReadFile(const std::filesystem::path& path) {
    const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
    ByteVector bytes(std::filesystem::file_size(path));
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file.get()));
    return bytes;
}

class Collector final : public ServiceSink {
public:
    void OnPackets(wire::ByteSpan bytes, bool /*discontinuity*/) override { wire::AppendBytes(packets, bytes); }
    void OnAudio(const RadioFrame& frame, bool /*discontinuity*/) override {
        ++audio;
        damaged += frame.damaged ? 1 : 0;
    }
    void OnText(const DynamicLabelText& text) override { texts.push_back(wire::DecodeText(text.bytes, text.charset)); }
    void OnObject(const MotObject& object) override { objects.push_back(object.body); }

    ByteVector packets;
    int audio = 0;
    int damaged = 0;
    std::vector<std::string> texts;
    std::vector<ByteVector> objects;
};

Collector Receive(const ByteVector& eti, std::uint32_t service) {
    Collector sink;
    ServiceReceiver receiver(service, sink);
    EtiFramer framer;
    framer.Push(eti);
    framer.Finish();
    while (const auto frame = framer.Next())
        receiver.Push(*frame);
    return sink;
}

TEST(OuterBroadcast, TransportStreamsAreByteIdentical) {
    DMB_OUTER_DATA(eti, "broadcast/tv-12a.eti.xz");
    DMB_OUTER_DATA(one, "broadcast/tv-one.ts.xz");
    DMB_OUTER_DATA(two, "broadcast/tv-two.ts.xz");
    const ByteVector frames = Unpack(eti);
    const auto compare = [&](std::uint32_t service, const std::filesystem::path& source, std::size_t packets) {
        ByteVector expected = Unpack(source);
        expected.resize(packets * kTransportPacketBytes);
        EXPECT_EQ(Receive(frames, service).packets, expected);
    };
    compare(0xF1E00401, one, 4989);
    compare(0xF1E00402, two, 3812);
}

struct Expected {
    std::uint32_t service;
    int audio;
    std::vector<std::string> texts;
    std::vector<const char*> slides;
};

void CompareRadio(const ByteVector& eti, const std::filesystem::path& slides, const Expected& expected) {
    const Collector got = Receive(eti, expected.service);
    EXPECT_EQ(got.audio, expected.audio);
    EXPECT_EQ(got.damaged, 0);
    EXPECT_EQ(got.texts, expected.texts);
    ASSERT_EQ(got.objects.size(), expected.slides.size());
    for (std::size_t i = 0; i < got.objects.size(); ++i)
        EXPECT_EQ(got.objects[i], ReadFile(slides / expected.slides[i])) << expected.slides[i];
}

TEST(OuterBroadcast, SoundTextsAndSlidesOfFourStations) {
    DMB_OUTER_DATA(eti, "broadcast/radio-8b.eti.xz");
    DMB_OUTER_DATA(slides, "broadcast/slides");
    const ByteVector frames = Unpack(eti);
    const std::string first = "Sender Eins: Grüße aus München, Ø æ ß €";
    std::string longest;
    for (int i = 0; i < 8; ++i)
        longest += "0123456789ABCDEF";
    CompareRadio(frames, slides,
                 {0xE201,
                  2001,
                  {first, "Zweite Zeile - ñandú, çà et là, Ångström", longest, first},
                  {"s1-01_base.jpg", "s1-02_prog.jpg", "s1-03_444.jpg", "s1-04_gray.jpg"}});
    const std::string utf8 = "UTF-8: Zażółć gęślą jaźń — Ελλάδα — Москва";
    CompareRadio(frames, slides,
                 {0xE202,
                  2001,
                  {utf8, "Test Artist - Test Song", "한글 DLS (UTF-8)", utf8},
                  {"s2-01_exif.jpg", "s2-02_odd317x233.jpg", "s2-03_odd161x121.jpg", "s2-04_dri.jpg", "s2-01_exif.jpg",
                   "s2-02_odd317x233.jpg", "s2-03_odd161x121.jpg"}});
    const std::string korean = "한국어 동적 라벨 시험 1";
    CompareRadio(
        frames, slides,
        {0xE203,
         2001,
         {korean, "지금 나오는 곡: 아리랑", "ABC 가나다 123 마바사 아자차카타파하 끝", korean},
         {"s3-01_big640x480.jpg", "s3-02_ko.jpg", "s3-01_big640x480.jpg", "s3-02_ko.jpg", "s3-01_big640x480.jpg"}});
    const std::string ebu = "EBU raw: grün öl ä KŞlner";
    CompareRadio(frames, slides,
                 {0xE204,
                  1000,
                  {ebu, "Second EBU line", ebu},
                  {"s4-01_422.jpg", "s4-02_wide.png", "s4-03_tall120x240.jpg", "s4-01_422.jpg", "s4-02_wide.png"}});
}

TEST(OuterBroadcast, WhatASoftwareTunerReallyDelivers) {
    DMB_OUTER_DATA(eti, "broadcast/radio-8b-rerx.eti.xz");
    DMB_OUTER_DATA(slides, "broadcast/slides");
    const ByteVector frames = Unpack(eti);
    const Collector one = Receive(frames, 0xE201);
    EXPECT_EQ(one.texts, (std::vector<std::string>{"Sender Eins: Grüße aus München, Ø æ ß €",
                                                   "Zweite Zeile - ñandú, çà et là, Ångström"}));
    ASSERT_EQ(one.objects.size(), 1u);
    EXPECT_EQ(one.objects[0], ReadFile(slides / "s1-02_prog.jpg"));
    const Collector two = Receive(frames, 0xE202);
    ASSERT_EQ(two.objects.size(), 2u);
    EXPECT_EQ(two.objects[1], ReadFile(slides / "s2-03_odd161x121.jpg"));
    const Collector three = Receive(frames, 0xE203);
    EXPECT_EQ(three.texts.size(), 2u);
    ASSERT_EQ(three.objects.size(), 1u);
    EXPECT_EQ(three.objects[0], ReadFile(slides / "s3-02_ko.jpg"));
    const Collector four = Receive(frames, 0xE204);
    EXPECT_EQ(four.texts, (std::vector<std::string>{"EBU raw: grün öl ä KŞlner", "Second EBU line"}));
    // The signal ends in the last dozen frames; nothing else is damaged.
    for (const Collector* service : {&one, &two, &three, &four})
        EXPECT_LE(service->damaged, 12);
}

} // namespace
} // namespace medmb
