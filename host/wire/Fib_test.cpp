#include "host/wire/Fib.h"

#include <vector>

#include <gtest/gtest.h>

namespace wire {
namespace {

// From a foreign recording: FIG 0/1 and FIG 0/2, end marker, check sum.
const ByteVector kForeignFib = {0x0F, 0x01, 0xFD, 0x26, 0x94, 0x2A, 0x24, 0xEC, 0x19, 0x08, 0x8C,
                                0x88, 0x60, 0x04, 0x00, 0x2D, 0x0B, 0x02, 0xE2, 0x01, 0x01, 0x00,
                                0x06, 0xE2, 0x02, 0x01, 0x00, 0x0A, 0xFF, 0x00, 0x32, 0x8A};

std::vector<std::pair<int, std::size_t>> Groups(const ByteVector& fib) {
    std::vector<std::pair<int, std::size_t>> groups;
    ForEachFig(fib, [&](const Fig& fig) { groups.emplace_back(fig.type, fig.data.size()); });
    return groups;
}

TEST(Fib, ReadsAForeignBlock) {
    EXPECT_TRUE(FibCrcOk(kForeignFib));
    EXPECT_EQ(Groups(kForeignFib), (std::vector<std::pair<int, std::size_t>>{{0, 15}, {0, 11}}));
}

TEST(Fib, AnyWrongBitSpoilsTheCheckSum) {
    for (std::size_t bit = 0; bit < kFibBytes * 8; ++bit) {
        ByteVector fib = kForeignFib;
        fib[bit / 8] ^= static_cast<std::uint8_t>(0x80 >> bit % 8);
        EXPECT_FALSE(FibCrcOk(fib)) << bit;
    }
}

TEST(Fib, AnEmptyGroupEndsTheBlock) {
    ByteVector fib(32, 0);
    fib[0] = 0x21;
    fib[2] = 0x20; // type 1, length 0
    fib[3] = 0x21;
    EXPECT_EQ(Groups(fib).size(), 1u);
}

TEST(Fib, AGroupThatRunsOverTheFieldEndsTheBlock) {
    ByteVector fib(32, 0);
    fib[0] = 0x1C;  // 28 bytes: ends at 29
    fib[29] = 0x01; // one byte more than there is
    EXPECT_EQ(Groups(fib).size(), 1u);
}

TEST(Fib, WritesTheForeignBlockAgain) {
    FibWriter writer;
    ForEachFig(kForeignFib, [&](const Fig& fig) { EXPECT_TRUE(writer.Add(fig.type, fig.data)); });
    EXPECT_EQ(writer.Finish(), kForeignFib);
    EXPECT_EQ(writer.Free(), kFibDataBytes);
}

TEST(Fib, AFullBlockHasNoEndMarker) {
    FibWriter writer;
    EXPECT_TRUE(writer.Add(1, ByteVector(29, 0x77)));
    EXPECT_FALSE(writer.Add(1, ByteVector(1, 0x77)));
    const ByteVector fib = writer.Finish();
    EXPECT_TRUE(FibCrcOk(fib));
    EXPECT_EQ(fib[29], 0x77);
}

} // namespace
} // namespace wire
