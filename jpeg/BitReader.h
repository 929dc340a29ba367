// Bits of the coded data of a scan, most significant first (T.81 F.2.2.5), past the end as zeros.
//
// The coded bytes are copied through a small window, where stuffed zeros and fill bytes are already gone, so that the
// hot path can refill eight bytes at once without looking at them. Wider words and windows change no decoded value.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace jpeg {

// The next bits of a reader, small enough to stay in registers through a data unit: borrow it with BitReader::Bits(),
// give it back with BitReader::Resume().
struct BitCursor {
    std::uint64_t word = 0; // left-aligned
    int count = 0;          // bits of `word` that stand for sure; more may lie below them
    const std::uint8_t* next = nullptr;

    // Afterwards the word begins with at least 56 bits.
    void Refill() {
        word |= LoadBigEndian(next) >> count;
        next += (63 - count) >> 3;
        count |= 56;
    }
    void Consume(int bits) {
        word <<= bits;
        count -= bits;
    }
    // 0..16 bits as a number, which must be there.
    [[nodiscard]] unsigned Take(int bits) {
        const auto value = static_cast<unsigned>((word >> 1) >> (63 - bits));
        Consume(bits);
        return value;
    }
    // One bit, which must be there, as 0 or -1.
    [[nodiscard]] int TakeMask() {
        const auto mask = static_cast<int>(static_cast<std::int64_t>(word) >> 63);
        Consume(1);
        return mask;
    }

private:
    static std::uint64_t LoadBigEndian(const std::uint8_t* at) {
        std::uint64_t value;
        std::memcpy(&value, at, sizeof value);
        if constexpr (std::endian::native == std::endian::little) {
            value = __builtin_bswap64(value);
        }
        return value;
    }
};

class BitReader {
public:
    // Begins at coded data that ends at the first marker or at the end of `bytes`.
    void Open(std::span<const std::uint8_t> bytes);

    // To be called before each data unit. A data unit takes at most kMaxUnitBits.
    void Prepare() {
        if (bits.next >= slideAt) [[unlikely]] {
            Slide();
        }
    }
    static constexpr int kMaxUnitBits = 2048;

    [[nodiscard]] BitCursor Bits() const { return bits; }
    void Resume(const BitCursor& cursor) { bits = cursor; }

    // Nothing but zeros is left up to the next restart. Noticed by Prepare(), possibly a few data units late.
    [[nodiscard]] bool Exhausted() const { return exhausted; }

    // The same, and no restart can follow any more.
    [[nodiscard]] bool Finished() const { return exhausted && lastInterval; }
    // The scan has no restart intervals: its first is its last.
    void ExpectNoRestart() { lastInterval = true; }

    // More bits were taken than there were; the rest was zeros.
    [[nodiscard]] bool RanShort() const { return sourceEnded && (bits.next - end) * 8 > bits.count; }

    // Position in `bytes` of the marker that ended the data, or of a byte not yet seen when none did.
    [[nodiscard]] std::size_t SourcePosition() const { return source; }

    // At the end of a restart interval: drops what is left, looks for the marker of restart `number` (0..7) and begins
    // behind it. A marker that belongs further on stays; the coming interval then reads zeros (T.81 E.2.4).
    void Restart(int number);

private:
    static constexpr std::size_t kWindow = 4096;
    static constexpr std::size_t kMargin = 512; // a data unit, the word, and room to spare

    void Slide();
    void Reset();
    void Drain();
    std::size_t CopyClean(std::uint8_t* to, std::size_t room);

    BitCursor bits;
    bool exhausted = false;
    bool sourceEnded = false;
    bool lastInterval = false;
    const std::uint8_t* end = nullptr;     // end of the clean bytes; zeros follow
    const std::uint8_t* slideAt = nullptr; // Prepare() has work to do from here on
    std::span<const std::uint8_t> data;
    std::size_t source = 0;
    std::array<std::uint8_t, kWindow + kMargin> window;
};

} // namespace jpeg
