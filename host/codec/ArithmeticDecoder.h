// The arithmetic decoder of ER BSAC (ISO/IEC 14496-3, 4.5.2.6.2.8).
//
// Worked example, a block whose arithmetic part begins with fc c6 11 ad 6e bc ...:
//   start            value = the first 30 bits = 0x3f31846b, range = 2^30
//   symbol, kCbandSiBand0Model
//                    r = range >> 14 = 65536, value / r = 16177; the first entry not above it is model[5] =
//                    16177: symbol 5, value - r * 16177 = 33899, range = r * (16343 - 16177) = 10878976
//   normalise        six doublings bring range back to 2^29 or more: the symbol cost 6 bits
//   symbol, kScalefactorModels[7]
//                    value = 33899 << 6 | the next six bits = 2169558, r = 42496, value / r = 51: symbol 60,
//                    cost 10
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

#include "host/codec/BsacTables.h"

namespace codec {

// Decoder and encoder offer the same calls, so that one piece of code (side information, bit-planes, layers)
// serves both directions. `wanted` is what an encoder is to write; the decoder ignores it. Both return what
// is in the stream. Each symbol takes its cost off the coder's budget: the doublings after it, which is not the
// number of bits read.
class ArithmeticDecoder {
public:
    static constexpr bool kEncodes = false;

    // Where the segments lie: the bytes of one block.
    using Medium = std::span<const std::uint8_t>;

    // Starts at bit `startBit` of the block, with no budget. Bits from `endBit` on read as 0, without limit.
    void Start(Medium block, std::size_t startBit, std::size_t endBit);

    // Adds to the budget, which may become or stay negative.
    void Grant(int bits);
    [[nodiscard]] int Budget() const { return carefree + budgetBehind; }

    // Whether the budget is used up. To be asked before each Bit and EvenBit, as it also has the next bits fetched.
    [[nodiscard, gnu::always_inline]] bool Spent() { return carefree <= 0 && !Renew(); }

    // Needs no budget.
    unsigned Symbol(CumulativeModel model, unsigned wanted = 0);

    [[gnu::always_inline]] unsigned Bit(unsigned p0, unsigned wanted = 0) {
        static_cast<void>(wanted);
        const std::uint32_t zeroRange = step * p0;
        return Halve((step << 14) - zeroRange, zeroRange);
    }

    // Bit with p0 = kSignP0: both halves of the range are alike, and the cost is always 1. Not for the first bit of a segment.
    [[gnu::always_inline]] unsigned EvenBit(unsigned wanted = 0) {
        static_cast<void>(wanted);
        return EvenBitIf(1);
    }

    // As EvenBit when `due` is 1; when it is 0, nothing happens and 0 is returned.
    [[gnu::always_inline]] unsigned EvenBitIf(unsigned due) {
        const std::uint64_t boundary = std::uint64_t{step} << (13 + kAhead) & (0 - std::uint64_t{due});
        std::uint64_t rest = value;
        unsigned bit = 0;
#if defined(__x86_64__)
        asm("sub %[boundary], %[rest]\n\tcmovb %[value], %[rest]\n\tsbb $-1, %[bit]"
            : [rest] "+&r"(rest), [bit] "+&r"(bit)
            : [boundary] "r"(boundary), [value] "r"(value)
            : "cc");
#else
        bit = value >= boundary ? 1 : 0;
        rest = bit != 0 ? value - boundary : value;
#endif
        value = rest << due;
        carefree -= static_cast<int>(due);
        return bit & due;
    }

    // Whether EvenBitIf may follow a Bit, and a Bit that, without asking Spent.
    [[nodiscard, gnu::always_inline]] bool Ample() const {
        return carefree > 1;
    }

    // Takes a 0 for each of `p0`, in order, when these are what comes and the bits in advance and the budget suffice for them
    // all. False: it is not so, and nothing has been taken. As 0 has the lower part of the range, one comparison with the last
    // of the parts decides about all of them.
    template <std::size_t kCount>
    [[nodiscard, gnu::always_inline]] bool TakeZeros(const std::array<unsigned, kCount>& p0) {
        std::uint32_t newStep = step;
        std::uint32_t range = 0;
        int doublings = 0;
#pragma GCC unroll 8
        for (const unsigned p : p0) {
            range = newStep * p;
            const int zeros = __builtin_clz(range);
            range <<= zeros;
            newStep = range >> 16;
            doublings += zeros - 2;
        }
        // The last part, doubled as often as it was, is range / 4.
        const std::uint64_t boundary = std::uint64_t{range} << (kAhead - 2) >> (doublings & 63);
        if (doublings >= carefree || value >= boundary)
            return false;
        step = newStep;
        value <<= doublings;
        carefree -= doublings;
        return true;
    }

