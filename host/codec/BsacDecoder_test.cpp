#include "host/codec/BsacDecoder.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <new>
#include <numbers>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/OuterData.h"
#include "tests/support/Places.h"

namespace {
std::atomic<unsigned long> allocations{0};
}

// Counted, so that a test can see that decoding does without.
[[gnu::noinline]] void* operator new(std::size_t size) {
    ++allocations;
    if (void* memory = std::malloc(size != 0 ? size : 1))
        return memory;
    throw std::bad_alloc();
}
[[gnu::noinline]] void* operator new(std::size_t size, std::align_val_t alignment) {
    ++allocations;
    const auto step = static_cast<std::size_t>(alignment);
    if (void* memory = std::aligned_alloc(step, (size + step - 1) / step * step))
        return memory;
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::align_val_t) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    std::free(memory);
}

namespace {

using namespace codec;
using Bytes = std::vector<std::uint8_t>;
using Samples = std::vector<std::int16_t>;

Bytes ReadFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<Bytes> ReadUnits(const std::filesystem::path& path) {
    const Bytes file = ReadFile(path);
    std::vector<Bytes> units;
    for (std::size_t i = 0; i + 2 <= file.size();) {
        const std::size_t length = static_cast<std::size_t>(file[i]) << 8 | file[i + 1];
        i += 2;
        units.emplace_back(file.begin() + static_cast<std::ptrdiff_t>(i),
                           file.begin() + static_cast<std::ptrdiff_t>(i + length));
        i += length;
    }
    return units;
}

// The samples behind the 44 bytes of a plain WAV header.
Samples ReadWav(const std::filesystem::path& path) {
    const Bytes file = ReadFile(path);
    Samples samples;
    for (std::size_t i = 44; i + 1 < file.size(); i += 2)
        samples.push_back(static_cast<std::int16_t>(file[i] | file[i + 1] << 8));
    return samples;
}

struct Stream {
    const char* name;
    unsigned rate;
    unsigned channels;
    unsigned subFrames;
};

constexpr Stream kOwnStreams[] = {{"rate24_m_32", 24000, 1, 1}, {"rate22_s_48", 22050, 2, 1},
                                  {"rnd_48s", 48000, 2, 1},     {"sba_24m_32", 24000, 1, 1},
                                  {"tiny_48m", 48000, 1, 1},    {"snf3_44m_win", 44100, 1, 1},
                                  {"groups_44s", 44100, 2, 1},  {"mix_44m_48", 44100, 1, 1}};
constexpr Stream kOuterStreams[] = {
    {"sine_48s_96", 48000, 2, 1}, {"mix_48s_96_auto", 48000, 2, 1}, {"mix_44m_48_sba", 44100, 1, 1},
    {"mix_48m_64", 48000, 1, 1},  {"tns_48s_96", 48000, 2, 1},      {"is_48s_64", 48000, 2, 1},
    {"top0_48s", 48000, 2, 1},    {"silent_48s", 48000, 2, 1},      {"nsub2_48s", 48000, 2, 2}};

const std::filesystem::path kOwnData = std::filesystem::path(testing_support::SourceDir()) / "tests/data/bsac";

BsacConfig ConfigOf(const Stream& stream) {
    return {FindRate(stream.rate), stream.channels, stream.subFrames, 0};
}

Samples Decode(BsacDecoder& decoder, const std::vector<Bytes>& units, BsacStatus expected = BsacStatus::kOk) {
    Samples samples;
    for (const Bytes& unit : units) {
        decoder.Push(unit);
        while (const auto block = decoder.Next()) {
            EXPECT_EQ(block->status, expected);
            samples.insert(samples.end(), block->samples.begin(), block->samples.end());
        }
    }
    return samples;
}

void ExpectNearReference(const Stream& stream, const std::filesystem::path& folder) {
    SCOPED_TRACE(stream.name);
    BsacDecoder decoder(ConfigOf(stream));
    const Samples got = Decode(decoder, ReadUnits(folder / (std::string(stream.name) + ".bsac")));
    const Samples reference = ReadWav(folder / (std::string(stream.name) + ".ref.wav"));
    ASSERT_FALSE(reference.empty());
    ASSERT_EQ(got.size(), reference.size());
    for (unsigned c = 0; c < stream.channels; ++c) {
        double sum = 0;
        int largest = 0;
        for (std::size_t i = c; i < got.size(); i += stream.channels) {
            const int error = got[i] - reference[i];
            sum += static_cast<double>(error) * error;
            largest = std::max(largest, std::abs(error));
        }
        EXPECT_LE(std::sqrt(sum * stream.channels / static_cast<double>(got.size())), 0.5) << "channel " << c;
        EXPECT_LE(largest, 2) << "channel " << c;
    }
}

TEST(BsacDecoder, AgreesWithTheReferenceDecoder) {
    for (const Stream& stream : kOwnStreams)
        ExpectNearReference(stream, kOwnData);
}

TEST(BsacDecoder, AgreesWithTheReferenceDecoderOnMoreStreams) {
    DMB_OUTER_DATA(folder, "bsac/vectors");
    for (const Stream& stream : kOuterStreams)
        ExpectNearReference(stream, folder);
}

// Power in dB of 32 bins each, 1..512, of Hann-windowed transforms of 1024 samples, averaged over all but the first.
std::vector<double> BandPowers(const Samples& samples, unsigned channels, unsigned channel) {
    constexpr unsigned kSize = 1024;
    std::vector<double> cosine(kSize);
    for (unsigned i = 0; i < kSize; ++i)
        cosine[i] = std::cos(2 * std::numbers::pi * i / kSize);
    std::vector<double> bands(16);
    const std::size_t frames = samples.size() / channels / kSize;
    for (std::size_t f = 1; f < frames; ++f) {
        std::array<double, kSize> x;
        for (unsigned n = 0; n < kSize; ++n)
            x[n] = samples[(f * kSize + n) * channels + channel] *
                   (0.5 - 0.5 * std::cos(2 * std::numbers::pi * n / (kSize - 1)));
        for (unsigned bin = 1; bin <= 512; ++bin) {
            double real = 0;
            double imaginary = 0;
            for (unsigned n = 0; n < kSize; ++n) {
                real += x[n] * cosine[bin * n % kSize];
                imaginary += x[n] * cosine[(bin * n + kSize / 4) % kSize];
            }
            bands[(bin - 1) / 32] += real * real + imaginary * imaginary;
        }
    }
    for (double& band : bands)
        band = 10 * std::log10(band / static_cast<double>(frames - 1));
    return bands;
}

TEST(BsacDecoder, NoiseSubstitutionHasTheBandPowersOfTheReferenceDecoder) {
    DMB_OUTER_DATA(folder, "bsac/vectors");
    const Stream stream{"pns_48s_96_ms1", 48000, 2, 1};
    BsacDecoder decoder(ConfigOf(stream));
    const Samples got = Decode(decoder, ReadUnits(folder / "pns_48s_96_ms1.bsac"));
    const Samples reference = ReadWav(folder / "pns_48s_96_ms1.ref.wav");
    ASSERT_EQ(got.size(), reference.size());
    for (unsigned c = 0; c < 2; ++c) {
        const auto gotBands = BandPowers(got, 2, c);
        const auto referenceBands = BandPowers(reference, 2, c);
        for (std::size_t b = 0; b < gotBands.size(); ++b) {
            if (referenceBands[b] <= 60)
                continue;
            EXPECT_NEAR(gotBands[b], referenceBands[b], 2) << "channel " << c << " band " << b;
        }
    }
}

class OneStream : public ::testing::Test {
protected:
    const Stream stream{"groups_44s", 44100, 2, 1};
    const std::vector<Bytes> units = ReadUnits(kOwnData / "groups_44s.bsac");
    BsacDecoder decoder{ConfigOf(stream)};
};

TEST_F(OneStream, FlushStartsAnewAsForTheFirstBlock) {
    const Samples first = Decode(decoder, units);
    decoder.Push(units[5]);
    decoder.Flush();
    EXPECT_FALSE(decoder.Next()) << "the unit is gone";
    EXPECT_EQ(Decode(decoder, units), first);
}

TEST_F(OneStream, NothingIsAllocatedAfterConfiguration) {
    const unsigned long before = allocations;
    unsigned blocks = 0;
    for (const Bytes& unit : units) {
        decoder.Push(unit);
        while (const auto block = decoder.Next())
            ++blocks;
    }
    decoder.Push({});
    while (const auto block = decoder.Next())
        ++blocks;
    decoder.Flush();
    EXPECT_EQ(allocations, before);
    EXPECT_EQ(blocks, units.size() + 1);
}

double Loudness(std::span<const std::int16_t> samples) {
    double sum = 0;
    for (const double sample : samples)
        sum += sample * sample;
    return std::sqrt(sum / static_cast<double>(samples.size()));
}

TEST_F(OneStream, LostUnitsFadeToSilence) {
    static_cast<void>(Decode(decoder, {units.begin(), units.begin() + 10}));
    std::vector<double> loudness;
    for (int i = 0; i < 14; ++i) {
        decoder.Push({});
        const auto block = decoder.Next();
        ASSERT_TRUE(block);
        EXPECT_EQ(block->status, BsacStatus::kMissing);
        loudness.push_back(Loudness(block->samples));
        EXPECT_FALSE(decoder.Next());
    }
    EXPECT_GT(loudness[1], 0);
    for (std::size_t i = 3; i < loudness.size(); ++i)
        EXPECT_LE(loudness[i], loudness[i - 1]);
    EXPECT_EQ(loudness.back(), 0);
}

TEST_F(OneStream, AfterALossTheNextButOneGoodBlockIsWhole) {
    const Samples whole = Decode(decoder, units);
    decoder.Flush();
    std::vector<Bytes> broken = units;
    broken[20].clear();
    Samples samples;
    for (const Bytes& unit : broken) {
        decoder.Push(unit);
        while (const auto block = decoder.Next())
            samples.insert(samples.end(), block->samples.begin(), block->samples.end());
    }
    ASSERT_EQ(samples.size(), whole.size());
    const std::size_t good = std::size_t{22} * 2048;
    EXPECT_TRUE(std::equal(samples.begin() + good, samples.end(), whole.begin() + good));
    EXPECT_TRUE(std::equal(samples.begin(), samples.begin() + std::size_t{20} * 2048, whole.begin()));
}

TEST_F(OneStream, ABlockLengthOfZeroGivesUpTheRestOfTheUnit) {
    Bytes unit = units[3];
    unit[0] = 0;
    unit[1] &= 0x1F;
    decoder.Push(unit);
    const auto block = decoder.Next();
    ASSERT_TRUE(block);
    EXPECT_EQ(block->status, BsacStatus::kBadLength);
    EXPECT_FALSE(decoder.Next());
}

TEST_F(OneStream, AShortenedUnitDecodesWithFewerLayers) {
    const Samples whole = Decode(decoder, units);
    double before = 0;
    for (const double part : {0.4, 0.6, 0.8, 0.95}) {
        std::vector<Bytes> cut = units;
        for (Bytes& unit : cut)
            unit.resize(static_cast<std::size_t>(static_cast<double>(unit.size()) * part));
        decoder.Flush();
        const Samples samples = Decode(decoder, cut, BsacStatus::kShortened);
        ASSERT_EQ(samples.size(), whole.size());
        double signal = 0;
        double noise = 0;
        for (std::size_t i = 0; i < whole.size(); ++i) {
            const double x = whole[i];
            signal += x * x;
            noise += (x - samples[i]) * (x - samples[i]);
        }
        const double ratio = 10 * std::log10(signal / noise);
        EXPECT_GT(ratio, before) << part;
        before = ratio;
    }
    EXPECT_GT(before, 15) << "dB with 95 % of each unit";
}

TEST_F(OneStream, AUnitCutBeforeItsFirstLayerEndsIsMissing) {
    Bytes unit = units[3];
    unit.resize(16);
    decoder.Push(unit);
    EXPECT_EQ(decoder.Next()->status, BsacStatus::kMissing);
    EXPECT_FALSE(decoder.Next());
}

TEST_F(OneStream, ABadBlockDoesNotHinderTheNextOneInItsUnit) {
    const Bytes& unit = units[3];
    // All fields but the length at their largest: more bands than there are.
    Bytes bad = units[3];
    std::fill(bad.begin() + 2, bad.end(), std::uint8_t{0xFF});
    bad.insert(bad.end(), unit.begin(), unit.end());
    decoder.Push(bad);
    const auto first = decoder.Next();
    ASSERT_TRUE(first);
    EXPECT_FALSE(IsDecoded(first->status));
    const auto second = decoder.Next();
    ASSERT_TRUE(second);
    EXPECT_EQ(second->status, BsacStatus::kOk);
    EXPECT_FALSE(decoder.Next());
}

TEST(BsacDecoder, AUnitWithSubFramesIsCountedOutAfterAnError) {
    BsacDecoder decoder(BsacConfig{FindRate(44100), 2, 4, 0});
    Bytes unit = ReadUnits(kOwnData / "groups_44s.bsac")[0];
    unit.push_back(0); // frame_length 0
    unit.push_back(0);
    decoder.Push(unit);
    std::vector<BsacStatus> statuses;
    while (const auto block = decoder.Next())
        statuses.push_back(block->status);
    EXPECT_EQ(statuses,
              (std::vector{BsacStatus::kOk, BsacStatus::kBadLength, BsacStatus::kMissing, BsacStatus::kMissing}));
}

TEST(BsacDecoder, RandomBytesGiveWholeBlocks) {
    std::mt19937 random(9);
    for (const Stream& stream : kOwnStreams) {
        BsacDecoder decoder(ConfigOf(stream));
        for (int i = 0; i < 300; ++i) {
            Bytes unit(random() % 700);
            for (std::uint8_t& byte : unit)
                byte = static_cast<std::uint8_t>(random());
            if (unit.size() > 2 && i % 2 == 0) { // a block as long as the unit
                unit[0] = static_cast<std::uint8_t>(unit.size() >> 3);
                unit[1] = static_cast<std::uint8_t>(unit.size() << 5 | (unit[1] & 0x1F));
            }
            decoder.Push(unit);
            unsigned blocks = 0;
            while (const auto block = decoder.Next()) {
                ASSERT_EQ(block->samples.size(), std::size_t{kSamplesPerBlock} * stream.channels);
                ++blocks;
            }
            ASSERT_GE(blocks, 1U);
            ASSERT_LE(blocks, BsacDecoder::kMaxBlocksPerUnit);
        }
    }
}

TEST(BsacDecoder, DamagedStreamsGiveWholeBlocks) {
    std::mt19937 random(10);
    for (const Stream& stream : kOwnStreams) {
        BsacDecoder decoder(ConfigOf(stream));
        std::vector<Bytes> units = ReadUnits(kOwnData / (std::string(stream.name) + ".bsac"));
        for (Bytes& unit : units) {
            for (int i = 0; i < 3; ++i)
                unit[2 + random() % (unit.size() - 2)] ^= static_cast<std::uint8_t>(1U << random() % 8);
            decoder.Push(unit);
            while (const auto block = decoder.Next())
                ASSERT_EQ(block->samples.size(), std::size_t{kSamplesPerBlock} * stream.channels);
        }
    }
}

} // namespace
