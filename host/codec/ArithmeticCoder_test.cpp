#include "host/codec/ArithmeticDecoder.h"
#include "host/codec/ArithmeticEncoder.h"

#include <array>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace codec;

// The start of a 44.1 kHz mono block, the one of BlockHeader_test: its arithmetic part begins at byte 9.
constexpr std::array<std::uint8_t, 28> kBlock{0x15, 0xA4, 0x80, 0xE0, 0x50, 0x7F, 0x50, 0xB8, 0x00, 0xFC,
                                              0xC6, 0x11, 0xAD, 0x6E, 0xBC, 0x13, 0x4B, 0x10, 0x1E, 0x36,
                                              0x24, 0x0E, 0xCF, 0x43, 0xA8, 0x08, 0x22, 0xDA};

constexpr int kPlenty = 1000000; // more than any test spends

// The next bit of a decoder with budget left.
unsigned Bit(ArithmeticDecoder& decoder, unsigned p0) {
    EXPECT_FALSE(decoder.Spent());
    return decoder.Bit(p0);
}

std::vector<std::uint8_t> RandomBytes(std::mt19937& random, std::size_t count) {
    std::vector<std::uint8_t> bytes(count);
    for (auto& byte : bytes)
        byte = static_cast<std::uint8_t>(random());
    return bytes;
}

TEST(ArithmeticDecoder, DecodesTheStartOfARealBlockWithItsCosts) {
    ArithmeticDecoder decoder;
    decoder.Start(kBlock, 72, 224);
    auto cost = [&decoder, before = 0]() mutable {
        const int spent = before - decoder.Budget();
        before = decoder.Budget();
        return spent;
    };
    EXPECT_EQ(decoder.Symbol(kCbandSiBand0Model), 5U);
    EXPECT_EQ(cost(), 6);
    constexpr unsigned kSymbols[] = {60, 60, 45, 60, 51, 53, 60, 47};
    constexpr int kCosts[] = {10, 10, 10, 10, 10, 10, 10, 9};
    for (std::size_t i = 0; i < std::size(kSymbols); ++i) {
        EXPECT_EQ(decoder.Symbol(kScalefactorModels[7]), kSymbols[i]);
        EXPECT_EQ(cost(), kCosts[i]);
    }
    EXPECT_TRUE(decoder.Spent()) << "side information is read with debts, planes are not";
    decoder.Grant(91);
    EXPECT_EQ(decoder.Budget(), 91 - 85);
    static_cast<void>(cost());
    EXPECT_EQ(Bit(decoder, 15616), 0U);
    EXPECT_EQ(cost(), 0);
    EXPECT_EQ(Bit(decoder, 15616), 0U);
    EXPECT_EQ(cost(), 1);
}

TEST(ArithmeticDecoder, IsSpentExactlyWhenItsBudgetIs) {
    std::mt19937 random(5);
    const std::vector<std::uint8_t> bytes = RandomBytes(random, 400);
    ArithmeticDecoder stepwise;
    ArithmeticDecoder plain;
    stepwise.Start(bytes, 0, 3200);
    plain.Start(bytes, 0, 3200);
    plain.Grant(kPlenty);
    int granted = 0;
    for (int i = 0; i < 2500; ++i) {
        while (stepwise.Spent()) {
            ASSERT_LE(stepwise.Budget(), 0);
            const int bits = static_cast<int>(random() % 40) - 10; // may even take away
            stepwise.Grant(bits);
            granted += bits;
        }
        ASSERT_GT(stepwise.Budget(), 0);
        const unsigned p0 = 1 + static_cast<unsigned>(random() % 16383);
        if (i % 50 == 0) {
            ASSERT_EQ(stepwise.Symbol(kScalefactorModels[3]), plain.Symbol(kScalefactorModels[3]));
        } else {
            ASSERT_EQ(stepwise.Bit(p0), Bit(plain, p0));
        }
        ASSERT_EQ(stepwise.Budget() - granted, plain.Budget() - kPlenty);
    }
}

