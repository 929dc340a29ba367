// The transforms in vector lanes, equal to the portable ones bit by bit. Full and half size work in 16 bits and hand a
// block whose values could leave them to the portable path; quarter size works in 32 bits.
#pragma once

#include "jpeg/Transform.h"

namespace jpeg::sse2 {

void TransformFull(const std::int16_t* values, const Dequantiser& dequantiser, int last, std::uint8_t* samples,
                   std::ptrdiff_t stride);
void TransformHalf(const std::int16_t* values, const Dequantiser& dequantiser, int last, std::uint8_t* samples,
                   std::ptrdiff_t stride);
void TransformQuarter(const std::int16_t* values, const Dequantiser& dequantiser, int last, std::uint8_t* samples,
                      std::ptrdiff_t stride);

} // namespace jpeg::sse2
