#include "jpeg/RgbOutput.h"

#include "jpeg/Axis.h"
#include "jpeg/ColourTables.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <random>
#include <vector>

namespace jpeg {
namespace {

struct Size {
    int width;
    int height;
};

using Plane = std::vector<std::uint8_t>;

// Three planes of random samples.
struct Picture {
    explicit Picture(Size theSize) : size(theSize), stride(static_cast<std::size_t>(size.width + kRowSlack)) {
        std::mt19937 random(static_cast<unsigned>(size.width * 31 + size.height));
        for (Plane& plane : planes) {
            plane.resize(stride * static_cast<std::size_t>(size.height));
            for (auto& sample : plane) {
                sample = static_cast<std::uint8_t>(random() % 4 == 0 ? 255 : random());
            }
        }
    }
    [[nodiscard]] const std::uint8_t* Row(std::size_t plane, int y) const {
        return planes[plane].data() + static_cast<std::size_t>(y) * stride;
    }

    Size size;
    std::size_t stride;
    std::array<Plane, 3> planes;
};

// The average of six-bit contributions, times four, straight from its definition.
std::uint8_t AverageAt(const Picture& picture, std::size_t plane, const Span& columns, const Span& lines) {
    std::uint64_t sum = 0;
    for (int y = lines.first; y < lines.first + lines.count; ++y) {
        for (int x = columns.first; x < columns.first + columns.count; ++x) {
            sum += picture.Row(plane, y)[x] >> 2;
        }
    }
    return static_cast<std::uint8_t>(sum * 4 / (std::uint64_t{columns.count} * lines.count));
}

std::vector<std::uint8_t> Resample(const Picture& picture, Size to, int format) {
    Fit fit;
    fit.width = to.width;
    fit.height = to.height;
    const std::size_t bytesPerPixel = format == kRgb24 ? 3 : 2;
    std::vector<std::uint8_t> pixels(bytesPerPixel * static_cast<std::size_t>(to.width * to.height));
    SourceShape shape;
    shape.width = picture.size.width;
    shape.height = picture.size.height;
    shape.colour = ColourModel::kRgb;
    std::unique_ptr<Output> output;
    EXPECT_EQ(OpenRgbOutput(shape, fit, {pixels.data(), to.width, to.height, format}, output), Status::kOk);
    for (int y = 0; y < picture.size.height; ++y) {
        output->AddRow(y, {picture.Row(0, y), picture.Row(1, y), picture.Row(2, y)});
    }
    return pixels;
}

// At most 2x2, a few more, more than vectors take, thousands of rows, and one direction that grows.
TEST(RgbOutput, AveragesAreExactForAnyCount) {
    struct Case {
        Size from;
        Size to;
    };
    for (const Case& c :
         {Case{{40, 30}, {23, 17}}, Case{{64, 48}, {32, 24}}, Case{{33, 7}, {32, 7}}, Case{{90, 17}, {32, 16}},
          Case{{90, 60}, {32, 24}}, Case{{128, 96}, {32, 24}}, Case{{129, 97}, {31, 23}}, Case{{300, 20}, {19, 20}},
          Case{{20, 300}, {20, 19}}, Case{{200, 90}, {13, 11}}, Case{{9, 4000}, {3, 3}}, Case{{3, 50}, {7, 20}},
          Case{{50, 3}, {20, 7}}, Case{{70, 2}, {9, 5}}, Case{{1, 1}, {5, 4}}}) {
        const Picture picture(c.from);
        Axis columns;
        Axis lines;
        ASSERT_EQ(columns.Open(c.from.width, c.to.width), Status::kOk);
        ASSERT_EQ(lines.Open(c.from.height, c.to.height), Status::kOk);
        const auto words = Resample(picture, c.to, kRgb565);
        const auto bytes = Resample(picture, c.to, kRgb24);
        for (int y = 0; y < c.to.height; ++y) {
            for (int x = 0; x < c.to.width; ++x) {
                const Rgb wanted{AverageAt(picture, 0, columns[x], lines[y]),
                                 AverageAt(picture, 1, columns[x], lines[y]),
                                 AverageAt(picture, 2, columns[x], lines[y])};
                const auto at = static_cast<std::size_t>(y * c.to.width + x);
                std::uint16_t word;
                std::memcpy(&word, &words[2 * at], sizeof word);
                ASSERT_EQ(word, PackRgb565(wanted)) << c.from.width << "x" << c.from.height << " " << x << "," << y;
                ASSERT_EQ(bytes[3 * at], wanted.r);
                ASSERT_EQ(bytes[3 * at + 1], wanted.g);
                ASSERT_EQ(bytes[3 * at + 2], wanted.b);
            }
        }
    }
}

} // namespace
} // namespace jpeg