TEST(ArithmeticDecoder, ReadsZerosPastTheEndOfItsSegment) {
    std::array<std::uint8_t, 8> ones;
    ones.fill(0xFF);
    ArithmeticDecoder decoder;
    decoder.Start(ones, 13, 13); // empty: the value is 0, which is the last symbol of every model
    decoder.Grant(kPlenty);
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(Bit(decoder, 8192), 0U);
        EXPECT_EQ(decoder.Symbol(kCbandSiBand0Model), 22U);
    }
}

TEST(ArithmeticDecoder, AnEvenBitIsABitWithEvenChances) {
    std::mt19937 random(3);
    const std::vector<std::uint8_t> bytes = RandomBytes(random, 200);
    ArithmeticDecoder even;
    ArithmeticDecoder plain;
    even.Start(bytes, 0, 1600);
    plain.Start(bytes, 0, 1600);
    even.Grant(kPlenty);
    plain.Grant(kPlenty);
    for (int i = 0; i < 700; ++i) {
        const unsigned p0 = 256 + static_cast<unsigned>(random() % 15000);
        ASSERT_EQ(Bit(even, p0), Bit(plain, p0));
        ASSERT_FALSE(even.Spent());
        ASSERT_EQ(even.EvenBit(), Bit(plain, kSignP0));
        ASSERT_EQ(even.Budget(), plain.Budget());
    }
}

TEST(ArithmeticDecoder, FillingUpAndZerosAtOnceChangeNothingOfWhatComes) {
    std::mt19937 random(8);
    std::vector<std::uint8_t> bytes(4000);
    for (auto& byte : bytes)
        byte = static_cast<std::uint8_t>(random() & random() & random()); // more zeros than ones
    ArithmeticDecoder quick;
    ArithmeticDecoder plain;
    quick.Start(bytes, 3, 31990);
    plain.Start(bytes, 3, 31990);
    int taken = 0;
    int left = 0;
    for (int i = 0; i < 4000; ++i) {
        const int bits = static_cast<int>(random() % 40);
        quick.Grant(bits);
        plain.Grant(bits);
        if (plain.Spent())
            continue;
        ASSERT_FALSE(quick.Spent());
        quick.FillUp();
        std::array<unsigned, 8> p0{};
        std::uint64_t product = 1;
        for (unsigned& p : p0) {
            p = 40 + static_cast<unsigned>(random() % 24);
            product *= p;
        }
        ArithmeticDecoder ahead = plain;
        unsigned ones = 0;
        for (const unsigned p : p0) {
            ones += ahead.Spent() ? 1 : 0;
            ones += ahead.Bit<64>(p);
        }
        if (quick.TakeZeros<64>(p0, product)) {
            ASSERT_EQ(ones, 0U);
            plain = ahead;
            ++taken;
        } else {
            left += ones == 0 ? 1 : 0;
        }
        ASSERT_EQ(quick.Budget(), plain.Budget());
        while (!plain.Spent()) {
            ASSERT_FALSE(quick.Spent());
            const unsigned p = 1 + static_cast<unsigned>(random() % 63);
            ASSERT_EQ(quick.Bit<64>(p), plain.Bit(p * (kProbabilityScale / 64)));
        }
        ASSERT_TRUE(quick.Spent());
    }
    EXPECT_GT(taken, 300);
    EXPECT_LT(left, taken / 5) << "which are left to go bit by bit where few bits are at hand";
}

TEST(ArithmeticDecoder, AnEvenBitThatIsNotDueChangesNothing) {
    const std::vector<std::uint8_t> bytes(40, 0xB5);
    ArithmeticDecoder decoder;
    ArithmeticDecoder plain;
    decoder.Start(bytes, 0, 320);
    plain.Start(bytes, 0, 320);
    decoder.Grant(kPlenty);
    plain.Grant(kPlenty);
    for (int i = 0; i < 200; ++i) {
        ASSERT_EQ(Bit(decoder, 9000), Bit(plain, 9000));
        ASSERT_FALSE(decoder.Spent());
        unsigned flags = 4;
        decoder.EvenBitIf(0, 1, flags);
        ASSERT_EQ(flags, 4U);
        ASSERT_EQ(decoder.Budget(), plain.Budget());
        decoder.EvenBitIf(1, 1, flags);
        ASSERT_EQ(flags, 4 | Bit(plain, kSignP0));
    }
}

