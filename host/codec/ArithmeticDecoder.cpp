#include "host/codec/ArithmeticDecoder.h"

#include <algorithm>

namespace codec {

void ArithmeticDecoder::Start(Medium block, std::size_t startBit, std::size_t endBit) {
    reader = wire::BitReader(block, startBit, endBit);
    value = static_cast<std::uint64_t>(reader.Read(30)) << kAhead;
    value |= reader.Read(32);
    ahead = 32;
    range = std::uint64_t{4} << 30;
}

std::uint32_t ArithmeticDecoder::Peek16(wire::BitReader source) {
    return source.Peek(16);
}

unsigned ArithmeticDecoder::Symbol(CumulativeModel model, int& budget, unsigned wanted) {
    static_cast<void>(wanted);
    Refill();
    const auto r = static_cast<std::uint32_t>(range >> 16);
    const auto high = static_cast<std::uint32_t>(value >> kAhead);
    // The first entry that is not above value / r. The last entry is 0, so there always is one.
    const auto found =
        std::partition_point(model.begin(), model.end(), [=](std::uint16_t entry) { return entry * r > high; });
    const auto symbol = static_cast<unsigned>(found - model.begin());
    const std::uint32_t below = *found;
    const std::uint32_t above = symbol == 0 ? kProbabilityScale : model[symbol - 1];
    value -= static_cast<std::uint64_t>(below * r) << kAhead;
    Normalise(r * (above - below), budget);
    return symbol;
}

} // namespace codec
