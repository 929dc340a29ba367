#include "host/codec/ArithmeticDecoder.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "host/wire/BitReader.h"

namespace codec {

void ArithmeticDecoder::Start(Medium block, std::size_t startBit, std::size_t endBit) {
    data = block.data();
    end = std::min(endBit, block.size() * 8);
    position = startBit + 30;
    value = PeekNearEnd(data, startBit, end, 30) << kAhead;
    range = 1;
    Account(0, 0);
}

std::uint64_t ArithmeticDecoder::PeekNearEnd(const std::uint8_t* data, std::size_t position, std::size_t end,
                                             unsigned count) {
    wire::BitReader reader({data, (end + 7) / 8}, position, end);
    const unsigned upper = count / 2;
    const std::uint64_t bits = reader.Read(upper);
    return bits << (count - upper) | reader.Read(count - upper);
}

namespace {

// How many entries of the model, times `step`, are above `value`. Eight are compared at a time, side by side; the entries
// fall, and mostly the first eight decide.
std::size_t CountAbove(CumulativeModel model, std::uint32_t value, std::uint32_t step) {
    for (std::size_t k = 0;; k += kModelGroup) {
        const std::uint16_t* entry = model.data() + k;
        const auto above = [&](unsigned i) { return std::size_t{value < entry[i] * step}; };
        const std::size_t count =
            ((above(0) + above(1)) + (above(2) + above(3))) + ((above(4) + above(5)) + (above(6) + above(7)));
        if (count < kModelGroup) [[likely]]
            return k + count;
    }
}

} // namespace

unsigned ArithmeticDecoder::NextSymbol(CumulativeModel model) {
    // Most models have two entries, the second of them 0: a bit whose 0 stands for symbol 1.
    if (model.size() == 2)
        return 1 - Bit(model[0]);
    // The symbol is the first entry whose share is not above the value. The models fall and end with 0, so it is the number of
    // those above.
    const auto step = static_cast<std::uint32_t>(std::rotl(range, 16));
    const std::size_t symbol = CountAbove(model, static_cast<std::uint32_t>(value >> kAhead), step);
    const std::uint32_t below = model[symbol];
    const std::uint32_t above = *(model.data() + symbol - 1);
    value -= std::uint64_t{below * step} << kAhead;
    Normalise(std::uint64_t{step * (above - below)} << kAhead);
    return static_cast<unsigned>(symbol);
}

} // namespace codec
