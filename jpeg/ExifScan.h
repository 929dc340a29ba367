// The Exif thumbnail: what an APP1 segment says about it (TIFF 6.0 section 2, Exif 2.2 section 4.6).
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace jpeg {

// How a thumbnail is stored. Compression (tag 259) may leave other values; they mean "not usable".
inline constexpr std::uint32_t kThumbnailUnusable = 0;
inline constexpr std::uint32_t kThumbnailRaw = 1;
inline constexpr std::uint32_t kThumbnailJpeg = 6;

struct ExifThumbnail {
    bool present = false;     // length above 10 and an offset inside the data
    std::uint32_t width = 0;  // tag 256, pixels
    std::uint32_t height = 0; // tag 257, pixels
    std::uint32_t kind = 0;   // tag 259, or kThumbnailJpeg once tag 514 was seen
    std::uint32_t photometric = 0;
    std::uint32_t length = 0;  // bytes
    std::uint32_t tag4173 = 0; // kept, read by nothing
    std::uint32_t planar = 0;
    std::uint64_t offset = 0; // bytes from the start of the whole data
};

// Reads the body of an APP1 segment (the bytes after its length field). `bodyOffset` is its position in the whole
// data, `totalLength` the length of that. A body that is not Exif, or whose directories do not lie wholly inside it,
// leaves the record as it was.
void ScanExif(std::span<const std::uint8_t> body, std::size_t bodyOffset, std::size_t totalLength,
              ExifThumbnail& thumbnail);

} // namespace jpeg
