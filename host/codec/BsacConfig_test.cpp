#include "host/codec/BsacConfig.h"

#include <gtest/gtest.h>

namespace {

using codec::BsacConfig;
using codec::ParseBsacConfig;
using Bytes = std::vector<std::uint8_t>;

TEST(BsacConfig, ReadsFortyEightKilohertzStereo) {
    const auto config = ParseBsacConfig(Bytes{0xB1, 0x91, 0x08, 0x00, 0x00});
    ASSERT_TRUE(config);
    EXPECT_EQ(config->SampleRate(), 48000U);
    EXPECT_EQ(config->channels, 2U);
    EXPECT_EQ(config->subFrames, 1U);
    EXPECT_EQ(config->layerLength, 0U);
}

TEST(BsacConfig, ReadsTwoSubFrames) {
    const auto config = ParseBsacConfig(Bytes{0xB3, 0x11, 0x10, 0x00, 0x00});
    ASSERT_TRUE(config);
    EXPECT_EQ(config->SampleRate(), 24000U);
    EXPECT_EQ(config->subFrames, 2U);
}

TEST(BsacConfig, WritesWhatItReads) {
    for (unsigned rate : {48000U, 44100U, 32000U, 24000U, 22050U, 16000U, 12000U, 11025U, 8000U}) {
        for (unsigned channels : {1U, 2U}) {
            const BsacConfig sent{codec::FindRate(rate), channels, 31, 2047};
            const auto got = ParseBsacConfig(codec::WriteBsacConfig(sent));
            ASSERT_TRUE(got);
            EXPECT_EQ(got->rate, sent.rate);
            EXPECT_EQ(got->channels, sent.channels);
            EXPECT_EQ(got->subFrames, 31U);
            EXPECT_EQ(got->layerLength, 2047U);
        }
    }
}

TEST(BsacConfig, CountsZeroSubFramesAsOne) {
    const BsacConfig sent{codec::FindRate(48000), 2, 0, 0};
    EXPECT_EQ(ParseBsacConfig(codec::WriteBsacConfig(sent))->subFrames, 1U);
}

TEST(BsacConfig, RefusesWhatItHasNoRulesFor) {
    EXPECT_FALSE(ParseBsacConfig(Bytes{})) << "nothing";
    EXPECT_FALSE(ParseBsacConfig(Bytes{0xB1, 0x91, 0x08, 0x00})) << "cut short";
    EXPECT_FALSE(ParseBsacConfig(Bytes{0x11, 0x90, 0x00, 0x00, 0x00})) << "AAC LC";
    EXPECT_FALSE(ParseBsacConfig(Bytes{0xB7, 0x80, 0x5D, 0xC0, 0x10, 0x80, 0, 0})) << "explicit rate";
    EXPECT_FALSE(ParseBsacConfig(Bytes{0xB0, 0x11, 0x08, 0x00, 0x00})) << "96 kHz";
    EXPECT_FALSE(ParseBsacConfig(Bytes{0xB1, 0x81, 0x08, 0x00, 0x00})) << "channel configuration 0";
    EXPECT_FALSE(ParseBsacConfig(Bytes{0xB1, 0x99, 0x08, 0x00, 0x00})) << "three channels";
    EXPECT_FALSE(ParseBsacConfig(Bytes{0xB1, 0x95, 0x08, 0x00, 0x00})) << "960-sample frames";
    EXPECT_FALSE(ParseBsacConfig(Bytes{0xB1, 0x93, 0x08, 0x00, 0x00})) << "core coder";
    EXPECT_FALSE(ParseBsacConfig(Bytes{0xB1, 0x90, 0x08, 0x00, 0x00})) << "no extension fields";
    EXPECT_FALSE(ParseBsacConfig(Bytes{0xB1, 0x91, 0x08, 0x00, 0x01 << 5})) << "error protection";
}

} // namespace
