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

#include <bit>
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

    unsigned Bit(unsigned p0, int& budget, unsigned wanted = 0) {
        static_cast<void>(wanted);
        const std::uint32_t r = range >> 14;
        const std::uint64_t split = static_cast<std::uint64_t>(r * p0) << kAhead;
        const bool one = value >= split;
        if (one) {
            value -= split;
            range = r * (kProbabilityScale - p0);
        } else {
            range = r * p0;
        }
        Normalise(budget);
        return one ? 1 : 0;
    }

private:
    static constexpr unsigned kAhead = 32;

    void Normalise(int& budget) {
        // The range was below 2^30 and is at least 2^15, so there are 0..14 doublings.
        const int doublings = std::countl_zero(range) - 2;
        range <<= doublings;
        value <<= doublings;
        ahead -= doublings;
        budget -= doublings;
        if (ahead < 16) {
            value |= static_cast<std::uint64_t>(reader.Read(16)) << (16 - ahead);
            ahead += 16;
        }
    }

    // The arithmetic value stands in the upper 32 bits; below it lie `ahead` bits read in advance, then
    // zeros. Broken data can let the value grow past its 32 bits; what is lost then is lost in the same way
    // with any layout.
    std::uint64_t value = 0;
    std::uint32_t range = 0;
    int ahead = 0;
    wire::BitReader reader;
};

} // namespace codec
