// Puts the segments of the dynamic label together (EN 300 401 7.4.5.2).
#pragma once

#include <array>
#include <optional>

#include "host/wire/DynamicLabel.h"

namespace medmb {

struct DynamicLabelText {
    int charset = 0;
    wire::ByteVector bytes; // as broadcast, control codes included; characters may span segments, so convert only here
    bool operator==(const DynamicLabelText&) const = default;
};

class DynamicLabelAssembler {
public:
    // The complete label when this segment made it so and it is not the one handed out last. Commands give nothing: "remove"
    // makes the next label new again, DL Plus tags belong to the label and are no text.
    [[nodiscard]] std::optional<DynamicLabelText> Push(const wire::DynamicLabelSegment& segment);
    void Reset() { *this = DynamicLabelAssembler(); }

private:
    std::array<std::optional<wire::ByteVector>, wire::kLabelMaxSegments> segments;
    bool toggle = false;
    int charset = 0;
    int count = 0; // 0 until the last segment is known
    std::optional<DynamicLabelText> handedOut;

    void Clear();
};

} // namespace medmb
