#include "host/codec/ArithmeticDecoder.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "host/wire/BitReader.h"

namespace codec {

void ArithmeticDecoder::Start(Medium block, std::size_t startBit, std::size_t endBit) {
    data = block.data();
    end = std::min(endBit, block.size() * 8);
    position = startBit;
    value = static_cast<std::uint64_t>(PeekNearEnd(data, position, end, 30)) << kAhead;
    value |= PeekNearEnd(data, position + 30, end, 32);
    position += 62;
    step = 1U << 16;
    carefree = 0;
    budgetBehind = 0;
    aheadBehind = 32;
}

void ArithmeticDecoder::Grant(int bits) {
    budgetBehind += carefree + bits;
    aheadBehind += carefree;
    carefree = 0;
}

std::uint32_t ArithmeticDecoder::PeekNearEnd(const std::uint8_t* data, std::size_t position, std::size_t end,
                                             unsigned count) {
    return wire::BitReader({data, (end + 7) / 8}, position, end).Peek(count);
}

namespace {

// How many entries of the model are above `place`: eight are compared at a time. The entries fall, and mostly the first
// eight decide.
std::size_t CountAbove(CumulativeModel model, std::int16_t place) {
    using Group [[gnu::vector_size(sizeof(std::int16_t) * kModelGroup)]] = std::int16_t;
    using Bytes [[gnu::vector_size(kModelGroup)]] = std::int8_t;
    for (std::size_t k = 0;; k += kModelGroup) {
        Group entries;
        std::memcpy(&entries, model.data() + k, sizeof entries);
        // A byte of ones for each entry that is not above.
        const auto below = std::bit_cast<std::uint64_t>(__builtin_convertvector(entries <= place, Bytes));
        if (below != 0) [[likely]]
            return k + static_cast<std::size_t>(std::countr_zero(below)) / 8;
    }
}

} // namespace

unsigned ArithmeticDecoder::Symbol(CumulativeModel model, unsigned wanted) {
    static_cast<void>(wanted);
    Refill();
    // Most models have two entries, the second of them 0: a bit whose 0 stands for symbol 1.
    if (model.size() == 2)
        return 1 - Bit(model[0]);
    // The symbol is the first entry that is not above value / step. The models fall and end with 0, so it is the number of
    // those above. Broken data may lie above all.
    const std::uint32_t place = static_cast<std::uint32_t>(value >> kAhead) / step;
    const std::size_t symbol = CountAbove(model, static_cast<std::int16_t>(std::min(place, kProbabilityScale)));
    const std::uint32_t below = model[symbol];
    const std::uint32_t above = symbol == 0 ? kProbabilityScale : model[symbol - 1];
    value -= static_cast<std::uint64_t>(below * step) << kAhead;
    Normalise(step * (above - below));
    return static_cast<unsigned>(symbol);
}

} // namespace codec
