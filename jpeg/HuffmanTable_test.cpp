#include "jpeg/HuffmanTable.h"

#include <gtest/gtest.h>

#include <memory>

namespace jpeg {
namespace {

HuffmanSpec Spec(std::initializer_list<int> counts, std::initializer_list<int> symbols) {
    HuffmanSpec spec;
    spec.sent = true;
    std::copy(counts.begin(), counts.end(), spec.counts.begin());
    std::copy(symbols.begin(), symbols.end(), spec.symbols.begin());
    return spec;
}

HuffmanCode Find(const HuffmanTable& table, unsigned bits, int count) {
    return table.Find(static_cast<std::uint64_t>(bits) << (64 - count));
}

// T.81 table K.3, luminance DC differences.
TEST(HuffmanTable, AnEasyTable) {
    const auto table = std::make_unique<HuffmanTable>();
    ASSERT_EQ(table->Build(Spec({0, 1, 5, 1, 1, 1, 1, 1, 1}, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11})), Status::kOk);
    EXPECT_EQ(Find(*table, 0b00, 2).Symbol(), 0);
    EXPECT_EQ(Find(*table, 0b00, 2).CodeBits(), 2);
    EXPECT_EQ(Find(*table, 0b010, 3).Symbol(), 1);
    EXPECT_EQ(Find(*table, 0b110, 3).Symbol(), 5);
    EXPECT_EQ(Find(*table, 0b1110, 4).Symbol(), 6);
    EXPECT_EQ(Find(*table, 0b111111110, 9).Symbol(), 11);
    EXPECT_EQ(Find(*table, 0b111111110, 9).CodeBits(), 9);
    EXPECT_EQ(Find(*table, 0b111111110, 9).TotalBits(), 20);
}

// Codes of every length up to 16: one symbol each, the last length two.
TEST(HuffmanTable, AHardTable) {
    const auto table = std::make_unique<HuffmanTable>();
    ASSERT_EQ(table->Build(Spec({1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1},
                                {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 0x21})),
              Status::kOk);
    for (int length = 1; length <= 16; ++length) {
        const unsigned code = (1u << length) - 2;
        const HuffmanCode found = Find(*table, code, length);
        EXPECT_EQ(found.CodeBits(), length);
        EXPECT_EQ(found.Symbol(), length == 16 ? 0x21 : length);
    }
}

TEST(HuffmanTable, BitsThatBeginNoCodeAreSymbolZero) {
    const auto table = std::make_unique<HuffmanTable>();
    ASSERT_EQ(table->Build(Spec({1}, {5})), Status::kOk);
    const HuffmanCode found = Find(*table, 1, 1);
    EXPECT_EQ(found.Symbol(), 0);
    EXPECT_EQ(found.CodeBits(), 17);
}

TEST(HuffmanTable, AnOversubscribedTableIsRefused) {
    const auto table = std::make_unique<HuffmanTable>();
    EXPECT_EQ(table->Build(Spec({3}, {})), Status::kHuffmanTableOversubscribed);
    EXPECT_EQ(table->Build(Spec({1, 3}, {})), Status::kHuffmanTableOversubscribed);
    EXPECT_EQ(table->Build(Spec({2, 1}, {})), Status::kHuffmanTableOversubscribed);
    EXPECT_EQ(table->Build(Spec({2}, {})), Status::kOk); // full, with a code of ones only
    EXPECT_EQ(table->Build(Spec({}, {})), Status::kOk);
}

TEST(HuffmanTable, MoreThan256SymbolsAreRefused) {
    const auto table = std::make_unique<HuffmanTable>();
    EXPECT_EQ(table->Build(Spec({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 255, 1}, {})), Status::kOk);
    EXPECT_EQ(table->Build(Spec({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 255, 2}, {})),
              Status::kHuffmanTableOversubscribed);
}

TEST(HuffmanTable, ValuesAreExtended) {
    const auto value = [](unsigned bits, int count) {
        return ExtendValue(static_cast<std::uint64_t>(bits) << (64 - count), 0, count);
    };
    EXPECT_EQ(ExtendValue(~std::uint64_t{0}, 5, 0), 0);
    EXPECT_EQ(value(0, 1), -1);
    EXPECT_EQ(value(1, 1), 1);
    EXPECT_EQ(value(0b00, 2), -3);
    EXPECT_EQ(value(0b01, 2), -2);
    EXPECT_EQ(value(0b10, 2), 2);
    EXPECT_EQ(value(0, 15), -32767);
    EXPECT_EQ(value(0x7FFF, 15), 32767);
}

TEST(HuffmanTable, StepsOfASequentialBlock) {
    const auto table = std::make_unique<HuffmanTable>();
    ASSERT_EQ(table->Build(Spec({0, 4}, {0x00, 0xF0, 0x31, 0x50})), Status::kOk);
    EXPECT_EQ(Find(*table, 0, 2).Step(), kEndOfBlockStep);
    EXPECT_EQ(Find(*table, 1, 2).Step(), 16);
    EXPECT_EQ(Find(*table, 2, 2).Step(), 4);
    EXPECT_EQ(Find(*table, 3, 2).Step(), kEndOfBlockStep);
}

TEST(SkipTable, StopsWhereTheBlockEnds) {
    // 0: two zeros and a value of one bit; 10: end of block; 110: sixteen zeros.
    const auto table = std::make_unique<HuffmanTable>();
    ASSERT_EQ(table->Build(Spec({1, 1, 1}, {0x21, 0x00, 0xF0})), Status::kOk);
    const auto skips = std::make_unique<SkipTable>();
    skips->Build(*table);
    const auto taken = [&](std::uint64_t word, int k) {
        BitCursor bits;
        const std::array<std::uint8_t, 64> zeros{};
        bits.word = word;
        bits.count = 56;
        bits.next = zeros.data();
        const std::uint8_t* begin = bits.next;
        skips->SkipBlock(bits, *table, k);
        return 56 + 8 * static_cast<int>(bits.next - begin) - bits.count;
    };
    EXPECT_EQ(taken(0b10ull << 62, 5), 2);
    EXPECT_EQ(taken(0b0010ull << 60, 5), 4);                  // one value, then the end
    EXPECT_EQ(taken(0b00ull << 62 | 0b0010ull << 58, 61), 2); // 63 is reached: the next code is not this block's
    EXPECT_EQ(taken(0b110110110ull << 55, 16), 9);
}

} // namespace
} // namespace jpeg
