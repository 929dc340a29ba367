// The arithmetic encoder that belongs to ArithmeticDecoder.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "host/codec/BsacTables.h"
#include "host/wire/BitWriter.h"

namespace codec {

// Writes one segment of `endBit - startBit` bits. The decoder goes on until its budget is spent, so the last
// symbols may stand for more bits than the segment has; the missing ones read as 0. The encoder therefore
// keeps the coding interval such that it holds a number with zeros from the segment's end on, and Bit() gives
// way when the wanted value would lose the last such number: the value it returns is the one in the stream.
// Symbol() cannot give way; when its interval holds no such number the segment is too small and Fits() turns
// false.
class ArithmeticEncoder {
public:
    static constexpr bool kEncodes = true;

    // Segments are written one after another by WriteTo, so nothing is needed to start one.
    struct Medium {};

    void Start(Medium medium, std::size_t startBit, std::size_t endBit);

    void Grant(int granted) { budget += granted; }
    [[nodiscard]] int Budget() const { return budget; }
    [[nodiscard]] bool Spent() const { return budget <= 0; }
    void FillUp() {} // a decoder reads ahead here

    unsigned Symbol(CumulativeModel model, unsigned wanted);
    // p0 is in parts of kScale.
    template <unsigned kScale = kProbabilityScale> unsigned Bit(unsigned p0, unsigned wanted) {
        return BitInSteps(p0 * (kProbabilityScale / kScale), wanted);
    }
    unsigned EvenBit(unsigned wanted) { return Bit(kSignP0, wanted); }

    // So few bits are left that a 1 might not get the sign it needs.
    [[nodiscard]] bool NearEnd() const { return bits > segmentBits - 8; }

    // False once the stream cannot be decoded to what was wanted.
    [[nodiscard]] bool Fits() const { return fits; }

    // Ends the code and appends exactly the bits of the segment.
    void WriteTo(wire::BitWriter& writer);

private:
    struct Interval {
        std::uint64_t low;
        std::uint32_t range;
    };

    unsigned BitInSteps(unsigned p0, unsigned wanted);

    // Whether a number with zeros from the segment's end on lies in [low + offset, low + offset + range).
    [[nodiscard]] bool HoldsEnd(std::uint64_t offset, std::uint32_t range) const;
    // From low to the next number with zeros from the segment's end on.
    [[nodiscard]] std::uint64_t Gap() const;
    void Take(std::uint64_t offset, std::uint32_t newRange);
    void Carry();

    // low is a binary number of `bits` bits: first those in `out`, whole bytes, then `width` bits in `low`.
    std::vector<std::uint8_t> out;
    std::uint64_t low = 0;
    unsigned width = 30;
    std::uint32_t range = 1U << 30;
    int bits = 30;
    int segmentBits = 0;
    int budget = 0;
    // From low to the only number of the interval with zeros from the segment's end on, once that lies more
    // than 30 bits back and low's own bits do not show it any more.
    std::uint64_t farGap = 0;
    bool fits = true;
};

} // namespace codec
