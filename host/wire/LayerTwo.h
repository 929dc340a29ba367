// The MPEG layer II audio frame as DAB carries it (ISO 11172-3 2.4, ISO 13818-3, EN 300 401 7.1 to 7.3).
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "host/wire/Bytes.h"
#include "host/wire/Crc.h"

namespace wire {

inline constexpr int kLayerTwoSamples = 1152;

struct LayerTwoHeader {
    bool halfRate = false; // ID 0: 24 kHz
    bool hasCrc = false;
    int bitRate = 0; // kbit/s
    int sampleRate = 0;
    int mode = 0; // 0 stereo, 1 joint stereo, 2 dual channel, 3 single channel
    int modeExtension = 0;

    [[nodiscard]] int Channels() const { return mode == 3 ? 1 : 2; }
    [[nodiscard]] std::size_t FrameBytes() const { return static_cast<std::size_t>(144 * bitRate * 1000 / sampleRate); }
    // Logical frames of 24 ms that one audio frame takes.
    [[nodiscard]] int LogicalFrames() const { return halfRate ? 2 : 1; }
    // 7.3.2: two bytes when a channel has less than 56 kbit/s at 48 kHz, four otherwise.
    [[nodiscard]] std::size_t ScfCrcBytes() const { return !halfRate && bitRate / Channels() < 56 ? 2 : 4; }
};

// Only what DAB allows: layer II, 48 or 24 kHz, no free format.
[[nodiscard]] inline std::optional<LayerTwoHeader> ParseLayerTwoHeader(ByteSpan bytes) {
    constexpr std::array<std::uint16_t, 15> kFull = {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384};
    constexpr std::array<std::uint16_t, 15> kHalf = {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160};
    if (bytes.size() < 4 || bytes[0] != 0xFF || (bytes[1] & 0xF6) != 0xF4)
        return std::nullopt;
    LayerTwoHeader header;
    header.halfRate = (bytes[1] & 0x08) == 0;
    header.hasCrc = (bytes[1] & 1) == 0;
    const std::size_t rate = bytes[2] >> 4;
    const bool is48 = ((bytes[2] >> 2) & 3) == 1;
    if (rate == 0 || rate == 15 || !is48)
        return std::nullopt;
    header.bitRate = header.halfRate ? kHalf[rate] : kFull[rate];
    header.sampleRate = header.halfRate ? 24000 : 48000;
    header.mode = bytes[3] >> 6;
    header.modeExtension = (bytes[3] >> 4) & 3;
    return header;
}

namespace detail {

// Bits of allocation of a subband (ISO 11172-3 tables B.2a and B.2c, ISO 13818-3 table B.1), and the number of subbands.
struct AllocationTable {
    int subbands;
    std::array<std::uint8_t, 3> until; // the first width ends here, the second there, ...
    std::array<std::uint8_t, 3> bits;

    [[nodiscard]] int BitsOf(int subband) const {
        for (std::size_t i = 0; i < until.size(); ++i)
            if (subband < until[i])
                return bits[i];
        return 0;
    }
};

inline const AllocationTable& AllocationTableOf(const LayerTwoHeader& header) {
    static constexpr AllocationTable kWide{27, {11, 23, 27}, {4, 3, 2}};
    static constexpr AllocationTable kNarrow{8, {2, 8, 8}, {4, 3, 3}};
    static constexpr AllocationTable kHalfRate{30, {4, 11, 30}, {4, 3, 2}};
    if (header.halfRate)
        return kHalfRate;
    return header.bitRate / header.Channels() < 56 ? kNarrow : kWide;
}

} // namespace detail

// Whether the frame's check sum over header, bit allocation and scale factor selection is right (2.4.3.1). A frame
// without one, which DAB does not know, counts as wrong.
[[nodiscard]] inline bool LayerTwoCrcOk(const LayerTwoHeader& header, ByteSpan frame) {
    constexpr std::size_t kFirstBit = 48;
    if (!header.hasCrc || frame.size() < 64)
        return false;
    const detail::AllocationTable& table = detail::AllocationTableOf(header);
    const int channels = header.Channels();
    const int bound = header.mode == 1 ? 4 * (header.modeExtension + 1) : table.subbands;
    std::size_t bit = kFirstBit;
    std::size_t selections = 0;
    for (int subband = 0; subband < table.subbands; ++subband) {
        const int width = table.BitsOf(subband);
        // Above the bound the two channels of joint stereo share one allocation, but not the scale factors.
        const int allocations = subband < bound ? channels : 1;
        for (int i = 0; i < allocations; ++i) {
            int value = 0;
            for (int b = 0; b < width; ++b, ++bit)
                value = (value << 1) | ((frame[bit / 8] >> (7 - bit % 8)) & 1);
            if (value != 0)
                selections += allocations == channels ? 1u : static_cast<std::size_t>(channels);
        }
    }
    const std::size_t bits = bit - kFirstBit + 2 * selections;
    if (kFirstBit + bits > frame.size() * 8)
        return false;
    const std::uint16_t state = AudioCrc(frame, 16, 16);
    return AudioCrc(frame, kFirstBit, bits, state) == Get16(frame, 4);
}

} // namespace wire
