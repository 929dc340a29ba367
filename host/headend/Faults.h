// What goes wrong on the way, on request: bit errors, damaged information blocks, lost frames, loss of the signal.
#pragma once

#include <cstdint>
#include <vector>

#include "host/headend/Multiplex.h"
#include "host/wire/EtiFrame.h"

namespace headend {

class Faults {
public:
    explicit Faults(const EnsembleDescription& ensemble);

    // Damages a frame as the description says; false when the frame is lost. Frames come in order.
    [[nodiscard]] bool Apply(int frame, const Configuration& configuration, wire::EtiFrameContent& content);

private:
    // The same throws for the same seed everywhere.
    class Dice {
    public:
        explicit Dice(std::uint64_t seed) : state(seed * 0x9E3779B97F4A7C15ull + 1) {}
        std::uint64_t Next();
        double Share(); // 0 to below 1

    private:
        std::uint64_t state;
    };

    void FlipBits(wire::ByteVector& bytes, double rate, Dice& dice);
    void DropOut(int frame, wire::EtiFrameContent& content);

    const EnsembleDescription& ensemble;
    Dice fibDice;
    Dice dropDice;
    std::vector<Dice> bitDice; // one a service, so that one's errors do not move another's
};

} // namespace headend
