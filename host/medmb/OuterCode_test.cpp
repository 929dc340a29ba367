#include "host/medmb/OuterCode.h"

extern "C" {
#include <fec.h>
}

#include <cstring>
#include <fstream>
#include <random>

#include <gtest/gtest.h>

#include "tests/support/OuterData.h"

namespace medmb {
namespace {

using wire::ByteSpan;
using wire::ByteVector;

ByteVector ReadFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

ByteVector Packets(int count) {
    std::mt19937 random(7);
    ByteVector packets(static_cast<std::size_t>(count) * kTransportPacketBytes);
    for (std::uint8_t& byte : packets)
        byte = static_cast<std::uint8_t>(random());
    for (std::size_t at = 0; at < packets.size(); at += kTransportPacketBytes) {
        packets[at] = 0x47;
        packets[at + 1] &= 0x7F;
    }
    return packets;
}

// Codewords one after the other, not interleaved.
ByteVector Encode(const ByteVector& packets) {
    void* code = init_rs_char(8, 0x11D, 0, 1, 16, 51);
    ByteVector words;
    for (std::size_t at = 0; at < packets.size(); at += kTransportPacketBytes) {
        std::uint8_t word[kCodewordBytes];
        std::memcpy(word, packets.data() + at, kTransportPacketBytes);
        encode_rs_char(code, word, word + kTransportPacketBytes);
        words.insert(words.end(), word, word + kCodewordBytes);
    }
    free_rs_char(code);
    return words;
}

// Twelve branches, byte i on branch i mod 12, delayed by 204 bytes of the stream for each branch.
ByteVector Interleave(const ByteVector& words) {
    ByteVector stream(words.size(), 0);
    for (std::size_t i = 0; i < words.size(); ++i)
        if (const std::size_t to = i + kCodewordBytes * (i % kInterleaverBranches); to < stream.size())
            stream[to] = words[i];
    return stream;
}

ByteVector Decode(OuterDecoder& decoder, ByteSpan stream, std::size_t portion = 1632) {
    ByteVector packets;
    for (std::size_t at = 0; at < stream.size(); at += portion)
        (void)decoder.Push(stream.subspan(at, std::min(portion, stream.size() - at)), packets);
    return packets;
}

constexpr int kCount = 100;
// What stays inside the interleaver at the end: eleven packets and what is not whole.
constexpr int kWhole = kCount - 11;

ByteVector First(const ByteVector& packets, int from, int count) {
    const auto begin = packets.begin() + static_cast<std::ptrdiff_t>(from * static_cast<int>(kTransportPacketBytes));
    return {begin, begin + static_cast<std::ptrdiff_t>(count * static_cast<int>(kTransportPacketBytes))};
}

TEST(OuterCode, UndoesTheCodeInPortionsOfAnySize) {
    const ByteVector packets = Packets(kCount);
    const ByteVector stream = Interleave(Encode(packets));
    for (const std::size_t portion : {24u, 1248u, 1632u, 100000u}) {
        OuterDecoder decoder;
        EXPECT_EQ(Decode(decoder, stream, portion), First(packets, 0, kWhole)) << portion;
        EXPECT_EQ(decoder.Count().corrected, 0u);
    }
}

TEST(OuterCode, StartsAtAnyPhase) {
    const ByteVector packets = Packets(kCount);
    const ByteVector stream = Interleave(Encode(packets));
    // Past the first 2244 bytes, where the delayed branches are still empty.
    for (std::size_t skip = 2244; skip < 2244 + 204; skip += 5) {
        OuterDecoder decoder;
        const ByteVector out = Decode(decoder, ByteSpan(stream).subspan(skip));
        const int first = static_cast<int>((skip + kCodewordBytes - 1) / kCodewordBytes);
        EXPECT_EQ(out, First(packets, first, kWhole - first)) << skip;
    }
}

TEST(OuterCode, EightWrongBytesOfAnyCodewordAreAlwaysCorrected) {
    const ByteVector packets = Packets(kCount);
    std::mt19937 random(3);
    ByteVector words = Encode(packets);
    for (std::size_t word = 0; word < words.size(); word += kCodewordBytes) {
        std::vector<std::size_t> places(kCodewordBytes);
        for (std::size_t i = 0; i < places.size(); ++i)
            places[i] = i;
        std::shuffle(places.begin() + 1, places.end(), random);
        // Also the first byte, of a few: the phase must not depend on every one of them.
        if (word / kCodewordBytes % 5 != 0)
            places.erase(places.begin());
        for (int i = 0; i < 8; ++i)
            words[word + places[static_cast<std::size_t>(i)]] ^= static_cast<std::uint8_t>(1 + random() % 255);
    }
    OuterDecoder decoder;
    EXPECT_EQ(Decode(decoder, Interleave(words)), First(packets, 0, kWhole));
    EXPECT_EQ(decoder.Count().bad, 0u);
    EXPECT_EQ(decoder.Count().bytesCorrected, 8u * kWhole);
    EXPECT_EQ(decoder.Count().resyncs, 0u);
}

TEST(OuterCode, ABurstIsSpreadOverTwelvePackets) {
    const ByteVector packets = Packets(kCount);
    ByteVector stream = Interleave(Encode(packets));
    // Twelve branches, eight bytes each.
    for (std::size_t i = 5000; i < 5000 + 96; ++i)
        stream[i] ^= 0xFF;
    OuterDecoder decoder;
    EXPECT_EQ(Decode(decoder, stream), First(packets, 0, kWhole));
    EXPECT_EQ(decoder.Count().bytesCorrected, 96u);
}

TEST(OuterCode, BeyondRepairIsMarkedAndKeepsItsPlace) {
    const ByteVector packets = Packets(kCount);
    ByteVector words = Encode(packets);
    std::mt19937 random(5);
    for (std::size_t i = 1; i < kCodewordBytes; i += 6)
        words[20 * kCodewordBytes + i] ^= static_cast<std::uint8_t>(1 + random() % 255);
    OuterDecoder decoder;
    const ByteVector out = Decode(decoder, Interleave(words));
    ASSERT_EQ(out.size(), static_cast<std::size_t>(kWhole) * kTransportPacketBytes);
    EXPECT_EQ(out[20 * kTransportPacketBytes], 0x47);
    EXPECT_EQ(out[20 * kTransportPacketBytes + 1] & 0x80, 0x80);
    EXPECT_EQ(First(out, 21, kWhole - 21), First(packets, 21, kWhole - 21));
    EXPECT_EQ(decoder.Count().bad, 1u);
    EXPECT_EQ(decoder.Count().resyncs, 0u);
}

// The packets of `out` that are not marked, each found in `packets` after the one before it; their number.
int GoodPackets(const ByteVector& out, const ByteVector& packets) {
    int good = 0;
    std::size_t at = 0;
    for (std::size_t i = 0; i < out.size(); i += kTransportPacketBytes) {
        if (out[i + 1] & 0x80)
            continue;
        while (at < packets.size() && std::memcmp(&packets[at], &out[i], kTransportPacketBytes) != 0)
            at += kTransportPacketBytes;
        if (at == packets.size())
            return -1;
        ++good;
    }
    return good;
}

TEST(OuterCode, AKnownLossKeepsThePhaseAndCostsOnlyWhatItTouches) {
    const ByteVector packets = Packets(kCount);
    const ByteVector stream = Interleave(Encode(packets));
    constexpr std::size_t kFrame = 1248; // not a multiple of 204
    OuterDecoder decoder;
    ByteVector out;
    bool gap = false;
    for (std::size_t at = 0; at + kFrame <= stream.size(); at += kFrame) {
        if (at == 5 * kFrame)
            (void)decoder.PushLost(kFrame, out);
        else
            gap = decoder.Push(ByteSpan(stream).subspan(at, kFrame), out) || gap;
    }
    EXPECT_EQ(decoder.Count().resyncs, 0u);
    EXPECT_TRUE(gap);
    // 1248 bytes are in at most 6 + 1 + 11 packets; those at the fringe are repaired as erasures.
    EXPECT_GE(GoodPackets(out, packets), static_cast<int>(stream.size() / kFrame * kFrame / kCodewordBytes) - 11 - 18);
}

TEST(OuterCode, AnUnknownLossIsFoundWithinTheInterleaversDepth) {
    const ByteVector packets = Packets(kCount);
    ByteVector stream = Interleave(Encode(packets));
    constexpr std::size_t kLost = 1000;
    stream.erase(stream.begin() + 6000, stream.begin() + 6000 + kLost);
    OuterDecoder decoder;
    const ByteVector out = Decode(decoder, stream);
    EXPECT_EQ(decoder.Count().resyncs, 1u);
    // Lost for good: what overlapped the gap (5 packets and a rest) and the depth of the interleaver on its far side.
    EXPECT_GE(GoodPackets(out, packets), kWhole - 6 - 2 * 11);
    const ByteVector last = First(packets, kWhole - 1, 1);
    EXPECT_EQ(ByteVector(out.end() - static_cast<std::ptrdiff_t>(kTransportPacketBytes), out.end()), last);
}

TEST(OuterCode, RandomFrameLossNeverLosesLongerThanTheDepth) {
    const ByteVector packets = Packets(3000);
    const ByteVector stream = Interleave(Encode(packets));
    constexpr std::size_t kFrame = 1632;
    std::mt19937 random(11);
    OuterDecoder decoder;
    ByteVector out;
    std::size_t touched = 0;
    for (std::size_t at = 0; at + kFrame <= stream.size(); at += kFrame) {
        if (random() % 20 == 0) {
            (void)decoder.PushLost(kFrame, out);
            touched += 8 + 11;
        } else {
            (void)decoder.Push(ByteSpan(stream).subspan(at, kFrame), out);
        }
    }
    EXPECT_EQ(decoder.Count().resyncs, 0u);
    EXPECT_GE(GoodPackets(out, packets), 3000 - 12 - static_cast<int>(touched));
}

TEST(OuterCode, NoiseGivesNoPackets) {
    std::mt19937 random(2);
    ByteVector noise(200000);
    for (std::uint8_t& byte : noise)
        byte = static_cast<std::uint8_t>(random());
    OuterDecoder decoder;
    EXPECT_TRUE(Decode(decoder, noise).empty());
    EXPECT_FALSE(decoder.Locked());
    EXPECT_TRUE(Decode(decoder, ByteVector(100000, 0x47)).empty());
}

TEST(OuterCode, TheForeignCodersStreamComesBack) {
    DMB_OUTER_DATA(coded, "dmb-ts/bsac_annexb.rs204il.bin");
    DMB_OUTER_DATA(source, "dmb-ts/bsac_annexb.dmb");
    OuterDecoder decoder;
    const ByteVector packets = ReadFile(source);
    EXPECT_EQ(Decode(decoder, ReadFile(coded)), First(packets, 0, 1363));
    EXPECT_EQ(decoder.Count().corrected, 0u);
}

} // namespace
} // namespace medmb
