#include "host/codec/TemporalNoiseShaping.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace codec {

TnsPrediction TnsPredictionOf(const TnsWindow& window, const TnsFilter& filter) {
    // Steps of the quantised arc sine; the negative side has one step more.
    const double steps = window.fineResolution ? 8.0 : 4.0;
    TnsPrediction a{};
    a[0] = 1;
    for (unsigned m = 1; m <= filter.order; ++m) {
        const int code = filter.coefficients[m - 1];
        const double reflection = std::sin(code * (std::numbers::pi / 2) / (code >= 0 ? steps - 0.5 : steps + 0.5));
        const TnsPrediction before = a;
        for (unsigned i = 1; i < m; ++i)
            a[i] = before[i] + reflection * before[m - i];
        a[m] = reflection;
    }
    return a;
}

namespace {

void Filter(const TnsPrediction& a, unsigned order, bool downwards, std::span<float> lines) {
    std::array<double, 31> past{}; // past[j - 1] is the output j lines ago
    const std::size_t count = lines.size();
    for (std::size_t n = 0; n < count; ++n) {
        float& line = lines[downwards ? count - 1 - n : n];
        double y = line;
        for (unsigned j = 0; j < order; ++j)
            y -= a[j + 1] * past[j];
        y = std::clamp<double>(y, -kLargestLine, kLargestLine);
        std::copy_backward(past.begin(), past.begin() + (order - 1), past.begin() + order);
        past[0] = y;
        line = static_cast<float>(y);
    }
}

} // namespace

void ApplyTns(const RateTables& rate, const BlockHeader& header, const TnsWindow& window, std::span<float> lines) {
    const std::span<const std::uint16_t> edges = BandEdges(rate, header);
    const int limit = std::min<int>(header.IsShort() ? rate.tnsBandsShort : rate.tnsBandsLong, header.maxSfb);
    // The first filter hangs from the top of all bands of the rate, sent or not; each next one from the one
    // before.
    int top = static_cast<int>(edges.size()) - 1;
    for (unsigned f = 0; f < window.filterCount; ++f) {
        const TnsFilter& filter = window.filters[f];
        const int bottom = std::max(0, top - filter.length);
        const std::size_t first = edges[static_cast<std::size_t>(std::min(bottom, limit))];
        const std::size_t end = edges[static_cast<std::size_t>(std::min(top, limit))];
        if (filter.order > 0 && end > first)
            Filter(TnsPredictionOf(window, filter), filter.order, filter.downwards, lines.subspan(first, end - first));
        top = bottom;
    }
}

} // namespace codec
