// YCbCr rows, sixteen pixels at a time; equal to the tables bit by bit.
#pragma once

#include "jpeg/RowConverter.h"
#include "jpeg/Simd.h"

#if DMB_JPEG_SSE2

namespace jpeg::sse2 {

// Each returns how many pixels it did: the largest multiple of 16 in `width`.
int YccToRgb565(const SampleRow& row, int chromaShift, int width, std::uint8_t* pixels);
int YccStoreContributions(const SampleRow& row, int chromaShift, int width, std::uint32_t* words);
int YccAddContributions(const SampleRow& row, int chromaShift, int width, std::uint32_t* words);

} // namespace jpeg::sse2

#endif
