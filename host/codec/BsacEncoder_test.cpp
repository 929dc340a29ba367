#include "host/codec/BsacEncoder.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>
#include <span>
#include <vector>

#include <gtest/gtest.h>

#include "host/codec/BlockHeader.h"
#include "host/codec/BsacDecoder.h"
#include "host/codec/TransientDetector.h"

namespace {

using namespace codec;
using Samples = std::vector<std::int16_t>;

// Three tones a channel, and clicks every 5000 samples.
Samples Sound(unsigned rate, unsigned channels, std::size_t count) {
    Samples samples(count * channels);
    for (std::size_t n = 0; n < count; ++n) {
        const double t = static_cast<double>(n) / rate;
        const double click =
            9000 * std::exp(-static_cast<double>(n % 5000) / 60.0) * std::sin(static_cast<double>(n % 5000) * 0.3);
        for (unsigned c = 0; c < channels; ++c) {
            double x = click;
            for (const double tone : {330.0, 1100.0, 2750.0})
                x += 2500 * std::sin(2 * std::numbers::pi * tone * (1 + 0.3 * c) * t);
            samples[n * channels + c] = static_cast<std::int16_t>(std::lround(x));
        }
    }
    return samples;
}

struct Result {
    Samples decoded;
    std::vector<WindowSequence> sequences;
    std::size_t bytes = 0;
};

Result ThereAndBack(const BsacEncoderSettings& settings, const Samples& samples) {
    Result result;
    BsacEncoder encoder(settings);
    const auto config = ParseBsacConfig(WriteBsacConfig(encoder.Config()));
    EXPECT_TRUE(config);
    BsacDecoder decoder(*config);
    const std::size_t block = std::size_t{kSamplesPerBlock} * settings.channels;
    for (std::size_t start = 0; start + block <= samples.size(); start += block) {
        const auto unit = encoder.Encode(std::span(samples).subspan(start, block));
        BlockHeader header;
        EXPECT_EQ(ReadBlockHeader(unit, *config->rate, settings.channels, header), BsacStatus::kOk);
        EXPECT_EQ(header.frameLength, unit.size());
        result.sequences.push_back(header.windowSequence);
        result.bytes += unit.size();
        decoder.Push(unit);
        while (const auto decoded = decoder.Next()) {
            EXPECT_EQ(decoded->status, BsacStatus::kOk);
            result.decoded.insert(result.decoded.end(), decoded->samples.begin(), decoded->samples.end());
        }
    }
    return result;
}

double Ratio(const Samples& samples, const Samples& decoded, unsigned channels) {
    const std::size_t delay = std::size_t{BsacEncoder::kDelaySamples} * channels;
    double signal = 0;
    double noise = 0;
    for (std::size_t i = 0; i + delay < decoded.size(); ++i) {
        const double x = samples[i];
        signal += x * x;
        noise += (x - decoded[i + delay]) * (x - decoded[i + delay]);
    }
    return 10 * std::log10(signal / noise);
}

TEST(BsacEncoder, EveryRateAndChannelCountGivesTheSoundBack) {
    for (unsigned rate : {24000U, 44100U, 48000U}) {
        for (unsigned channels : {1U, 2U}) {
            for (unsigned bits : {32000U, 64000U, 96000U, 128000U}) {
                SCOPED_TRACE(std::to_string(rate) + " Hz " + std::to_string(channels) + " " + std::to_string(bits));
                const Samples samples = Sound(rate, channels, std::size_t{30} * 1024);
                const Result result = ThereAndBack({rate, channels, bits}, samples);
                ASSERT_EQ(result.decoded.size(), samples.size());
                EXPECT_GT(Ratio(samples, result.decoded, channels), bits / channels >= 32000 ? 15 : 8);
                // Whole bytes a block, right in the long run.
                EXPECT_NEAR(static_cast<double>(result.bytes), bits / 8.0 * 30 * 1024 / rate, 1);
            }
        }
    }
}

TEST(BsacEncoder, ClicksGetShortWindowsAndTonesLongOnes) {
    const auto count = [](const Result& result, WindowSequence sequence) {
        return std::count(result.sequences.begin(), result.sequences.end(), sequence);
    };
    Samples tone(std::size_t{30} * 1024);
    for (std::size_t n = 0; n < tone.size(); ++n)
        tone[n] = static_cast<std::int16_t>(std::lround(8000 * std::sin(0.05 * static_cast<double>(n))));
    const Result steady = ThereAndBack({48000, 1, 64000}, tone);
    EXPECT_LE(count(steady, WindowSequence::kShort), 2) << "only where the tone begins";
    Samples clicks(tone.size());
    for (std::size_t n = 3000; n < clicks.size(); n += 7000)
        clicks[n] = 20000;
    const Result sharp = ThereAndBack({48000, 1, 64000}, clicks);
    EXPECT_GE(count(sharp, WindowSequence::kShort), 4);
    EXPECT_EQ(count(sharp, WindowSequence::kStart), count(sharp, WindowSequence::kStop));
}

TEST(BsacEncoder, SilenceIsSilent) {
    const Samples zeros(std::size_t{10} * 2048);
    const Result result = ThereAndBack({48000, 2, 96000}, zeros);
    EXPECT_EQ(result.decoded, zeros);
    EXPECT_EQ(result.bytes, 2560U);
}

TEST(BsacEncoder, LoudNoiseFitsIntoTheSmallestRate) {
    std::mt19937 random(4);
    Samples noise(std::size_t{20} * 2048);
    for (std::int16_t& sample : noise)
        sample = static_cast<std::int16_t>(random());
    for (unsigned rate : {24000U, 44100U, 48000U}) {
        const Result result = ThereAndBack({rate, 2, 32000}, noise);
        EXPECT_EQ(result.decoded.size(), noise.size());
        EXPECT_GT(Ratio(noise, result.decoded, 2), 0);
    }
}

TEST(BsacEncoder, SupportsTheRatesOfBroadcasting) {
    EXPECT_TRUE(IsSupported({24000, 1, 32000}));
    EXPECT_TRUE(IsSupported({48000, 2, 128000}));
    EXPECT_FALSE(IsSupported({32000, 2, 96000}));
    EXPECT_FALSE(IsSupported({48000, 3, 96000}));
    EXPECT_FALSE(IsSupported({48000, 0, 96000}));
    EXPECT_FALSE(IsSupported({48000, 2, 31999}));
    EXPECT_FALSE(IsSupported({48000, 2, 128001}));
}

using Attack = TransientDetector::Attack;

std::vector<WindowSequence> Plan(const std::vector<Attack>& attacks) {
    WindowPlanner planner;
    std::vector<WindowSequence> sequences;
    for (const Attack& attack : attacks)
        sequences.push_back(planner.Plan(attack));
    return sequences;
}

TEST(WindowPlanner, ShortWindowsMeetAnAttackInEitherHalf) {
    using enum WindowSequence;
    const Attack none;
    const Attack early{true, false};
    const Attack late{false, true};
    // The answer lags one block behind the attacks it is given.
    EXPECT_EQ(Plan({none, early, none, none, none}), (std::vector{kLong, kStart, kShort, kStop, kLong}));
    EXPECT_EQ(Plan({none, late, none, none, none}), (std::vector{kLong, kLong, kStart, kShort, kStop}));
    EXPECT_EQ(Plan({none, Attack{true, true}, none, none, none}), (std::vector{kLong, kStart, kShort, kShort, kStop}));
}

TEST(WindowPlanner, ABlockBetweenTwoShortOnesIsShort) {
    using enum WindowSequence;
    const Attack none;
    const Attack early{true, false};
    EXPECT_EQ(Plan({none, early, none, early, none, none}),
              (std::vector{kLong, kStart, kShort, kShort, kShort, kStop}));
}

TEST(TransientDetector, SeesJumpsAndNotSteadySounds) {
    TransientDetector detector;
    std::vector<float> samples(1024);
    for (std::size_t n = 0; n < samples.size(); ++n)
        samples[n] = static_cast<float>(6000 * std::sin(0.2 * static_cast<double>(n)));
    static_cast<void>(detector.Look(samples)); // the beginning is a jump
    const Attack steady = detector.Look(samples);
    EXPECT_FALSE(steady.late);
    std::fill(samples.begin(), samples.end(), 0.0F);
    for (int i = 0; i < 3; ++i)
        static_cast<void>(detector.Look(samples));
    samples[700] = 10000;
    const Attack jump = detector.Look(samples);
    EXPECT_FALSE(jump.early);
    EXPECT_TRUE(jump.late);
}

} // namespace
