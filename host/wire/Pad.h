// Programme associated data at the end of an audio frame: F-PAD, X-PAD and its contents indicators (EN 300 401 7.4).
//
//   audio frame:  ... | X-PAD, bytes in reversed order | ScF-CRC (2 or 4) | F-PAD (2)
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "host/wire/Bytes.h"
#include "host/wire/Crc.h"

namespace wire {

inline constexpr std::size_t kFPadBytes = 2;

enum class XPadKind : std::uint8_t { None = 0, Short = 1, Variable = 2 };

struct FPad {
    int type = 0; // 0: the only one in use
    XPadKind xPad = XPadKind::None;
    bool contentsIndicator = false; // CI flag
};

[[nodiscard]] inline FPad ParseFPad(std::uint8_t first, std::uint8_t second) {
    FPad pad;
    pad.type = first >> 6;
    const int kind = (first >> 4) & 3;
    // The fourth value is reserved: nothing that could be read.
    pad.xPad = kind == 3 ? XPadKind::None : static_cast<XPadKind>(kind);
    pad.contentsIndicator = (second & 2) != 0;
    return pad;
}

[[nodiscard]] inline std::array<std::uint8_t, kFPadBytes> WriteFPad(const FPad& pad) {
    return {static_cast<std::uint8_t>((pad.type << 6) | (static_cast<int>(pad.xPad) << 4)),
            static_cast<std::uint8_t>(pad.contentsIndicator ? 2 : 0)};
}

// X-PAD application types (TS 101 756 table 3 and EN 300 401 table 9).
inline constexpr int kXPadEndMarker = 0;
inline constexpr int kXPadDataGroupLength = 1;
inline constexpr int kXPadLabelStart = 2;
inline constexpr int kXPadLabelContinuation = 3;
inline constexpr int kXPadMotStart = 12;
inline constexpr int kXPadMotContinuation = 13;
inline constexpr int kXPadMotAccessStart = 14; // MOT under conditional access

// Lengths that a contents indicator of the variable form can name.
inline constexpr std::array<std::uint8_t, 8> kXPadLengths = {4, 6, 8, 12, 16, 24, 32, 48};
inline constexpr std::size_t kXPadShortBytes = 4;
inline constexpr std::size_t kXPadMaxIndicators = 4;

struct ContentsIndicator {
    int type = 0;
    std::size_t length = 0; // of the data subfield
};

// The indicators of a variable X-PAD; `bytes` is the X-PAD in logical order, from the byte next to the ScF-CRC.
struct ContentsIndicatorList {
    std::array<ContentsIndicator, kXPadMaxIndicators> items{};
    std::size_t count = 0;
    std::size_t listBytes = 0; // including the end marker, when there is one
    std::size_t dataBytes = 0;

    [[nodiscard]] std::size_t TotalBytes() const { return listBytes + dataBytes; }
};

[[nodiscard]] inline ContentsIndicatorList ParseContentsIndicators(ByteSpan bytes) {
    ContentsIndicatorList list;
    while (list.count < kXPadMaxIndicators && list.listBytes < bytes.size()) {
        const std::uint8_t byte = bytes[list.listBytes++];
        const int type = byte & 0x1F;
        if (type == kXPadEndMarker)
            break;
        const std::size_t length = kXPadLengths[static_cast<std::size_t>(byte >> 5)];
        list.items[list.count++] = {type, length};
        list.dataBytes += length;
    }
    return list;
}

// The byte of one indicator; `length` must be one of kXPadLengths.
[[nodiscard]] inline std::uint8_t WriteContentsIndicator(const ContentsIndicator& indicator) {
    std::size_t code = 0;
    while (code + 1 < kXPadLengths.size() && kXPadLengths[code] < indicator.length)
        ++code;
    return static_cast<std::uint8_t>((code << 5) | static_cast<std::size_t>(indicator.type));
}

// Data group length indicator, application type 1 (7.4.5.1.1): 14 bits of length and a check sum.
[[nodiscard]] inline std::optional<std::size_t> ParseDataGroupLength(ByteSpan bytes) {
    if (bytes.size() < 4 || !Crc16Matches(bytes.first(4)))
        return std::nullopt;
    return Get16(bytes, 0) & 0x3FFF;
}

inline void AppendDataGroupLength(ByteVector& out, std::size_t length) {
    const std::size_t start = out.size();
    Append16(out, static_cast<std::uint32_t>(length));
    Append16(out, Crc16(ByteSpan(out).subspan(start)));
}

} // namespace wire
