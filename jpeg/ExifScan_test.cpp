#include "jpeg/ExifScan.h"

#include "tests/jpeg/JpegBuilder.h"

#include <gtest/gtest.h>

namespace jpeg {
namespace {

using jpeg_builder::Bytes;
using jpeg_builder::ExifBody;
using jpeg_builder::ExifEntry;

constexpr std::size_t kBodyAt = 100;
constexpr std::size_t kTotal = 100000;

ExifThumbnail Scan(const Bytes& body, std::size_t total = kTotal) {
    ExifThumbnail thumbnail;
    ScanExif(body, kBodyAt, total, thumbnail);
    return thumbnail;
}

const std::vector<ExifEntry> kJpegEntries = {{256, 3, 160}, {257, 3, 120}, {513, 4, 500}, {514, 4, 2000}};

// Edge case: "II" is read as well as "MM".
TEST(ExifScan, BothByteOrdersAreRead) {
    for (const char* order : {"II", "MM"}) {
        const ExifThumbnail thumbnail = Scan(ExifBody(order, kJpegEntries));
        EXPECT_TRUE(thumbnail.present) << order;
        EXPECT_EQ(thumbnail.width, 160u);
        EXPECT_EQ(thumbnail.height, 120u);
        EXPECT_EQ(thumbnail.kind, kThumbnailJpeg);
        EXPECT_EQ(thumbnail.length, 2000u);
        EXPECT_EQ(thumbnail.offset, kBodyAt + 6 + 500);
    }
    EXPECT_FALSE(Scan(ExifBody("IM", kJpegEntries)).present);
}

// A literal segment, byte by byte.
TEST(ExifScan, LiteralBytes) {
    const Bytes body = {'E', 'x', 'i', 'f', 0, 0, 'I', 'I', 42, 0, 8, 0, 0, 0, // header, first directory at 8
                        0,   0,   14,  0,   0, 0,                              // no entries, next directory at 14
                        2,   0,                                                // two entries
                        1,   2,   4,   0,   1, 0, 0,   0,   60, 0, 0, 0,       // 513: offset 60
                        2,   2,   4,   0,   1, 0, 0,   0,   99, 0, 0, 0};      // 514: 99 bytes
    const ExifThumbnail thumbnail = Scan(body);
    EXPECT_TRUE(thumbnail.present);
    EXPECT_EQ(thumbnail.offset, kBodyAt + 66);
    EXPECT_EQ(thumbnail.length, 99u);
}

TEST(ExifScan, TheIdentifierIsLoose) {
    Bytes body = ExifBody("II", kJpegEntries);
    body[3] = 'X';
    EXPECT_TRUE(Scan(body).present); // "Exi" is enough
    body = ExifBody("II", kJpegEntries);
    body[0] = body[1] = body[2] = '?';
    EXPECT_TRUE(Scan(body).present); // and so are 'f', 0, 0
    body[5] = 1;
    EXPECT_FALSE(Scan(body).present);
}

TEST(ExifScan, MagicMustBe42) {
    Bytes body = ExifBody("II", kJpegEntries);
    body[8] = 43;
    EXPECT_FALSE(Scan(body).present);
}

TEST(ExifScan, NoSecondDirectoryMeansNoThumbnail) {
    Bytes body = ExifBody("II", kJpegEntries);
    body[16] = 0;
    EXPECT_FALSE(Scan(body).present);
}

TEST(ExifScan, DirectoriesOutsideTheSegmentMeanNoThumbnail) {
    const Bytes whole = ExifBody("MM", kJpegEntries);
    // All but the last directory's link, which nothing reads.
    for (std::size_t size = 0; size < whole.size() - 4; ++size) {
        EXPECT_FALSE(Scan(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size))).present) << size;
    }
    EXPECT_TRUE(Scan(Bytes(whole.begin(), whole.end() - 4)).present);
    Bytes far = whole;
    far[10] = 0xFF; // first directory at 0xFF000008
    EXPECT_FALSE(Scan(far).present);
}

TEST(ExifScan, StripByteCountsTakesBackTheCompression) {
    const ExifThumbnail thumbnail =
        Scan(ExifBody("II", {{256, 4, 4}, {257, 4, 3}, {259, 3, 1}, {262, 3, 2}, {273, 4, 200}, {279, 4, 36}}));
    EXPECT_EQ(thumbnail.kind, kThumbnailUnusable);
    EXPECT_TRUE(thumbnail.present);
    EXPECT_EQ(thumbnail.photometric, 2u);
}

TEST(ExifScan, CompressionAfterStripByteCountsStands) {
    EXPECT_EQ(Scan(ExifBody("II", {{273, 4, 200}, {279, 4, 36}, {259, 3, 1}})).kind, kThumbnailRaw);
}

TEST(ExifScan, ValuesByType) {
    // One byte of type 1, two of type 3, both at the front of the value field.
    EXPECT_EQ(Scan(ExifBody("MM", {{256, 1, 7}})).width, 7u);
    EXPECT_EQ(Scan(ExifBody("MM", {{256, 3, 700}})).width, 700u);
    EXPECT_EQ(Scan(ExifBody("MM", {{256, 11, 70000}})).width, 70000u);
}

TEST(ExifScan, AnEightByteValueKeepsTheOneBefore) {
    const ExifThumbnail thumbnail = Scan(ExifBody("II", {{256, 4, 11}, {257, 5, 22}}));
    EXPECT_EQ(thumbnail.width, 11u);
    EXPECT_EQ(thumbnail.height, 11u);
}

TEST(ExifScan, AnUnknownTypeKeepsTheSizeBefore) {
    EXPECT_EQ(Scan(ExifBody("II", {{256, 3, 11}, {257, 99, 0x00050016}})).height, 0x16u);
    EXPECT_EQ(Scan(ExifBody("II", {{257, 99, 22}})).height, 0u); // nothing before: nothing is read
}

TEST(ExifScan, PresentNeedsMoreThanTenBytesInsideTheData) {
    EXPECT_FALSE(Scan(ExifBody("II", {{513, 4, 500}, {514, 4, 10}})).present);
    EXPECT_TRUE(Scan(ExifBody("II", {{513, 4, 500}, {514, 4, 11}})).present);
    EXPECT_TRUE(Scan(ExifBody("II", {{513, 4, 500}, {514, 4, 11}}), kBodyAt + 6 + 501).present);
    EXPECT_FALSE(Scan(ExifBody("II", {{513, 4, 500}, {514, 4, 11}}), kBodyAt + 6 + 500).present);
    EXPECT_FALSE(Scan(ExifBody("II", {{513, 4, 0xFFFFFFFF}, {514, 4, 11}})).present);
}

TEST(ExifScan, OtherTagsAreKept) {
    const ExifThumbnail thumbnail = Scan(ExifBody("II", {{284, 3, 2}, {4173, 4, 77}}));
    EXPECT_EQ(thumbnail.planar, 2u);
    EXPECT_EQ(thumbnail.tag4173, 77u);
}

} // namespace
} // namespace jpeg
