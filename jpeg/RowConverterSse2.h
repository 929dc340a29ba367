// Rows to pixels, sixteen pixels at a time; equal to the tables bit by bit.
#pragma once

#include "jpeg/RowConverter.h"
#include "jpeg/Simd.h"

#if DMB_JPEG_SSE2

namespace jpeg::sse2 {

// Where the samples of a row lie.
enum class RowKind { kYcc, kYccHalf, kGrey, kRgb }; // kYccHalf: a chroma sample for two pixels

// What RowConverter's functions of these names do.
void ToRgb565(RowKind kind, const SampleRow& row, int width, std::uint8_t* pixels);
void StoreContributions(RowKind kind, const SampleRow& row, int width, std::uint32_t* words);
void AddContributions(RowKind kind, const SampleRow& row, int width, std::uint32_t* words);

} // namespace jpeg::sse2

#endif
