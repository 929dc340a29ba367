#include <gtest/gtest.h>

#include "host/medmb/RadioChannel.h"

namespace medmb {
namespace {

using wire::ByteVector;

TEST(RadioChannel, FindsTheFirstHalfOfATwentyFourKilohertzFrame) {
    ByteVector whole(384, 0);
    const ByteVector header = {0xFF, 0xF4, 0x84, 0xC0};
    std::copy(header.begin(), header.end(), whole.begin());
    // All allocations zero: the check sum covers two header bytes and 75 bits of zeros.
    const std::uint16_t crc = wire::AudioCrc(whole, 48, 4 * 4 + 7 * 3 + 19 * 2, wire::AudioCrc(whole, 16, 16));
    wire::Put16(whole, 4, crc);
    const ByteVector first(whole.begin(), whole.begin() + 192);
    const ByteVector second(whole.begin() + 192, whole.end());
    RadioChannel radio;
    EXPECT_FALSE(radio.Push(second));
    EXPECT_FALSE(radio.Push(first));
    auto frame = radio.Push(second);
    ASSERT_TRUE(frame);
    EXPECT_FALSE(frame->damaged);
    EXPECT_EQ(frame->bytes.size(), 384u);
    // A lost half: the next whole one is found again.
    EXPECT_FALSE(radio.Push(first));
    radio.Gap();
    EXPECT_FALSE(radio.Push(second));
    EXPECT_FALSE(radio.Push(first));
    frame = radio.Push(second);
    ASSERT_TRUE(frame);
    EXPECT_FALSE(frame->damaged);
    // Damaged, and told so.
    ByteVector wrong = first;
    wrong[7] ^= 0x80;
    EXPECT_FALSE(radio.Push(wrong));
    frame = radio.Push(second);
    ASSERT_TRUE(frame);
    EXPECT_TRUE(frame->damaged);
    EXPECT_EQ(radio.Count().bad, 1u);
}

TEST(RadioChannel, FramesWithoutCheckSumAreBelievedWhenThereIsNoOtherKind) {
    ByteVector without(384, 0);
    const ByteVector header = {0xFF, 0xFD, 0x84, 0x00};
    std::copy(header.begin(), header.end(), without.begin());
    RadioChannel radio;
    for (int i = 0; i < 3; ++i)
        EXPECT_FALSE(radio.Push(without)->damaged);
    // In a stream with check sums the missing one is a wrong bit.
    ByteVector with = without;
    with[1] = 0xFC;
    const std::size_t bits = 2 * (11 * 4 + 12 * 3 + 4 * 2);
    wire::Put16(with, 4, wire::AudioCrc(with, 48, bits, wire::AudioCrc(with, 16, 16)));
    EXPECT_FALSE(radio.Push(with)->damaged);
    EXPECT_TRUE(radio.Push(without)->damaged);
    EXPECT_FALSE(radio.Push(with)->damaged);
}

} // namespace
} // namespace medmb
