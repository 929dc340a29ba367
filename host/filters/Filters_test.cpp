// Each filter alone, between a scripted upstream and a scripted downstream pin.
#include "tests/filters/FilterHarness.h"
#include "tests/filters/FilterWorld.h"
#include "tests/filters/TestService.h"

#include "host/filters/AudioRenderer.h"
#include "host/filters/DabSource.h"
#include "host/filters/ParserFilter.h"
#include "host/filters/SoundDecoderFilter.h"
#include "host/filters/VideoDecoderFilter.h"
#include "host/filters/VideoRenderer.h"

#include "host/headend/LayerTwoEncoder.h"

#include <gtest/gtest.h>

using namespace filters;
using namespace filters_test;
using dshow::ComPtr;

namespace {

const dshow::MediaType kH264(MEDIATYPE_Video, kSubtypeH264);
const dshow::MediaType kI420(MEDIATYPE_Video, kSubtypeI420);
const dshow::MediaType kCoded(MEDIATYPE_Audio, kSubtypeMpeg4Audio);
const dshow::MediaType kLayerTwo(MEDIATYPE_Audio, kSubtypeLayerTwo);
const dshow::MediaType kPcm(MEDIATYPE_Audio, kSubtypePcm);

template <class T, class... Arguments> ComPtr<T> Make(Arguments&&... arguments) {
    return ComPtr<T>::Adopt(new T(std::forward<Arguments>(arguments)...));
}

// The units of a service.
class Units final : public DemuxListener {
public:
    explicit Units(const Bytes& packets) {
        Demultiplexer demultiplexer(*this);
        for (std::size_t at = 0; at + 188 <= packets.size(); at += 188)
            demultiplexer.Push(ByteSpan(packets).subspan(at, 188));
    }
    void OnStreams(const VideoFormat*, const AudioFormat* announced) override {
        format = std::make_shared<const AudioFormat>(*announced);
    }
    void OnVideo(AccessUnit unit) override { video.push_back({std::move(unit)}); }
    void OnAudio(AccessUnit unit) override { audio.push_back({std::move(unit), format}); }
    void OnClockLost() override {}

    std::shared_ptr<const AudioFormat> format;
    std::vector<PictureUnit> video;
    std::vector<SoundUnit> audio;
};

const Units& ServiceUnits() {
    static const Units units(MakeService({.seconds = 2}).packets);
    return units;
}

void Join(IPin& out, IPin& in) {
    ASSERT_EQ(out.Connect(&in, nullptr), S_OK);
}

void Part(IPin& out, IPin& in) {
    EXPECT_EQ(in.Disconnect(), S_OK);
    EXPECT_EQ(out.Disconnect(), S_OK);
}

SoundBlock Block(Ticks time) {
    SoundBlock block;
    block.sampleRate = 48000;
    block.channels = 2;
    block.time = time;
    block.samples.assign(2048, 1000);
    return block;
}

PictureSample Image(Ticks time) {
    auto picture = std::make_shared<Picture>();
    picture->width = 16;
    picture->height = 16;
    picture->time = time;
    picture->i420.assign(384, 1);
    return picture;
}

} // namespace

TEST(VideoDecoderFilter, GivesAPictureForEveryUnit) {
    const auto source = Make<ScriptedSource<PictureUnit>>(kH264);
    const auto sink = Make<ScriptedSink<PictureSample>>(kI420);
    const auto filter = Make<VideoDecoderFilter>();
    const auto in = PinOf(*filter.Get(), kInPin);
    const auto out = PinOf(*filter.Get(), kOutPin);
    Join(*source->pin, *in.Get());
    Join(*out.Get(), *sink->pin);
    EXPECT_EQ(source->pin->Deliver(ServiceUnits().video[0]), S_FALSE) << "stopped";
    EXPECT_EQ(filter->Pause(), S_OK);
    for (const PictureUnit& unit : ServiceUnits().video)
        EXPECT_EQ(source->pin->Deliver(unit), S_OK);
    EXPECT_EQ(sink->samples.size(), ServiceUnits().video.size());
    source->pin->DeliverSegment(12345600);
    ASSERT_EQ(sink->segments.size(), 1u);
    EXPECT_EQ(sink->segments[0], 12345600);
    source->pin->DeliverBeginFlush();
    source->pin->DeliverEndFlush();
    EXPECT_EQ(sink->begunFlushes, 1);
    EXPECT_EQ(sink->endedFlushes, 1);
    source->pin->DeliverEnd();
    EXPECT_EQ(sink->ends, 1);
    EXPECT_EQ(filter->Stop(), S_OK);
    Part(*source->pin, *in.Get());
    Part(*out.Get(), *sink->pin);
}

