#include "tests/jpeg/FloatModel.h"

#include "tests/jpeg/CoefficientReader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <stdexcept>

namespace float_model {

namespace {

double Limit(double value) {
    return std::clamp(value, 0.0, 255.0);
}

// Weight of frequency u in output x of the reduced transform, one direction. Reduction 1 averages outputs (0,1) (2,3)
// (4,5) (6,7) of frequencies 0..3, reduction 2 outputs (1,2) (5,6) of frequencies 0 and 1, reduction 3 is the mean.
double Basis(int x, int u, int reduction) {
    const auto full = [u](int sample) {
        const double scale = u == 0 ? std::sqrt(0.125) : 0.5;
        return scale * std::cos((2 * sample + 1) * u * std::numbers::pi / 16);
    };
    if (u >= 8 >> reduction) {
        return 0.0;
    }
    switch (reduction) {
    case 0:
        return full(x);
    case 1:
        return (full(2 * x) + full(2 * x + 1)) / 2;
    case 2:
        return (full(4 * x + 1) + full(4 * x + 2)) / 2;
    default:
        return std::sqrt(0.125);
    }
}

// A quantiser as the decoder's multipliers carry it: with two bits of fraction after the scale factors of the transform.
double CarriedQuantiser(int quantiser, int u, int v) {
    const auto factor = [](int k) { return k == 0 ? 1.0 : std::sqrt(2.0) * std::cos(k * std::numbers::pi / 16); };
    const double scale = factor(u) * factor(v);
    return std::floor((quantiser * std::round(scale * 16384) + 2048) / 4096) / (4 * scale);
}

Picture Render(const CoefficientReader& reader, const Shape& shape, char colour) {
    const auto& planes = reader.planes;
    if (planes.empty()) {
        throw std::runtime_error("no frame");
    }
    const int side = 8 >> shape.reduction;
    double basis[8][8];
    for (int x = 0; x < side; ++x) {
        for (int u = 0; u < 8; ++u) {
            basis[x][u] = Basis(x, u, shape.reduction);
        }
    }
    const int sourceWidth = std::max(1, reader.width >> shape.reduction);
    const int sourceHeight = std::max(1, reader.height >> shape.reduction);
    std::vector<std::vector<double>> samples;
    for (const Plane& plane : planes) {
        std::array<double, 64> quant{};
        for (int i = 0; i < 64; ++i) {
            quant[static_cast<std::size_t>(i)] =
                CarriedQuantiser(plane.quant[static_cast<std::size_t>(i)], i % 8, i / 8);
        }
        std::vector<double> out(static_cast<std::size_t>(plane.blocksWide * side) *
                                static_cast<std::size_t>(plane.blocksHigh * side));
        for (int b = 0; b < plane.blocksWide * plane.blocksHigh; ++b) {
            const auto& block = plane.blocks[static_cast<std::size_t>(b)];
            double half[8][8]; // columns transformed
            for (int y = 0; y < side; ++y) {
                for (int u = 0; u < side; ++u) {
                    double sum = 0;
                    for (int v = 0; v < side; ++v) {
                        sum += basis[y][v] * block[static_cast<std::size_t>(v * 8 + u)] *
                               quant[static_cast<std::size_t>(v * 8 + u)];
                    }
                    half[y][u] = sum;
                }
            }
            for (int y = 0; y < side; ++y) {
                for (int x = 0; x < side; ++x) {
                    double sum = 128;
                    for (int u = 0; u < side; ++u) {
                        sum += basis[x][u] * half[y][u];
                    }
                    const int column = b % plane.blocksWide * side + x;
                    const int row = b / plane.blocksWide * side + y;
                    out[static_cast<std::size_t>(row) * static_cast<std::size_t>(plane.blocksWide * side) +
                        static_cast<std::size_t>(column)] = Limit(sum);
                }
            }
        }
        samples.push_back(std::move(out));
    }

    const auto sampleAt = [&](std::size_t p, int x, int y) {
        const Plane& plane = planes[p];
        const int column = x * plane.h / planes[0].h;
        const int row = y * plane.v / planes[0].v;
        return samples[p][static_cast<std::size_t>(row) * static_cast<std::size_t>(plane.blocksWide * side) +
                          static_cast<std::size_t>(column)];
    };
    Picture picture;
    picture.width = shape.width;
    picture.height = shape.height;
    picture.rgb.assign(static_cast<std::size_t>(shape.width) * static_cast<std::size_t>(shape.height) * 3, 0.0);
    std::vector<int> counts(static_cast<std::size_t>(shape.width) * static_cast<std::size_t>(shape.height));
    // A stretched direction repeats source positions: walk over the larger of both grids.
    const int stepsX = std::max(sourceWidth, shape.width);
    const int stepsY = std::max(sourceHeight, shape.height);
    for (int j = 0; j < stepsY; ++j) {
        for (int i = 0; i < stepsX; ++i) {
            const int x = static_cast<int>(static_cast<long long>(i) * sourceWidth / stepsX);
            const int y = static_cast<int>(static_cast<long long>(j) * sourceHeight / stepsY);
            const int outX = static_cast<int>(static_cast<long long>(i) * shape.width / stepsX);
            const int outY = static_cast<int>(static_cast<long long>(j) * shape.height / stepsY);
            std::array<double, 3> rgb{};
            if (colour == 'g') {
                rgb.fill(sampleAt(0, x, y));
            } else if (colour == 'r') {
                rgb = {sampleAt(0, x, y), sampleAt(1, x, y), sampleAt(2, x, y)};
            } else {
                const double luma = sampleAt(0, x, y);
                const double cb = sampleAt(1, x, y) - 127;
                const double cr = sampleAt(2, x, y) - 127;
                rgb = {Limit(luma + 1.402 * cr), Limit(luma - 0.34414 * cb - 0.71414 * cr), Limit(luma + 1.772 * cb)};
            }
            const std::size_t to =
                static_cast<std::size_t>(outY) * static_cast<std::size_t>(shape.width) + static_cast<std::size_t>(outX);
            ++counts[to];
            for (std::size_t c = 0; c < 3; ++c) {
                picture.rgb[3 * to + c] += rgb[c];
            }
        }
    }
    for (std::size_t i = 0; i < counts.size(); ++i) {
        for (std::size_t c = 0; c < 3; ++c) {
            picture.rgb[3 * i + c] /= std::max(counts[i], 1);
        }
    }
    return picture;
}

} // namespace

Picture Decode(std::span<const std::uint8_t> data, const Shape& shape, char colour) {
    CoefficientReader reader(data);
    reader.Read();
    return Render(reader, shape, colour);
}

} // namespace float_model
