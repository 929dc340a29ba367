#include "jpeg/RgbOutput.h"

#include "jpeg/Axis.h"
#include "jpeg/Buffer.h"
#include "jpeg/ResampleSse2.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <new>

namespace jpeg {

namespace {

// The fitted rectangle of the destination, row by row.
class PixelRows {
public:
    PixelRows(const Fit& fit, const Target& target) : format(target.format) {
        const Placement place = PlaceFit(fit, target.width, target.height);
        const std::size_t bytesPerPixel = format == kRgb24 ? 3 : 2;
        first = target.pixels + (format == kRgb24 ? place.rgb24 : place.rgb565);
        stride = static_cast<std::size_t>(target.width) * bytesPerPixel;
    }
    [[nodiscard]] bool IsRgb24() const { return format == kRgb24; }
    [[nodiscard]] std::uint8_t* Row(int y) const { return first + static_cast<std::size_t>(y) * stride; }

private:
    int format;
    std::uint8_t* first;
    std::size_t stride;
};

// Words of four contributions, or of two to be doubled, to row y.
void PackFours(const PixelRows& pixels, int y, const std::uint32_t* words, int size, int doubled) {
    std::uint8_t* row = pixels.Row(y);
    if (pixels.IsRgb24()) {
        for (int x = 0; x < size; ++x) {
            const std::uint32_t word = words[x] << doubled;
            row[3 * x] = static_cast<std::uint8_t>(word >> 16);
            row[3 * x + 1] = static_cast<std::uint8_t>(word >> 8);
            row[3 * x + 2] = static_cast<std::uint8_t>(word);
        }
        return;
    }
    int x = 0;
#if DMB_JPEG_SSE2
    x = sse2::PackFours565(words, size, doubled, row);
#endif
    for (; x < size; ++x) {
        StoreRgb565(row, x, PackFourContributions565(words[x] << doubled));
    }
}

// The transform lands on the fitted size.
class ExactRgb : public Output {
public:
    ExactRgb(const Fit& fit, const Target& target) : width(fit.width), height(fit.height), pixels(fit, target) {}
    [[nodiscard]] Status Open(const SourceShape& source) { return converter.Open(source.colour, source.chromaShiftX); }

    void AddRow(int y, const SampleRow& row) override {
        if (y >= height) {
            return;
        }
        if (pixels.IsRgb24()) {
            converter.ToRgb24(row, width, pixels.Row(y));
        } else {
            converter.ToRgb565(row, width, pixels.Row(y));
        }
    }

private:
    int width;
    int height;
    PixelRows pixels;
    RowConverter converter;
};

// What both averaging outputs share: the axes and the conversion of a source row.
class ResampledRgb : public Output {
public:
    ResampledRgb(const Fit& fit, const Target& target) : pixels(fit, target) {}
    [[nodiscard]] virtual Status Open(const SourceShape& source, const Fit& fit) {
        width = source.width;
        if (const Status status = converter.Open(source.colour, source.chromaShiftX); status != Status::kOk) {
            return status;
        }
        if (const Status status = columns.Open(source.width, fit.width); status != Status::kOk) {
            return status;
        }
        if (const Status status = lines.Open(source.height, fit.height); status != Status::kOk) {
            return status;
        }
        steps.Open(lines);
        return words.Allocate(static_cast<std::uint64_t>(width) + kRowSlack) ? Status::kOk : Status::kOutOfMemory;
    }

protected:
    int width = 0; // of the source
    Axis columns;
    Axis lines;
    RowSteps steps;
    PixelRows pixels;
    RowConverter converter;
    Buffer<std::uint32_t> words; // a contribution for each source column
};

// At most 2x2 contributions to a pixel, the usual case: the four bytes-in-a-word sums of a pixel never carry. One
// contribution in a direction counts twice, which gives every pixel the weight of four.
class PairedRgb : public ResampledRgb {
public:
    using ResampledRgb::ResampledRgb;

    [[nodiscard]] Status Open(const SourceShape& source, const Fit& fit) override {
        if (const Status status = ResampledRgb::Open(source, fit); status != Status::kOk) {
            return status;
        }
        const auto size = static_cast<std::uint64_t>(fit.width);
        if (!pairs.Allocate(size) || !fours.Allocate(size)) {
            return Status::kOutOfMemory;
        }
        for (int x = 0; x < fit.width; ++x) {
            const int first = columns[x].first;
            pairs.Data()[x] = {static_cast<std::uint16_t>(first),
                               static_cast<std::uint16_t>(first + columns[x].count - 1)};
        }
        return Status::kOk;
    }

    void AddRow(int y, const SampleRow& row) override {
        if (steps.Opens(y)) {
            converter.StoreContributions(row, width, words.Data());
        } else {
            converter.AddContributions(row, width, words.Data());
        }
        for (int done = steps.TakeCompleted(y); done >= 0; done = steps.TakeCompleted(y)) {
            Emit(done);
        }
    }

private:
    // The first and the last source column of an output column, often the same.
    struct Pair {
        std::uint16_t first;
        std::uint16_t last;
    };

    // In two steps, so that the second works on neighbours: sums across, then packing.
    void Emit(int y) {
        const int size = columns.Size();
        const std::uint32_t* __restrict sums = words.Data();
        const Pair* __restrict pair = pairs.Data();
        std::uint32_t* __restrict four = fours.Data();
        for (int x = 0; x < size; ++x) {
            four[x] = sums[pair[x].first] + sums[pair[x].last];
        }
        PackFours(pixels, y, four, size, lines[y].count == 1 ? 1 : 0);
    }

