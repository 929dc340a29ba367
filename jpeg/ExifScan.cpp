#include "jpeg/ExifScan.h"

#include <cstring>
#include <optional>

namespace jpeg {

namespace {

constexpr std::size_t kEntrySize = 12;
constexpr std::size_t kTiffHeaderSize = 8;
constexpr std::size_t kTiffHeaderAt = 6; // after "Exif", 0, 0
constexpr std::uint32_t kTiffMagic = 42;

// A TIFF structure: the header and everything after it up to the end of the segment.
class Tiff {
public:
    Tiff(std::span<const std::uint8_t> tiffBytes, bool isBigEndian) : bytes(tiffBytes), bigEndian(isBigEndian) {}

    [[nodiscard]] bool Holds(std::uint64_t at, std::uint64_t size) const {
        return at <= bytes.size() && size <= bytes.size() - at;
    }

    // `size` bytes (1, 2 or 4) at `at`, which must lie inside.
    [[nodiscard]] std::uint32_t Number(std::uint64_t at, unsigned size) const {
        std::uint32_t value = 0;
        for (unsigned i = 0; i < size; ++i) {
            const unsigned from = bigEndian ? i : size - 1 - i;
            value = value << 8 | bytes[static_cast<std::size_t>(at) + from];
        }
        return value;
    }

private:
    std::span<const std::uint8_t> bytes;
    bool bigEndian;
};

// On purpose loose: three letters are enough, and so is the tail of the identifier alone.
bool LooksLikeExif(std::span<const std::uint8_t> body) {
    if (body.size() >= 3 && std::memcmp(body.data(), "Exi", 3) == 0) {
        return true;
    }
    return body.size() >= 6 && body[3] == 'f' && body[4] == 0 && body[5] == 0;
}

std::optional<Tiff> OpenTiff(std::span<const std::uint8_t> body) {
    if (!LooksLikeExif(body) || body.size() < kTiffHeaderAt + kTiffHeaderSize) {
        return std::nullopt;
    }
    const auto bytes = body.subspan(kTiffHeaderAt);
    const bool bigEndian = bytes[0] == 'M' && bytes[1] == 'M';
    const bool littleEndian = bytes[0] == 'I' && bytes[1] == 'I';
    if (!bigEndian && !littleEndian) {
        return std::nullopt;
    }
    const Tiff tiff(bytes, bigEndian);
    if (tiff.Number(2, 2) != kTiffMagic) {
        return std::nullopt;
    }
    return tiff;
}

// Position of the thumbnail's directory, or nothing when there is none or either directory leaves the segment.
std::optional<std::uint64_t> FindThumbnailDirectory(const Tiff& tiff) {
    const std::uint64_t first = tiff.Number(4, 4);
    if (!tiff.Holds(first, 2)) {
        return std::nullopt;
    }
    const std::uint64_t link = first + 2 + kEntrySize * tiff.Number(first, 2);
    if (!tiff.Holds(link, 4)) {
        return std::nullopt;
    }
    const std::uint64_t second = tiff.Number(link, 4);
    if (second == 0 || !tiff.Holds(second, 2) || !tiff.Holds(second + 2, kEntrySize * tiff.Number(second, 2))) {
        return std::nullopt;
    }
    return second;
}

// Bytes of a value of a TIFF type; an unknown type keeps the size of the entry before it.
unsigned ValueSize(std::uint32_t type, unsigned previous) {
    switch (type) {
    case 1:
    case 2:
    case 6:
    case 7:
        return 1;
    case 3:
    case 8:
        return 2;
    case 4:
    case 9:
    case 11:
        return 4;
    case 5:
    case 10:
    case 12:
        return 8;
    default:
        return previous;
    }
}

void StoreTag(std::uint32_t tag, std::uint32_t value, std::uint64_t tiffOffset, ExifThumbnail& thumbnail) {
    switch (tag) {
    case 256:
        thumbnail.width = value;
        break;
    case 257:
        thumbnail.height = value;
        break;
    case 259:
        thumbnail.kind = value;
        break;
    case 262:
        thumbnail.photometric = value;
        break;
    case 273:
        thumbnail.offset = tiffOffset + value;
        break;
    case 279: // On purpose: StripByteCounts takes back what Compression said.
        thumbnail.length = value;
        thumbnail.kind = kThumbnailUnusable;
        break;
    case 284:
        thumbnail.planar = value;
        break;
    case 513:
        thumbnail.offset = tiffOffset + value;
        break;
    case 514:
        thumbnail.length = value;
        thumbnail.kind = kThumbnailJpeg;
        break;
    case 4173:
        thumbnail.tag4173 = value;
        break;
    default:
        break;
    }
}

} // namespace

void ScanExif(std::span<const std::uint8_t> body, std::size_t bodyOffset, std::size_t totalLength,
              ExifThumbnail& thumbnail) {
    const auto tiff = OpenTiff(body);
    if (!tiff) {
        return;
    }
    const auto directory = FindThumbnailDirectory(*tiff);
    if (!directory) {
        return;
    }
    const std::uint64_t tiffOffset = bodyOffset + kTiffHeaderAt;
    const std::uint32_t entries = tiff->Number(*directory, 2);
    unsigned size = 0;
    std::uint32_t value = 0;
    for (std::uint32_t i = 0; i < entries; ++i) {
        const std::uint64_t entry = *directory + 2 + kEntrySize * i;
        size = ValueSize(tiff->Number(entry + 2, 2), size);
        if (size >= 1 && size <= 4) { // an 8-byte value is not read; the value of the entry before it stands
            value = tiff->Number(entry + 8, size);
        }
        StoreTag(tiff->Number(entry, 2), value, tiffOffset, thumbnail);
    }
    thumbnail.present = thumbnail.length > 10 && thumbnail.offset >= 1 && thumbnail.offset < totalLength;
}

} // namespace jpeg