    // Before a few bits in a row: fetches for all of them, needed or not, so that Spent seldom has to, at moments that no
    // branch can foresee. Changes nothing else.
    [[gnu::always_inline]] void FillUp() {
        if (position + 64 > end) [[unlikely]]
            return;
        const int budget = Budget();
        const auto count = static_cast<unsigned>(32 - (carefree + aheadBehind));
        std::uint64_t window = 0;
        std::memcpy(&window, data + (position >> 3), sizeof window);
        if constexpr (std::endian::native == std::endian::little)
            window = __builtin_bswap64(window);
        value |= window << (position & 7) >> 1 >> (63 - count);
        position += count;
        carefree = std::min(budget, 32 - kLargestCost);
        budgetBehind = budget - carefree;
        aheadBehind = 32 - carefree;
    }

private:
    static constexpr unsigned kAhead = 32;
    static constexpr int kLargestCost = 14;

    // Gives the lower part of the range to 0, the upper one to 1, and returns which of them the value is in. Half of all bits
    // are a surprise, so a branch on one would cost more than all of this.
    [[gnu::always_inline]] unsigned Halve(std::uint32_t oneRange, std::uint32_t zeroRange) {
        const std::uint64_t boundary = std::uint64_t{zeroRange} << kAhead;
        std::uint64_t rest = value;
        std::uint32_t range = oneRange;
        unsigned bit = 0;
#if defined(__x86_64__)
        // What stands below; the compiler insists on a branch for it.
        asm("sub %[boundary], %[rest]\n\tcmovb %[zero], %[range]\n\tcmovb %[value], %[rest]\n\tsbb $-1, %[bit]"
            : [range] "+&r"(range), [rest] "+&r"(rest), [bit] "+&r"(bit)
            : [zero] "r"(zeroRange), [boundary] "r"(boundary), [value] "r"(value)
            : "cc");
#else
        bit = value >= boundary ? 1 : 0;
        range = bit != 0 ? oneRange : zeroRange;
        rest = bit != 0 ? value - boundary : value;
#endif
        value = rest;
        Normalise(range);
        return bit;
    }

    // Doubles range and value until the range is at least 2^29 again: 0..14 times.
    [[gnu::always_inline]] void Normalise(std::uint32_t range) {
        const int zeros = __builtin_clz(range);
        step = range << zeros >> 16;
        value <<= zeros - 2;
        carefree -= zeros - 2;
    }

    // False when the budget is used up. Else bits are fetched, and the next `carefree` doublings need not look.
    [[gnu::always_inline]] bool Renew() {
        const int budget = Budget();
        if (budget <= 0)
            return false;
        Refill();
        const int ahead = carefree + aheadBehind;
        carefree = std::min(budget, ahead - kLargestCost);
        budgetBehind = budget - carefree;
        aheadBehind = ahead - carefree;
        return true;
    }

    // Sees to it that the next symbol, of up to 14 bits, has all its bits.
    [[gnu::always_inline]] void Refill() {
        const int ahead = carefree + aheadBehind;
        if (ahead > kLargestCost)
            return;
        const auto count = static_cast<unsigned>(32 - ahead);
        if (position + 64 <= end) [[likely]] {
            std::uint64_t window = 0;
            std::memcpy(&window, data + (position >> 3), sizeof window);
            if constexpr (std::endian::native == std::endian::little)
                window = __builtin_bswap64(window);
            value |= window << (position & 7) >> (64 - count);
        } else {
            value |= PeekNearEnd(data, position, end, count);
        }
        position += count;
        aheadBehind += static_cast<int>(count);
    }

    // The next `count` bits; those from `end` on are 0.
    [[nodiscard, gnu::noinline]] static std::uint32_t PeekNearEnd(const std::uint8_t* data, std::size_t position,
                                                                  std::size_t end, unsigned count);

    // The arithmetic value stands in the upper 32 bits; below it lie the bits read in advance, then zeros. With
    // broken data it can leave its bits; what comes of that is garbage, but the same garbage each time.
    std::uint64_t value = 0;
    std::uint32_t step = 0; // the range divided by kProbabilityScale: at least 2^15, below 2^16 but at the start
    // One count goes down with the budget and with the bits in advance; when it ends, either may have more.
    int carefree = 0;
    int budgetBehind = 0;
    int aheadBehind = 0;
    const std::uint8_t* data = nullptr;
    std::size_t position = 0; // of the next bit to be read, from the start of the block
    std::size_t end = 0;
};

} // namespace codec
