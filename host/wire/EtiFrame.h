// The ETI(NI, G.703) frame of ETS 300 799: 24 ms of one ensemble in 6144 bytes.
//
//   0  ERR   1..3 FSYNC   4 FCT   5 FICF, NST   6..7 FP, MID, FL
//   8  STC, 4 bytes a stream:  SCID (6) SAD (10) TPL (6) STL (10)
//      EOH: MNSC (16), CRC over FC, STC and MNSC
//      MST: the FIC, then the streams in the order of the STC
//      EOF: CRC over the MST, 16 reserved bits; TIST; padding 0x55
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "host/wire/Bytes.h"
#include "host/wire/Crc.h"

namespace wire {

inline constexpr std::size_t kEtiFrameBytes = 6144;
inline constexpr int kEtiFrameMilliseconds = 24;
// The frame count runs from 0 to 249.
inline constexpr int kEtiFrameCountModulo = 250;
inline constexpr std::size_t kEtiSyncBytes = 4;
inline constexpr std::uint32_t kEtiSyncEven = 0x073AB6;
inline constexpr std::uint32_t kEtiSyncOdd = 0xF8C549;

// One row of the stream table (5.4).
struct EtiStream {
    std::uint8_t subChannelId = 0;
    std::uint16_t startAddress = 0; // capacity units, in the radio frame; of no use inside the ETI frame
    std::uint8_t protection = 0;    // TPL
    std::uint16_t length = 0;       // STL, in units of 8 bytes

    [[nodiscard]] std::size_t Bytes() const { return std::size_t{length} * 8; }
    [[nodiscard]] int BitRate() const { return length * 8 / 3; }
    bool operator==(const EtiStream&) const = default;
};

// True when one of the two synchronisation words stands at bytes 1 to 3.
[[nodiscard]] inline bool HasEtiSync(ByteSpan bytes) {
    if (bytes.size() < kEtiSyncBytes)
        return false;
    const std::uint32_t sync = Get24(bytes, 1);
    return sync == kEtiSyncEven || sync == kEtiSyncOdd;
}

// A frame whose lengths agree with each other. The check sums are told, not required: there are multiplexers whose
// MST check sum is wrong throughout, and their frames are still good.
class EtiFrame {
public:
    // The bytes from ERR on; may be longer or shorter than 6144 (framed files carry no padding). The frame borrows them.
    [[nodiscard]] static std::optional<EtiFrame> Parse(ByteSpan bytes) {
        if (bytes.size() < 12 || !HasEtiSync(bytes))
            return std::nullopt;
        EtiFrame frame;
        frame.frameBytes = bytes;
        const std::size_t streams = bytes[5] & 0x7F;
        frame.ficAt = 8 + 4 * streams + 4;
        if (streams > 64 || frame.ficAt > bytes.size())
            return std::nullopt;
        std::size_t at = frame.ficAt + frame.FicBytes();
        for (std::size_t i = 0; i < streams; ++i)
            at += frame.Stream(i).Bytes();
        frame.endAt = at;
        if (at + 8 > kEtiFrameBytes || at + 8 > bytes.size())
            return std::nullopt;
        return frame;
    }

    // What Parse would find as Length(), from the stream table alone; 0 when the table itself is cut off or absurd.
    [[nodiscard]] static std::size_t LengthFromHeader(ByteSpan bytes) {
        if (bytes.size() < 8)
            return 0;
        const std::size_t streams = bytes[5] & 0x7F;
        if (streams > 64 || bytes.size() < 8 + 4 * streams)
            return 0;
        std::size_t length = 8 + 4 * streams + 4 + FicBytesOf(bytes);
        for (std::size_t i = 0; i < streams; ++i)
            length += (Get16(bytes, 8 + 4 * i + 2) & 0x3FF) * 8;
        return length + 8 <= kEtiFrameBytes ? length + 8 : 0;
    }

    // 0xFF when whoever made the frame saw no error.
    [[nodiscard]] std::uint8_t Err() const { return frameBytes[0]; }
    [[nodiscard]] int FrameCount() const { return frameBytes[4]; }
    [[nodiscard]] bool HasFic() const { return (frameBytes[5] & 0x80) != 0; }
    [[nodiscard]] int FramePhase() const { return frameBytes[6] >> 5; }
    // Transmission mode 1 to 4.
    [[nodiscard]] int Mode() const { return ModeOf(frameBytes); }
    // FL, the length that the header claims for STC, EOH and MST, in 32-bit words.
    [[nodiscard]] int ClaimedLength() const { return static_cast<int>(Get16(frameBytes, 6) & 0x7FF); }

