// The sources, each in front of scripted downstream pins.
#include "tests/filters/SingleFilter.h"

#include "host/filters/DabSource.h"
#include "host/filters/ParserFilter.h"
#include "host/headend/LayerTwoEncoder.h"

#include <algorithm>
#include <tuple>

using namespace filters_test;

TEST(ParserFilter, GivesUnitsOfAFileToBothPins) {
    World<ce::ManualClock> world;
    const Service service = MakeService({.seconds = 2});
    ce::WriteContent(world.folder.path() / "card" / "a.dmb",
                     std::string(service.packets.begin(), service.packets.end()));
    const auto pictures = Make<ScriptedSink<PictureUnit>>(kH264);
    const auto sound = Make<ScriptedSink<SoundUnit>>(kCoded);
    const auto filter = Make<ParserFilter>(world.clock, Outputs{}, world.broadcast);
    const auto one = PinOf(*filter.Get(), kParserVideoPin);
    const auto two = PinOf(*filter.Get(), kParserAudioPin);
    Join(*one.Get(), *pictures->pin);
    Join(*two.Get(), *sound->pin);
    const auto file = dshow::QueryFor<IFileSourceFilter>(filter.Get(), IID_IFileSourceFilter);
    ASSERT_EQ(file->Load(u"\\SDMMC Card\\a.dmb", nullptr), S_OK);
    (void)filter->Pause();
    (void)filter->Run(0);
    world.clock.Settle();
    EXPECT_EQ(static_cast<int>(pictures->samples.size()), service.pictures);
    EXPECT_EQ(static_cast<int>(sound->samples.size()), service.soundUnits);
    EXPECT_EQ(pictures->ends, 1);
    EXPECT_EQ(sound->ends, 1);
    (void)filter->Stop();
    Part(*one.Get(), *pictures->pin);
    Part(*two.Get(), *sound->pin);
}

TEST(ParserFilter, RefusesWhatItDoesNotKnow) {
    World<ce::ManualClock> world;
    const auto filter = Make<ParserFilter>(world.clock, Outputs{}, world.broadcast);
    const auto control = dshow::QueryFor<IDMBStreamControl>(filter.Get(), IID_IDMBStreamControl);
    DMBAudioInfo* info = nullptr;
    EXPECT_LT(control->GetParam(1, &info), 0);
    EXPECT_EQ(control->GetParam(kParamAudioInfo, &info), S_OK);
    EXPECT_EQ(info->value0, 0);
    DMBAudioInfo other{7, 9};
    EXPECT_LT(control->SetParam(kParamApplyAudioInfo, &other), 0);
    EXPECT_LT(control->SetPosition(1000), 0);
    EXPECT_EQ(control->GetPosition(nullptr, nullptr), E_POINTER);
}

// Upstream is the broadcast, downstream a scripted decoder.
TEST(DabSource, GivesFramesWithTheirFormatAndTimes) {
    World<ce::ManualClock> world;
    const auto frames =
        headend::EncodeLayerTwo({.sampleRate = 48000, .channels = 2, .kbps = 192}, std::vector<float>(48000));
    const auto sink = Make<ScriptedSink<SoundUnit>>(kLayerTwo);
    const auto filter = Make<DabSource>(world.clock, Outputs{}, world.broadcast);
    const auto out = PinOf(*filter.Get(), kDABSourcePin);
    Join(*out.Get(), *sink->pin);
    medmb::ServiceDescription service;
    service.kind = medmb::ServiceKind::Radio;
    const std::uint32_t generation = world.broadcast.Publish(service);
    const auto put = [&](std::uint64_t time, bool damaged, bool discontinuity) {
        medmb::BroadcastItem item;
        item.kind = medmb::ItemKind::Audio;
        item.bytes = frames[time / 24];
        item.time = time;
        item.damaged = damaged;
        item.discontinuity = discontinuity;
        world.broadcast.Put(generation, std::move(item));
        world.clock.Settle();
    };
    (void)filter->Pause();
    (void)filter->Run(0);
    put(0, false, false);
    put(24, true, false);
    put(72, false, true);
    sink->answer = S_FALSE; // full, flushing, gone: the frame is lost
    put(96, false, false);
    sink->answer = S_OK;
    put(120, false, false);
    ASSERT_EQ(sink->samples.size(), 5u);
    ASSERT_TRUE(sink->samples[0].format);
    EXPECT_EQ(sink->samples[0].format->codec, AudioCodec::kLayerTwo);
    EXPECT_EQ(sink->samples[0].format->sampleRate, 48000);
    EXPECT_EQ(sink->samples[0].format->channels, 2);
    EXPECT_EQ(sink->samples[0].unit.bytes, frames[0]);
    EXPECT_TRUE(sink->samples[0].unit.live);
    EXPECT_TRUE(sink->samples[1].unit.bytes.empty()) << "damaged";
    EXPECT_EQ(sink->samples[2].unit.time, 72 * kTicksPerMs);
    const std::vector<bool> gaps{true, false, true, false, true};
    for (std::size_t i = 0; i < gaps.size(); ++i)
        EXPECT_EQ(sink->samples[i].unit.discontinuity, gaps[i]) << i;

    // A pause empties what lies downstream; nothing flows until the graph runs again, and then something is missing.
    (void)filter->Pause();
    EXPECT_EQ(sink->begunFlushes, 1);
    put(144, false, false);
    EXPECT_EQ(sink->samples.size(), 5u);
    (void)filter->Run(0);
    EXPECT_EQ(sink->endedFlushes, 1);
    put(168, false, false);
    ASSERT_EQ(sink->samples.size(), 6u);
    EXPECT_TRUE(sink->samples[5].unit.discontinuity);

    // Another service is another generation: its frames are not this run's.
    const std::uint32_t other = world.broadcast.Publish(service);
    medmb::BroadcastItem item;
    item.kind = medmb::ItemKind::Audio;
    item.bytes = frames[0];
    world.broadcast.Put(other, std::move(item));
    world.clock.Settle();
    EXPECT_EQ(sink->samples.size(), 6u);
    (void)filter->Stop();
    Part(*out.Get(), *sink->pin);
}
