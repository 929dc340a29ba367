// The inverse transform: coefficients of a block to samples, at full size and at 1/2, 1/4 and 1/8 of it.
//
// The separable integer DCT of Arai, Agui and Nakajima; dequantisation is part of its first pass. A reduced size runs the
// same butterfly over the low frequencies only and averages neighbouring outputs.
#pragma once

#include "jpeg/Frame.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace jpeg {

// Coefficients that a reduced size keeps, row by row: 8x8, 4x4, 2x2, 1. Blocks are stored this way.
[[nodiscard]] constexpr int KeptSide(int reduction) {
    return kBlockSide >> reduction;
}
[[nodiscard]] constexpr int KeptCount(int reduction) {
    return KeptSide(reduction) * KeptSide(reduction);
}

// Last coefficient in zig-zag order that the reduction keeps.
[[nodiscard]] constexpr int LastKept(int reduction) {
    constexpr std::array<int, 4> kLast = {63, 24, 4, 0};
    return kLast[reduction];
}

// A block under decoding: room for the kept coefficients, and behind them a place for all others.
struct alignas(16) Block {
    std::array<std::int16_t, kBlockSize + 8> values;
};
inline constexpr int kDiscard = kBlockSize;

// Multipliers of one quantisation table for one reduction, in the order of the kept coefficients.
struct Dequantiser {
    // Quantiser times the scale factors of the transform, with two bits of fraction.
    std::array<std::uint32_t, kBlockSize> multiplier{};
    // The same for 16-bit lanes, and how much a unit of each coefficient can add to any value on the way.
    alignas(16) std::array<std::int16_t, kBlockSize> lane{};
    alignas(16) std::array<std::int16_t, kBlockSize> weight{};
};
[[nodiscard]] Dequantiser MakeDequantiser(const QuantTable& table, int reduction);

// The one sample of a block at an eighth of the size.
[[nodiscard]] constexpr std::uint8_t EighthSample(std::int16_t dc, const Dequantiser& dequantiser) {
    const int output = (dc * static_cast<std::int32_t>(dequantiser.multiplier[0]) >> 5) + 128;
    return static_cast<std::uint8_t>(output < 0 ? 0 : output > 255 ? 255 : output);
}

// Writes KeptSide(reduction) rows of as many samples. `values` are the kept coefficients; those behind `last`, counted in
// zig-zag order, are promised to be 0.
using TransformFunction = void (*)(const std::int16_t* values, const Dequantiser& dequantiser, int last,
                                   std::uint8_t* samples, std::ptrdiff_t stride);

// The fastest path of this build.
[[nodiscard]] TransformFunction TransformFor(int reduction);
// The portable path; the meaning of the other.
[[nodiscard]] TransformFunction PlainTransformFor(int reduction);

} // namespace jpeg
