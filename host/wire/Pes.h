// The packetized elementary stream, ISO/IEC 13818-1 2.4.3.6.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace wire {

inline constexpr std::uint8_t kStreamIdAudio = 0xC0;
inline constexpr std::uint8_t kStreamIdVideo = 0xE0;
inline constexpr std::uint8_t kStreamIdSlPacketized = 0xFA; // ISO/IEC_14496-1_SL-packetized_stream

// What precedes the payload of a PES packet with the optional header.
struct PesHeader {
    std::uint8_t streamId = 0;
    std::uint16_t packetLength = 0; // bytes after this field; 0 = open end, video only
    std::uint8_t scrambling = 0;    // 2 bits
    bool dataAligned = false;
    std::optional<std::uint64_t> pts{}; // 90 kHz, 33 bits
    std::optional<std::uint64_t> dts{};
    std::size_t size = 0; // of the header itself, start code included: where the payload begins

    // Nothing for a wrong start code, a stream without the optional header, or one that is not there
    // completely.
    [[nodiscard]] static std::optional<PesHeader> Parse(std::span<const std::uint8_t> bytes) {
        if (bytes.size() < 9 || bytes[0] != 0 || bytes[1] != 0 || bytes[2] != 1 || (bytes[6] & 0xC0) != 0x80)
            return std::nullopt;
        PesHeader header;
        header.streamId = bytes[3];
        header.packetLength = static_cast<std::uint16_t>(bytes[4] << 8 | bytes[5]);
        header.scrambling = bytes[6] >> 4 & 3;
        header.dataAligned = (bytes[6] & 0x04) != 0;
        header.size = 9 + static_cast<std::size_t>(bytes[8]);
        const unsigned stamps = bytes[7] >> 6;
        const std::size_t stampBytes = stamps == 2 ? 5 : (stamps == 3 ? 10 : 0);
        if (stamps == 1 || bytes[8] < stampBytes || bytes.size() < header.size)
            return std::nullopt;
        if (stamps >= 2)
            header.pts = GetStamp(bytes.subspan(9, 5));
        if (stamps == 3)
            header.dts = GetStamp(bytes.subspan(14, 5));
        return header;
    }

    // The header for a payload of that many bytes. A packet beyond 65535 bytes gets length 0.
    [[nodiscard]] std::vector<std::uint8_t> Write(std::size_t payloadSize) const {
        const std::size_t stampBytes = pts ? (dts ? 10 : 5) : 0;
        const std::size_t length = 3 + stampBytes + payloadSize;
        std::vector<std::uint8_t> out = {0, 0, 1, streamId};
        out.push_back(static_cast<std::uint8_t>(length > 0xFFFF ? 0 : length >> 8));
        out.push_back(static_cast<std::uint8_t>(length > 0xFFFF ? 0 : length & 0xFF));
        out.push_back(static_cast<std::uint8_t>(0x80 | (scrambling & 3) << 4 | (dataAligned ? 4 : 0)));
        out.push_back(static_cast<std::uint8_t>(pts ? (dts ? 0xC0 : 0x80) : 0));
        out.push_back(static_cast<std::uint8_t>(stampBytes));
        if (pts)
            PutStamp(out, dts ? 3 : 2, *pts);
        if (pts && dts)
            PutStamp(out, 1, *dts);
        return out;
    }

private:
    [[nodiscard]] static std::uint64_t GetStamp(std::span<const std::uint8_t> at) {
        return static_cast<std::uint64_t>(at[0] >> 1 & 7) << 30 | static_cast<std::uint64_t>(at[1]) << 22 |
               static_cast<std::uint64_t>(at[2] >> 1) << 15 | static_cast<std::uint64_t>(at[3]) << 7 | at[4] >> 1;
    }

    static void PutStamp(std::vector<std::uint8_t>& out, unsigned prefix, std::uint64_t stamp) {
        out.push_back(static_cast<std::uint8_t>(prefix << 4 | (stamp >> 30 & 7) << 1 | 1));
        out.push_back(static_cast<std::uint8_t>(stamp >> 22 & 0xFF));
        out.push_back(static_cast<std::uint8_t>((stamp >> 15 & 0x7F) << 1 | 1));
        out.push_back(static_cast<std::uint8_t>(stamp >> 7 & 0xFF));
        out.push_back(static_cast<std::uint8_t>((stamp & 0x7F) << 1 | 1));
    }
};

} // namespace wire
