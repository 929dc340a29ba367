#include "host/filters/ClockLine.h"

#include <algorithm>
#include <cstdlib>

namespace filters {

namespace {

constexpr unsigned kBaseBits = 33;
constexpr Ticks kLargestStep = kTicksPerSecond;
constexpr std::uint64_t kMostPackets = 1 << 20; // more than a second of any stream
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

// How long the packets since the last reference took, at the rate of those before it.
Ticks ClockLine::SinceLast(std::uint64_t packets) const {
    if (packets <= lastPackets_ || lastPackets_ <= runPackets_ || *now_ <= runBegin_)
        return 0;
    const auto more = static_cast<std::int64_t>(std::min<std::uint64_t>(packets - lastPackets_, kMostPackets));
    return std::min(Scale(*now_ - runBegin_, more, static_cast<std::int64_t>(lastPackets_ - runPackets_)),
                    kLargestStep);
}

bool ClockLine::OnReference(std::uint64_t pcr27MHz, bool announced, std::uint64_t packets) {
    const std::uint64_t base = pcr27MHz / 300;
    if (!now_) {
        lastBase_ = base;
        now_ = static_cast<Ticks>(base);
        shift_ = shiftBefore_ = 0;
        runBegin_ = *now_;
        runPackets_ = lastPackets_ = packets;
        return false;
    }
    const Ticks step = SignExtend(base - lastBase_, kBaseBits);
    const bool jumped = announced || step < 0 || step > kLargestStep;
    if (jumped) {
        now_ = *now_ + SinceLast(packets);
        shiftBefore_ = shift_;
        shift_ = *now_ - static_cast<Ticks>(base);
        runBegin_ = *now_;
        runPackets_ = packets;
        ++jumps_;
    } else {
        now_ = *now_ + step;
        shift_ = *now_ - static_cast<Ticks>(base);
    }
    lastBase_ = base;
    lastPackets_ = packets;
    return jumped;
}

std::optional<Ticks> ClockLine::Place(std::uint64_t stamp, unsigned bits, std::uint32_t resolution, bool older) {
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
    const auto reference =
        static_cast<std::uint64_t>(Scale(*now_ - (older ? shiftBefore_ : shift_), perSecond, kTicksPerSecond));
    const Ticks distance = Scale(SignExtend(stamp - reference, bits), kTicksPerSecond, perSecond);
    if (std::llabs(distance) > kWindow)
        return std::nullopt;
    return *now_ + distance;
}

} // namespace filters
