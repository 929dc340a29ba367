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
    void Grant(int bits) { Account(Budget() + bits, Ahead()); }
    [[nodiscard]] int Budget() const { return carefree + kOne + std::max(surplus, 0); }

    // Whether the budget is used up. To be asked before each Bit and EvenBit, as it also has the next bits fetched.
    [[nodiscard, gnu::always_inline]] bool Spent() { return carefree <= -kOne && !Renew(); }

    // Needs no budget.
    unsigned Symbol(CumulativeModel model, unsigned wanted = 0) {
        static_cast<void>(wanted);
        if (Ahead() <= kLargestCost) [[unlikely]]
            Refill();
        return NextSymbol(model);
    }

    // p0 is in parts of kScale, a power of two up to kProbabilityScale.
    template <unsigned kScale = kProbabilityScale>
    [[gnu::always_inline]] unsigned Bit(unsigned p0, unsigned wanted = 0) {
        static_cast<void>(wanted);
        return Halve(Part<kScale>(range, p0));
    }

    // Bit with p0 = kSignP0: both halves of the range are alike, and the cost is always 1. Not for the first bit of a segment.
    [[gnu::always_inline]] unsigned EvenBit(unsigned wanted = 0) {
        static_cast<void>(wanted);
        unsigned flags = 0;
        EvenBitIf(1, 1, flags);
        return flags;
    }

    // When `due` is 1, as EvenBit, and a 1 adds `flag` to `flags`; when it is 0, nothing happens.
    [[gnu::always_inline]] void EvenBitIf(unsigned due, unsigned flag, unsigned& flags) {
        // Nothing is as large as the boundary of a bit that is not due.
        const std::uint64_t boundary = std::rotr(range, 1) | (std::uint64_t{due} - 1);
        std::uint64_t rest = value;
        unsigned changed = flags | flag;
#if defined(__x86_64__)
        asm("sub %[boundary], %[rest]\n\tcmovb %[value], %[rest]\n\tcmovb %[flags], %[changed]"
            : [rest] "+&r"(rest), [changed] "+&r"(changed)
            : [boundary] "r"(boundary), [value] "r"(value), [flags] "r"(flags)
            : "cc");
#else
        const bool one = value >= boundary;
        rest = one ? value - boundary : value;
        changed = one ? changed : flags;
#endif
        flags = changed;
        value = rest << due;
        carefree -= static_cast<int>(due);
    }

    // Whether another Bit or EvenBit may follow without asking Spent first.
    [[nodiscard, gnu::always_inline]] bool Ample() const {
        return carefree >= 0;
    }

    // Takes a 0 for each of `p0` (in parts of kScale), in order, when these are what comes and the bits in advance and the
    // budget suffice for them all. False: nothing has been taken, and mostly it is not so. `product` is that of all p0.
    //
    // As 0 has the lower part of the range, one comparison decides about all of them: with the range times the product, less
    // what leaving out parts of steps takes off it. Going through the parts one by one would tell exactly, but so late that a
    // wrong guess at the outcome would cost more than the bits.
    template <unsigned kScale, std::size_t kCount>
    [[nodiscard, gnu::always_inline]] bool TakeZeros(const std::array<unsigned, kCount>& p0, std::uint64_t product) {
        constexpr int kProductBits = std::countr_zero(kScale) * static_cast<int>(kCount);
        static_assert(kProductBits < 64 && kCount <= 8);
        const std::uint64_t most = UpperProduct(range, product << (64 - kProductBits));
        const std::uint64_t least = most - (most >> 12); // at most 8 times a step of 2^-15 of the range
        if (value >= least || __builtin_clzll(least) > carefree)
            return false;
        int doublings = 0;
#pragma GCC unroll 8
        for (const unsigned p : p0) {
            const std::uint64_t part = Part<kScale>(range, p);
            const int zeros = __builtin_clzll(part); // never 0
            range = part << zeros & kWholeSteps;
            doublings += zeros;
        }
        value <<= doublings;
        carefree -= doublings;
        return true;
    }

    // Before a few bits in a row: fetches for all of them, needed or not, so that Spent seldom has to, at moments that no
    // branch can foresee. Changes nothing else.
    [[gnu::always_inline]] void FillUp() {
        if (position + 64 > end) [[unlikely]]
            return;
        // Kept apart from what the last bits changed, which is the last to be known.
        int settled = 63 - kAhead + kLargestCost + kOne + std::max(-surplus, 0);
        asm("" : "+r"(settled));
        const int shift = settled + carefree; // 63 - kAhead + Ahead()
        value |= Window() >> 1 >> shift;
        const int count = 63 - shift;
        position += static_cast<unsigned>(count);
        surplus -= count;
        carefree = kAhead - kLargestCost - kOne + std::min(surplus, 0);
    }

