// The header scan on any bytes, in both modes, and what the thumbnail choice makes of it.
//
//   build/fuzz/bin/fuzz_jpeg_probe fuzz/corpus/jpeg
#include "jpeg/HeaderScan.h"
#include "jpeg/JpegDecoder.h"
#include "jpeg/MarkerReader.h"
#include "jpeg/ThumbnailChoice.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span<const std::uint8_t> bytes(data, size);
    const auto plain = jpeg::ScanHeaders(bytes, jpeg::kPlainScan);
    auto exif = jpeg::ScanHeaders(bytes, jpeg::kExifScan);
    JpegImageInfo info{};
    const bool found = MES_ParseJPEG(data, static_cast<int>(size), &info) == 1;
    if (plain.status != exif.status || found != (exif.status == jpeg::Status::kOk)) {
        std::abort();
    }
    if (!found) {
        return 0;
    }
    if (info.imageWidth < 0 || info.imageWidth > jpeg::kMaxSide || info.imageHeight < 0 ||
        info.imageHeight > jpeg::kMaxSide) {
        std::abort();
    }
    const auto choice = jpeg::ChooseImage(bytes, 320, 240, exif.thumbnail);
    const bool takesThumbnail =
        choice == jpeg::ImageChoice::kJpegThumbnail || choice == jpeg::ImageChoice::kRawThumbnail;
    if (takesThumbnail && exif.thumbnail.offset + exif.thumbnail.length >= size) {
        std::abort();
    }
    // Every scan of the file, as the decoder meets them.
    jpeg::MarkerReader reader(bytes);
    bool more = reader.ReadToFirstScan() == jpeg::Status::kOk;
    while (more) {
        const std::size_t position = reader.Position();
        reader.ReadToNextScan(position, more);
        if (more && reader.Position() <= position) {
            std::abort();
        }
    }
    return 0;
}
