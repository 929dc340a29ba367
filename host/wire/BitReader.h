// Reads fields of 0..32 bits, most significant bit first, from a range of bits of a byte span.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace wire {

// Every structure of the broadcast sends its most significant bit first, so this is the only reader. Reading
// past the end never touches foreign memory: missing bits read as 0 and Overrun() turns true. A parser may
// therefore read a whole structure and ask once at its end whether all of it was there.
class BitReader {
public:
    BitReader() = default;

    explicit BitReader(std::span<const std::uint8_t> bytes) : BitReader(bytes, 0, bytes.size() * 8) {}

    // Only the bits [firstBit, endBit) of `bytes`; both are limited to the size of the span.
    BitReader(std::span<const std::uint8_t> bytes, std::size_t firstBit, std::size_t endBit)
        : data(bytes.data()), byteCount(bytes.size()), end(endBit < byteCount * 8 ? endBit : byteCount * 8),
          position(firstBit < end ? firstBit : end) {}

    // The next `count` bits (0..32) as a number.
    std::uint32_t Read(unsigned count) {
        const std::uint32_t value = Peek(count);
        Skip(count);
        return value;
    }

    [[nodiscard]] bool ReadFlag() { return Read(1) != 0; }

    // The next `count` bits (0..32) without moving on.
    [[nodiscard]] std::uint32_t Peek(unsigned count) const {
        if (count == 0)
            return 0;
        const std::size_t first = position >> 3;
        std::uint64_t window = 0;
        if (first + 8 <= byteCount) {
            std::uint8_t raw[8];
            std::memcpy(raw, data + first, sizeof raw);
            for (const std::uint8_t byte : raw) // compilers make one load and one byte swap of this
                window = window << 8 | byte;
        } else {
            for (std::size_t i = 0; i < 8; ++i)
                window = window << 8 | (first + i < byteCount ? data[first + i] : 0U);
        }
        std::uint64_t value = window << (position & 7) >> (64 - count);
        if (count > end - position) {
            const std::size_t missing = count - (end - position);
            value = value >> missing << missing;
        }
        return static_cast<std::uint32_t>(value);
    }

    void Skip(std::size_t count) {
        if (count > end - position) {
            overrun = true;
            position = end;
        } else {
            position += count;
        }
    }

    // Moves to the next byte boundary of the span; stays where it is on a boundary.
    void AlignToByte() { Skip((8 - (position & 7)) & 7); }

    // Bits from the start of the span (not of the range) to the next bit to be read.
    [[nodiscard]] std::size_t Position() const { return position; }

    [[nodiscard]] std::size_t Remaining() const { return end - position; }

    // True once more bits were asked for than the range holds.
    [[nodiscard]] bool Overrun() const { return overrun; }

private:
    const std::uint8_t* data = nullptr;
    std::size_t byteCount = 0;
    std::size_t end = 0;      // in bits
    std::size_t position = 0; // in bits, never above end
    bool overrun = false;
};

} // namespace wire
