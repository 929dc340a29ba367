// Rows to pixels, sixteen pixels at a time; equal to the tables bit by bit.
#pragma once

#include "jpeg/RowConverter.h"
#include "jpeg/Simd.h"

#if DMB_JPEG_SSE2

namespace jpeg::sse2 {

// Where the samples of a row lie.
enum class RowKind { kYcc, kYccHalf, kGrey, kRgb }; // kYccHalf: a chroma sample for two pixels

// Each returns how many pixels it did: the largest multiple of 16 in `width`.
int ToRgb565(RowKind kind, const SampleRow& row, int width, std::uint8_t* pixels);
int StoreContributions(RowKind kind, const SampleRow& row, int width, std::uint32_t* words);
int AddContributions(RowKind kind, const SampleRow& row, int width, std::uint32_t* words);

} // namespace jpeg::sse2

#endif
