// An independent model of the decoder, in double precision: slow, plain, and sharing no code with what it judges.
//
// It reads valid files only. Coefficients are decoded bit by bit; the transform is the cosine sum; reduced sizes average the
// outputs of that sum over the low frequencies; colour is computed, not looked up; resampling is a box average.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace float_model {

struct Picture {
    int width = 0; // fitted size
    int height = 0;
    std::vector<double> rgb; // 3 values a pixel, 0..255
};

struct Shape {
    int width = 0; // fitted size, given from outside
    int height = 0;
    int reduction = 0;
};

// Throws std::runtime_error for what it cannot read. `colour` is 'y' YCbCr, 'g' grey, 'r' RGB.
[[nodiscard]] Picture Decode(std::span<const std::uint8_t> data, const Shape& shape, char colour);

} // namespace float_model
