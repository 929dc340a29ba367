#include "host/filters/PacketSync.h"

#include <gtest/gtest.h>

using namespace filters;

namespace {

// Packets that carry their number.
Bytes Row(int count, std::size_t stride) {
    Bytes bytes;
    for (int i = 0; i < count; ++i) {
        Bytes packet(stride, 0x10);
        packet[0] = 0x47;
        packet[1] = static_cast<std::uint8_t>(i + 1);
        bytes.insert(bytes.end(), packet.begin(), packet.end());
    }
    return bytes;
}

std::vector<int> Numbers(const Bytes& bytes, std::size_t piece = 100) {
    std::vector<int> numbers;
    PacketSync sync;
    const auto take = [&](ByteSpan packet) {
        EXPECT_EQ(packet.size(), 188u);
        numbers.push_back(packet[1]);
    };
    for (std::size_t at = 0; at < bytes.size(); at += piece)
        sync.Push(ByteSpan(bytes).subspan(at, std::min(piece, bytes.size() - at)), take);
    sync.Finish(take);
    return numbers;
}

} // namespace

TEST(PacketSync, FindsPacketsAtBothDistances) {
    const std::vector<int> wanted = {1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_EQ(Numbers(Row(8, 188)), wanted);
    EXPECT_EQ(Numbers(Row(8, 204)), wanted);
    EXPECT_EQ(Numbers(Row(8, 188), 1), wanted);
}

TEST(PacketSync, StartsAnywhere) {
    Bytes bytes = Row(8, 188);
    bytes.erase(bytes.begin(), bytes.begin() + 90);
    EXPECT_EQ(Numbers(bytes), (std::vector<int>{2, 3, 4, 5, 6, 7, 8}));
}

TEST(PacketSync, OneSpoiltSyncByteCostsOnePacket) {
    Bytes bytes = Row(8, 188);
    bytes[3 * 188] = 0;
    EXPECT_EQ(Numbers(bytes), (std::vector<int>{1, 2, 3, 5, 6, 7, 8}));
}

TEST(PacketSync, FindsItsPlaceAgainAfterMissingBytes) {
    Bytes bytes = Row(12, 188);
    bytes.erase(bytes.begin() + 4 * 188 + 10, bytes.begin() + 4 * 188 + 60);
    const auto numbers = Numbers(bytes);
    EXPECT_EQ(numbers.back(), 12);
    EXPECT_GE(numbers.size(), 10u);
}

TEST(PacketSync, TwoPacketsAloneAreEnoughAtTheEnd) {
    EXPECT_EQ(Numbers(Row(2, 188)), (std::vector<int>{1, 2}));
}

TEST(PacketSync, GivesNothingOutOfNoise) {
    Bytes noise(5000);
    unsigned state = 7;
    for (auto& byte : noise)
        byte = static_cast<std::uint8_t>((state = state * 1103515245 + 12345) >> 16);
    EXPECT_TRUE(Numbers(noise).empty());
}
