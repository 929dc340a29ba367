// Big-endian numbers in byte spans: the broadcast's one byte order. The caller has checked the length.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace wire {

using ByteSpan = std::span<const std::uint8_t>;
using ByteVector = std::vector<std::uint8_t>;

[[nodiscard]] constexpr std::uint32_t Get16(ByteSpan bytes, std::size_t at) {
    return static_cast<std::uint32_t>((bytes[at] << 8) | bytes[at + 1]);
}

[[nodiscard]] constexpr std::uint32_t Get24(ByteSpan bytes, std::size_t at) {
    return (Get16(bytes, at) << 8) | bytes[at + 2];
}

[[nodiscard]] constexpr std::uint32_t Get32(ByteSpan bytes, std::size_t at) {
    return (Get16(bytes, at) << 16) | Get16(bytes, at + 2);
}

constexpr void Put16(std::span<std::uint8_t> bytes, std::size_t at, std::uint32_t value) {
    bytes[at] = static_cast<std::uint8_t>(value >> 8);
    bytes[at + 1] = static_cast<std::uint8_t>(value);
}

inline void Append16(ByteVector& out, std::uint32_t value) {
    out.push_back(static_cast<std::uint8_t>(value >> 8));
    out.push_back(static_cast<std::uint8_t>(value));
}

inline void Append32(ByteVector& out, std::uint32_t value) {
    Append16(out, value >> 16);
    Append16(out, value & 0xFFFF);
}

inline void AppendBytes(ByteVector& out, ByteSpan bytes) {
    out.insert(out.end(), bytes.begin(), bytes.end());
}

} // namespace wire
