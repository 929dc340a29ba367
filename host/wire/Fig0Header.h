// What every group of FIG type 0 begins with (EN 300 401 5.2.2.1).
#pragma once

#include <cstdint>
#include <optional>

#include "host/wire/Bytes.h"

namespace wire {

// The first byte of every type 0 group.
struct Fig0Header {
    bool nextConfiguration = false; // C/N
    bool otherEnsemble = false;     // OE
    bool longIds = false;           // P/D: 32-bit service identifiers
    int extension = 0;
};

struct Fig0 {
    Fig0Header header;
    ByteSpan body;
};

[[nodiscard]] inline std::optional<Fig0> ParseFig0(ByteSpan data) {
    if (data.empty())
        return std::nullopt;
    const int flags = data[0];
    return Fig0{{(flags & 0x80) != 0, (flags & 0x40) != 0, (flags & 0x20) != 0, flags & 0x1F}, data.subspan(1)};
}

inline void AppendFig0Header(ByteVector& out, const Fig0Header& header) {
    out.push_back(static_cast<std::uint8_t>((header.nextConfiguration ? 0x80 : 0) | (header.otherEnsemble ? 0x40 : 0) |
                                            (header.longIds ? 0x20 : 0) | header.extension));
}

namespace detail {
inline std::uint32_t GetServiceId(ByteSpan body, std::size_t at, bool longIds) {
    return longIds ? Get32(body, at) : Get16(body, at);
}
inline void AppendServiceId(ByteVector& out, std::uint32_t id, bool longIds) {
    if (longIds)
        Append32(out, id);
    else
        Append16(out, id);
}
} // namespace detail

} // namespace wire
