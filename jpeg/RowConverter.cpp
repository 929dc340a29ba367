#include "jpeg/RowConverter.h"

#include "jpeg/RowConverterSse2.h"

#include <new>

namespace jpeg {

#if DMB_JPEG_SSE2
namespace {

sse2::RowKind KindOf(ColourModel colour, int chromaShift) {
    if (colour == ColourModel::kGrey) {
        return sse2::RowKind::kGrey;
    }
    if (colour == ColourModel::kRgb) {
        return sse2::RowKind::kRgb;
    }
    return chromaShift == 1 ? sse2::RowKind::kYccHalf : sse2::RowKind::kYcc;
}

} // namespace
#endif

Status RowConverter::Open(ColourModel model, int theChromaShift) {
    colour = model;
    chromaShift = theChromaShift;
    if (colour == ColourModel::kYcc) {
        tables.reset(new (std::nothrow) YccToRgbTables);
        if (!tables) {
            return Status::kOutOfMemory;
        }
        tables->Fill();
    }
    return Status::kOk;
}

// Calls sink(x, pixel) for all pixels.
template <typename Sink> void RowConverter::ForEachPixel(const SampleRow& row, int width, Sink sink) const {
    if (colour == ColourModel::kGrey) {
        for (int x = 0; x < width; ++x) {
            sink(x, Rgb{row[0][x], row[0][x], row[0][x]});
        }
    } else if (colour == ColourModel::kRgb) {
        for (int x = 0; x < width; ++x) {
            sink(x, Rgb{row[0][x], row[1][x], row[2][x]});
        }
    } else {
        for (int x = 0; x < width; ++x) {
            const int chroma = x >> chromaShift;
            sink(x, YccToRgb(*tables, row[0][x], row[1][chroma], row[2][chroma]));
        }
    }
}

void RowConverter::ToRgb565(const SampleRow& row, int width, std::uint8_t* pixels) const {
#if DMB_JPEG_SSE2
    sse2::ToRgb565(KindOf(colour, chromaShift), row, width, pixels);
#else
    ForEachPixel(row, width, [pixels](int x, Rgb pixel) { StoreRgb565(pixels, x, PackRgb565(pixel)); });
#endif
}

void RowConverter::ToRgb24(const SampleRow& row, int width, std::uint8_t* pixels) const {
    ForEachPixel(row, width, [pixels](int x, Rgb pixel) {
        pixels[3 * x] = pixel.r;
        pixels[3 * x + 1] = pixel.g;
        pixels[3 * x + 2] = pixel.b;
    });
}

void RowConverter::StoreContributions(const SampleRow& row, int width, std::uint32_t* words) const {
#if DMB_JPEG_SSE2
    sse2::StoreContributions(KindOf(colour, chromaShift), row, width, words);
#else
    ForEachPixel(row, width, [words](int x, Rgb pixel) { words[x] = ContributionOf(pixel); });
#endif
}

void RowConverter::AddContributions(const SampleRow& row, int width, std::uint32_t* words) const {
#if DMB_JPEG_SSE2
    sse2::AddContributions(KindOf(colour, chromaShift), row, width, words);
#else
    ForEachPixel(row, width, [words](int x, Rgb pixel) { words[x] += ContributionOf(pixel); });
#endif
}

} // namespace jpeg
