#include "jpeg/BitReader.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <vector>

namespace jpeg {
namespace {

using Bytes = std::vector<std::uint8_t>;

unsigned Take(BitReader& reader, int count) {
    reader.Prepare();
    BitCursor bits = reader.Bits();
    bits.Refill();
    const unsigned value = bits.Take(count);
    reader.Resume(bits);
    return value;
}

std::unique_ptr<BitReader> Open(const Bytes& bytes) {
    auto reader = std::make_unique<BitReader>();
    reader->Open(bytes);
    return reader;
}

TEST(BitReader, TakesBitsMostSignificantFirst) {
    const Bytes bytes = {0b10110011, 0b01010101};
    const auto reader = Open(bytes);
    EXPECT_EQ(Take(*reader, 1), 1u);
    EXPECT_EQ(Take(*reader, 3), 0b011u);
    EXPECT_EQ(Take(*reader, 0), 0u);
    EXPECT_EQ(Take(*reader, 8), 0b00110101u);
}

TEST(BitReader, StuffedZeroGivesADataByte) {
    const Bytes bytes = {0xFF, 0x00, 0x12};
    const auto reader = Open(bytes);
    EXPECT_EQ(Take(*reader, 16), 0xFF12u);
}

TEST(BitReader, FillBytesAreSkipped) {
    const Bytes bytes = {0xFF, 0xFF, 0xFF, 0x00, 0x12};
    const auto reader = Open(bytes);
    EXPECT_EQ(Take(*reader, 16), 0xFF12u);
}

TEST(BitReader, AMarkerStopsTheBytes) {
    const Bytes bytes = {0x12, 0xFF, 0xFF, 0xD9, 0x34};
    const auto reader = Open(bytes);
    EXPECT_EQ(Take(*reader, 16), 0x1200u);
    EXPECT_EQ(reader->SourcePosition(), 2u); // of the prefix right before the code
}

TEST(BitReader, ShortDataReadsAsZerosAndIsFlagged) {
    const Bytes bytes = {0xAB};
    const auto reader = Open(bytes);
    EXPECT_EQ(Take(*reader, 8), 0xABu);
    EXPECT_FALSE(reader->RanShort());
    EXPECT_EQ(Take(*reader, 1), 0u);
    EXPECT_TRUE(reader->RanShort());
    for (int i = 0; i < 1000; ++i) {
        EXPECT_EQ(Take(*reader, 16), 0u);
    }
    EXPECT_TRUE(reader->Exhausted());
    EXPECT_TRUE(reader->RanShort());
}

TEST(BitReader, ALonePrefixAtTheEndIsNoData) {
    const Bytes bytes = {0xAB, 0xFF};
    const auto reader = Open(bytes);
    EXPECT_EQ(Take(*reader, 16), 0xAB00u);
}

TEST(BitReader, LongDataSlidesThroughTheWindow) {
    std::mt19937 random(5);
    Bytes clean;
    Bytes stuffed;
    for (int i = 0; i < 50000; ++i) {
        const auto byte = static_cast<std::uint8_t>(i % 7 == 0 ? 0xFF : random());
        clean.push_back(byte);
        stuffed.push_back(byte);
        if (byte == 0xFF) {
            stuffed.push_back(0);
        }
    }
    const auto reader = Open(stuffed);
    for (std::size_t i = 0; i < clean.size(); ++i) {
        ASSERT_EQ(Take(*reader, 8), clean[i]) << i;
    }
    EXPECT_FALSE(reader->RanShort());
}

TEST(BitReader, RestartBeginsBehindItsMarker) {
    const Bytes bytes = {0x11, 0x22, 0xFF, 0xD0, 0x33, 0xFF, 0xD1, 0x44};
    const auto reader = Open(bytes);
    EXPECT_EQ(Take(*reader, 4), 1u); // the rest of the interval is dropped
    reader->Restart(0);
    EXPECT_EQ(Take(*reader, 8), 0x33u);
    reader->Restart(1);
    EXPECT_EQ(Take(*reader, 8), 0x44u);
}

TEST(BitReader, AMissingIntervalReadsZerosAndTheNextIsFound) {
    const Bytes bytes = {0x11, 0xFF, 0xD1, 0x44, 0xFF, 0xD2, 0x55};
    const auto reader = Open(bytes);
    (void)!Take(*reader, 8);
    reader->Restart(0); // the marker found belongs to the interval after
    EXPECT_EQ(Take(*reader, 8), 0u);
    reader->Restart(1);
    EXPECT_EQ(Take(*reader, 8), 0x44u);
}

TEST(BitReader, AnIntervalSentTwiceIsPassedOver) {
    const Bytes bytes = {0x11, 0xFF, 0xD0, 0x22, 0xFF, 0xD0, 0x33, 0xFF, 0xD1, 0x44};
    const auto reader = Open(bytes);
    reader->Restart(0);
    EXPECT_EQ(Take(*reader, 8), 0x22u);
    reader->Restart(1);
    EXPECT_EQ(Take(*reader, 8), 0x44u);
}

TEST(BitReader, AfterAnotherMarkerNothingRestarts) {
    const Bytes bytes = {0x11, 0xFF, 0xD9, 0xFF, 0xD0, 0x22};
    const auto reader = Open(bytes);
    reader->Restart(0);
    EXPECT_TRUE(reader->Finished());
    EXPECT_EQ(Take(*reader, 8), 0u);
    reader->Restart(0);
    EXPECT_EQ(Take(*reader, 8), 0u);
    EXPECT_EQ(reader->SourcePosition(), 1u);
}

TEST(BitReader, NoDataAtAll) {
    const auto reader = Open({});
    EXPECT_EQ(Take(*reader, 16), 0u);
    reader->Restart(3);
    EXPECT_TRUE(reader->Finished());
}

} // namespace
} // namespace jpeg
