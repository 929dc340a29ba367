#include "host/headend/LayerTwoEncoder.h"

#include <cmath>
#include <fstream>
#include <iterator>

#include <gtest/gtest.h>

#include "host/wire/LayerTwo.h"
#include "tests/support/Places.h"

namespace {

using headend::LayerTwoSettings;

wire::ByteVector ReadData(const std::string& name) {
    std::ifstream file(std::string(testing_support::SourceDir() + "/tests/data/headend/") + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<float> Sine(int rate, int channels, double seconds) {
    std::vector<float> samples(static_cast<std::size_t>(rate * seconds) * static_cast<std::size_t>(channels));
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] =
            static_cast<float>(0.5 * std::sin(0.06 * static_cast<double>(i / static_cast<std::size_t>(channels))));
    return samples;
}

class ForeignFrames : public ::testing::TestWithParam<const char*> {};

TEST_P(ForeignFrames, CarryTheScaleFactorCrcsOfTheirSuccessor) {
    const wire::ByteVector bytes = ReadData(GetParam());
    const auto header = wire::ParseLayerTwoHeader(bytes);
    ASSERT_TRUE(header);
    const std::size_t size = header->FrameBytes();
    ASSERT_EQ(bytes.size(), 3 * size);
    for (std::size_t i = 0; i < 2; ++i) {
        const wire::ByteSpan frame = wire::ByteSpan(bytes).subspan(i * size, size);
        const wire::ByteVector crcs = headend::ScaleFactorCrcs(wire::ByteSpan(bytes).subspan((i + 1) * size, size));
        ASSERT_EQ(crcs.size(), header->ScfCrcBytes());
        const wire::ByteSpan carried = frame.last(2 + crcs.size()).first(crcs.size());
        EXPECT_EQ(wire::ByteVector(carried.begin(), carried.end()), crcs) << "frame " << i;
    }
}

INSTANTIATE_TEST_SUITE_P(LayerTwo, ForeignFrames,
                         ::testing::Values("layer2-stereo192.mp2", "layer2-mono96.mp2", "layer2-mono64-24k.mp2"));

TEST(LayerTwoEncoder, FramesHaveTheSubChannelsRateAndAGoodCheckSum) {
    for (const LayerTwoSettings settings :
         {LayerTwoSettings{48000, 2, 192, 58}, LayerTwoSettings{48000, 1, 96, 100}, LayerTwoSettings{48000, 1, 48, 12},
          LayerTwoSettings{24000, 1, 64, 58}, LayerTwoSettings{24000, 2, 128, 0}}) {
        SCOPED_TRACE(settings.kbps);
        const auto frames = headend::EncodeLayerTwo(settings, Sine(settings.sampleRate, settings.channels, 0.5));
        ASSERT_GE(frames.size(), 10u);
        for (const wire::ByteVector& frame : frames) {
            const auto header = wire::ParseLayerTwoHeader(frame);
            ASSERT_TRUE(header);
            EXPECT_EQ(header->bitRate, settings.kbps);
            EXPECT_EQ(header->sampleRate, settings.sampleRate);
            EXPECT_EQ(header->Channels(), settings.channels);
            EXPECT_EQ(frame.size(), header->FrameBytes());
            EXPECT_TRUE(wire::LayerTwoCrcOk(*header, frame));
        }
    }
}

TEST(LayerTwoEncoder, CoderRateLeavesRoomForPad) {
    EXPECT_EQ(headend::LayerTwoCoderKbps({48000, 2, 192, 58}), 160);
    EXPECT_EQ(headend::LayerTwoCoderKbps({48000, 2, 192, 100}), 128);
    EXPECT_EQ(headend::LayerTwoCoderKbps({48000, 1, 64, 58}), 0) << "56 kbit/s leaves 24 bytes, 48 has another table";
    EXPECT_EQ(headend::LayerTwoCoderKbps({48000, 2, 130, 0}), 0) << "no such rate";
    EXPECT_EQ(headend::LayerTwoCoderKbps({48000, 2, 56, 0}), 0) << "one channel only";
}

TEST(LayerTwoEncoder, ImpossibleSettingsAreRefused) {
    EXPECT_THROW((void)headend::EncodeLayerTwo({48000, 2, 192, 900}, {}), std::runtime_error);
}

} // namespace
