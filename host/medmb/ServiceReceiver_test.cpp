#include "host/medmb/ServiceReceiver.h"

#include <gtest/gtest.h>

#include "host/medmb/TestEnsemble.h"
#include "platform/medmblib.h"

namespace medmb {
namespace {

using namespace test;
using wire::ByteVector;

class Collector final : public ServiceSink {
public:
    void OnPackets(wire::ByteSpan packets, bool discontinuity) override {
        packetCount += packets.size() / kTransportPacketBytes;
        gaps += discontinuity ? 1 : 0;
    }
    void OnAudio(const RadioFrame& frame, bool discontinuity) override {
        firstBytes.push_back(frame.bytes[40]);
        damaged += frame.damaged ? 1 : 0;
        gaps += discontinuity ? 1 : 0;
    }
    void OnText(const DynamicLabelText& /*text*/) override {}
    void OnObject(const MotObject& /*object*/) override {}

    std::size_t packetCount = 0;
    std::vector<int> firstBytes;
    int damaged = 0;
    int gaps = 0;
};

// A silent frame of 128 kbit/s stereo with a mark where the decoder does not look.
ByteVector AudioBytes(int mark) {
    ByteVector frame(384, 0);
    const ByteVector header = {0xFF, 0xFC, 0x84, 0x00};
    std::copy(header.begin(), header.end(), frame.begin());
    const std::size_t bits = 2 * (11 * 4 + 12 * 3 + 4 * 2);
    wire::Put16(frame, 4, wire::AudioCrc(frame, 48, bits, wire::AudioCrc(frame, 16, 16)));
    frame[40] = static_cast<std::uint8_t>(mark);
    return frame;
}

void Push(ServiceReceiver& receiver, const TestEnsemble& ensemble, int frame) {
    const ByteVector bytes = ensemble.Frame(frame);
    receiver.Push(*wire::EtiFrame::Parse(bytes));
}

TestEnsemble RadioOnly() {
    TestEnsemble ensemble;
    ensemble.radio = {RadioService(0xE201, 1)};
    ensemble.labels = {{0xE201, "RADIO"}};
    ensemble.subs = {{1, [](int frame) { return AudioBytes(frame); }}};
    return ensemble;
}

TEST(ServiceReceiver, EveryFrameOfARadioService) {
    Collector sink;
    ServiceReceiver receiver(0xE201, sink);
    for (int i = 0; i < 20; ++i)
        Push(receiver, RadioOnly(), i);
    EXPECT_EQ(sink.firstBytes.size(), 20u);
    EXPECT_EQ(sink.damaged, 0);
    EXPECT_EQ(sink.gaps, 0);
    EXPECT_TRUE(receiver.Receiving());
    EXPECT_EQ(receiver.Counters().framesLost, 0u);
    EXPECT_FLOAT_EQ(receiver.Meter().SignalToNoise(), 30.0F);
}

TEST(ServiceReceiver, LostFramesAreCountedAndMarked) {
    Collector sink;
    ServiceReceiver receiver(0xE201, sink);
    for (int i = 0; i < 30; ++i)
        if (i % 10 != 5)
            Push(receiver, RadioOnly(), i);
    EXPECT_EQ(receiver.Counters().framesLost, 3u);
    EXPECT_EQ(sink.gaps, 3);
    EXPECT_EQ(receiver.FrameTime(), 30u);
    EXPECT_LT(receiver.Meter().SignalToNoise(), 30.0F);
}

TEST(ServiceReceiver, TheFrameCountWraps) {
    Collector sink;
    ServiceReceiver receiver(0xE201, sink);
    for (int i = 240; i < 260; ++i)
        Push(receiver, RadioOnly(), i);
    EXPECT_EQ(receiver.Counters().framesLost, 0u);
    EXPECT_EQ(sink.gaps, 0);
}

// Software receivers without a signal do this. The clock of the service must not run ahead of the time that passes.
TEST(ServiceReceiver, ACountThatStandsStillAndThenJumpsLosesNothing) {
    Collector sink;
    ServiceReceiver receiver(0xE201, sink);
    for (int i = 0; i < 100; ++i)
        Push(receiver, RadioOnly(), i - i % 4);
    EXPECT_EQ(receiver.Counters().framesLost, 0u);
    EXPECT_EQ(receiver.FrameTime(), 100u);
}

TEST(ServiceReceiver, AJumpOfTheFrameCountIsAGapOfUnknownLength) {
    Collector sink;
    ServiceReceiver receiver(0xE201, sink);
    Push(receiver, RadioOnly(), 0);
    Push(receiver, RadioOnly(), 120);
    EXPECT_EQ(receiver.Counters().framesLost, 0u);
    EXPECT_EQ(sink.gaps, 1);
}

TEST(ServiceReceiver, AMoveToAnotherSubChannelIsFollowed) {
    Collector sink;
    ServiceReceiver receiver(0xE201, sink);
    TestEnsemble before = RadioOnly();
    for (int i = 0; i < 10; ++i)
        Push(receiver, before, i);
    // The FIC runs ahead: it names sub-channel 5 while the main stream still has 1.
    TestEnsemble ahead = before;
    ahead.radio = {RadioService(0xE201, 5)};
    for (int i = 10; i < 26; ++i)
        Push(receiver, ahead, i);
    EXPECT_EQ(sink.firstBytes.size(), 26u);
    // Then the old number belongs to somebody else.
    TestEnsemble after = ahead;
    after.subs = {{1, [](int) { return ByteVector(384, 0x33); }}, {5, [](int frame) { return AudioBytes(frame); }}};
    for (int i = 26; i < 40; ++i)
        Push(receiver, after, i);
    EXPECT_EQ(sink.firstBytes.size(), 40u);
    EXPECT_EQ(sink.damaged, 0);
    EXPECT_EQ(sink.gaps, 1);
}

TEST(ServiceReceiver, AfterANewStreamTableTheFicIsWaitedFor) {
    Collector sink;
    ServiceReceiver receiver(0xE201, sink);
    const TestEnsemble before = RadioOnly();
    for (int i = 0; i < 10; ++i)
        Push(receiver, before, i);
    // The main stream has changed: sub-channel 1 is another service's, as large as ours. The FIC tells it three frames later.
    TestEnsemble after = before;
    after.radio = {RadioService(0xE2FF, 1), RadioService(0xE201, 5)};
    after.subs = {{1, [](int) { return AudioBytes(0xEE); }}, {5, [](int frame) { return AudioBytes(frame); }}};
    TestEnsemble silent = after;
    silent.firstServiceFrame = 100;
    for (int i = 10; i < 20; ++i)
        Push(receiver, i < 13 ? silent : after, i);
    std::vector<int> expected(20);
    for (int i = 0; i < 20; ++i)
        expected[static_cast<std::size_t>(i)] = i;
    EXPECT_EQ(sink.firstBytes, expected);
    EXPECT_EQ(sink.damaged, 0);
    EXPECT_EQ(sink.gaps, 1);
}

TEST(ServiceReceiver, AFicThatStaysSilentIsNotWaitedForForEver) {
    Collector sink;
    ServiceReceiver receiver(0xE201, sink);
    TestEnsemble ensemble = RadioOnly();
    for (int i = 0; i < 10; ++i)
        Push(receiver, ensemble, i);
    ensemble.firstServiceFrame = 1000;
    ensemble.subs.push_back({9, [](int) { return ByteVector(24, 0); }});
    for (int i = 10; i < 50; ++i)
        Push(receiver, ensemble, i);
    EXPECT_EQ(sink.firstBytes.size(), 10u);
    for (int i = 50; i < 60; ++i)
        Push(receiver, ensemble, i);
    EXPECT_EQ(sink.firstBytes.size(), 60u);
    EXPECT_EQ(sink.gaps, 0);
    // What is held at the end is not lost.
    ensemble.subs.pop_back();
    for (int i = 60; i < 65; ++i)
        Push(receiver, ensemble, i);
    receiver.Finish();
    EXPECT_EQ(sink.firstBytes.size(), 65u);
}

TEST(ServiceReceiver, ASlideshowToldLateIsFound) {
    Collector sink;
    ServiceReceiver receiver(0xE201, sink);
    TestEnsemble ensemble = RadioOnly();
    for (int i = 0; i < 5; ++i)
        Push(receiver, ensemble, i);
    EXPECT_EQ(receiver.Current()->SlideshowType(), 12);
    ByteVector body;
    wire::AppendFig0_13(body, {0xE201, 0, {{wire::kUserApplicationSlideshow, {0x10, 0x3C}}}}, false);
    wire::EtiFrameContent content;
    content.frameCount = 5;
    content.fic = Fib({{0, Fig0Of(13, false, body)}});
    content.fic.resize(96, 0);
    content.streams.push_back({{1, 0, 0x22, 0}, AudioBytes(5)});
    receiver.Push(*wire::EtiFrame::Parse(wire::WriteEtiFrame(content)));
    EXPECT_EQ(receiver.Current()->SlideshowType(), 16);
}

TEST(ServiceReceiver, ADamagedStreamTableIsNotBelieved) {
    Collector sink;
    ServiceReceiver receiver(0xE201, sink);
    TestEnsemble ensemble = RadioOnly();
    ensemble.subs.push_back({9, [](int) { return ByteVector(24, 0); }});
    for (int i = 0; i < 10; ++i) {
        ByteVector bytes = ensemble.Frame(i);
        if (i == 5)
            bytes[8] ^= 0x80; // sub-channel 1 reads as 33
        receiver.Push(*wire::EtiFrame::Parse(bytes));
    }
    EXPECT_EQ(sink.firstBytes.size(), 9u);
    EXPECT_EQ(sink.damaged, 0);
    EXPECT_EQ(sink.gaps, 1);
}

TEST(ServiceReceiver, WithoutItsServiceNothingComes) {
    Collector sink;
    ServiceReceiver receiver(0xE2FF, sink);
    for (int i = 0; i < 5; ++i)
        Push(receiver, RadioOnly(), i);
    EXPECT_FALSE(receiver.Receiving());
    EXPECT_FALSE(receiver.Current());
    EXPECT_TRUE(sink.firstBytes.empty());
}

TEST(ServiceReceiver, AServiceUnderConditionalAccessIsNamedAsSuch) {
    Collector sink;
    TestEnsemble ensemble = TwoServices();
    ensemble.data = {OneComponent(0xF1E00401, wire::Transport::StreamData, wire::kDataTypeTransport, 2, true)};
    ServiceReceiver receiver(0xF1E00401, sink);
    Push(receiver, ensemble, 0);
    ASSERT_TRUE(receiver.Current());
    EXPECT_TRUE(receiver.Current()->Scrambled());
}

} // namespace
} // namespace medmb
