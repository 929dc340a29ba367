#include "host/filters/ClockLine.h"

#include <cstdlib>

namespace filters {

namespace {

constexpr unsigned kBaseBits = 33;
constexpr Ticks kLargestStep = kTicksPerSecond;
constexpr Ticks kWindow = 10 * kTicksPerSecond;

// The low `bits` of a difference as a signed number.
std::int64_t SignExtend(std::uint64_t value, unsigned bits) {
    if (bits >= 64)
        return static_cast<std::int64_t>(value);
    const std::uint64_t sign = std::uint64_t{1} << (bits - 1);
    const std::uint64_t low = value & ((sign << 1) - 1);
    return static_cast<std::int64_t>((low ^ sign) - sign);
}

// a * b / c without losing the upper bits.
std::int64_t Scale(std::int64_t a, std::int64_t b, std::int64_t c) {
    return static_cast<std::int64_t>(static_cast<__int128>(a) * b / c);
}

} // namespace

bool ClockLine::OnReference(std::uint64_t pcr27MHz, bool announced) {
    const std::uint64_t base = pcr27MHz / 300;
    if (!now_) {
        lastBase_ = base;
        now_ = static_cast<Ticks>(base);
        shift_ = 0;
        return false;
    }
    const Ticks step = SignExtend(base - lastBase_, kBaseBits);
    const bool jumped = announced || step < 0 || step > kLargestStep;
    // After a jump nobody knows how long it took; the line stands still for it.
    if (jumped) {
        shift_ = *now_ - static_cast<Ticks>(base);
        ++jumps_;
    } else {
        now_ = *now_ + step;
        shift_ = *now_ - static_cast<Ticks>(base);
    }
    lastBase_ = base;
    return jumped;
}

std::optional<Ticks> ClockLine::Place(std::uint64_t stamp, unsigned bits, std::uint32_t resolution) {
    if (bits == 0 || bits > 64 || resolution == 0)
        return std::nullopt;
    const auto perSecond = static_cast<std::int64_t>(resolution);
    if (!now_) {
        const Ticks plain = Scale(static_cast<std::int64_t>(stamp & 0x1F'FFFF'FFFF'FFFF), kTicksPerSecond, perSecond);
        if (!lastStamp_) {
            lastStamp_ = plain;
            return plain;
        }
        const auto last = static_cast<std::uint64_t>(Scale(*lastStamp_, perSecond, kTicksPerSecond));
        const Ticks distance = Scale(SignExtend(stamp - last, bits), kTicksPerSecond, perSecond);
        lastStamp_ = *lastStamp_ + distance;
        return lastStamp_;
    }
    // Both counted in the stamp's own ticks, where it wraps.
    const auto reference = static_cast<std::uint64_t>(Scale(*now_ - shift_, perSecond, kTicksPerSecond));
    const Ticks distance = Scale(SignExtend(stamp - reference, bits), kTicksPerSecond, perSecond);
    if (std::llabs(distance) > kWindow)
        return std::nullopt;
    return *now_ + distance;
}

} // namespace filters
