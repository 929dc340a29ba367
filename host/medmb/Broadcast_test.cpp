#include "host/medmb/Broadcast.h"

#include <atomic>
#include <thread>

#include <gtest/gtest.h>

#include "host/medmb/SignalMeter.h"

namespace medmb {
namespace {

using std::chrono::milliseconds;

ServiceDescription Television() {
    ServiceDescription service;
    service.kind = ServiceKind::Television;
    service.serviceId = 1;
    return service;
}

BroadcastItem Packets(std::size_t count, std::uint8_t mark = 0) {
    BroadcastItem item;
    item.bytes.resize(count * 188, mark);
    return item;
}

BroadcastItem Text(const std::string& text) {
    BroadcastItem item;
    item.kind = ItemKind::Text;
    auto label = std::make_shared<RadioText>();
    label->utf8 = text;
    item.text = label;
    return item;
}

TEST(Broadcast, NothingToAttachToWithoutAService) {
    Broadcast broadcast;
    BroadcastReader reader = broadcast.Attach();
    EXPECT_FALSE(reader.Attached());
    BroadcastItem item;
    EXPECT_EQ(reader.TryRead(item), ReadResult::End);
    EXPECT_EQ(broadcast.Signal(), SignalState::NoService);
}

TEST(Broadcast, AReaderSeesTheItemsInOrderAndThenTheEnd) {
    Broadcast broadcast;
    const std::uint32_t generation = broadcast.Publish(Television());
    BroadcastReader reader = broadcast.Attach();
    broadcast.Put(generation, Packets(1, 1));
    broadcast.Put(generation, Text("x"));
    broadcast.Put(generation, Packets(2, 2));
    BroadcastItem item;
    ASSERT_EQ(reader.TryRead(item), ReadResult::Item);
    EXPECT_EQ(item.bytes[0], 1);
    ASSERT_EQ(reader.TryRead(item), ReadResult::Item);
    EXPECT_EQ(item.kind, ItemKind::Text);
    ASSERT_EQ(reader.TryRead(item), ReadResult::Item);
    EXPECT_EQ(item.bytes.size(), 376u);
    EXPECT_EQ(reader.TryRead(item), ReadResult::Timeout);
    broadcast.End();
    EXPECT_EQ(reader.TryRead(item), ReadResult::End);
    EXPECT_EQ(reader.TryRead(item), ReadResult::End);
}

TEST(Broadcast, AReaderNeverSeesAnotherServicesData) {
    Broadcast broadcast;
    const std::uint32_t first = broadcast.Publish(Television());
    BroadcastReader old = broadcast.Attach();
    const std::uint32_t second = broadcast.Publish(Television());
    EXPECT_NE(first, second);
    broadcast.Put(second, Packets(1, 2));
    broadcast.Put(first, Packets(1, 1)); // a straggler of the old service
    BroadcastItem item;
    EXPECT_EQ(old.TryRead(item), ReadResult::End);
    BroadcastReader reader = broadcast.Attach();
    ASSERT_EQ(reader.TryRead(item), ReadResult::Item);
    EXPECT_EQ(item.bytes[0], 2);
    EXPECT_EQ(reader.TryRead(item), ReadResult::Timeout);
    old.Detach();
    EXPECT_EQ(reader.TryRead(item), ReadResult::Timeout);
}

TEST(Broadcast, TheLastToAttachReads) {
    Broadcast broadcast;
    const std::uint32_t generation = broadcast.Publish(Television());
    BroadcastReader leaked = broadcast.Attach();
    BroadcastReader reader = broadcast.Attach();
    broadcast.Put(generation, Packets(1));
    BroadcastItem item;
    EXPECT_EQ(leaked.TryRead(item), ReadResult::End);
    EXPECT_EQ(reader.TryRead(item), ReadResult::Item);
}

TEST(Broadcast, ASlowReaderLosesWholePacketsAndIsTold) {
    Broadcast broadcast;
    const std::uint32_t generation = broadcast.Publish(Television());
    BroadcastReader reader = broadcast.Attach();
    constexpr std::size_t kMany = Broadcast::kQueueBytes / 188 / 10 + 1;
    broadcast.Put(generation, Text("kept"));
    for (std::size_t i = 0; i < kMany + 3; ++i)
        broadcast.Put(generation, Packets(10));
    BroadcastItem item;
    ASSERT_EQ(reader.TryRead(item), ReadResult::Item);
    EXPECT_EQ(item.kind, ItemKind::Text);
    ASSERT_EQ(reader.TryRead(item), ReadResult::Item);
    EXPECT_TRUE(item.discontinuity);
    std::size_t bytes = item.bytes.size();
    EXPECT_EQ(bytes % 188, 0u);
    while (reader.TryRead(item) == ReadResult::Item) {
        EXPECT_EQ(item.bytes.size() % 188, 0u);
        EXPECT_FALSE(item.discontinuity);
        bytes += item.bytes.size();
    }
    EXPECT_LE(bytes, Broadcast::kQueueBytes);
    EXPECT_GT(bytes, Broadcast::kQueueBytes - 188 * 11);
    EXPECT_GT(broadcast.Counters().itemsDropped, 0u);
}

TEST(Broadcast, OldTextsAndSlidesGiveWay) {
    Broadcast broadcast;
    const std::uint32_t generation = broadcast.Publish(Television());
    BroadcastReader reader = broadcast.Attach();
    for (int i = 0; i < 20; ++i)
        broadcast.Put(generation, Text(std::to_string(i)));
    BroadcastItem item;
    ASSERT_EQ(reader.TryRead(item), ReadResult::Item);
    EXPECT_EQ(item.text->utf8, "4");
}

TEST(Broadcast, FlushDropsTheQueueAndMarksWhatFollows) {
    Broadcast broadcast;
    const std::uint32_t generation = broadcast.Publish(Television());
    BroadcastReader reader = broadcast.Attach();
    broadcast.Put(generation, Packets(1, 1));
    reader.Flush();
    broadcast.Put(generation, Packets(1, 2));
    BroadcastItem item;
    ASSERT_EQ(reader.TryRead(item), ReadResult::Item);
    EXPECT_EQ(item.bytes[0], 2);
    EXPECT_TRUE(item.discontinuity);
}

TEST(Broadcast, AWaitingReaderIsWokenByDataByWakeAndByTheEnd) {
    Broadcast broadcast;
    const std::uint32_t generation = broadcast.Publish(Television());
    BroadcastReader reader = broadcast.Attach();
    std::atomic<int> notified{0};
    broadcast.SetNotify([&] { ++notified; });
    std::vector<ReadResult> results;
    std::thread thread([&] {
        BroadcastItem item;
        ReadResult result = ReadResult::Timeout;
        while (result != ReadResult::End) {
            result = reader.Read(item, std::chrono::minutes(10));
            results.push_back(result);
        }
    });
    broadcast.Put(generation, Packets(1));
    reader.Wake();
    broadcast.End();
    thread.join();
    EXPECT_EQ(results.back(), ReadResult::End);
    EXPECT_EQ(notified, 2);
    broadcast.SetNotify({});
    (void)broadcast.Publish(Television());
    EXPECT_EQ(notified, 2);
}

TEST(Broadcast, SignalAndCountersBelongToTheGeneration) {
    Broadcast broadcast;
    const std::uint32_t generation = broadcast.Publish(Television());
    EXPECT_EQ(broadcast.Signal(), SignalState::Waiting);
    StageCounters counters;
    counters.frames = 5;
    broadcast.SetSignal(generation, SignalState::Good);
    broadcast.SetCounters(generation, counters);
    broadcast.Describe(generation, "LATE", true);
    EXPECT_EQ(broadcast.Signal(), SignalState::Good);
    EXPECT_EQ(broadcast.Counters().frames, 5u);
    EXPECT_TRUE(broadcast.Service().scrambled);
    EXPECT_EQ(broadcast.Service().label, "LATE");
    (void)broadcast.Publish(Television());
    broadcast.SetSignal(generation, SignalState::Lost);
    EXPECT_EQ(broadcast.Signal(), SignalState::Waiting);
    EXPECT_EQ(broadcast.Counters().frames, 0u);
}

FrameQuality Frame(int fibErrors, int packetsBad = 0, int corrected = 0) {
    FrameQuality quality;
    quality.fibs = 3;
    quality.fibErrors = fibErrors;
    quality.packets = 8;
    quality.packetsBad = packetsBad;
    quality.bytesCorrected = corrected;
    return quality;
}

float SnrOf(const FrameQuality& quality) {
    SignalMeter meter;
    for (std::size_t i = 0; i < SignalMeter::kWindowFrames; ++i)
        meter.Add(quality);
    return meter.SignalToNoise();
}

TEST(SignalMeter, TheMapping) {
    EXPECT_EQ(SignalMeter().SignalToNoise(), 0.0F);
    EXPECT_FLOAT_EQ(SnrOf(Frame(0)), 30.0F);
    EXPECT_FLOAT_EQ(SnrOf(Frame(1)), 14.0F);
    EXPECT_LE(SnrOf(Frame(2)), 6.0F);
    EXPECT_FLOAT_EQ(SnrOf(Frame(3)), 0.0F);
    EXPECT_FLOAT_EQ(SnrOf(Frame(0, 4)), 6.0F);
    EXPECT_FLOAT_EQ(SnrOf(Frame(0, 8)), 0.0F);
    EXPECT_FLOAT_EQ(SnrOf(Frame(0, 0, 64)), 18.0F); // eight bytes in every packet
    FrameQuality audio;
    audio.fibs = 3;
    audio.audioFrames = 1;
    audio.audioFramesBad = 1;
    EXPECT_FLOAT_EQ(SnrOf(audio), 0.0F);
}

TEST(SignalMeter, MissingFramesAreTheWorst) {
    SignalMeter meter;
    meter.AddMissing(100);
    EXPECT_FALSE(meter.Any()); // nothing has ever come
    for (int i = 0; i < 42; ++i)
        meter.Add(Frame(0));
    EXPECT_FLOAT_EQ(meter.SignalToNoise(), 30.0F);
    meter.AddMissing(21);
    EXPECT_FLOAT_EQ(meter.SignalToNoise(), 6.0F);
    EXPECT_FALSE(meter.Lost());
    meter.AddMissing(21);
    EXPECT_FLOAT_EQ(meter.SignalToNoise(), 0.0F);
    EXPECT_TRUE(meter.Lost());
    EXPECT_EQ(meter.FibErrorPerMille(), 1000);
    for (int i = 0; i < 42; ++i)
        meter.Add(Frame(0));
    EXPECT_FLOAT_EQ(meter.SignalToNoise(), 30.0F);
}

} // namespace
} // namespace medmb
