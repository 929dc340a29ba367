#include "host/headend/Faults.h"

#include <cmath>

#include "host/wire/Fib.h"

namespace headend {

namespace {

bool Inside(const Window& window, int frame) {
    return frame >= FrameAt(window.from) && frame < FrameAt(window.to);
}

} // namespace

std::uint64_t Faults::Dice::Next() {
    // xorshift64*
    state ^= state >> 12;
    state ^= state << 25;
    state ^= state >> 27;
    return state * 0x2545F4914F6CDD1Dull;
}

double Faults::Dice::Share() {
    return static_cast<double>(Next() >> 11) * 0x1p-53;
}

Faults::Faults(const EnsembleDescription& description)
    : ensemble(description), fibDice(description.id), dropDice(description.id + 0x10000ull) {
    for (const ServiceDescription& service : ensemble.services)
        bitDice.emplace_back(service.id);
}

void Faults::FlipBits(wire::ByteVector& bytes, double rate, Dice& dice) {
    if (rate <= 0)
        return;
    // From one error to the next is a geometric distance.
    const double scale = rate >= 1 ? 0 : 1 / std::log1p(-rate);
    double at = 0;
    for (;;) {
        at += std::floor(std::log1p(-dice.Share()) * scale);
        if (at >= static_cast<double>(bytes.size() * 8))
            return;
        const auto bit = static_cast<std::size_t>(at);
        bytes[bit / 8] ^= static_cast<std::uint8_t>(0x80 >> bit % 8);
        at += 1;
    }
}

// As a software receiver without a signal goes on delivering: frames with good sums of their own, blocks with wrong ones,
// noise in the streams, the frame count standing still for four frames at a time.
void Faults::DropOut(int frame, wire::EtiFrameContent& content) {
    content.frameCount = (content.frameCount + wire::kEtiFrameCountModulo - frame % 4) % wire::kEtiFrameCountModulo;
    for (std::uint8_t& byte : content.fic)
        byte = static_cast<std::uint8_t>(dropDice.Next() >> 56);
    for (auto& stream : content.streams) {
        for (std::uint8_t& byte : stream.data)
            byte = static_cast<std::uint8_t>(dropDice.Next() >> 56);
    }
}

bool Faults::Apply(int frame, const Configuration& configuration, wire::EtiFrameContent& content) {
    for (std::size_t i = 0; i < configuration.services.size(); ++i) {
        const std::size_t index = configuration.services[i].index;
        for (const Window& window : ensemble.services[index].bitErrors) {
            if (Inside(window, frame))
                FlipBits(content.streams[i].data, window.rate, bitDice[index]);
        }
    }
    for (const Window& window : ensemble.fibErrors) {
        for (std::size_t at = 0; Inside(window, frame) && at < content.fic.size(); at += wire::kFibBytes) {
            if (fibDice.Share() < window.rate)
                content.fic[at + fibDice.Next() % wire::kFibBytes] ^=
                    static_cast<std::uint8_t>(1u << fibDice.Next() % 8);
        }
    }
    for (const Window& window : ensemble.dropOuts) {
        if (Inside(window, frame))
            DropOut(frame, content);
    }
    for (const LostFrames& lost : ensemble.lostFrames) {
        if (frame >= FrameAt(lost.at) && frame < FrameAt(lost.at) + lost.count)
            return false;
    }
    return true;
}

} // namespace headend
