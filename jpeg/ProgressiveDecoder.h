// Progressive pictures (T.81 G.1): all scans are gathered in a coefficient store, then the lines are made from it.
//
// A scan of coefficients that the reduction drops, and that no refinement of kept ones depends on, is passed over unread;
// so is one with parameters that T.81 table B.3 forbids. Where the data of a scan runs short, the coefficients that it did
// not reach keep their value.
#pragma once

#include "jpeg/CoefficientStore.h"
#include "jpeg/MarkerReader.h"
#include "jpeg/Quantisation.h"
#include "jpeg/SampleRows.h"

#include <array>
#include <cstdint>
#include <span>

namespace jpeg {

class ProgressiveDecoder : public SampleSource {
public:
    // `reader` stands behind the first scan header. Reads every scan.
    [[nodiscard]] Status Open(MarkerReader& reader, std::span<const std::uint8_t> data, int theReduction);
    void DecodeLine(int mcuLine, SampleRows& rows) override;

private:
    void PlanScans(MarkerReader reader);
    [[nodiscard]] bool IsNeeded(const ScanHeader& scan) const;

    Frame frame;
    int reduction = 0;
    ComponentQuantisers quantisers;
    CoefficientStore store;
    // Last coefficient that a refinement of kept coefficients runs over, by component.
    std::array<int, kMaxComponents> refinedTo{};
};

} // namespace jpeg
