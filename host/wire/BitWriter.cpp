#include "host/wire/BitWriter.h"

namespace wire {

void BitWriter::Write(std::uint32_t value, unsigned count) {
    bytes.resize((bits + count + 7) / 8);
    while (count > 0) {
        const unsigned used = bits & 7;
        const unsigned take = count < 8 - used ? count : 8 - used;
        const std::uint32_t part = value >> (count - take) & ((1U << take) - 1);
        std::uint8_t& byte = bytes[bits / 8];
        byte = static_cast<std::uint8_t>(byte | part << (8 - used - take));
        bits += take;
        count -= take;
    }
}

void BitWriter::WriteBytes(std::span<const std::uint8_t> source) {
    if ((bits & 7) == 0) {
        bytes.insert(bytes.end(), source.begin(), source.end());
        bits += source.size() * 8;
        return;
    }
    for (const std::uint8_t byte : source)
        Write(byte, 8);
}

} // namespace wire
