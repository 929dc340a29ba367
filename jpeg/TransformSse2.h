// The transforms in 16-bit lanes. Equal to the portable ones bit by bit: a block whose values could leave 16 bits on
// the way is handed to those.
#pragma once

#include "jpeg/Transform.h"

namespace jpeg::sse2 {

void TransformFull(const std::int16_t* values, const Dequantiser& dequantiser, bool dcOnly, std::uint8_t* samples,
                   std::ptrdiff_t stride);
void TransformHalf(const std::int16_t* values, const Dequantiser& dequantiser, bool dcOnly, std::uint8_t* samples,
                   std::ptrdiff_t stride);

} // namespace jpeg::sse2
