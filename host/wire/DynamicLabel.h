// One segment of the dynamic label (EN 300 401 7.4.5.2): prefix of two bytes, up to 16 bytes of text, check sum.
#pragma once

#include <cstdint>
#include <optional>

#include "host/wire/Bytes.h"
#include "host/wire/Crc.h"

namespace wire {

inline constexpr std::size_t kLabelSegmentBytes = 16;
inline constexpr int kLabelMaxSegments = 8;
inline constexpr int kLabelCommandRemove = 1;
inline constexpr int kLabelCommandDlPlus = 2; // TS 102 980

struct DynamicLabelSegment {
    bool toggle = false;
    bool first = false;
    bool last = false;
    bool isCommand = false;
    int command = 0; // isCommand only
    int charset = 0; // first segment only
    int segment = 0; // 0 for the first
    ByteSpan text;   // of the label, or of a DL Plus command
};

// Bytes that the segment beginning here takes with its check sum, told by its first two bytes alone.
[[nodiscard]] inline std::size_t DynamicLabelSegmentBytes(std::uint8_t prefix, std::uint8_t second) {
    if ((prefix & 0x10) == 0)
        return 2u + (prefix & 0x0Fu) + 1u + 2u;
    if ((prefix & 0x0F) == kLabelCommandDlPlus)
        return 2u + (second & 0x0Fu) + 1u + 2u;
    return 2u + 2u;
}

// `bytes` may be longer than the segment: what follows is padding of the subfield.
[[nodiscard]] inline std::optional<DynamicLabelSegment> ParseDynamicLabelSegment(ByteSpan bytes) {
    if (bytes.size() < 4)
        return std::nullopt;
    const std::size_t length = DynamicLabelSegmentBytes(bytes[0], bytes[1]);
    if (bytes.size() < length || !Crc16Matches(bytes.first(length)))
        return std::nullopt;
    DynamicLabelSegment segment;
    segment.toggle = (bytes[0] & 0x80) != 0;
    segment.first = (bytes[0] & 0x40) != 0;
    segment.last = (bytes[0] & 0x20) != 0;
    segment.isCommand = (bytes[0] & 0x10) != 0;
    segment.text = bytes.subspan(2, length - 4);
    if (segment.isCommand)
        segment.command = bytes[0] & 0x0F;
    else if (segment.first)
        segment.charset = bytes[1] >> 4;
    else
        segment.segment = (bytes[1] >> 4) & 7;
    return segment;
}

inline void AppendDynamicLabelSegment(ByteVector& out, const DynamicLabelSegment& segment) {
    const std::size_t start = out.size();
    const std::size_t textLength = segment.text.size();
    const int flags = (segment.toggle ? 0x80 : 0) | (segment.first ? 0x40 : 0) | (segment.last ? 0x20 : 0);
    if (segment.isCommand) {
        out.push_back(static_cast<std::uint8_t>(flags | 0x10 | segment.command));
        out.push_back(static_cast<std::uint8_t>(textLength == 0 ? 0 : textLength - 1));
    } else {
        out.push_back(static_cast<std::uint8_t>(flags | static_cast<int>(textLength - 1)));
        out.push_back(static_cast<std::uint8_t>((segment.first ? segment.charset : segment.segment) << 4));
    }
    AppendBytes(out, segment.text);
    Append16(out, Crc16(ByteSpan(out).subspan(start)));
}

} // namespace wire
