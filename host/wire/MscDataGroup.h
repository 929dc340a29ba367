// The MSC data group (EN 300 401 5.3.3), the envelope of MOT segments in PAD and packets.
#pragma once

#include <cstdint>
#include <optional>

#include "host/wire/Bytes.h"
#include "host/wire/Crc.h"

namespace wire {

inline constexpr int kDataGroupMotHeader = 3;
inline constexpr int kDataGroupMotBody = 4;
inline constexpr int kDataGroupMotDirectory = 6;
inline constexpr int kDataGroupMotDirectoryCompressed = 7;

struct MscDataGroup {
    int type = 0;
    int continuity = 0;
    int repetition = 0;
    bool hasSegment = false;
    bool lastSegment = false;
    int segment = 0;
    bool hasTransportId = false;
    std::uint16_t transportId = 0;
    ByteSpan data;
};

// The group's own length is not in the group: `bytes` is exactly one group. A group without a check sum is accepted, one
// with a wrong check sum is not.
[[nodiscard]] inline std::optional<MscDataGroup> ParseMscDataGroup(ByteSpan bytes) {
    if (bytes.size() < 2)
        return std::nullopt;
    const bool extension = (bytes[0] & 0x80) != 0;
    const bool hasCrc = (bytes[0] & 0x40) != 0;
    MscDataGroup group;
    group.hasSegment = (bytes[0] & 0x20) != 0;
    const bool userAccess = (bytes[0] & 0x10) != 0;
    group.type = bytes[0] & 0x0F;
    group.continuity = bytes[1] >> 4;
    group.repetition = bytes[1] & 0x0F;
    if (hasCrc) {
        if (!Crc16Matches(bytes))
            return std::nullopt;
        bytes = bytes.first(bytes.size() - 2);
    }
    std::size_t at = extension ? 4 : 2;
    if (group.hasSegment) {
        if (bytes.size() < at + 2)
            return std::nullopt;
        const std::uint32_t word = Get16(bytes, at);
        group.lastSegment = (word & 0x8000) != 0;
        group.segment = static_cast<int>(word & 0x7FFF);
        at += 2;
    }
    if (userAccess) {
        if (bytes.size() < at + 1)
            return std::nullopt;
        const std::size_t length = bytes[at] & 0x0F;
        group.hasTransportId = (bytes[at] & 0x10) != 0;
        if (bytes.size() < at + 1 + length || (group.hasTransportId && length < 2))
            return std::nullopt;
        if (group.hasTransportId)
            group.transportId = static_cast<std::uint16_t>(Get16(bytes, at + 1));
        at += 1 + length;
    }
    if (bytes.size() < at)
        return std::nullopt;
    group.data = bytes.subspan(at);
    return group;
}

// Writes the group with its check sum.
inline void AppendMscDataGroup(ByteVector& out, const MscDataGroup& group) {
    const std::size_t start = out.size();
    out.push_back(static_cast<std::uint8_t>(0x40 | (group.hasSegment ? 0x20 : 0) | (group.hasTransportId ? 0x10 : 0) |
                                            group.type));
    out.push_back(static_cast<std::uint8_t>((group.continuity << 4) | group.repetition));
    if (group.hasSegment)
        Append16(out, (group.lastSegment ? 0x8000u : 0u) | static_cast<std::uint32_t>(group.segment));
    if (group.hasTransportId) {
        out.push_back(0x12);
        Append16(out, group.transportId);
    }
    AppendBytes(out, group.data);
    Append16(out, Crc16(ByteSpan(out).subspan(start)));
}

} // namespace wire