private:
    static constexpr int kAhead = 34;
    static constexpr int kLargestCost = 14;
    static constexpr int kOne = 1; // so the sign of `carefree` says whether a bit may be taken
    static constexpr std::uint64_t kWholeSteps = ~std::uint64_t{0} << 48;

    // p0 / kScale of the range, in whole steps.
    template <unsigned kScale>
    [[nodiscard, gnu::always_inline]] static std::uint64_t Part(std::uint64_t range, unsigned p0) {
        static_assert(std::has_single_bit(kScale) && kScale <= kProbabilityScale);
        return std::rotr(range, std::countr_zero(kScale)) * p0;
    }

    // The upper half of a * b.
    [[nodiscard, gnu::always_inline]] static std::uint64_t UpperProduct(std::uint64_t a, std::uint64_t b) {
#if defined(__SIZEOF_INT128__)
        __extension__ using Product = unsigned __int128;
        return static_cast<std::uint64_t>(Product{a} * b >> 64);
#else
        const std::uint64_t lower = (a & 0xFFFFFFFF) * (b & 0xFFFFFFFF);
        const std::uint64_t first = (a >> 32) * (b & 0xFFFFFFFF) + (lower >> 32);
        const std::uint64_t second = (a & 0xFFFFFFFF) * (b >> 32) + (first & 0xFFFFFFFF);
        return (a >> 32) * (b >> 32) + (first >> 32) + (second >> 32);
#endif
    }

    [[nodiscard]] int Ahead() const {
        return carefree + kOne + kLargestCost + std::max(-surplus, 0);
    }

    // The budget and the number of bits in advance as two numbers that stay right when a bit is taken off the first.
    [[gnu::always_inline]] void Account(int budget, int ahead) {
        surplus = budget - (ahead - kLargestCost);
        carefree = std::min(budget, ahead - kLargestCost) - kOne;
    }

    // Gives the lower part of the range to 0, the upper one to 1, and returns which of them the value is in. Half of all bits
    // are a surprise, so a branch on one would cost more than all of this.
    [[gnu::always_inline]] unsigned Halve(std::uint64_t zeroRange) {
        std::uint64_t rest = value;
        std::uint64_t part = range - zeroRange;
        unsigned bit = 0;
#if defined(__x86_64__)
        // What stands below; the compiler insists on a branch for it. The last line makes -1 of a 0.
        asm("sub %[zero], %[rest]\n\tcmovb %[zero], %[part]\n\tcmovb %[value], %[rest]\n\tsbb %[bit], %[bit]"
            : [part] "+&r"(part), [rest] "+&r"(rest), [bit] "=&r"(bit)
            : [zero] "r"(zeroRange), [value] "r"(value)
            : "cc");
        ++bit;
#else
        bit = value >= zeroRange ? 1 : 0;
        part = bit != 0 ? part : zeroRange;
        rest = bit != 0 ? value - zeroRange : value;
#endif
        value = rest;
        Normalise(part);
        return bit;
    }

    // Doubles range and value until the range has its highest bit again: 0..14 times.
    [[gnu::always_inline]] void Normalise(std::uint64_t newRange) {
        const int zeros = __builtin_clzll(newRange); // never 0
        range = newRange << zeros & kWholeSteps;
        value <<= zeros;
        carefree -= zeros;
    }

    // False when the budget is used up; else bits are fetched.
    [[gnu::always_inline]] bool Renew() {
        const int budget = Budget();
        if (budget <= 0)
            return false;
        Refill();
        return true;
    }

    // The symbol, of up to 14 bits, when there are as many in advance.
    unsigned NextSymbol(CumulativeModel model);

    // Fetches as many bits as there is room for.
    [[gnu::always_inline]] void Refill() {
        const auto count = static_cast<unsigned>(kAhead - Ahead());
        value |= position + 64 <= end ? Window() >> (64 - count) : PeekNearEnd(data, position, end, count);
        position += count;
        Account(Budget(), kAhead);
    }

    // The next 57 bits and more, at the top.
    [[nodiscard, gnu::always_inline]] std::uint64_t Window() const {
        std::uint64_t window = 0;
        std::memcpy(&window, data + (position >> 3), sizeof window);
        if constexpr (std::endian::native == std::endian::little)
            window = __builtin_bswap64(window);
        return window << (position & 7);
    }

    // The next `count` bits; those from `end` on are 0. Not a member, as the object is to stay in registers.
    [[nodiscard, gnu::noinline]] static std::uint64_t PeekNearEnd(const std::uint8_t* data, std::size_t position,
                                                                  std::size_t end, unsigned count);

    // Value and range have 30 bits, and these are the upper ones here. Below the value lie the bits read in advance, then
    // zeros. With broken data it can leave its range; what comes of that is garbage, but the same garbage each time.
    std::uint64_t value = 0;
    // From 2^63 on; less than one step, the 16384th part, is left out as no probability needs it. At the start it would be 2^64,
    // for which 1 stands, as a rotation makes the same parts of both.
    std::uint64_t range = 1;
    // Two numbers limit what may be done without looking: the budget, and the bits in advance less kLargestCost. The smaller one
    // of them, less kOne, and by how much the budget is larger than the other. Taking a bit lowers both, and so only `carefree`.
    int carefree = -kOne;
    int surplus = 0;
    const std::uint8_t* data = nullptr;
    std::size_t position = 0; // of the next bit to be read, from the start of the block
    std::size_t end = 0;
};

} // namespace codec
