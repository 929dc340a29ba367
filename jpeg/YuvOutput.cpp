#include "jpeg/YuvOutput.h"

#include "jpeg/Axis.h"
#include "jpeg/Buffer.h"

#include <cstring>
#include <new>

namespace jpeg {

namespace {

// One plane from samples of one component: averages, rounded to the nearest.
class PlaneAverager {
public:
    [[nodiscard]] Status Open(int sourceWidth, int sourceHeight, int width, int height, std::uint8_t* first,
                              std::size_t theStride) {
        pixels = first;
        stride = theStride;
        if (const Status status = columns.Open(sourceWidth, width); status != Status::kOk) {
            return status;
        }
        if (const Status status = lines.Open(sourceHeight, height); status != Status::kOk) {
            return status;
        }
        steps.Open(lines);
        return sums.Allocate(static_cast<std::uint64_t>(width)) ? Status::kOk : Status::kOutOfMemory;
    }

    void AddRow(int y, const std::uint8_t* row) {
        if (columns.IsIdentity() && lines.IsIdentity()) {
            std::memcpy(pixels + static_cast<std::size_t>(y) * stride, row, static_cast<std::size_t>(columns.Size()));
            return;
        }
        if (steps.Opens(y)) {
            std::memset(sums.Data(), 0, sizeof(std::uint32_t) * static_cast<std::size_t>(columns.Size()));
        }
        for (int x = 0; x < columns.Size(); ++x) {
            const std::uint8_t* from = row + columns[x].first;
            for (int i = 0; i < columns[x].count; ++i) {
                sums.Data()[x] += from[i];
            }
        }
        for (int done = steps.TakeCompleted(y); done >= 0; done = steps.TakeCompleted(y)) {
            std::uint8_t* to = pixels + static_cast<std::size_t>(done) * stride;
            for (int x = 0; x < columns.Size(); ++x) {
                const std::uint32_t count = static_cast<std::uint32_t>(columns[x].count) * lines[done].count;
                to[x] = static_cast<std::uint8_t>((sums.Data()[x] + count / 2) / count);
            }
        }
    }

private:
    Axis columns;
    Axis lines;
    RowSteps steps;
    Buffer<std::uint32_t> sums; // at most 255 x 2500 x 2500
    std::uint8_t* pixels = nullptr;
    std::size_t stride = 0;
};

class YuvOutput : public Output {
public:
    [[nodiscard]] Status Open(const SourceShape& theSource, const Fit& fit, const Target& target) {
        source = theSource;
        const Placement place = PlaceFit(fit, target.width, target.height);
        const auto lumaStride = static_cast<std::size_t>(target.width);
        if (const Status status =
                luma.Open(source.width, source.height, fit.width, fit.height, target.pixels + place.luma, lumaStride);
            status != Status::kOk || source.colour == ColourModel::kGrey) {
            return status; // grey leaves the chroma planes at 128
        }
        const std::size_t chromaStride = (lumaStride + 1) / 2;
        const std::size_t chromaPlane = chromaStride * ((static_cast<std::size_t>(target.height) + 1) / 2);
        std::uint8_t* first = target.pixels + lumaStride * static_cast<std::size_t>(target.height) + place.chroma;
        const int sourceWidth = DivideUp(source.width, 1 << source.chromaShiftX);
        const int sourceHeight = DivideUp(source.height, 1 << source.chromaShiftY);
        for (PlaneAverager& plane : chroma) {
            if (const Status status = plane.Open(sourceWidth, sourceHeight, DivideUp(fit.width, 2),
                                                 DivideUp(fit.height, 2), first, chromaStride);
                status != Status::kOk) {
                return status;
            }
            first += chromaPlane;
        }
        return Status::kOk;
    }

    void AddRow(int y, const SampleRow& row) override {
        luma.AddRow(y, row[0]);
        const bool newChromaRow = (y & ((1 << source.chromaShiftY) - 1)) == 0;
        if (source.colour != ColourModel::kGrey && newChromaRow) {
            chroma[0].AddRow(y >> source.chromaShiftY, row[1]);
            chroma[1].AddRow(y >> source.chromaShiftY, row[2]);
        }
    }

private:
    SourceShape source;
    PlaneAverager luma;
    std::array<PlaneAverager, 2> chroma; // U, V
};

} // namespace

Status OpenYuvOutput(const SourceShape& source, const Fit& fit, const Target& target, std::unique_ptr<Output>& output) {
    auto* made = new (std::nothrow) YuvOutput;
    output.reset(made);
    return made == nullptr ? Status::kOutOfMemory : made->Open(source, fit, target);
}

} // namespace jpeg
