// The portable transforms, for the vector paths to fall back on.
#pragma once

#include "jpeg/Transform.h"

namespace jpeg::plain {

void TransformFull(const std::int16_t* values, const Dequantiser& dequantiser, int last, std::uint8_t* samples,
                   std::ptrdiff_t stride);
void TransformHalf(const std::int16_t* values, const Dequantiser& dequantiser, int last, std::uint8_t* samples,
                   std::ptrdiff_t stride);
void TransformQuarter(const std::int16_t* values, const Dequantiser& dequantiser, int last, std::uint8_t* samples,
                      std::ptrdiff_t stride);
void TransformEighth(const std::int16_t* values, const Dequantiser& dequantiser, int last, std::uint8_t* samples,
                     std::ptrdiff_t stride);

} // namespace jpeg::plain
