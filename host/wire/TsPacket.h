// The transport stream packet, ISO/IEC 13818-1 2.4.3.2, and its adaptation field, 2.4.3.4.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace wire {

inline constexpr std::size_t kTsPacketSize = 188;
inline constexpr std::uint8_t kTsSyncByte = 0x47;
inline constexpr std::uint16_t kPatPid = 0x0000;
inline constexpr std::uint16_t kNullPid = 0x1FFF;

// Everything of a packet but its payload.
struct TsHeader {
    bool transportError = false;
    bool payloadUnitStart = false;
    std::uint16_t pid = kNullPid; // 13 bits
    std::uint8_t scrambling = 0;  // 2 bits; 0 = in the clear
    std::uint8_t continuity = 0;  // 4 bits
    // Out of the adaptation field.
    bool discontinuity = false;
    bool randomAccess = false;
    std::optional<std::uint64_t> pcr{}; // 27 MHz, 33 bits * 300 + 0..299

    bool operator==(const TsHeader&) const = default;
};

// A valid packet; `payload` points into the bytes that were parsed.
struct TsPacket {
    TsHeader header;
    bool hasPayload = false; // the continuity counter counts only packets with one
    std::span<const std::uint8_t> payload{};

    // Nothing for a wrong sync byte, the reserved adaptation_field_control 00 or an adaptation field that
    // does not fit.
    [[nodiscard]] static std::optional<TsPacket> Parse(std::span<const std::uint8_t> bytes) {
        if (bytes.size() != kTsPacketSize || bytes[0] != kTsSyncByte)
            return std::nullopt;
        TsPacket packet;
        TsHeader& header = packet.header;
        header.transportError = (bytes[1] & 0x80) != 0;
        header.payloadUnitStart = (bytes[1] & 0x40) != 0;
        header.pid = static_cast<std::uint16_t>((bytes[1] & 0x1F) << 8 | bytes[2]);
        header.scrambling = bytes[3] >> 6;
        header.continuity = bytes[3] & 0x0F;
        packet.hasPayload = (bytes[3] & 0x10) != 0;
        const bool hasAdaptation = (bytes[3] & 0x20) != 0;
        if (!packet.hasPayload && !hasAdaptation)
            return std::nullopt;

        std::size_t at = 4;
        if (hasAdaptation) {
            const std::size_t length = bytes[4];
            if (length > (packet.hasPayload ? 182u : 183u))
                return std::nullopt;
            if (!ParseAdaptation(bytes.subspan(5, length), header))
                return std::nullopt;
            at = 5 + length;
        }
        if (packet.hasPayload)
            packet.payload = bytes.subspan(at);
        return packet;
    }

private:
    [[nodiscard]] static bool ParseAdaptation(std::span<const std::uint8_t> field, TsHeader& header) {
        if (field.empty())
            return true; // length 0: a single byte of stuffing
        header.discontinuity = (field[0] & 0x80) != 0;
        header.randomAccess = (field[0] & 0x40) != 0;
        if ((field[0] & 0x10) != 0) {
            if (field.size() < 7)
                return false;
            const std::uint64_t base =
                static_cast<std::uint64_t>(field[1]) << 25 | static_cast<std::uint64_t>(field[2]) << 17 |
                static_cast<std::uint64_t>(field[3]) << 9 | static_cast<std::uint64_t>(field[4]) << 1 | field[5] >> 7;
            const unsigned extension = (field[5] & 1u) << 8 | field[6];
            header.pcr = base * 300 + extension;
        }
        return true;
    }
};

// Writes a whole packet with as much of `payload` as fits and returns how much that was. A payload that is
// too short is led by adaptation field stuffing; an empty payload makes a packet of adaptation field alone.
inline std::size_t WriteTsPacket(std::span<std::uint8_t, kTsPacketSize> out, const TsHeader& header,
                                 std::span<const std::uint8_t> payload) {
    const bool hasFlags = header.discontinuity || header.randomAccess || header.pcr.has_value();
    const std::uint64_t clock = header.pcr.value_or(0);
    const std::size_t needed = header.pcr ? 8 : (hasFlags ? 2 : 0); // adaptation field with its length byte
    const std::size_t taken = std::min(payload.size(), kTsPacketSize - 4 - needed);
    const std::size_t adaptation = kTsPacketSize - 4 - taken;

    out[0] = kTsSyncByte;
    out[1] = static_cast<std::uint8_t>((header.transportError ? 0x80 : 0) | (header.payloadUnitStart ? 0x40 : 0) |
                                       (header.pid >> 8 & 0x1F));
    out[2] = static_cast<std::uint8_t>(header.pid & 0xFF);
    out[3] = static_cast<std::uint8_t>((header.scrambling & 3) << 6 | (adaptation > 0 ? 0x20 : 0) |
                                       (taken > 0 ? 0x10 : 0) | (header.continuity & 0x0F));
    if (adaptation > 0)
        out[4] = static_cast<std::uint8_t>(adaptation - 1);
    if (adaptation > 1) {
        out[5] = static_cast<std::uint8_t>((header.discontinuity ? 0x80 : 0) | (header.randomAccess ? 0x40 : 0) |
                                           (header.pcr ? 0x10 : 0));
        std::fill(out.begin() + 6, out.begin() + 4 + static_cast<std::ptrdiff_t>(adaptation), std::uint8_t{0xFF});
    }
    if (header.pcr) {
        const std::uint64_t base = (clock / 300) & 0x1'FFFF'FFFF;
        const unsigned extension = static_cast<unsigned>(clock % 300);
        out[6] = static_cast<std::uint8_t>(base >> 25);
        out[7] = static_cast<std::uint8_t>(base >> 17 & 0xFF);
        out[8] = static_cast<std::uint8_t>(base >> 9 & 0xFF);
        out[9] = static_cast<std::uint8_t>(base >> 1 & 0xFF);
        out[10] = static_cast<std::uint8_t>((base & 1) << 7 | 0x7E | (extension >> 8 & 1));
        out[11] = static_cast<std::uint8_t>(extension & 0xFF);
    }
    std::copy_n(payload.begin(), taken, out.begin() + 4 + static_cast<std::ptrdiff_t>(adaptation));
    return taken;
}

// 2.4.1: a null packet; its payload is of no meaning.
inline void WriteNullPacket(std::span<std::uint8_t, kTsPacketSize> out) {
    std::fill(out.begin(), out.end(), std::uint8_t{0xFF});
    out[0] = kTsSyncByte;
    out[1] = 0x1F;
    out[2] = 0xFF;
    out[3] = 0x10;
}

} // namespace wire
