// The samples of one line of MCUs, each component at its own size: what a scan writes and the output reads.
#pragma once

#include "jpeg/Buffer.h"
#include "jpeg/Frame.h"
#include "jpeg/RowConverter.h"
#include "jpeg/Status.h"
#include "jpeg/Transform.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace jpeg {

// A worked example: 100x60 in 4:2:0 at reduction 1. An MCU is 16x16 samples before and 8x8 after the reduction; 7 of them
// make a line. Luma rows are 56 long and 8 high, chroma rows 28 long and 4 high.
class SampleRows {
public:
    // All samples start as 128, which is what a component without any scan keeps.
    [[nodiscard]] Status Open(const Frame& frame, int reduction) {
        const int side = KeptSide(reduction);
        for (int i = 0; i < frame.componentCount; ++i) {
            const Component& component = frame.components[i];
            strides[i] = static_cast<std::ptrdiff_t>(frame.McusPerLine()) * component.h * side;
            if (!planes[i].Allocate(static_cast<std::uint64_t>(strides[i]) * component.v * side + kRowSlack, 128)) {
                return Status::kOutOfMemory;
            }
        }
        return Status::kOk;
    }

    [[nodiscard]] std::uint8_t* Row(int component, int row) {
        return planes[component].Data() + row * strides[component];
    }
    [[nodiscard]] std::ptrdiff_t Stride(int component) const { return strides[component]; }

private:
    std::array<Buffer<std::uint8_t>, kMaxComponents> planes;
    std::array<std::ptrdiff_t, kMaxComponents> strides{};
};

// Where samples come from, line of MCUs by line of MCUs, from the top.
class SampleSource {
public:
    virtual ~SampleSource() = default;
    virtual void DecodeLine(int mcuLine, SampleRows& rows) = 0;
};

} // namespace jpeg