TEST(VideoDecoderFilter, BeginsAtARandomAccessAndGoesOnWhenNobodyTakesThePictures) {
    const auto source = Make<ScriptedSource<PictureUnit>>(kH264);
    const auto sink = Make<ScriptedSink<PictureSample>>(kI420);
    const auto filter = Make<VideoDecoderFilter>();
    const auto in = PinOf(*filter.Get(), kInPin);
    const auto out = PinOf(*filter.Get(), kOutPin);
    Join(*source->pin, *in.Get());
    Join(*out.Get(), *sink->pin);
    (void)filter->Pause();
    const auto& units = ServiceUnits().video;
    for (std::size_t i = 3; i < units.size(); ++i) {
        sink->answer = i == 20 ? S_FALSE : S_OK;
        EXPECT_EQ(source->pin->Deliver(units[i]), S_OK);
    }
    ASSERT_FALSE(sink->samples.empty());
    EXPECT_EQ(sink->samples[0]->time, units[15].unit.time); // an IDR picture a second, 15 pictures a second
    EXPECT_EQ(sink->samples.size(), units.size() - 15);
    (void)filter->Stop();
    Part(*source->pin, *in.Get());
    Part(*out.Get(), *sink->pin);
}

TEST(SoundDecoderFilter, FollowsTheFormatOfItsUnits) {
    const auto source = Make<ScriptedSource<SoundUnit>>(kCoded);
    const auto sink = Make<ScriptedSink<SoundBlock>>(kPcm);
    const auto filter = Make<SoundDecoderFilter>(CLSID_BSACDecoder, kSubtypeMpeg4Audio);
    const auto in = PinOf(*filter.Get(), kInPin);
    const auto out = PinOf(*filter.Get(), kOutPin);
    Join(*source->pin, *in.Get());
    Join(*out.Get(), *sink->pin);
    (void)filter->Pause();
    for (const SoundUnit& unit : ServiceUnits().audio)
        EXPECT_EQ(source->pin->Deliver(unit), S_OK);
    ASSERT_EQ(sink->samples.size(), ServiceUnits().audio.size());
    EXPECT_EQ(sink->samples[5].time, ServiceUnits().audio[5].unit.time);
    sink->answer = S_FALSE;
    EXPECT_EQ(source->pin->Deliver(ServiceUnits().audio[0]), S_FALSE);
    (void)filter->Stop();
    Part(*source->pin, *in.Get());
    Part(*out.Get(), *sink->pin);
}

TEST(AudioRenderer, CompletesWhenTheLastSoundWasHeard) {
    World<ce::ManualClock> world;
    const auto graph = std::make_unique<Session>();
    const auto source = Make<ScriptedSource<SoundBlock>>(kPcm);
    const auto filter = Make<AudioRenderer>(world.clock, Outputs{nullptr, &world.tap, nullptr, nullptr});
    ASSERT_EQ(graph->graph->AddFilter(filter.Get(), kAudioRendererName), S_OK);
    const auto in = PinOf(*filter.Get(), kAudioRendererPin);
    Join(*source->pin, *in.Get());
    (void)graph->control->Run();
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(source->pin->Deliver(Block(i * 1920)), S_OK);
    source->pin->DeliverEnd();
    world.clock.Sleep(300);
    EXPECT_EQ(graph->TakeEvents()[EC_COMPLETE], 0);
    world.clock.Sleep(300);
    EXPECT_EQ(graph->TakeEvents()[EC_COMPLETE], 1);
    EXPECT_EQ(world.tap.Samples()[10000], 1000);
    (void)graph->control->Stop();
    EXPECT_EQ(source->pin->Deliver(Block(0)), S_FALSE) << "stopped";
    Part(*source->pin, *in.Get());
    (void)graph->graph->RemoveFilter(filter.Get());
}

