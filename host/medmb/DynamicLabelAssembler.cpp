#include "host/medmb/DynamicLabelAssembler.h"

#include <algorithm>

namespace medmb {

void DynamicLabelAssembler::Clear() {
    segments = {};
    count = 0;
}

std::optional<DynamicLabelText> DynamicLabelAssembler::Push(const wire::DynamicLabelSegment& segment) {
    if (segment.isCommand) {
        if (segment.command == wire::kLabelCommandRemove) {
            Clear();
            handedOut.reset();
        }
        return std::nullopt;
    }
    const int index = segment.first ? 0 : segment.segment;
    if (!segment.first && index == 0)
        return std::nullopt;
    auto& place = segments[static_cast<std::size_t>(index)];
    // The toggle bit tells a new label from a repeated one. Two toggles may have gone by unseen: then a segment differs.
    const bool differs = place && !std::equal(place->begin(), place->end(), segment.text.begin(), segment.text.end());
    const bool countDiffers = segment.last && count != 0 && count != index + 1;
    const bool beyondLast = count != 0 && index >= count;
    if (segment.toggle != toggle || differs || countDiffers || beyondLast ||
        (segment.first && place && charset != segment.charset))
        Clear();
    toggle = segment.toggle;
    place = wire::ByteVector(segment.text.begin(), segment.text.end());
    if (segment.first)
        charset = segment.charset;
    if (segment.last)
        count = index + 1;
    if (count == 0)
        return std::nullopt;
    DynamicLabelText text{charset, {}};
    for (int i = 0; i < count; ++i) {
        const auto& part = segments[static_cast<std::size_t>(i)];
        if (!part)
            return std::nullopt;
        wire::AppendBytes(text.bytes, *part);
    }
    if (handedOut == text)
        return std::nullopt;
    handedOut = text;
    return text;
}

} // namespace medmb
