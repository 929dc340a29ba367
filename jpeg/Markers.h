// Marker codes (T.81 table B.1) and the cursor that both marker readers walk with.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace jpeg {

inline constexpr std::uint8_t kPrefix = 0xFF; // first byte of every marker, and the fill byte before one
inline constexpr std::uint8_t kSof0 = 0xC0;   // baseline frame
inline constexpr std::uint8_t kSof2 = 0xC2;   // progressive frame
inline constexpr std::uint8_t kDht = 0xC4;
inline constexpr std::uint8_t kRst0 = 0xD0;
inline constexpr std::uint8_t kRst7 = 0xD7;
inline constexpr std::uint8_t kSoi = 0xD8;
inline constexpr std::uint8_t kEoi = 0xD9;
inline constexpr std::uint8_t kSos = 0xDA;
inline constexpr std::uint8_t kDqt = 0xDB;
inline constexpr std::uint8_t kDnl = 0xDC;
inline constexpr std::uint8_t kDri = 0xDD;
inline constexpr std::uint8_t kApp0 = 0xE0;
inline constexpr std::uint8_t kApp1 = 0xE1;
inline constexpr std::uint8_t kApp14 = 0xEE;
inline constexpr std::uint8_t kApp15 = 0xEF;
inline constexpr std::uint8_t kCom = 0xFE;

[[nodiscard]] constexpr bool IsRestart(std::uint8_t marker) {
    return marker >= kRst0 && marker <= kRst7;
}
[[nodiscard]] constexpr bool IsApplication(std::uint8_t marker) {
    return marker >= kApp0 && marker <= kApp15;
}

// A position in the data. Reading past the end is the caller's fault; Holds() asks first.
class MarkerCursor {
public:
    explicit MarkerCursor(std::span<const std::uint8_t> bytes) : data(bytes) {}

    [[nodiscard]] std::size_t Position() const { return at; }
    [[nodiscard]] std::size_t Left() const { return data.size() - at; }
    [[nodiscard]] bool Holds(std::size_t count) const { return Left() >= count; }
    void MoveTo(std::size_t position) { at = position < data.size() ? position : data.size(); }
    void Skip(std::size_t count) { at = Holds(count) ? at + count : data.size(); }

    // Bytes relative to the position.
    [[nodiscard]] unsigned Byte(std::size_t offset) const { return data[at + offset]; }
    [[nodiscard]] unsigned Word(std::size_t offset) const { return Byte(offset) << 8 | Byte(offset + 1); }

    // Steps over stray bytes and fill bytes to just behind the next FF xx. False at the end of the data.
    [[nodiscard]] bool NextMarker(std::uint8_t& marker) {
        while (Holds(2)) {
            const auto* prefix = static_cast<const std::uint8_t*>(std::memchr(data.data() + at, kPrefix, Left() - 1));
            if (prefix == nullptr) {
                break;
            }
            at = static_cast<std::size_t>(prefix - data.data()) + 1;
            if (data[at] != kPrefix) {
                marker = data[at++];
                return true;
            }
        }
        at = data.size();
        return false;
    }

    // The segment at the position: true when its length field is at least 2 and it lies within the data.
    [[nodiscard]] bool SegmentFits() const { return Holds(2) && Word(0) >= 2 && Holds(Word(0)); }

    // The segment's bytes after its length field. Only after SegmentFits().
    [[nodiscard]] std::span<const std::uint8_t> SegmentBody() const { return data.subspan(at + 2, Word(0) - 2); }

private:
    std::span<const std::uint8_t> data;
    std::size_t at = 0;
};

} // namespace jpeg
