#include "jpeg/ThumbnailChoice.h"

#include "jpeg/HeaderScan.h"
#include "tests/jpeg/JpegBuilder.h"

#include <gtest/gtest.h>

namespace jpeg {
namespace {

using jpeg_builder::Bytes;
using jpeg_builder::FlatJpeg;
using jpeg_builder::JpegWithThumbnail;
using jpeg_builder::Ycc;

ImageChoice ChoiceFor(const Bytes& file, int width = 320, int height = 240) {
    HeaderScanResult headers = ScanHeaders(file, kExifScan);
    EXPECT_EQ(headers.status, Status::kOk);
    return ChooseImage(file, width, height, headers.thumbnail);
}

Bytes Thumbnail(int width, int height) {
    return FlatJpeg(width, height, Ycc(1, 1), {200, 128, 128});
}

// Edge case: a thumbnail of 400x300 is decoded in place of the picture.
TEST(ThumbnailChoice, FourHundredByThreeHundredIsTaken) {
    EXPECT_EQ(ChoiceFor(JpegWithThumbnail("II", Thumbnail(400, 300))), ImageChoice::kJpegThumbnail);
    EXPECT_EQ(ChoiceFor(JpegWithThumbnail("MM", Thumbnail(400, 300))), ImageChoice::kJpegThumbnail);
}

// Edge case: a thumbnail of 320x240 is not: it must be larger in both directions.
TEST(ThumbnailChoice, TheTargetsOwnSizeIsNotLarger) {
    EXPECT_EQ(ChoiceFor(JpegWithThumbnail("II", Thumbnail(320, 240))), ImageChoice::kMainImage);
    EXPECT_EQ(ChoiceFor(JpegWithThumbnail("II", Thumbnail(321, 240))), ImageChoice::kMainImage);
    EXPECT_EQ(ChoiceFor(JpegWithThumbnail("II", Thumbnail(321, 241))), ImageChoice::kJpegThumbnail);
    EXPECT_EQ(ChoiceFor(JpegWithThumbnail("II", Thumbnail(320, 240)), 319, 239), ImageChoice::kJpegThumbnail);
}

TEST(ThumbnailChoice, TheFramesSizeReplacesTheTags) {
    EXPECT_EQ(ChoiceFor(JpegWithThumbnail("II", Thumbnail(400, 300), {{256, 4, 1}, {257, 4, 1}})),
              ImageChoice::kJpegThumbnail);
    EXPECT_EQ(ChoiceFor(JpegWithThumbnail("II", Thumbnail(160, 120), {{256, 4, 20}, {257, 4, 20}})),
              ImageChoice::kMainImage);
}

TEST(ThumbnailChoice, FewerBytesThanPixelsByItsTagsAreNotUsed) {
    EXPECT_EQ(ChoiceFor(JpegWithThumbnail("II", Thumbnail(400, 300), {{256, 4, 400}, {257, 4, 300}})),
              ImageChoice::kMainImage);
}

TEST(ThumbnailChoice, ABadHeaderFailsWithoutAWayBack) {
    Bytes thumbnail = Thumbnail(400, 300);
    thumbnail[0] = 0;
    EXPECT_EQ(ChoiceFor(JpegWithThumbnail("II", thumbnail)), ImageChoice::kFailure);
}

TEST(ThumbnailChoice, AFrameTypeThatIsNotDecodedHasNoSize) {
    Bytes thumbnail = Thumbnail(400, 300);
    for (std::size_t i = 0; i + 1 < thumbnail.size(); ++i) {
        if (thumbnail[i] == 0xFF && thumbnail[i + 1] == 0xC0) {
            thumbnail[i + 1] = 0xC1;
        }
    }
    EXPECT_EQ(ChoiceFor(JpegWithThumbnail("II", thumbnail)), ImageChoice::kMainImage);
}

TEST(ThumbnailChoice, ItMustLieWhollyInside) {
    const Bytes whole = JpegWithThumbnail("II", Thumbnail(400, 300));
    HeaderScanResult headers = ScanHeaders(whole, kExifScan);
    ExifThumbnail thumbnail = headers.thumbnail;
    thumbnail.length = static_cast<std::uint32_t>(whole.size() - thumbnail.offset);
    EXPECT_EQ(ChooseImage(whole, 320, 240, thumbnail), ImageChoice::kMainImage);
    thumbnail = headers.thumbnail;
    thumbnail.length = static_cast<std::uint32_t>(whole.size() - thumbnail.offset - 1);
    EXPECT_EQ(ChooseImage(whole, 320, 240, thumbnail), ImageChoice::kJpegThumbnail);
    thumbnail = headers.thumbnail;
    thumbnail.length = 0xFFFFFFFF;
    EXPECT_EQ(ChooseImage(whole, 320, 240, thumbnail), ImageChoice::kMainImage);
}

TEST(ThumbnailChoice, KindOneIsRawAndOtherKindsAreNotUsed) {
    const Bytes file(2000000, 0);
    ExifThumbnail thumbnail{true, 400, 300, kThumbnailRaw, 2, 360000, 0, 1, 100};
    EXPECT_EQ(ChooseImage(file, 320, 240, thumbnail), ImageChoice::kRawThumbnail);
    thumbnail.kind = 3;
    EXPECT_EQ(ChooseImage(file, 320, 240, thumbnail), ImageChoice::kMainImage);
    thumbnail.kind = kThumbnailUnusable;
    EXPECT_EQ(ChooseImage(file, 320, 240, thumbnail), ImageChoice::kMainImage);
    thumbnail.kind = kThumbnailRaw;
    thumbnail.present = false;
    EXPECT_EQ(ChooseImage(file, 320, 240, thumbnail), ImageChoice::kMainImage);
}

} // namespace
} // namespace jpeg
