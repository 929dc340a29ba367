#include "host/codec/av/LayerTwoDecoder.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

#include <gtest/gtest.h>

namespace codec {
namespace {

// A layer II frame of 192 kbit/s at 48 kHz whose bit allocation is zero throughout: silence.
std::vector<std::uint8_t> SilentFrame(bool halfRate) {
    std::vector<std::uint8_t> frame(halfRate ? 384 : 576, 0);
    frame[0] = 0xFF;
    frame[1] = halfRate ? 0xF5 : 0xFD; // layer II, no check sum
    frame[2] = halfRate ? 0x84 : 0xA4; // 64 kbit/s at 24 kHz, 192 kbit/s at 48 kHz
    frame[3] = halfRate ? 0xC0 : 0x00; // single channel, stereo
    return frame;
}

TEST(LayerTwoDecoder, GivesTheSamplesOfEachFrameAtOnce) {
    LayerTwoDecoder decoder;
    LayerTwoSamples samples;
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(decoder.Decode(SilentFrame(false), samples));
        EXPECT_EQ(samples.sampleRate, 48000);
        EXPECT_EQ(samples.channels, 2);
        EXPECT_EQ(samples.interleaved.size(), 2u * 1152u);
        EXPECT_TRUE(std::all_of(samples.interleaved.begin(), samples.interleaved.end(),
                                [](std::int16_t sample) { return sample == 0; }));
    }
}

TEST(LayerTwoDecoder, FollowsAChangeOfFormat) {
    LayerTwoDecoder decoder;
    LayerTwoSamples samples;
    ASSERT_TRUE(decoder.Decode(SilentFrame(false), samples));
    ASSERT_TRUE(decoder.Decode(SilentFrame(true), samples));
    EXPECT_EQ(samples.sampleRate, 24000);
    EXPECT_EQ(samples.channels, 1);
    EXPECT_EQ(samples.interleaved.size(), 1152u);
}

TEST(LayerTwoDecoder, RefusesWhatIsNoFrameAndGoesOn) {
    LayerTwoDecoder decoder;
    LayerTwoSamples samples;
    EXPECT_FALSE(decoder.Decode(std::vector<std::uint8_t>(576, 0x55), samples));
    EXPECT_FALSE(decoder.Decode({}, samples));
    EXPECT_TRUE(decoder.Decode(SilentFrame(false), samples));
}

} // namespace
} // namespace codec
