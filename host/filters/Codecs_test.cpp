// The wrappers of the codec library, each on its own.
#include "host/filters/Formats.h"
#include "host/filters/SoundDecoder.h"
#include "host/filters/WavTap.h"
#include "host/filters/av/Resampler.h"
#include "host/filters/av/RgbConverter.h"

#include "host/ce/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

using namespace filters;

TEST(Formats, ReadsAudioSpecificConfig) {
    const AudioFormat bsac = AudioFormatOf(Bytes{0xB1, 0x91, 0x08, 0x00, 0x00});
    EXPECT_EQ(bsac.codec, AudioCodec::kBsac);
    EXPECT_EQ(bsac.sampleRate, 48000);
    EXPECT_EQ(bsac.channels, 2);
    EXPECT_EQ(bsac.samplesPerUnit, 1024);
    const AudioFormat aac = AudioFormatOf(Bytes{0x11, 0x90});
    EXPECT_EQ(aac.codec, AudioCodec::kAac);
    EXPECT_EQ(aac.sampleRate, 48000);
    EXPECT_EQ(aac.UnitTicks(), 1920);
    // Object type 5 at 24 kHz, extended to 48 kHz, over AAC-LC.
    const AudioFormat he = AudioFormatOf(Bytes{0x2B, 0x11, 0x88, 0x00});
    EXPECT_EQ(he.codec, AudioCodec::kAac);
    EXPECT_EQ(he.sampleRate, 48000);
    EXPECT_EQ(he.samplesPerUnit, 2048);
    EXPECT_EQ(AudioFormatOf(Bytes{}).codec, AudioCodec::kUnsupported);
    EXPECT_EQ(AudioFormatOf(Bytes{0xFF}).codec, AudioCodec::kUnsupported);
}

TEST(Formats, KnowsHowLongAConfigurationIs) {
    EXPECT_EQ(AacConfigBits(Bytes{0x11, 0x90}), 16u);
    EXPECT_EQ(AacConfigBits(Bytes{0x2B, 0x11, 0x88, 0x00}), 25u);
    EXPECT_EQ(AacConfigBits(Bytes{0x11, 0x92, 0xFF, 0xFF}), 30u) << "with the delay of a core coder";
    EXPECT_EQ(AacConfigBits(Bytes{0x11, 0x80}), 0u) << "channels in a list of their own";
    EXPECT_EQ(AacConfigBits(Bytes{0xB1, 0x91, 0x08, 0x00, 0x00}), 0u) << "BSAC";
    EXPECT_EQ(AacConfigBits(Bytes{0x11}), 0u);
}

TEST(Resampler, OwnRatePassesUnchanged) {
    Resampler resampler(48000);
    std::vector<std::int16_t> in(2000);
    for (std::size_t i = 0; i < in.size(); ++i)
        in[i] = static_cast<std::int16_t>(i * 17);
    std::vector<std::int16_t> out;
    resampler.Push(in, 48000, 2, out);
    EXPECT_EQ(out, in);
}

TEST(Resampler, OtherRatesKeepTheirPitchAndLoudness) {
    for (const int rate : {24000, 44100}) {
        Resampler resampler(48000);
        std::vector<std::int16_t> in;
        for (int i = 0; i < rate; ++i)
            in.push_back(static_cast<std::int16_t>(8000 * std::sin(2 * std::numbers::pi * 500 * i / rate)));
        std::vector<std::int16_t> out;
        for (std::size_t at = 0; at < in.size(); at += 1000)
            resampler.Push(std::span(in).subspan(at, std::min<std::size_t>(1000, in.size() - at)), rate, 1, out);
        EXPECT_NEAR(static_cast<double>(out.size()) / 2, 48000, 100);
        int crossings = 0;
        int peak = 0;
        for (std::size_t i = 2; i < out.size(); i += 2) {
            crossings += (out[i - 2] < 0) != (out[i] < 0) ? 1 : 0;
            peak = std::max(peak, static_cast<int>(out[i]));
            ASSERT_EQ(out[i], out[i + 1]);
        }
        EXPECT_NEAR(crossings, 1000, 4);
        EXPECT_NEAR(peak, 8000, 80);
    }
}

TEST(Resampler, SpeedChangesTheLength) {
    Resampler resampler(48000);
    resampler.SetSpeed(1000);
    const std::vector<std::int16_t> in(2048, 100);
    std::vector<std::int16_t> out;
    for (int i = 0; i < 1000; ++i)
        resampler.Push(in, 48000, 2, out);
    EXPECT_NEAR(static_cast<double>(out.size()) / 2, 1024000 * 0.999, 40);
}

TEST(SoundDecoder, EndlessDamageIsSilenceOfTheRightLength) {
    SoundDecoder decoder;
    ASSERT_TRUE(decoder.SetFormat(AudioFormatOf(Bytes{0xB1, 0x91, 0x08, 0x00, 0x00})));
    std::size_t samples = 0;
    int loudest = 0;
    for (int i = 0; i < 50; ++i) {
        AccessUnit unit;
        unit.bytes.assign(100, static_cast<std::uint8_t>(i * 7));
        unit.time = i * 1920;
        decoder.Push(unit, [&](const SoundBlock& block) {
            samples += block.samples.size() / 2;
            for (const std::int16_t sample : block.samples)
                loudest = std::max(loudest, std::abs(static_cast<int>(sample)));
        });
    }
    EXPECT_GE(samples, 50u * 1024); // noise may look like several blocks in a unit
    EXPECT_LE(loudest, 32768);
}

TEST(RgbConverter, GreyStaysGrey) {
    Picture picture;
    picture.width = 16;
    picture.height = 16;
    picture.i420.assign(256 + 128, 128);
    RgbConverter converter;
    const auto pixels = converter.Convert(picture);
    ASSERT_EQ(pixels.size(), 256u);
    // 128 of a range of 16 to 235 (ITU-R BT.601).
    for (const std::uint32_t pixel : pixels) {
        EXPECT_NEAR(static_cast<double>(pixel & 0xFF), 130, 2);
        EXPECT_EQ(pixel & 0xFF, pixel >> 16);
    }
    EXPECT_TRUE(converter.Convert({}).empty());
}

TEST(WavTap, WritesAFileThatTellsItsOwnLength) {
    const ce::TemporaryFolder folder;
    const auto path = folder.path() / "a.wav";
    {
        WavTap tap(path);
        ASSERT_TRUE(tap.Ok());
        const std::vector<std::int16_t> samples = {1, -1, 0x1234, -32768};
        tap.OnSound(samples);
    }
    const std::string bytes = ce::ContentOf(path);
    ASSERT_EQ(bytes.size(), 44u + 8);
    EXPECT_EQ(bytes.substr(0, 4) + bytes.substr(8, 8) + bytes.substr(36, 4), "RIFFWAVEfmt data");
    EXPECT_EQ(bytes.substr(4, 4), std::string("\x2C\0\0\0", 4));    // 44: what follows
    EXPECT_EQ(bytes.substr(20, 4), std::string("\1\0\2\0", 4));     // whole numbers, two channels
    EXPECT_EQ(bytes.substr(24, 4), std::string("\x80\xBB\0\0", 4)); // 48000 a second
    EXPECT_EQ(bytes.substr(40, 4), std::string("\x08\0\0\0", 4));
    EXPECT_EQ(bytes.substr(44), std::string("\x01\0\xFF\xFF\x34\x12\0\x80", 8));
    EXPECT_FALSE(WavTap(folder.path() / "none" / "a.wav").Ok());
}
