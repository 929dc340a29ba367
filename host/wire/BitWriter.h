// Appends fields of 0..32 bits, most significant bit first, to a byte vector.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace wire {

class BitWriter {
public:
    // The lowest `count` bits (0..32) of `value`; higher bits are ignored.
    void Write(std::uint32_t value, unsigned count);

    void WriteFlag(bool flag) { Write(flag ? 1 : 0, 1); }

    void WriteBytes(std::span<const std::uint8_t> source);

    // Fills the last byte with copies of `fill` up to the next byte boundary; nothing on a boundary.
    void AlignToByte(bool fill = false) { Write(fill ? 0xFF : 0, static_cast<unsigned>((8 - (bits & 7)) & 7)); }

    [[nodiscard]] std::size_t BitCount() const { return bits; }

    // Complete bytes and, when the end is not aligned, the last one filled up with zeros.
    [[nodiscard]] std::span<const std::uint8_t> Bytes() const { return bytes; }

    // Hands the bytes over and starts again empty.
    [[nodiscard]] std::vector<std::uint8_t> Take() {
        bits = 0;
        return std::exchange(bytes, {});
    }

    // Starts again empty and keeps the memory.
    void Clear() {
        bits = 0;
        bytes.clear();
    }

private:
    std::vector<std::uint8_t> bytes;
    std::size_t bits = 0;
};

} // namespace wire
