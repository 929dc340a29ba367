// A Huffman table ready for decoding (T.81 annex C and F.2.2.3).
#pragma once

#include "jpeg/BitReader.h"
#include "jpeg/Frame.h"
#include "jpeg/Status.h"

#include <array>
#include <cstdint>

namespace jpeg {

// One decoded code, packed so that a coefficient costs a single look-up:
//   bits 0-7    bits of the code and of the value that follows it, at most 32: masked as a shift masks its count anyway
//   bits 8-15   bits of the code alone
//   bits 16-19  bits of the value (SSSS)
//   bits 20-23  zeros before the value (RRRR)
//   bits 24-31  how far a sequential block moves on: RRRR + 1, 16 for a run of zeros, kEndOfBlockStep at its end
struct HuffmanCode {
    std::uint32_t packed;

    [[nodiscard]] int TotalBits() const { return static_cast<int>(packed & 63); }
    [[nodiscard]] int CodeBits() const { return static_cast<int>(packed >> 8 & 255); }
    [[nodiscard]] int ValueBits() const { return static_cast<int>(packed >> 16 & 15); }
    [[nodiscard]] int Run() const { return static_cast<int>(packed >> 20 & 15); }
    [[nodiscard]] int Step() const { return static_cast<int>(packed >> 24); }
    [[nodiscard]] int Symbol() const { return static_cast<int>(packed >> 16 & 255); }
};

inline constexpr int kEndOfBlockStep = 128; // far enough that a block's end differs from an overlong run

class HuffmanTable {
public:
    // Refuses a table with more codes of a length than there is room for, or with more than 256 symbols.
    [[nodiscard]] Status Build(const HuffmanSpec& spec);

    // The code that `word` (left-aligned) begins with. Bits that begin no code are symbol 0, found after 17 bits.
    [[nodiscard]] HuffmanCode Find(std::uint64_t word) const {
        const HuffmanCode code = lookAhead[word >> (64 - kLookAheadBits)];
        if (code.packed == 0) [[unlikely]] {
            return FindLong(word);
        }
        return code;
    }

    static constexpr int kLookAheadBits = 9;

private:
    [[nodiscard]] HuffmanCode FindLong(std::uint64_t word) const;

    std::array<HuffmanCode, 1 << kLookAheadBits> lookAhead;
    std::array<std::int32_t, 18> maxCode; // largest code of each length, -1 for none
    std::array<std::int32_t, 18> offset;  // from a code of that length to its symbol's index
    std::array<std::uint8_t, 256> symbols;
};

// The signed value of `bits` bits that follow `skip` bits of `word` (T.81 F.2.2.1, EXTEND). 0..15 bits.
[[nodiscard]] inline int ExtendValue(std::uint64_t word, int skip, int bits) {
    const std::uint64_t value = word << skip;
    const int negative = static_cast<int>(~static_cast<std::int64_t>(value) >> 63); // all ones when the top bit is 0
    return static_cast<int>((value >> 1) >> (63 - bits)) + (negative & (1 - (1 << bits)));
}

// One code and its value together: the difference of a DC coefficient.
[[nodiscard]] inline int DecodeDifference(BitCursor& bits, const HuffmanTable& table) {
    bits.Refill();
    const std::uint64_t word = bits.word;
    const HuffmanCode code = table.Find(word);
    bits.Consume(code.TotalBits());
    return ExtendValue(word, code.CodeBits(), code.ValueBits());
}

// Passes over the AC coefficients that a reduced size does not need: as many whole codes, values included, as a few
// bits show at once.
class SkipTable {
public:
    void Build(const HuffmanTable& table);

    // Moves from coefficient `k` to the end of the block.
    void SkipBlock(BitCursor& bits, const HuffmanTable& table, int k) const {
        while (k < kBlockSize) {
            bits.Refill();
            const std::uint64_t word = bits.word;
            const Entry entry = entries[word >> (64 - kBits)];
            if (k < entry.safeBelow) [[likely]] {
                bits.Consume(entry.bits);
                k += entry.step;
            } else {
                const HuffmanCode code = table.Find(word);
                bits.Consume(code.TotalBits());
                k += code.Step();
            }
        }
    }

private:
    static constexpr int kBits = 11;

    struct Entry {
        std::uint8_t bits;      // all codes and values
        std::uint8_t step;      // coefficients
        std::uint8_t safeBelow; // the entry holds for k below this: its last code still belongs to the block. 0 = never
    };
    std::array<Entry, 1 << kBits> entries;
};

} // namespace jpeg
