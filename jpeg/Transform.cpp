#include "jpeg/Transform.h"

#include "jpeg/Simd.h"
#include "jpeg/TransformPlain.h"
#if DMB_JPEG_SSE2
#include "jpeg/TransformSse2.h"
#endif

namespace jpeg {

namespace {

// Scale factor of frequency k times 2^14: 1 for k = 0, else sqrt(2) cos(k pi / 16); products of two are rounded once.
constexpr std::array<double, kBlockSide> kScale = {1.0, 1.387039845, 1.306562965, 1.175875602,
                                                   1.0, 0.785694958, 0.541196100, 0.275899379};

// What a unit of frequency k can add in one pass to any product's input or output: an output weighs it with at most
// sqrt(2) cos(pi / 16) against its scale factor, and a product's input takes it as it is.
constexpr double PassGain(int k) {
    if (k == 0) {
        return 1.0;
    }
    const double output = (k % 4 == 0 ? 1.0 : k % 2 == 0 ? 1.306562965 : 1.387039845) / kScale[k];
    return output < 1.0 ? 1.0 : output;
}

constexpr std::uint32_t Round(double value) {
    const auto whole = static_cast<std::uint32_t>(value);
    return value - whole < 0.5 ? whole : whole + 1;
}

// Both for each place of a block, row by row, so that a picture's tables are made without floating point.
struct Factors {
    std::array<std::uint32_t, kBlockSize> scale; // of a quantiser, times 2^14, rounded
    std::array<std::uint32_t, kBlockSize> gain;  // of both passes, times 2^12, rounded up
};
constexpr Factors kFactors = [] {
    Factors factors{};
    for (int i = 0; i < kBlockSize; ++i) {
        const int row = i / kBlockSide;
        const int column = i % kBlockSide;
        factors.scale[i] = Round(kScale[row] * kScale[column] * 16384.0);
        factors.gain[i] = static_cast<std::uint32_t>(PassGain(row) * PassGain(column) * 4096.0) + 1;
    }
    return factors;
}();

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
        const std::uint32_t multiplier = (table.values[i] * kFactors.scale[kZigzag[i]] + 2048) >> 12;
        result.multiplier[at] = multiplier;
        result.lane[at] = static_cast<std::int16_t>(multiplier);
        result.weight[at] = static_cast<std::int16_t>((multiplier * kFactors.gain[kZigzag[i]] + 4095) >> 12);
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