    [[nodiscard]] std::size_t StreamCount() const { return frameBytes[5] & 0x7F; }
    [[nodiscard]] EtiStream Stream(std::size_t index) const {
        const std::size_t at = 8 + 4 * index;
        const std::uint32_t first = Get16(frameBytes, at);
        const std::uint32_t second = Get16(frameBytes, at + 2);
        return {static_cast<std::uint8_t>(first >> 10), static_cast<std::uint16_t>(first & 0x3FF),
                static_cast<std::uint8_t>(second >> 10), static_cast<std::uint16_t>(second & 0x3FF)};
    }
    // The whole stream table as sent, for comparison with that of another frame.
    [[nodiscard]] ByteSpan StreamTable() const { return frameBytes.subspan(8, 4 * StreamCount()); }

    // The FIBs of the frame, 32 bytes each.
    [[nodiscard]] ByteSpan Fic() const { return frameBytes.subspan(ficAt, FicBytes()); }

    // The bytes of a sub-channel; empty when the frame does not carry it.
    [[nodiscard]] ByteSpan SubChannel(int subChannelId) const {
        std::size_t at = ficAt + FicBytes();
        for (std::size_t i = 0; i < StreamCount(); ++i) {
            const EtiStream stream = Stream(i);
            if (stream.subChannelId == subChannelId)
                return frameBytes.subspan(at, stream.Bytes());
            at += stream.Bytes();
        }
        return {};
    }

    [[nodiscard]] bool HeaderCrcOk() const { return Crc16Matches(frameBytes.subspan(4, ficAt - 4)); }
    [[nodiscard]] bool MstCrcOk() const {
        return Crc16(frameBytes.subspan(ficAt, endAt - ficAt)) == Get16(frameBytes, endAt);
    }
    // 0xFFFFFFFF when unused.
    [[nodiscard]] std::uint32_t TimeStamp() const { return Get32(frameBytes, endAt + 4); }
    // Bytes from ERR to TIST, without padding.
    [[nodiscard]] std::size_t Length() const { return endAt + 8; }
    [[nodiscard]] ByteSpan Bytes() const { return frameBytes.first(Length()); }

private:
    EtiFrame() = default;

    static int ModeOf(ByteSpan bytes) {
        const int mid = (bytes[6] >> 3) & 3;
        return mid == 0 ? 4 : mid;
    }
    static std::size_t FicBytesOf(ByteSpan bytes) {
        if ((bytes[5] & 0x80) == 0)
            return 0;
        return ModeOf(bytes) == 3 ? 128 : 96;
    }
    [[nodiscard]] std::size_t FicBytes() const { return FicBytesOf(frameBytes); }

    ByteSpan frameBytes;
    std::size_t ficAt = 0;
    std::size_t endAt = 0;
};

// What a frame is made of; WriteEtiFrame adds lengths, check sums and padding.
struct EtiFrameContent {
    struct Sub {
        EtiStream stream; // length is taken from data
        ByteVector data;  // a multiple of 8 bytes
    };
    std::uint8_t err = 0xFF;
    int frameCount = 0; // 0 to 249; its lowest bit also chooses the synchronisation word
    int framePhase = 0; // 0 to 7
    int mode = 1;
    std::uint16_t mnsc = 0xFFFF;
    ByteVector fic; // 96 bytes (128 in mode III), or empty
    std::vector<Sub> streams;
    std::uint32_t timeStamp = 0xFFFFFFFF;
};

// Exactly 6144 bytes, or nothing when the content does not fit.
[[nodiscard]] inline ByteVector WriteEtiFrame(const EtiFrameContent& content) {
    ByteVector mst = content.fic;
    for (const auto& sub : content.streams)
        AppendBytes(mst, sub.data);
    const std::size_t streams = content.streams.size();
    if (streams > 64 || 8 + 4 * streams + 4 + mst.size() + 8 > kEtiFrameBytes)
        return {};

    ByteVector out;
    out.reserve(kEtiFrameBytes);
    out.push_back(content.err);
    const std::uint32_t sync = (content.frameCount & 1) ? kEtiSyncOdd : kEtiSyncEven;
    out.push_back(static_cast<std::uint8_t>(sync >> 16));
    Append16(out, sync & 0xFFFF);
    out.push_back(static_cast<std::uint8_t>(content.frameCount));
    out.push_back(static_cast<std::uint8_t>((content.fic.empty() ? 0 : 0x80) | streams));
    const auto words = static_cast<std::uint32_t>(streams + 1 + mst.size() / 4);
    Append16(out, static_cast<std::uint32_t>(content.framePhase << 13) |
                      static_cast<std::uint32_t>((content.mode & 3) << 11) | words);
    for (const auto& sub : content.streams) {
        Append16(out, static_cast<std::uint32_t>(sub.stream.subChannelId << 10) | sub.stream.startAddress);
        Append16(out, static_cast<std::uint32_t>(sub.stream.protection << 10) |
                          static_cast<std::uint32_t>(sub.data.size() / 8));
    }
    Append16(out, content.mnsc);
    Append16(out, Crc16(ByteSpan(out).subspan(4)));
    AppendBytes(out, mst);
    Append16(out, Crc16(mst));
    Append16(out, 0xFFFF);
    Append32(out, content.timeStamp);
    out.resize(kEtiFrameBytes, 0x55);
    return out;
}

} // namespace wire
