#include "jpeg/HeaderScan.h"

#include "jpeg/Markers.h"

namespace jpeg {

namespace {

// Any amount of leading data is allowed.
bool SkipToStartOfImage(MarkerCursor& cursor) {
    std::uint8_t marker = 0;
    while (cursor.NextMarker(marker)) {
        if (marker == kSoi) {
            return true;
        }
    }
    return false;
}

// T.81 B.2.2, only as far as the picture's size.
Status ReadFrameSize(MarkerCursor& cursor, HeaderScanResult& result) {
    if (!cursor.Holds(17)) {
        return Status::kFrameHeaderCut;
    }
    if (cursor.Word(0) < 2) {
        return Status::kSegmentLength;
    }
    if (cursor.Byte(2) != 8) {
        return Status::kPrecisionNotEight;
    }
    const int height = static_cast<int>(cursor.Word(3));
    const int width = static_cast<int>(cursor.Word(5));
    if (height < 1 || height > kMaxSide || width < 1 || width > kMaxSide) {
        return Status::kSizeOutOfRange;
    }
    result.height = height;
    result.width = width;
    cursor.Skip(cursor.Word(0));
    return Status::kOk;
}

bool IsSkippedByLength(std::uint8_t marker) {
    return marker == kDht || marker == kDqt || marker == kDri || marker == kCom || marker == kDnl ||
           IsApplication(marker);
}

Status ScanFromStartOfImage(MarkerCursor& cursor, bool wantsExif, std::size_t totalLength, HeaderScanResult& result) {
    std::uint8_t marker = 0;
    while (cursor.NextMarker(marker)) {
        if (marker == kSos) {
            return Status::kOk;
        }
        if (marker == kSof0 || marker == kSof2) {
            if (const Status status = ReadFrameSize(cursor, result); status != Status::kOk) {
                return status;
            }
        } else if (IsSkippedByLength(marker)) {
            if (!cursor.SegmentFits()) {
                return Status::kSegmentLength;
            }
            if (marker == kApp1 && wantsExif) {
                ScanExif(cursor.SegmentBody(), cursor.Position() + 2, totalLength, result.thumbnail);
            }
            cursor.Skip(cursor.Word(0));
        }
        // On purpose: the segment of any other marker is not skipped but searched byte by byte.
    }
    return Status::kEndsBeforeScan;
}

} // namespace

HeaderScanResult ScanHeaders(std::span<const std::uint8_t> data, int mode) {
    HeaderScanResult result;
    if (mode != kPlainScan && mode != kExifScan) {
        result.status = Status::kBadScanMode;
        return result;
    }
    if (data.empty()) {
        result.status = Status::kEmptyInput;
        return result;
    }
    MarkerCursor cursor(data);
    result.status = SkipToStartOfImage(cursor) ? ScanFromStartOfImage(cursor, mode == kExifScan, data.size(), result)
                                               : Status::kNoStartOfImage;
    return result;
}

} // namespace jpeg
