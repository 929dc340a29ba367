#include "host/medmb/SignalMeter.h"

#include <algorithm>

namespace medmb {

namespace {

constexpr double kClean = 30.0;
constexpr double kUnusable = 6.0;
constexpr double kCorrectedByteCost = 1.5;
constexpr double kNoiseFloor = -110.0;

// The straight lines of the head comment.
double FromErrorShare(double share) {
    return share <= 0.5 ? kClean - 2 * (kClean - kUnusable) * share : 2 * kUnusable * (1 - share);
}

double Share(int part, int whole) {
    return whole == 0 ? 0.0 : static_cast<double>(part) / whole;
}

} // namespace

void SignalMeter::Add(const FrameQuality& quality) {
    window[next] = quality;
    next = (next + 1) % kWindowFrames;
    filled = std::min(filled + 1, kWindowFrames);
    started = started || !quality.missing;
}

void SignalMeter::AddMissing(std::uint64_t frames) {
    FrameQuality missing;
    missing.missing = true;
    if (!started)
        return;
    for (std::uint64_t i = 0; i < std::min<std::uint64_t>(frames, kWindowFrames); ++i)
        Add(missing);
}

SignalMeter::Shares SignalMeter::Measure() const {
    FrameQuality sum;
    constexpr int kFibsOfMissing = 3;
    for (std::size_t i = 0; i < filled; ++i) {
        const FrameQuality& q = window[i];
        sum.fibs += q.missing ? kFibsOfMissing : q.fibs;
        sum.fibErrors += q.missing ? kFibsOfMissing : q.fibErrors;
        sum.packets += q.packets;
        sum.packetsBad += q.packetsBad;
        sum.bytesCorrected += q.bytesCorrected;
        sum.audioFrames += q.audioFrames;
        sum.audioFramesBad += q.audioFramesBad;
    }
    Shares shares;
    shares.fib = Share(sum.fibErrors, sum.fibs);
    shares.payload = std::max(Share(sum.packetsBad, sum.packets), Share(sum.audioFramesBad, sum.audioFrames));
    shares.correctedBytes = Share(sum.bytesCorrected, sum.packets - sum.packetsBad);
    return shares;
}

float SignalMeter::SignalToNoise() const {
    if (!started)
        return 0.0F;
    const Shares shares = Measure();
    const double fromCorrections = kClean - kCorrectedByteCost * shares.correctedBytes;
    return static_cast<float>(
        std::max(0.0, std::min({FromErrorShare(shares.fib), FromErrorShare(shares.payload), fromCorrections})));
}

float SignalMeter::Strength() const {
    return started ? static_cast<float>(kNoiseFloor) + SignalToNoise() * 2 : 0.0F;
}

int SignalMeter::FibErrorPerMille() const {
    return started ? static_cast<int>(Measure().fib * 1000 + 0.5) : 0;
}

bool SignalMeter::Lost() const {
    return started && filled == kWindowFrames && Measure().fib >= 1.0;
}

} // namespace medmb