// A card that stops pulling: time goes on without it.
TEST(AudioRenderer, GoesOnWhenTheDeviceVanishes) {
    struct DeadDevice final : SoundDevice {
        bool Start(SoundSource& source) override {
            std::vector<std::int16_t> frames(960);
            source.Pull(frames);
            return true;
        }
        void Stop() override { stopped = true; }
        [[nodiscard]] int LatencyMs() const override { return 20; }
        std::atomic<bool> stopped{false};
    } device;
    World<ce::ManualClock> world;
    const auto source = Make<ScriptedSource<SoundBlock>>(kPcm);
    const auto filter = Make<AudioRenderer>(world.clock, Outputs{&device, &world.tap, nullptr, nullptr});
    const auto in = PinOf(*filter.Get(), kAudioRendererPin);
    Join(*source->pin, *in.Get());
    (void)filter->Pause();
    (void)filter->Run(0);
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(source->pin->Deliver(Block(i * 1920)), S_OK);
    world.clock.Sleep(400);
    EXPECT_FALSE(device.stopped);
    world.clock.Sleep(600);
    EXPECT_TRUE(device.stopped);
    Ticks now = 0;
    EXPECT_EQ(filter->Sound().StreamTime(now), ClockState::kRunning);
    EXPECT_GT(now, 200 * kTicksPerMs);
    (void)filter->Stop();
    Part(*source->pin, *in.Get());
}

TEST(VideoRenderer, ShowsEachPictureAtItsTimeAndCompletes) {
    World<ce::ManualClock> world;
    const auto graph = std::make_unique<Session>();
    const auto source = Make<ScriptedSource<PictureSample>>(kI420);
    const auto filter = Make<VideoRenderer>(world.clock, Outputs{nullptr, nullptr, &world.screen, nullptr});
    ASSERT_EQ(graph->graph->AddFilter(filter.Get(), kVideoRendererName), S_OK);
    const auto in = PinOf(*filter.Get(), kInPin);
    Join(*source->pin, *in.Get());
    (void)graph->control->Run();
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(source->pin->Deliver(Image(i * 9000)), S_OK);
    source->pin->DeliverEnd();
    world.clock.Sleep(2000);
    const auto shown = world.screen.Shown();
    ASSERT_EQ(shown.size(), 11u); // the first one at once, and again in its place
    for (std::size_t i = 2; i < shown.size(); ++i)
        EXPECT_EQ(shown[i].at - shown[i - 1].at, 100);
    const auto events = graph->TakeEvents();
    EXPECT_EQ(events.at(EC_VIDEOFRAMEREADY), 1);
    EXPECT_EQ(events.at(EC_COMPLETE), 1);
    (void)graph->control->Stop();
    Part(*source->pin, *in.Get());
    (void)graph->graph->RemoveFilter(filter.Get());
}

TEST(VideoRenderer, LeavesOutWhatIsEarlierThanTheSegment) {
    World<ce::ManualClock> world;
    const auto source = Make<ScriptedSource<PictureSample>>(kI420);
    const auto filter = Make<VideoRenderer>(world.clock, Outputs{nullptr, nullptr, &world.screen, nullptr});
    const auto in = PinOf(*filter.Get(), kInPin);
    Join(*source->pin, *in.Get());
    (void)filter->Pause();
    (void)filter->Run(0);
    source->pin->DeliverSegment(45000);
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(source->pin->Deliver(Image(i * 9000)), S_OK);
    world.clock.Sleep(1000);
    EXPECT_EQ(world.screen.Shown().front().picture->time, 45000);
    (void)filter->Stop();
    Part(*source->pin, *in.Get());
}

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
