// Temporal noise shaping: all-pole filters along the lines of a window (ISO/IEC 14496-3, 4.6.9).
#pragma once

#include <array>
#include <span>

#include "host/codec/BlockHeader.h"
#include "host/codec/BsacTables.h"

namespace codec {

// Prediction coefficients a[1..order] of a filter, from its reflection coefficients; a[0] is 1.
using TnsPrediction = std::array<double, 32>;
[[nodiscard]] TnsPrediction TnsPredictionOf(const TnsWindow& window, const TnsFilter& filter);

// Applies the window's filters to its lines (1024, or 128 of a short window) in place. The result is limited
// to kLargestLine.
void ApplyTns(const RateTables& rate, const BlockHeader& header, const TnsWindow& window, std::span<float> lines);

// Undamped filters and wild scalefactors would leave the range of a float; no sound is within 2^10 of this.
inline constexpr float kLargestLine = 1099511627776.0F; // 2^40

} // namespace codec
