// The last steps of an average, several pixels at a time; equal to the portable ones bit by bit.
#pragma once

#include "jpeg/Axis.h"
#include "jpeg/Simd.h"

#if DMB_JPEG_SSE2

#include <cstdint>

namespace jpeg::sse2 {

// Words of four contributions, or of two to be doubled, to RGB565. Returns how many it did: a multiple of 8.
int PackFours565(const std::uint32_t* words, int size, int doubled, std::uint8_t* row);

// Averages of up to this many contributions have a factor of 16 bits.
inline constexpr int kMaxAveraged = 16;

// A row of averages. `sums` holds four channels for each source column, each the sum of `rows` contributions, and may be
// read one column behind its end. `words` gets the averages times four, a byte each. All counts must be at least 2 and at
// most kMaxAveraged in all.
void AverageColumns(const std::uint16_t* sums, const Axis& columns, int rows, std::uint32_t* words);

} // namespace jpeg::sse2

#endif
