// The decoding filters, each between a scripted upstream and a scripted downstream pin.
#include "tests/filters/SingleFilter.h"

#include "host/filters/SoundDecoderFilter.h"
#include "host/filters/VideoDecoderFilter.h"
#include "host/headend/LayerTwoEncoder.h"
#include "host/headend/Melody.h"

#include <algorithm>
#include <tuple>

using namespace filters_test;

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

// Another size in the middle of the stream, told by its parameter sets alone.
TEST(VideoDecoderFilter, FollowsAnotherSizeInBand) {
    const Units large(MakeService({.seconds = 1, .width = 320, .height = 240}).packets);
    const auto source = Make<ScriptedSource<PictureUnit>>(kH264);
    const auto sink = Make<ScriptedSink<PictureSample>>(kI420);
    const auto filter = Make<VideoDecoderFilter>();
    const auto in = PinOf(*filter.Get(), kInPin);
    const auto out = PinOf(*filter.Get(), kOutPin);
    Join(*source->pin, *in.Get());
    Join(*out.Get(), *sink->pin);
    (void)filter->Pause();
    const std::size_t before = ServiceUnits().video.size();
    for (const auto* units : {&ServiceUnits().video, &large.video, &ServiceUnits().video})
        for (const PictureUnit& unit : *units)
            EXPECT_EQ(source->pin->Deliver(unit), S_OK);
    ASSERT_EQ(sink->samples.size(), 2 * before + large.video.size());
    EXPECT_EQ(sink->samples[before - 1]->width, 160);
    EXPECT_EQ(sink->samples[before]->width, 320);
    EXPECT_EQ(sink->samples[before]->i420.size(), 320u * 240 * 3 / 2);
    EXPECT_EQ(sink->samples.back()->height, 120);
    (void)filter->Stop();
    Part(*source->pin, *in.Get());
    Part(*out.Get(), *sink->pin);
}

// Layer II: two channels, then one at half the rate, then two again, with a damaged frame at a seam.
TEST(SoundDecoderFilter, FollowsTheModeOfLayerTwo) {
    const auto coded = [](int rate, int channels, int kbps) {
        return headend::EncodeLayerTwo(
            {.sampleRate = rate, .channels = channels, .kbps = kbps},
            headend::RenderSound({.melody = "tone:440/660", .sampleRate = rate, .channels = channels}, 0, 1));
    };
    const auto source = Make<ScriptedSource<SoundUnit>>(kLayerTwo);
    const auto sink = Make<ScriptedSink<SoundBlock>>(kPcm);
    const auto filter = Make<SoundDecoderFilter>(CLSID_MP3Decoder, kSubtypeLayerTwo);
    const auto in = PinOf(*filter.Get(), kInPin);
    const auto out = PinOf(*filter.Get(), kOutPin);
    Join(*source->pin, *in.Get());
    Join(*out.Get(), *sink->pin);
    (void)filter->Pause();
    Ticks time = 0;
    for (const auto& [rate, channels, kbps] : {std::tuple{48000, 2, 192}, {24000, 1, 64}, {48000, 2, 128}}) {
        SoundUnit unit;
        AudioFormat format;
        format.codec = AudioCodec::kLayerTwo;
        format.sampleRate = rate;
        format.channels = channels;
        format.samplesPerUnit = 1152;
        unit.format = std::make_shared<const AudioFormat>(format);
        const auto frames = coded(rate, channels, kbps);
        sink->samples.clear();
        for (std::size_t i = 0; i < 12; ++i) {
            unit.unit.time = time;
            unit.unit.bytes = i == 5 ? Bytes{} : frames[i];
            EXPECT_EQ(source->pin->Deliver(unit), S_OK);
            time += format.UnitTicks();
        }
        ASSERT_EQ(sink->samples.size(), 12u);
        for (const SoundBlock& block : sink->samples) {
            EXPECT_EQ(block.sampleRate, rate);
            EXPECT_EQ(block.channels, channels);
            EXPECT_EQ(block.samples.size(), 1152u * static_cast<unsigned>(channels));
        }
        EXPECT_TRUE(sink->samples[5].concealed);
        EXPECT_EQ(sink->samples[5].samples.back(), 0);
        EXPECT_FALSE(sink->samples[11].concealed);
        EXPECT_TRUE(std::ranges::any_of(sink->samples[11].samples, [](std::int16_t s) { return std::abs(s) > 3000; }));
    }
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