    Buffer<Pair> pairs;
    Buffer<std::uint32_t> fours; // a word of four contributions for each output column
};

// Division of many sums by the same count.
class Divider {
public:
    explicit Divider(std::uint32_t theCount)
        : count(theCount), factor(theCount < kMaxExact ? 0xFFFFFFFFu / theCount + 1 : 0) {}

    // For up to 252 * count.
    [[nodiscard]] std::uint8_t operator()(std::uint32_t sum) const {
        return static_cast<std::uint8_t>(factor != 0 ? static_cast<std::uint64_t>(sum) * factor >> 32 : sum / count);
    }

private:
    // The product is exact while 252 * count * count stays below 2^32. A count of 1 has no factor of 32 bits.
    static constexpr std::uint32_t kMaxExact = 4000;
    std::uint32_t count;
    std::uint32_t factor;
};

// Any number of contributions. Rows are added up first, channel by channel, then columns; sums are divided by the number of
// contributions. `Sum` holds 63 times the rows of an output row.
template <typename Sum> class AveragedRgb : public ResampledRgb {
public:
    using ResampledRgb::ResampledRgb;

    [[nodiscard]] Status Open(const SourceShape& source, const Fit& fit) override {
        if (const Status status = ResampledRgb::Open(source, fit); status != Status::kOk) {
            return status;
        }
        const bool enough = sums.Allocate(kChannels * (static_cast<std::uint64_t>(width) + 1)) &&
                            averages.Allocate(static_cast<std::uint64_t>(fit.width));
        return enough ? Status::kOk : Status::kOutOfMemory;
    }

    void AddRow(int y, const SampleRow& row) override {
        converter.StoreContributions(row, width, words.Data());
        const auto* channels = reinterpret_cast<const std::uint8_t*>(words.Data());
        Sum* to = sums.Data();
        const int size = kChannels * width;
        if (steps.Opens(y)) {
            std::copy(channels, channels + size, to);
        } else {
            for (int i = 0; i < size; ++i) {
                to[i] = static_cast<Sum>(to[i] + channels[i]);
            }
        }
        for (int done = steps.TakeCompleted(y); done >= 0; done = steps.TakeCompleted(y)) {
            Emit(done);
        }
    }

private:
    // A contribution's bytes in memory: blue first on a little-endian machine.
    static constexpr int kChannels = 4;
    static constexpr bool kLittle = std::endian::native == std::endian::little;
    static constexpr int kRed = kLittle ? 2 : 1;
    static constexpr int kGreen = kLittle ? 1 : 2;
    static constexpr int kBlue = kLittle ? 0 : 3;

    void Emit(int y) {
#if DMB_JPEG_SSE2
        if constexpr (sizeof(Sum) == sizeof(std::uint16_t)) {
            const int count = columns.MaxCount() * lines[y].count;
            const bool alone = lines[y].count == 1 && columns.MaxCount() < 3;
            if (count <= sse2::kMaxAveraged && !alone) {
                sse2::AverageColumns(sums.Data(), columns, lines[y].count, averages.Data());
                PackFours(pixels, y, averages.Data(), columns.Size(), 0);
                return;
            }
        }
#endif
        EmitPlain(y);
    }

    void EmitPlain(int y) const {
        // Column counts differ by one at most.
        const std::uint32_t rows = lines[y].count;
        const auto most = static_cast<std::uint32_t>(columns.MaxCount());
        const std::array<Divider, 2> dividers{Divider(most * rows), Divider(std::max(most - 1, 1u) * rows)};
        std::uint8_t* row = pixels.Row(y);
        for (int x = 0; x < columns.Size(); ++x) {
            const Sum* from = sums.Data() + kChannels * columns[x].first;
            std::uint32_t red = 0; // at most 63 x 2500 x 2500
            std::uint32_t green = 0;
            std::uint32_t blue = 0;
            for (int i = 0; i < columns[x].count; ++i, from += kChannels) {
                red += from[kRed];
                green += from[kGreen];
                blue += from[kBlue];
            }
            const Divider& divide = dividers[static_cast<std::size_t>(columns.MaxCount() - columns[x].count)];
            const Rgb pixel{divide(red * 4), divide(green * 4), divide(blue * 4)};
            if (pixels.IsRgb24()) {
                row[3 * x] = pixel.r;
                row[3 * x + 1] = pixel.g;
                row[3 * x + 2] = pixel.b;
            } else {
                StoreRgb565(row, x, PackRgb565(pixel));
            }
        }
    }

    Buffer<Sum> sums;               // four for each source column
    Buffer<std::uint32_t> averages; // a word for each output column
};

constexpr int kMaxRowsOf16Bits = 65535 / 63;

template <typename Kind>
Status OpenResampled(const SourceShape& source, const Fit& fit, const Target& target, std::unique_ptr<Output>& output) {
    auto* made = new (std::nothrow) Kind(fit, target);
    output.reset(made);
    return made == nullptr ? Status::kOutOfMemory : made->Open(source, fit);
}

} // namespace

Status OpenRgbOutput(const SourceShape& source, const Fit& fit, const Target& target, std::unique_ptr<Output>& output) {
    if (source.width == fit.width && source.height == fit.height) {
        auto* exact = new (std::nothrow) ExactRgb(fit, target);
        output.reset(exact);
        return exact == nullptr ? Status::kOutOfMemory : exact->Open(source);
    }
    const bool paired = source.width <= 2 * fit.width && source.height <= 2 * fit.height;
    if (paired) {
        return OpenResampled<PairedRgb>(source, fit, target, output);
    }
    const bool manyRows = source.height / fit.height >= kMaxRowsOf16Bits;
    return manyRows ? OpenResampled<AveragedRgb<std::uint32_t>>(source, fit, target, output)
                    : OpenResampled<AveragedRgb<std::uint16_t>>(source, fit, target, output);
}

} // namespace jpeg
