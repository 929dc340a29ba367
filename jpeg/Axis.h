// Which source positions an output position is made of, in one direction.
#pragma once

#include "jpeg/Buffer.h"
#include "jpeg/Status.h"

#include <cstdint>

namespace jpeg {

// `count` neighbours from `first` on. Sides are at most 20000.
struct Span {
    std::uint16_t first;
    std::uint16_t count;
};

// Shrinking, source position p goes to output position floor(p * output / source): every source position is used once
// and every output position gets some. Stretching, an output position repeats the source position at or before it.
class Axis {
public:
    [[nodiscard]] Status Open(int source, int output) {
        sourceSize = source;
        outputSize = output;
        if (!spans.Allocate(static_cast<std::uint64_t>(output))) {
            return Status::kOutOfMemory;
        }
        maxCount = 1;
        for (int i = 0; i < output; ++i) {
            const int first = First(i);
            const int count = source <= output ? 1 : First(i + 1) - first;
            spans.Data()[i] = {static_cast<std::uint16_t>(first), static_cast<std::uint16_t>(count)};
            maxCount = count > maxCount ? count : maxCount;
        }
        return Status::kOk;
    }

    [[nodiscard]] const Span& operator[](int output) const { return spans.Data()[output]; }
    [[nodiscard]] int Size() const { return outputSize; }
    [[nodiscard]] int MaxCount() const { return maxCount; }
    [[nodiscard]] bool IsIdentity() const { return sourceSize == outputSize; }

private:
    [[nodiscard]] int First(int output) const {
        const std::int64_t scaled = static_cast<std::int64_t>(output) * sourceSize;
        const std::int64_t roundUp = sourceSize > outputSize ? outputSize - 1 : 0;
        return static_cast<int>((scaled + roundUp) / outputSize);
    }

    int sourceSize = 0;
    int outputSize = 0;
    int maxCount = 1;
    Buffer<Span> spans;
};

// The output rows that become complete with a source row, as rows come from the top.
class RowSteps {
public:
    void Open(const Axis& theAxis) { axis = &theAxis; }
    // Source row y opens the current output row: what was gathered before is done with.
    [[nodiscard]] bool Opens(int y) const { return next < axis->Size() && (*axis)[next].first == y; }
    // Takes the next output row that source row y completes, or -1.
    [[nodiscard]] int TakeCompleted(int y) {
        if (next >= axis->Size() || (*axis)[next].first + (*axis)[next].count - 1 != y) {
            return -1;
        }
        return next++;
    }

private:
    const Axis* axis = nullptr;
    int next = 0;
};

} // namespace jpeg
