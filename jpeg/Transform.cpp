#include "jpeg/Transform.h"

#include "jpeg/Simd.h"
#include "jpeg/TransformPlain.h"
#if DMB_JPEG_SSE2
#include "jpeg/TransformSse2.h"
#endif

#include <cmath>

namespace jpeg {

namespace {

// Scale factor of frequency k times 2^14: 1 for k = 0, else sqrt(2) cos(k pi / 16); products of two are rounded once.
constexpr std::array<double, kBlockSide> kScale = {1.0, 1.387039845, 1.306562965, 1.175875602,
                                                   1.0, 0.785694958, 0.541196100, 0.275899379};

std::uint32_t Multiplier(unsigned quantiser, int row, int column) {
    const auto scale = static_cast<std::uint32_t>(std::lround(kScale[row] * kScale[column] * 16384.0));
    return (quantiser * scale + 2048) >> 12;
}

// What a unit of frequency k can add in one pass to any product's input or output: an output weighs it with at most
// sqrt(2) cos(pi / 16) against its scale factor, and a product's input takes it as it is.
double PassGain(int k) {
    if (k == 0) {
        return 1.0;
    }
    const double output = (k % 4 == 0 ? 1.0 : k % 2 == 0 ? 1.306562965 : 1.387039845) / kScale[k];
    return output < 1.0 ? 1.0 : output;
}

} // namespace

Dequantiser MakeDequantiser(const QuantTable& table, int reduction) {
    Dequantiser result;
    const int side = KeptSide(reduction);
    for (int i = 0; i < kBlockSize; ++i) {
        const int row = kZigzag[i] / kBlockSide;
        const int column = kZigzag[i] % kBlockSide;
        if (row >= side || column >= side) {
            continue;
        }
        const int at = row * side + column;
        const std::uint32_t multiplier = Multiplier(table.values[i], row, column);
        result.multiplier[at] = multiplier;
        result.lane[at] = static_cast<std::int16_t>(multiplier);
        result.weight[at] = static_cast<std::int16_t>(std::ceil(multiplier * PassGain(row) * PassGain(column)));
    }
    return result;
}

TransformFunction PlainTransformFor(int reduction) {
    constexpr std::array<TransformFunction, 4> kPlain = {plain::TransformFull, plain::TransformHalf,
                                                         plain::TransformQuarter, plain::TransformEighth};
    return kPlain[reduction];
}

TransformFunction TransformFor(int reduction) {
#if DMB_JPEG_SSE2
    if (reduction == 0) {
        return sse2::TransformFull;
    }
    if (reduction == 1) {
        return sse2::TransformHalf;
    }
    if (reduction == 2) {
        return sse2::TransformQuarter;
    }
#endif
    return PlainTransformFor(reduction);
}

} // namespace jpeg
