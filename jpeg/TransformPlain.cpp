#include "jpeg/TransformPlain.h"

#include <algorithm>
#include <cstring>

namespace jpeg::plain {

namespace {

// Samples by descaled output: the level shift of 128 and the limits 0 and 255 in one look-up. The table covers a little
// more than four times the range of a sample; what lies beyond is limited to it first.
constexpr int kRangeReach = 512;
constexpr auto kRangeLimit = [] {
    std::array<std::uint8_t, 2 * kRangeReach> table{};
    for (int i = 0; i < 2 * kRangeReach; ++i) {
        table[i] = static_cast<std::uint8_t>(std::clamp(i - kRangeReach + 128, 0, 255));
    }
    return table;
}();

std::uint8_t ToSample(std::int32_t output) {
    return kRangeLimit[std::clamp((output >> 5) + kRangeReach, 0, 2 * kRangeReach - 1)];
}

// Arithmetic wraps: damaged data may hold any coefficient.
std::int32_t Add(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}
std::int32_t Subtract(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}
std::int32_t Dequantise(std::int16_t value, std::uint32_t multiplier) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(static_cast<std::int32_t>(value)) * multiplier);
}

// Multiplication by a constant with 8 bits of fraction, truncated at once on purpose.
std::int32_t Scale(std::int32_t value, std::int32_t constant) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(value) * static_cast<std::uint32_t>(constant)) >> 8;
}
constexpr std::int32_t k1_414 = 362;
constexpr std::int32_t k1_847 = 473;
constexpr std::int32_t k1_082 = 277;
constexpr std::int32_t k2_613 = 669;

using Eight = std::array<std::int32_t, 8>;

Eight Butterfly(const Eight& in) {
    // Even part.
    const auto e0 = Add(in[0], in[4]);
    const auto e1 = Subtract(in[0], in[4]);
    const auto e3 = Add(in[2], in[6]);
    const auto e2 = Subtract(Scale(Subtract(in[2], in[6]), k1_414), e3);
    const auto even0 = Add(e0, e3);
    const auto even3 = Subtract(e0, e3);
    const auto even1 = Add(e1, e2);
    const auto even2 = Subtract(e1, e2);

    // Odd part.
    const auto z13 = Add(in[5], in[3]);
    const auto z10 = Subtract(in[5], in[3]);
    const auto z11 = Add(in[1], in[7]);
    const auto z12 = Subtract(in[1], in[7]);
    const auto odd7 = Add(z11, z13);
    const auto z5 = Scale(Add(z10, z12), k1_847);
    const auto odd6 = Subtract(Add(Scale(z10, -k2_613), z5), odd7);
    const auto odd5 = Subtract(Scale(Subtract(z11, z13), k1_414), odd6);
    const auto odd4 = Add(Subtract(Scale(z12, k1_082), z5), odd5);

    return {Add(even0, odd7), Add(even1, odd6),      Add(even2, odd5),      Subtract(even3, odd4),
            Add(even3, odd4), Subtract(even2, odd5), Subtract(even1, odd6), Subtract(even0, odd7)};
}

void Fill(std::uint8_t sample, int side, std::uint8_t* samples, std::ptrdiff_t stride) {
    for (int row = 0; row < side; ++row) {
        std::memset(samples + row * stride, sample, static_cast<std::size_t>(side));
    }
}

int Average(int a, int b) {
    return (a + b) >> 1;
}

} // namespace

