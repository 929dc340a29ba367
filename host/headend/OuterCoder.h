// The T-DMB outer coder (TS 102 427): each transport packet gets 16 Reed-Solomon bytes, then a convolutional
// interleaver spreads the result over eleven packets. As in DVB (EN 300 429 6), but without energy dispersal
// and inverted sync bytes.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "host/wire/Bytes.h"

namespace headend {

inline constexpr std::size_t kCodewordSize = 204;
inline constexpr std::size_t kParitySize = 16;
inline constexpr std::size_t kBranches = 12;
inline constexpr std::size_t kBranchUnit = 17;

// The parity of RS(204,188): GF(256) with x^8+x^4+x^3+x^2+1, generator roots a^0 to a^15, 51 leading zeros
// left out.
[[nodiscard]] std::array<std::uint8_t, kParitySize> ReedSolomonParity(std::span<const std::uint8_t, 188> packet);

// What comes before the first byte of the coded stream inside the interleaver's delay lines.
enum class InterleaverStart {
    kZeros,
    kCyclic, // the end of the stream itself: played in a loop it has no seam
};

// Codes a whole stream of 188-byte packets; the result has 204 bytes for each. Branch 0 falls on the first
// byte.
[[nodiscard]] wire::ByteVector OuterCode(wire::ByteSpan packets, InterleaverStart start);

} // namespace headend
