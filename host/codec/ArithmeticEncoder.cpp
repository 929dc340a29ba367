#include "host/codec/ArithmeticEncoder.h"

#include <algorithm>

namespace codec {

namespace {
// Bits of low that stay in the register: more than range has, so that a gap can be read off its lower bits.
constexpr unsigned kKept = 40;
} // namespace

void ArithmeticEncoder::Start(Medium medium, std::size_t startBit, std::size_t endBit) {
    static_cast<void>(medium);
    out.clear();
    low = 0;
    width = 30;
    range = 1U << 30;
    bits = 30;
    budget = 0;
    segmentBits = static_cast<int>(endBit > startBit ? endBit - startBit : 0);
    // With fewer than 30 bits the end lies inside the first interval; low is 0, a number with zeros anywhere.
    farGap = 0;
    fits = true;
}

std::uint64_t ArithmeticEncoder::Gap() const {
    const int beyond = bits - segmentBits; // bits of low that are to be 0
    if (beyond <= 0)
        return 0;
    if (beyond <= 30)
        return (0 - low) & ((std::uint64_t{1} << beyond) - 1);
    return farGap;
}

bool ArithmeticEncoder::HoldsEnd(std::uint64_t offset, std::uint32_t newRange) const {
    const int beyond = bits - segmentBits;
    if (beyond > 30) // such numbers lie further apart than the interval is wide: there is one at most
        return farGap >= offset && farGap - offset < newRange;
    const std::uint64_t mask = beyond > 0 ? (std::uint64_t{1} << beyond) - 1 : 0;
    return ((0 - (low + offset)) & mask) < newRange;
}

void ArithmeticEncoder::Carry() {
    if (low >> width == 0)
        return;
    low &= (std::uint64_t{1} << width) - 1;
    for (std::size_t i = out.size(); i-- > 0 && ++out[i] == 0;) {
    }
}

void ArithmeticEncoder::Take(std::uint64_t offset, std::uint32_t newRange) {
    const bool far = bits - segmentBits > 30;
    low += offset;
    farGap = far ? farGap - offset : Gap();
    Carry();
    range = newRange;
    const int doublings = std::countl_zero(range) - 2;
    range <<= doublings;
    low <<= doublings;
    farGap <<= doublings;
    width += static_cast<unsigned>(doublings);
    bits += doublings;
    budget -= doublings;
    while (width >= kKept + 8) {
        width -= 8;
        out.push_back(static_cast<std::uint8_t>(low >> width));
        low &= (std::uint64_t{1} << width) - 1;
    }
}

unsigned ArithmeticEncoder::Symbol(CumulativeModel model, unsigned wanted) {
    if (wanted >= model.size()) {
        fits = false;
        wanted = 0;
    }
    const std::uint32_t r = range >> 14;
    const std::uint32_t above = wanted == 0 ? kProbabilityScale : model[wanted - 1];
    const std::uint64_t offset = static_cast<std::uint64_t>(r) * model[wanted];
    const std::uint32_t newRange = r * (above - model[wanted]);
    if (!HoldsEnd(offset, newRange))
        fits = false;
    Take(offset, newRange);
    return wanted;
}

unsigned ArithmeticEncoder::BitInSteps(unsigned p0, unsigned wanted) {
    const std::uint32_t r = range >> 14;
    const std::uint32_t zeroRange = r * p0;
    const std::uint32_t oneRange = r * (kProbabilityScale - p0);
    const auto holds = [&](unsigned bit) { return bit != 0 ? HoldsEnd(zeroRange, oneRange) : HoldsEnd(0, zeroRange); };
    unsigned bit = wanted;
    if (!holds(bit)) {
        bit ^= 1;
        // The two children leave a little of the interval uncovered; the last number may lie there.
        fits = fits && holds(bit);
    }
    if (bit != 0)
        Take(zeroRange, oneRange);
    else
        Take(0, zeroRange);
    return bit;
}

void ArithmeticEncoder::WriteTo(wire::BitWriter& writer) {
    // Choose the number of the interval with the most zeros at its end.
    const int beyond = bits - segmentBits;
    if (beyond > 0) {
        low += Gap();
    } else {
        std::uint64_t choice = low;
        for (unsigned zeros = 1; zeros < 31; ++zeros) {
            const std::uint64_t mask = (std::uint64_t{1} << zeros) - 1;
            const std::uint64_t rounded = (low + mask) & ~mask;
            if (rounded - low < range)
                choice = rounded;
        }
        low = choice;
    }
    Carry();

    std::size_t left = static_cast<std::size_t>(segmentBits);
    for (const std::uint8_t byte : out) {
        const auto take = static_cast<unsigned>(std::min<std::size_t>(8, left));
        writer.Write(static_cast<std::uint32_t>(byte >> (8 - take)), take);
        left -= take;
    }
    for (unsigned i = width; i > 0 && left > 0; --i, --left)
        writer.Write(static_cast<std::uint32_t>(low >> (i - 1) & 1), 1);
    for (; left > 0; --left)
        writer.Write(0, 1);
}

} // namespace codec
