#include "jpeg/RgbOutput.h"

#include "jpeg/Axis.h"
#include "jpeg/Buffer.h"

#include <array>
#include <cstring>
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
        return words.Allocate(static_cast<std::uint64_t>(width)) ? Status::kOk : Status::kOutOfMemory;
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
    void Emit(int y) const {
        std::uint8_t* row = pixels.Row(y);
        const int doubled = lines[y].count == 1 ? 1 : 0;
        const std::uint32_t* sums = words.Data();
        const int size = columns.Size();
        if (pixels.IsRgb24()) {
            for (int x = 0; x < size; ++x) {
                const std::uint32_t word = FourOf(sums, columns[x]) << doubled;
                row[3 * x] = static_cast<std::uint8_t>(word >> 16);
                row[3 * x + 1] = static_cast<std::uint8_t>(word >> 8);
                row[3 * x + 2] = static_cast<std::uint8_t>(word);
            }
            return;
        }
        for (int x = 0; x < size; ++x) {
            StoreRgb565(row, x, PackFourContributions565(FourOf(sums, columns[x]) << doubled));
        }
    }
    static std::uint32_t FourOf(const std::uint32_t* sums, Span span) {
        return sums[span.first] + sums[span.first + span.count - 1];
    }
};

// Any number of contributions: sums of 32 bits a channel, divided by their number.
class AveragedRgb : public ResampledRgb {
public:
    using ResampledRgb::ResampledRgb;

    [[nodiscard]] Status Open(const SourceShape& source, const Fit& fit) override {
        if (const Status status = ResampledRgb::Open(source, fit); status != Status::kOk) {
            return status;
        }
        return sums.Allocate(static_cast<std::uint64_t>(fit.width)) ? Status::kOk : Status::kOutOfMemory;
    }

    void AddRow(int y, const SampleRow& row) override {
        converter.StoreContributions(row, width, words.Data());
        if (steps.Opens(y)) {
            std::memset(static_cast<void*>(sums.Data()), 0, sizeof(Sum) * static_cast<std::size_t>(columns.Size()));
        }
        for (int x = 0; x < columns.Size(); ++x) {
            Sum& sum = sums.Data()[x];
            const std::uint32_t* from = words.Data() + columns[x].first;
            for (int i = 0; i < columns[x].count; ++i) {
                sum[0] += from[i] >> 16;
                sum[1] += from[i] >> 8 & 255;
                sum[2] += from[i] & 255;
            }
        }
        for (int done = steps.TakeCompleted(y); done >= 0; done = steps.TakeCompleted(y)) {
            Emit(done);
        }
    }

private:
    using Sum = std::array<std::uint32_t, 3>; // at most 63 x 2500 x 2500

    void Emit(int y) const {
        std::uint8_t* row = pixels.Row(y);
        for (int x = 0; x < columns.Size(); ++x) {
            const Sum& sum = sums.Data()[x];
            const std::uint32_t count = static_cast<std::uint32_t>(columns[x].count) * lines[y].count;
            const Rgb pixel{static_cast<std::uint8_t>(sum[0] * 4 / count),
                            static_cast<std::uint8_t>(sum[1] * 4 / count),
                            static_cast<std::uint8_t>(sum[2] * 4 / count)};
            if (pixels.IsRgb24()) {
                row[3 * x] = pixel.r;
                row[3 * x + 1] = pixel.g;
                row[3 * x + 2] = pixel.b;
            } else {
                StoreRgb565(row, x, PackRgb565(pixel));
            }
        }
    }

    Buffer<Sum> sums; // one for each output column
};

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
    return paired ? OpenResampled<PairedRgb>(source, fit, target, output)
                  : OpenResampled<AveragedRgb>(source, fit, target, output);
}

} // namespace jpeg
