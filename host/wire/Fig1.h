// FIG types 1 and 2: labels (EN 300 401 5.2.2.2, 5.2.2.3, 8.1.13, 8.1.14).
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "host/wire/Bytes.h"

namespace wire {

// What a label names; the extension of both FIG types.
enum class LabelOf : std::uint8_t { Ensemble = 0, Programme = 1, Component = 4, Data = 5 };

// Whom the label belongs to.
struct LabelTarget {
    LabelOf of = LabelOf::Ensemble;
    std::uint32_t id = 0;         // EId or SId
    int componentIdInService = 0; // SCIdS, component labels only
    bool longId = false;          // component labels only: P/D; data services always have long identifiers
    bool operator==(const LabelTarget&) const = default;
};

namespace detail {

// Bytes of the identifier field; 0 for an extension that is no label of ours.
inline std::size_t LabelIdBytes(int extension, bool longId) {
    switch (extension) {
    case 0:
    case 1:
        return 2;
    case 4:
        return longId ? 5 : 3;
    case 5:
        return 4;
    default:
        return 0;
    }
}

// Reads the identifier after the first byte of the group; the length has been checked by the caller's LabelIdBytes.
inline std::optional<LabelTarget> GetLabelTarget(ByteSpan data, int extension) {
    if (data.size() < 2)
        return std::nullopt;
    const bool longId = extension == 5 || (extension == 4 && (data[1] & 0x80) != 0);
    const std::size_t bytes = LabelIdBytes(extension, longId);
    if (bytes == 0 || data.size() < 1 + bytes)
        return std::nullopt;
    LabelTarget target;
    target.of = static_cast<LabelOf>(extension);
    target.longId = longId;
    const std::size_t at = extension == 4 ? 2 : 1;
    if (extension == 4)
        target.componentIdInService = data[1] & 0x0F;
    target.id = longId ? Get32(data, at) : Get16(data, at);
    return target;
}

inline void AppendLabelTarget(ByteVector& out, const LabelTarget& target) {
    const bool component = target.of == LabelOf::Component;
    const bool longId = target.of == LabelOf::Data || (component && target.longId);
    if (component)
        out.push_back(static_cast<std::uint8_t>((longId ? 0x80 : 0) | target.componentIdInService));
    if (longId)
        Append32(out, target.id);
    else
        Append16(out, target.id);
}

} // namespace detail

inline constexpr std::size_t kLabelBytes = 16;

// FIG 1/0, 1/1, 1/4, 1/5.
struct Label {
    int charset = 0; // LabelText.h
    LabelTarget target;
    std::array<std::uint8_t, kLabelBytes> text{};
    std::uint16_t shortMask = 0; // characters of the short label, the first in the highest bit
};

[[nodiscard]] inline std::optional<Label> ParseFig1(ByteSpan data) {
    // The bit between charset and extension is OE: another ensemble's label.
    if (data.empty() || (data[0] & 0x08) != 0)
        return std::nullopt;
    const auto target = detail::GetLabelTarget(data, data[0] & 7);
    if (!target)
        return std::nullopt;
    const std::size_t at = 1 + detail::LabelIdBytes(data[0] & 7, target->longId);
    if (data.size() < at + kLabelBytes + 2)
        return std::nullopt;
    Label label;
    label.charset = data[0] >> 4;
    label.target = *target;
    for (std::size_t i = 0; i < kLabelBytes; ++i)
        label.text[i] = data[at + i];
    label.shortMask = static_cast<std::uint16_t>(Get16(data, at + kLabelBytes));
    return label;
}

inline void AppendFig1(ByteVector& out, const Label& label) {
    out.push_back(static_cast<std::uint8_t>((label.charset << 4) | static_cast<int>(label.target.of)));
    detail::AppendLabelTarget(out, label.target);
    AppendBytes(out, label.text);
    Append16(out, label.shortMask);
}

// FIG 2/0, 2/1, 2/4, 2/5: one segment of an extended label (V2.1.1, 5.2.2.3.2). All segments but the last of a label
// share the toggle bit; only segment 0 tells encoding and number of segments.
struct ExtendedLabelSegment {
    LabelTarget target;
    bool toggle = false;
    int segment = 0; // 0 to 7
    bool ucs2 = false;
    int segmentCount = 0; // 1 to 8, segment 0 only
    ByteSpan text;
};

[[nodiscard]] inline std::optional<ExtendedLabelSegment> ParseFig2(ByteSpan data) {
    if (data.empty())
        return std::nullopt;
    const auto target = detail::GetLabelTarget(data, data[0] & 7);
    if (!target)
        return std::nullopt;
    ExtendedLabelSegment segment;
    segment.target = *target;
    segment.toggle = (data[0] & 0x80) != 0;
    segment.segment = (data[0] >> 4) & 7;
    const bool rfu = (data[0] & 0x08) != 0;
    std::size_t at = 1 + detail::LabelIdBytes(data[0] & 7, target->longId);
    if (segment.segment == 0) {
        if (data.size() < at + 1)
            return std::nullopt;
        segment.ucs2 = (data[at] & 0x80) != 0;
        segment.segmentCount = ((data[at] >> 4) & 7) + 1;
        // With rfu 0 the character flags for a short label follow.
        at += rfu ? 1 : 3;
    }
    if (data.size() <= at)
        return std::nullopt;
    segment.text = data.subspan(at);
    return segment;
}

// Writes the rfu form, without character flags.
inline void AppendFig2(ByteVector& out, const ExtendedLabelSegment& segment) {
    out.push_back(static_cast<std::uint8_t>((segment.toggle ? 0x80 : 0) | (segment.segment << 4) | 0x08 |
                                            static_cast<int>(segment.target.of)));
    detail::AppendLabelTarget(out, segment.target);
    if (segment.segment == 0)
        out.push_back(static_cast<std::uint8_t>((segment.ucs2 ? 0x80 : 0) | ((segment.segmentCount - 1) << 4)));
    AppendBytes(out, segment.text);
}

} // namespace wire
