// Finds attacks, before which a long window would spread audible noise, and plans the window sequences around
// them.
#pragma once

#include <span>

#include "host/codec/BlockHeader.h"

namespace codec {

class TransientDetector {
public:
    struct Attack {
        bool early = false; // in the first 512 samples of the block
        bool late = false;  // in the second
    };

    // Looks at the next 1024 samples of one channel.
    [[nodiscard]] Attack Look(std::span<const float> samples);

private:
    float previousSample = 0;
    float pastEnergy = 0; // of the differences of 128 samples, smoothed
};

// Says which window sequence each block gets. The 2048 samples of block k begin with the samples that were
// new in block k - 1; eight short windows lie in the middle and meet an attack late in block k - 1 or early
// in block k. A start and a stop window lead to them and back, so the sequence of a block is known when the
// attacks of the next one are.
class WindowPlanner {
public:
    // `next` are the attacks of the block after the one asked for.
    [[nodiscard]] WindowSequence Plan(TransientDetector::Attack next);

private:
    TransientDetector::Attack current{}; // of the block asked for
    bool currentShort = false;
    bool previousShort = false;
};

} // namespace codec