void TransformFull(const std::int16_t* values, const Dequantiser& dequantiser, int last, std::uint8_t* samples,
                   std::ptrdiff_t stride) {
    const auto at = [&](int row, int column) {
        return Dequantise(values[row * 8 + column], dequantiser.multiplier[row * 8 + column]);
    };
    if (last == 0) {
        Fill(ToSample(at(0, 0)), 8, samples, stride);
        return;
    }
    std::array<Eight, 8> rows; // after the column pass
    for (int column = 0; column < 8; ++column) {
        int ac = 0;
        for (int row = 1; row < 8; ++row) {
            ac |= values[row * 8 + column];
        }
        Eight outputs;
        if (ac == 0) {
            outputs.fill(at(0, column));
        } else {
            outputs = Butterfly({at(0, column), at(1, column), at(2, column), at(3, column), at(4, column),
                                 at(5, column), at(6, column), at(7, column)});
        }
        for (int row = 0; row < 8; ++row) {
            rows[row][column] = outputs[row];
        }
    }
    for (int row = 0; row < 8; ++row) {
        const Eight outputs = Butterfly(rows[row]);
        std::transform(outputs.begin(), outputs.end(), samples + row * stride, ToSample);
    }
}

// The full butterfly over frequencies 0..3; outputs averaged in the pairs (0,1) (2,3) (4,5) (6,7) before the range limit.
void TransformHalf(const std::int16_t* values, const Dequantiser& dequantiser, int last, std::uint8_t* samples,
                   std::ptrdiff_t stride) {
    const auto at = [&](int row, int column) {
        return Dequantise(values[row * 4 + column], dequantiser.multiplier[row * 4 + column]);
    };
    if (last == 0) {
        Fill(ToSample(at(0, 0)), 4, samples, stride);
        return;
    }
    std::array<std::array<std::int32_t, 4>, 4> rows;
    for (int column = 0; column < 4; ++column) {
        const bool flat = (values[4 + column] | values[8 + column] | values[12 + column]) == 0;
        const Eight outputs = flat ? Eight{} : Butterfly({at(0, column), at(1, column), at(2, column), at(3, column)});
        for (int row = 0; row < 4; ++row) {
            rows[row][column] = flat ? at(0, column) : Add(outputs[2 * row], outputs[2 * row + 1]) >> 1;
        }
    }
    for (int row = 0; row < 4; ++row) {
        const Eight outputs = Butterfly({rows[row][0], rows[row][1], rows[row][2], rows[row][3]});
        for (int column = 0; column < 4; ++column) {
            samples[row * stride + column] = ToSample(Add(outputs[2 * column], outputs[2 * column + 1]) >> 1);
        }
    }
}

// The full butterfly over frequencies 0 and 1; the averages of outputs (1,2) and (5,6), of the second pass after
// the range limit.
void TransformQuarter(const std::int16_t* values, const Dequantiser& dequantiser, int /*last*/, std::uint8_t* samples,
                      std::ptrdiff_t stride) {
    const auto at = [&](int i) { return Dequantise(values[i], dequantiser.multiplier[i]); };
    // Outputs 1, 2, 5 and 6 of the butterfly for two inputs.
    const auto butterfly = [](std::int32_t dc, std::int32_t ac) {
        const std::int32_t odd6 = Subtract(Scale(ac, k1_847), ac);
        const std::int32_t odd5 = Subtract(Scale(ac, k1_414), odd6);
        return std::array{Add(dc, odd6), Add(dc, odd5), Subtract(dc, odd5), Subtract(dc, odd6)};
    };
    const auto left = butterfly(at(0), at(2));
    const auto right = butterfly(at(1), at(3));
    for (int row = 0; row < 2; ++row) {
        const auto out =
            butterfly(Add(left[2 * row], left[2 * row + 1]) >> 1, Add(right[2 * row], right[2 * row + 1]) >> 1);
        samples[row * stride] = static_cast<std::uint8_t>(Average(ToSample(out[0]), ToSample(out[1])));
        samples[row * stride + 1] = static_cast<std::uint8_t>(Average(ToSample(out[2]), ToSample(out[3])));
    }
}

void TransformEighth(const std::int16_t* values, const Dequantiser& dequantiser, int /*last*/, std::uint8_t* samples,
                     std::ptrdiff_t /*stride*/) {
    samples[0] = EighthSample(values[0], dequantiser);
}

} // namespace jpeg::plain
