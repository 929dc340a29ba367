#include "host/codec/TransientDetector.h"

#include <algorithm>
#include <cstddef>

namespace codec {

namespace {
constexpr std::size_t kPart = 128;      // samples looked at together
constexpr float kJump = 10;             // energy over that of the past: 10 dB
constexpr float kAudible = kPart * 1e4; // attacks below -50 dB of full scale do not matter
constexpr float kSmoothing = 0.4F;
} // namespace

TransientDetector::Attack TransientDetector::Look(std::span<const float> samples) {
    Attack attack;
    for (std::size_t part = 0; part + kPart <= samples.size(); part += kPart) {
        // Differences of neighbours favour high frequencies, where attacks stand out and steady tones are
        // weak.
        float energy = 0;
        for (const float sample : samples.subspan(part, kPart)) {
            const float difference = sample - previousSample;
            previousSample = sample;
            energy += difference * difference;
        }
        if (energy > kAudible && energy > kJump * pastEnergy)
            (part < samples.size() / 2 ? attack.early : attack.late) = true;
        pastEnergy += kSmoothing * (energy - pastEnergy);
    }
    return attack;
}

WindowSequence WindowPlanner::Plan(TransientDetector::Attack next) {
    const bool nextShort = current.late || next.early;
    // A block between two with short windows has no room for long slopes.
    const bool isShort = currentShort || (previousShort && nextShort);
    WindowSequence sequence = WindowSequence::kLong;
    if (isShort)
        sequence = WindowSequence::kShort;
    else if (nextShort)
        sequence = WindowSequence::kStart;
    else if (previousShort)
        sequence = WindowSequence::kStop;
    previousShort = isShort;
    currentShort = nextShort;
    current = next;
    return sequence;
}

} // namespace codec
