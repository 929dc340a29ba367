// The coefficients of a progressive picture between its scans: only those that the reduction keeps.
#pragma once

#include "jpeg/Buffer.h"
#include "jpeg/Frame.h"
#include "jpeg/Status.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace jpeg {

// A picture that would need more is refused. Any picture of at most 20000x20000 into 320x240 needs less: the worst,
// 20000x479 in 4:4:4, is not reduced and takes 450 000 blocks of 136 bytes, 58.4 MiB.
inline constexpr std::uint64_t kMaxCoefficientBytes = 60ull << 20;

class CoefficientStore {
public:
    [[nodiscard]] Status Open(const Frame& frame, int reduction);

    [[nodiscard]] int BlocksPerLine(int component) const { return planes[component].blocksPerLine; }
    [[nodiscard]] int BlockLines(int component) const { return planes[component].blockLines; }
    [[nodiscard]] int BlockCount(int component) const { return BlocksPerLine(component) * BlockLines(component); }

    // The kept coefficients of a block, row by row.
    [[nodiscard]] std::int16_t* Values(int component, int block) {
        return planes[component].values.Data() + static_cast<std::ptrdiff_t>(block) * kept;
    }
    // Bit k: coefficient k in zig-zag order is not 0, kept or not. Refinement scans depend on it. Absent at reduction 3.
    [[nodiscard]] std::uint64_t* History(int component) { return planes[component].history.Data(); }

private:
    struct Plane {
        int blocksPerLine = 0;
        int blockLines = 0;
        Buffer<std::int16_t> values;
        Buffer<std::uint64_t> history;
    };
    int kept = kBlockSize;
    std::array<Plane, kMaxComponents> planes;
};

} // namespace jpeg