struct Step {
    unsigned model; // 0: a bit, else a scalefactor model
    unsigned p0;
    unsigned wanted;
    unsigned coded;
};

std::vector<Step> RandomSteps(std::mt19937& random, int count, bool withSymbols) {
    std::vector<Step> steps;
    for (int i = 0; i < count; ++i) {
        Step step{withSymbols ? static_cast<unsigned>(random() % 8) : 0, 1 + static_cast<unsigned>(random() % 16383), 0,
                  0};
        step.wanted = step.model == 0 ? random() % 2 : random() % kScalefactorModels[step.model].size();
        steps.push_back(step);
    }
    return steps;
}

TEST(ArithmeticEncoder, IsDecodedToWhatWasEncodedAtEveryBitPosition) {
    std::mt19937 random(11);
    for (std::size_t start = 0; start < 17; ++start) {
        std::vector<Step> steps = RandomSteps(random, 500, true);
        ArithmeticEncoder encoder;
        constexpr std::size_t kBits = 8000;
        encoder.Start({}, start, start + kBits);
        for (Step& step : steps)
            step.coded = step.model == 0 ? encoder.Bit(step.p0, step.wanted)
                                         : encoder.Symbol(kScalefactorModels[step.model], step.wanted);
        ASSERT_TRUE(encoder.Fits());
        wire::BitWriter writer;
        for (std::size_t i = 0; i < start; ++i)
            writer.WriteFlag(true);
        encoder.WriteTo(writer);
        ASSERT_EQ(writer.BitCount(), start + kBits);
        writer.Write(0xFFFFFFFF, 32); // what follows must not matter

        ArithmeticDecoder decoder;
        decoder.Start(writer.Bytes(), start, start + kBits);
        encoder.Grant(kPlenty);
        decoder.Grant(kPlenty);
        for (const Step& step : steps) {
            ASSERT_EQ(step.coded, step.wanted);
            ASSERT_EQ(step.coded,
                      step.model == 0 ? Bit(decoder, step.p0) : decoder.Symbol(kScalefactorModels[step.model]));
        }
        EXPECT_EQ(encoder.Budget(), decoder.Budget());
    }
}

TEST(ArithmeticEncoder, GivesWayAtTheEndOfASegmentAndSaysSo) {
    std::mt19937 random(12);
    int altered = 0;
    for (std::size_t bits = 0; bits < 200; ++bits) {
        std::vector<Step> steps = RandomSteps(random, 400, false);
        ArithmeticEncoder encoder;
        encoder.Start({}, 3, 3 + bits);
        encoder.Grant(static_cast<int>(bits) + 20); // as the last symbols of a block may cost more than is left
        std::size_t coded = 0;
        for (; coded < steps.size() && !encoder.Spent(); ++coded) {
            steps[coded].coded = encoder.Bit(steps[coded].p0, steps[coded].wanted);
            altered += steps[coded].coded != steps[coded].wanted ? 1 : 0;
        }
        if (!encoder.Fits())
            continue; // the last number lay between the children: possible, but rare
        wire::BitWriter writer;
        writer.Write(7, 3);
        encoder.WriteTo(writer);
        ASSERT_EQ(writer.BitCount(), 3 + bits);
        writer.Write(0xFFFFFFFF, 32);
        ArithmeticDecoder decoder;
        decoder.Start(writer.Bytes(), 3, 3 + bits);
        decoder.Grant(kPlenty);
        for (std::size_t i = 0; i < coded; ++i)
            ASSERT_EQ(Bit(decoder, steps[i].p0), steps[i].coded) << bits << ' ' << i;
    }
    EXPECT_GT(altered, 100);
}

TEST(ArithmeticEncoder, TellsWhenSymbolsDoNotFit) {
    ArithmeticEncoder encoder;
    encoder.Start({}, 0, 20);
    for (int i = 0; i < 20; ++i)
        static_cast<void>(encoder.Symbol(kScalefactorModels[7], 3));
    EXPECT_FALSE(encoder.Fits());
}

} // namespace
