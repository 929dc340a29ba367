// The two check sums of the broadcast. Everything in DAB that is called "CRC" without more words uses the
// 16-bit one; MPEG-2 sections use the 32-bit one.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace wire {

namespace detail {

consteval std::array<std::uint16_t, 256> MakeCrc16Table() {
    std::array<std::uint16_t, 256> table{};
    for (unsigned byte = 0; byte < 256; ++byte) {
        unsigned value = byte << 8;
        for (int bit = 0; bit < 8; ++bit)
            value = (value << 1) ^ ((value & 0x8000) != 0 ? 0x1021u : 0u);
        table[byte] = static_cast<std::uint16_t>(value);
    }
    return table;
}

consteval std::array<std::uint32_t, 256> MakeCrc32Table() {
    std::array<std::uint32_t, 256> table{};
    for (unsigned byte = 0; byte < 256; ++byte) {
        std::uint32_t value = byte << 24;
        for (int bit = 0; bit < 8; ++bit)
            value = (value << 1) ^ ((value & 0x8000'0000u) != 0 ? 0x04C1'1DB7u : 0u);
        table[byte] = value;
    }
    return table;
}

inline constexpr auto kCrc16Table = MakeCrc16Table();
inline constexpr auto kCrc32Table = MakeCrc32Table();

} // namespace detail

// EN 300 401 annex E: x^16 + x^12 + x^5 + 1, register preset to ones, result complemented. FIBs, ETI header
// and main stream (ETS 300 799), MSC data groups, packets, DLS segments and data group length indicators send
// it high byte first.
[[nodiscard]] constexpr std::uint16_t Crc16(std::span<const std::uint8_t> bytes, std::uint16_t state = 0xFFFF) {
    unsigned crc = state;
    for (const std::uint8_t byte : bytes)
        crc = ((crc << 8) & 0xFFFF) ^ detail::kCrc16Table[((crc >> 8) ^ byte) & 0xFF];
    return static_cast<std::uint16_t>(~crc);
}

// True when the last two bytes are the check sum of those before them.
[[nodiscard]] constexpr bool Crc16Matches(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < 2)
        return false;
    const std::size_t end = bytes.size() - 2;
    return Crc16(bytes.first(end)) == ((bytes[end] << 8) | bytes[end + 1]);
}

inline void AppendCrc16(std::vector<std::uint8_t>& bytes) {
    const std::uint16_t crc = Crc16(bytes);
    bytes.push_back(static_cast<std::uint8_t>(crc >> 8));
    bytes.push_back(static_cast<std::uint8_t>(crc & 0xFF));
}

// ISO/IEC 11172-3 2.4.3.1: x^16 + x^15 + x^2 + 1, preset to ones, not complemented, over a number of bits.
[[nodiscard]] constexpr std::uint16_t AudioCrc(std::span<const std::uint8_t> bytes, std::size_t firstBit,
                                               std::size_t bitCount, std::uint16_t state = 0xFFFF) {
    for (std::size_t i = firstBit; i < firstBit + bitCount; ++i) {
        const bool bit = (bytes[i / 8] >> (7 - i % 8) & 1) != 0;
        const bool carry = (state >> 15 != 0) != bit;
        state = static_cast<std::uint16_t>(carry ? (state << 1) ^ 0x8005 : state << 1);
    }
    return state;
}

// ISO/IEC 13818-1 annex A: 0x04C11DB7, register preset to ones, not complemented, sent high byte first.
[[nodiscard]] constexpr std::uint32_t Crc32(std::span<const std::uint8_t> bytes) {
    std::uint32_t crc = 0xFFFF'FFFF;
    for (const std::uint8_t byte : bytes)
        crc = (crc << 8) ^ detail::kCrc32Table[((crc >> 24) ^ byte) & 0xFF];
    return crc;
}

inline void AppendCrc32(std::vector<std::uint8_t>& bytes) {
    const std::uint32_t crc = Crc32(bytes);
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes.push_back(static_cast<std::uint8_t>((crc >> shift) & 0xFF));
}

} // namespace wire
