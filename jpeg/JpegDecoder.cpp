#include "jpeg/JpegDecoder.h"

#include "jpeg/HeaderScan.h"
#include "jpeg/PictureDecoder.h"
#include "jpeg/ThumbnailChoice.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <span>

using namespace jpeg;

namespace {

constexpr char kHeaderFailed[] = "__ImgDecodeJPEG: Header Parsing Error !\n";
constexpr char kThumbnailHeaderFailed[] = "__ImgDecodeJPEG: Decoding Header Parsing Error !\n";
constexpr char kDecodingFailed[] = "__ImgDecodeJPEG: Decoding Error !\n";

char lastError[64] = "";
static_assert(sizeof kThumbnailHeaderFailed <= sizeof lastError);

// Copies the text, terminator included. Returns the entry operations' 0.
template <std::size_t kSize> int Fail(const char (&text)[kSize]) {
    std::copy(std::begin(text), std::end(text), lastError);
    return 0;
}

std::span<const std::uint8_t> BytesOf(const unsigned char* data, int length) {
    if (data == nullptr || length <= 0) {
        return {};
    }
    return {data, static_cast<std::size_t>(length)};
}

int AsField(std::uint32_t value) {
    return static_cast<int>(value);
}

} // namespace

int MES_ParseJPEG(const unsigned char* data, int length, JpegImageInfo* info) {
    const HeaderScanResult result = ScanHeaders(BytesOf(data, length), kExifScan);
    if (result.status != Status::kOk || info == nullptr) {
        return Fail(kHeaderFailed);
    }
    info->imageWidth = result.width;
    info->imageHeight = result.height;
    info->thumbWidth = result.thumbnail.present ? AsField(result.thumbnail.width) : 0;
    info->thumbHeight = result.thumbnail.present ? AsField(result.thumbnail.height) : 0;
    return 1;
}

int ImgDecodeJPEG(const unsigned char* data, int length, unsigned char* destination, int targetWidth, int targetHeight,
                  JpegImageInfo* info) {
    const auto bytes = BytesOf(data, length);
    HeaderScanResult headers = ScanHeaders(bytes, kExifScan);
    if (headers.status != Status::kOk || info == nullptr) {
        return Fail(kHeaderFailed);
    }
    if (destination == nullptr) {
        return Fail(kDecodingFailed);
    }
    ExifThumbnail& thumbnail = headers.thumbnail;
    const ImageChoice choice =
        info->noThumbnail != 0 ? ImageChoice::kMainImage : ChooseImage(bytes, targetWidth, targetHeight, thumbnail);
    const DecodeRequest request{
        {destination, targetWidth, targetHeight, info->outputFormat}, info->progressContext, info->progressCallback};
    const auto thumbnailBytes = [&] {
        return bytes.subspan(static_cast<std::size_t>(thumbnail.offset), thumbnail.length);
    };
    Status status = Status::kOk;
    switch (choice) {
    case ImageChoice::kFailure:
        return Fail(kThumbnailHeaderFailed);
    case ImageChoice::kJpegThumbnail:
        status = DecodePicture(thumbnailBytes(), request);
        break;
    case ImageChoice::kRawThumbnail:
        status = DecodeRawThumbnail(thumbnail, thumbnailBytes(), request);
        break;
    case ImageChoice::kMainImage:
        status = DecodePicture(bytes, request);
        break;
    }
    return DecodeCode(status) == kDecodeSucceeded ? 1 : Fail(kDecodingFailed);
}

const char* GetLastJpegError() {
    return lastError;
}
