#include "jpeg/PictureDecoder.h"

#include "jpeg/BaselineDecoder.h"
#include "jpeg/Buffer.h"
#include "jpeg/MarkerReader.h"
#include "jpeg/ProgressiveDecoder.h"
#include "jpeg/RawThumbnail.h"
#include "jpeg/RgbToYuv.h"
#include "jpeg/SampleRows.h"

#include <algorithm>
#include <memory>
#include <new>

namespace jpeg {

namespace {

// Where pixels go. YUV from RGB or from a progressive picture goes through an RGB565 picture of the target's size.
class Destination {
public:
    [[nodiscard]] Status Open(const Target& wanted, bool throughScratch) {
        if (wanted.format < kRgb565 || wanted.format > kYuv420) {
            return Status::kOutputFormat;
        }
        final = written = wanted;
        if (wanted.format != kYuv420 || !throughScratch) {
            return Status::kOk;
        }
        const std::uint64_t pixels =
            static_cast<std::uint64_t>(wanted.width) * static_cast<std::uint64_t>(wanted.height);
        if (!scratch.Allocate(pixels * 2)) {
            return Status::kOutOfMemory;
        }
        written.pixels = scratch.Data();
        written.format = kRgb565;
        return Status::kOk;
    }

    [[nodiscard]] const Target& Written() const { return written; }

    void Finish() const {
        if (!scratch.Empty()) {
            ConvertRgbToYuv(scratch.Data(), RgbLayout::k565, final.width, final.height, final.pixels);
        }
    }

private:
    Target final;
    Target written;
    Buffer<std::uint8_t> scratch;
};

void Report(const DecodeRequest& request, int percent) {
    if (request.progress != nullptr) {
        request.progress(request.progressContext, percent);
    }
}

// Calls addRow(y) for every row, between the two reports.
template <typename AddRows> void ConvertRows(const DecodeRequest& request, AddRows addRows) {
    Report(request, 80);
    addRows();
    Report(request, 100);
}

// Lines of MCUs from the source, rows of pixels to the output.
void PassRows(const Frame& frame, const SourceShape& shape, int reduction, SampleSource& source, SampleRows& rows,
              Output& output) {
    const int rowsPerLine = KeptSide(reduction) * frame.components[0].v;
    for (int line = 0, y = 0; y < shape.height; ++line) {
        source.DecodeLine(line, rows);
        const int end = std::min(rowsPerLine, shape.height - y);
        for (int row = 0; row < end; ++row, ++y) {
            SampleRow samples{rows.Row(0, row), nullptr, nullptr};
            for (int i = 1; i < frame.componentCount; ++i) {
                samples[i] = rows.Row(i, row >> shape.chromaShiftY);
            }
            output.AddRow(y, samples);
        }
    }
}

} // namespace

Status FindSubsampling(const Frame& frame, ColourModel colour, SourceShape& shape) {
    shape.chromaShiftX = shape.chromaShiftY = 0;
    if (colour == ColourModel::kGrey) {
        return Status::kOk;
    }
    const Component& luma = frame.components[0];
    const Component& chroma = frame.components[1];
    if (frame.components[2].h != chroma.h || frame.components[2].v != chroma.v) {
        return Status::kSubsampling;
    }
    const bool sameColumns = luma.h == chroma.h;
    const bool sameLines = luma.v == chroma.v;
    const bool halfColumns = luma.h == 2 * chroma.h;
    const bool halfLines = luma.v == 2 * chroma.v;
    if (sameColumns && sameLines) {
        return Status::kOk;
    }
    if (colour == ColourModel::kRgb || !halfColumns || (!sameLines && !halfLines)) {
        return Status::kSubsampling;
    }
    shape.chromaShiftX = 1;
    shape.chromaShiftY = halfLines ? 1 : 0;
    return Status::kOk;
}

Status DecodePicture(std::span<const std::uint8_t> data, const DecodeRequest& request) {
    MarkerReader reader(data);
    if (const Status status = reader.ReadToFirstScan(); status != Status::kOk) {
        return status;
    }
    const Frame& frame = reader.GetFrame();
    const Fit fit = FitPicture(frame.width, frame.height, request.target.width, request.target.height);
    if (fit.Empty()) {
        return Status::kOk;
    }
    SourceShape shape;
    shape.colour = reader.Colour();
    // On purpose the last row or column of a side that does not divide is not used.
    shape.width = std::max(1, frame.width >> fit.reduction);
    shape.height = std::max(1, frame.height >> fit.reduction);
    if (const Status status = FindSubsampling(frame, shape.colour, shape); status != Status::kOk) {
        return status;
    }
    const bool baseline = frame.kind == FrameKind::kBaseline;
    std::unique_ptr<SampleSource> source;
    Status opened = Status::kOutOfMemory;
    if (baseline) {
        if (auto* made = new (std::nothrow) BaselineDecoder) {
            source.reset(made);
            opened = made->Open(reader, data, fit.reduction);
        }
    } else if (auto* made = new (std::nothrow) ProgressiveDecoder) {
        source.reset(made);
        opened = made->Open(reader, data, fit.reduction);
    }
    if (opened != Status::kOk) {
        return opened;
    }
    Destination destination;
    if (const Status status = destination.Open(request.target, !baseline || shape.colour == ColourModel::kRgb);
        status != Status::kOk) {
        return status;
    }
    SampleRows rows;
    if (const Status status = rows.Open(frame, fit.reduction); status != Status::kOk) {
        return status;
    }
    std::unique_ptr<Output> output;
    if (const Status status = OpenOutput(shape, fit, destination.Written(), output); status != Status::kOk) {
        return status;
    }
    if (baseline) {
        ClearFitted(fit, destination.Written());
    }
    if (destination.Written().format == kYuv420) {
        ClearChroma(destination.Written());
    }
    ConvertRows(request, [&] { PassRows(frame, shape, fit.reduction, *source, rows, *output); });
    destination.Finish();
    return Status::kOk;
}

Status DecodeRawThumbnail(const ExifThumbnail& thumbnail, std::span<const std::uint8_t> strip,
                          const DecodeRequest& request) {
    RawThumbnail raw;
    if (const Status status = raw.Open(thumbnail, strip); status != Status::kOk) {
        return status;
    }
    Fit fit = FitPicture(raw.Width(), raw.Height(), request.target.width, request.target.height);
    if (fit.Empty()) {
        return Status::kOk;
    }
    const SourceShape shape{raw.Width(), raw.Height(), raw.Colour(), raw.ChromaShiftX(), raw.ChromaShiftY()};
    Destination destination;
    if (const Status status = destination.Open(request.target, shape.colour == ColourModel::kRgb);
        status != Status::kOk) {
        return status;
    }
    std::unique_ptr<Output> output;
    if (const Status status = OpenOutput(shape, fit, destination.Written(), output); status != Status::kOk) {
        return status;
    }
    if (destination.Written().format == kYuv420) {
        ClearChroma(destination.Written());
    }
    ConvertRows(request, [&] {
        for (int y = 0; y < shape.height; ++y) {
            output->AddRow(y, raw.Row(y));
        }
    });
    destination.Finish();
    return Status::kOk;
}

} // namespace jpeg
