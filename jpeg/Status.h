// Every way a picture can be refused, in the order of the data. The door turns them into 200 and 201, then into 1 and 0.
#pragma once

namespace jpeg {

enum class Status {
    kOk,

    // Header scan (both entry operations).
    kBadScanMode,        // the mode is neither kPlainScan nor kExifScan
    kEmptyInput,         // no bytes, or no pointer to them
    kNoStartOfImage,     // no FF D8 anywhere
    kEndsBeforeScan,     // the data ends before a start of scan
    kFrameHeaderCut,     // fewer than 17 bytes after the marker of a frame header
    kPrecisionNotEight,  // sample precision other than 8 bits
    kSizeOutOfRange,     // a side of 0 or of more than 20000 pixels
    kSegmentLength,      // a segment shorter than its own length field, or longer than the data
    kThumbnailHeaderBad, // the embedded thumbnail was chosen and its header scan failed

    // Marker reader, up to the first scan and between scans.
    kStartOfImageTooLate,  // the data ends before reading could begin
    kComponentCount,       // more than three components
    kFrameHeaderLength,    // length other than 8 + 3 x components
    kSamplingFactor,       // a sampling factor outside 1..4
    kQuantTableCut,        // a quantisation segment that ends inside a table
    kQuantTable16Bit,      // 16-bit quantisation values
    kTableId,              // a table id above 3
    kHuffmanTableCut,      // a Huffman segment that ends inside a table
    kHuffmanTableTooLong,  // more than 256 symbols
    kRestartLength,        // a restart interval segment whose length is not 4
    kScanHeaderCut,        // fewer than 12 bytes after the marker of a scan header
    kScanBeforeFrame,      // a scan without an accepted frame header before it
    kScanHeaderLength,     // scan components outside 1..3, or a length that does not fit them
    kScanComponentUnknown, // a scan component that the frame does not have, or has twice
    kNoHuffmanTable,       // no Huffman table before the first scan
    kNoQuantTable,         // no quantisation table before the first scan
    kColourModel,          // not YCbCr, greyscale or RGB by the rules of ColourModelOf

    // Decoding.
    kSubsampling,                // chroma other than 1x1, 2x1 or 2x2 relative to luma
    kQuantTableMissing,          // a component's quantisation table was never sent
    kHuffmanTableMissing,        // a scan's Huffman table was never sent
    kHuffmanTableOversubscribed, // more codes of a length than that length has room for
    kOutputFormat,               // an output format other than 0, 1 and 2
    kRawThumbnail,               // an uncompressed thumbnail in a layout we cannot read
    kOutOfMemory,                // an allocation failed or would pass kMaxCoefficientBytes
};

// The two codes of the decoder proper.
inline constexpr int kDecodeSucceeded = 200;
inline constexpr int kDecodeRefused = 201;

[[nodiscard]] constexpr int DecodeCode(Status status) {
    return status == Status::kOk ? kDecodeSucceeded : kDecodeRefused;
}

} // namespace jpeg
