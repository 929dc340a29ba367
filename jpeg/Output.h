// The back end: takes the rows of the reduced picture from the top and writes the fitted rectangle of the destination.
#pragma once

#include "jpeg/Fit.h"
#include "jpeg/Frame.h"
#include "jpeg/RowConverter.h"
#include "jpeg/Status.h"

#include <cstdint>
#include <memory>

namespace jpeg {

inline constexpr int kRgb565 = 0; // 16-bit words, native byte order
inline constexpr int kRgb24 = 1;  // bytes R, G, B
inline constexpr int kYuv420 = 2; // planes Y, U, V

// The picture as the transform delivers it.
struct SourceShape {
    int width = 0; // of the reduced picture, pixels
    int height = 0;
    ColourModel colour = ColourModel::kNone;
    int chromaShiftX = 0; // 1 when chroma has half the columns
    int chromaShiftY = 0; // 1 when chroma has half the rows
};

struct Target {
    std::uint8_t* pixels = nullptr;
    int width = 0;
    int height = 0;
    int format = kRgb565;
};

class Output {
public:
    virtual ~Output() = default;
    // Row y of the picture; rows come in order, each once. Chroma rows serve 1 << chromaShiftY of them.
    virtual void AddRow(int y, const SampleRow& row) = 0;
};

// Not for an empty fit. kYuv420 takes YCbCr and grey only.
[[nodiscard]] Status OpenOutput(const SourceShape& source, const Fit& fit, const Target& target,
                                std::unique_ptr<Output>& output);

// Sets the fitted rectangle to 0; with kYuv420 also width x height bytes from the chroma planes on to 128, on purpose
// more than the planes take, so that the destination needs 2 x width x height bytes.
void ClearFitted(const Fit& fit, const Target& target);
void ClearChroma(const Target& target);

} // namespace jpeg
