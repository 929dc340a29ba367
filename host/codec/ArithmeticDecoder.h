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

#include <cstddef>
#include <cstdint>
#include <span>

#include "host/codec/BsacTables.h"
#include "host/wire/BitReader.h"

namespace codec {

// Decoder and encoder offer the same calls, so that one piece of code (side information, bit-planes, layers)
// serves both directions. `wanted` is what an encoder is to write; the decoder ignores it. Both return what
// is in the stream. Each call takes the cost of its symbol off `budget`: the doublings after it, which is not
// the number of bits read.
class ArithmeticDecoder {
public:
    static constexpr bool kEncodes = false;

    // Where the segments lie: the bytes of one block.
    using Medium = std::span<const std::uint8_t>;

    // Starts at bit `startBit` of the block. Bits from `endBit` on read as 0, without limit.
    void Start(Medium block, std::size_t startBit, std::size_t endBit);

    unsigned Symbol(CumulativeModel model, int& budget, unsigned wanted = 0);

    [[gnu::always_inline]] unsigned Bit(unsigned p0, int& budget, unsigned wanted = 0) {
        static_cast<void>(wanted);
        Refill();
        // Half of all bits are a surprise, so a branch on one would cost more than all of this. A negative difference
        // says 0; its sign bit becomes a mask.
        const auto r = static_cast<std::uint32_t>(range >> 16);
        const std::uint32_t zeroRange = r * p0;
        const std::uint32_t oneRange = (r << 14) - zeroRange;
        const auto difference = static_cast<std::int32_t>(static_cast<std::uint32_t>(value >> kAhead) - zeroRange);
        const auto zero = static_cast<std::uint32_t>(difference >> 31);
        value -= static_cast<std::uint64_t>(zeroRange & ~zero) << kAhead;
        Normalise(oneRange + ((zeroRange - oneRange) & zero), budget);
        return zero + 1;
    }

    // Bit with p0 = kSignP0: both halves of the range are alike, and the cost is always 1.
    [[gnu::always_inline]] unsigned EvenBit(int& budget, unsigned wanted = 0) {
        static_cast<void>(wanted);
        const auto half = static_cast<std::uint32_t>(range >> 16 << 13);
        const auto difference = static_cast<std::int32_t>(static_cast<std::uint32_t>(value >> kAhead) - half);
        const auto zero = static_cast<std::uint32_t>(difference >> 31);
        value -= static_cast<std::uint64_t>(half & ~zero) << kAhead;
        value <<= 1;
        range = std::uint64_t{half} << 3;
        --ahead;
        --budget;
        return zero + 1;
    }

private:
    static constexpr unsigned kAhead = 32;

    // The range is at least 2^15 and below 2^30 before and at least 2^29 after the 0..14 doublings.
    [[gnu::always_inline]] void Normalise(std::uint32_t newRange, int& budget) {
        const int zeros = __builtin_clz(newRange);
        const int doublings = zeros - 2;
        range = std::uint64_t{newRange} << zeros;
        value <<= doublings;
        ahead -= doublings;
        budget -= doublings;
    }

    // Every bit needs 15 bits in advance: up to 14 of its own and one of an EvenBit behind it.
    [[gnu::always_inline]] void Refill() {
        if (ahead < 16) [[unlikely]] {
            value |= static_cast<std::uint64_t>(Peek16(reader)) << (16 - ahead);
            reader.Skip(16);
            ahead += 16;
        }
    }

    // Takes a copy, so that nothing points to the decoder and all of it can live in registers.
    [[gnu::noinline]] static std::uint32_t Peek16(wire::BitReader source);

    // The arithmetic value stands in the upper 32 bits; below it lie `ahead` bits read in advance, then zeros. With
    // broken data it can leave its bits; what comes of that is garbage, but the same garbage each time.
    std::uint64_t value = 0;
    std::uint64_t range = 0; // four times the arithmetic range, 2^31 and more
    int ahead = 0;
    wire::BitReader reader;
};

} // namespace codec
