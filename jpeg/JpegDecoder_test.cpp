// Whole decodes through the door: placement, formats, thumbnails, reports.
#include "jpeg/JpegDecoder.h"

#include "tests/jpeg/Decoded.h"
#include "tests/jpeg/JpegBuilder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

namespace {

using namespace jpeg_builder;

const std::string kHeaderText = "__ImgDecodeJPEG: Header Parsing Error !\n";
const std::string kThumbnailText = "__ImgDecodeJPEG: Decoding Header Parsing Error !\n";
const std::string kDecodingText = "__ImgDecodeJPEG: Decoding Error !\n";

// Edge case: the border around a small picture keeps what it held.
TEST(JpegDecoder, ASmallPictureIsCentredAndTheBorderKept) {
    const Decoded decoded(FlatGrey(160, 120, 200));
    ASSERT_EQ(decoded.result, 1);
    for (int y = 0; y < 240; ++y) {
        for (int x = 0; x < 320; ++x) {
            const bool inside = x >= 80 && x < 240 && y >= 60 && y < 180;
            ASSERT_EQ(decoded.Word(x, y), inside ? GreyWord(200) : kUntouched * 0x0101u) << x << "," << y;
        }
    }
}

TEST(JpegDecoder, EveryPixelOfTheFittedRectangleIsWritten) {
    // Sizes that no step of 16 bits divides, narrow ones that are stretched, and far more than 2x2 to a pixel.
    const int sizes[][2] = {{321, 240},  {320, 241},  {1287, 967}, {3, 400},   {8, 1500}, {500, 2},
                            {2000, 250}, {250, 2000}, {1000, 240}, {331, 253}, {641, 481}};
    for (const auto& [width, height] : sizes) {
        for (int format = 0; format < 3; ++format) {
            const Decoded decoded(FlatGrey(width, height, 200, 2, 2), 320, 240, format);
            ASSERT_EQ(decoded.result, 1);
            const int fittedWidth = width >= 320 ? 320 : width * 240 / height;
            const int fittedHeight = height >= 240 ? 240 : height * 320 / width;
            const int left = (320 - fittedWidth) >> 1;
            const int top = (240 - fittedHeight) >> 1;
            for (int y = 0; y < fittedHeight; ++y) {
                for (int x = 0; x < fittedWidth; ++x) {
                    const std::size_t pixel = static_cast<std::size_t>((y + top) * 320 + x + left);
                    if (format == 0) {
                        ASSERT_EQ(decoded.Word(x + left, y + top), GreyWord(200)) << width << "x" << height;
                    } else {
                        ASSERT_EQ(decoded.Byte(format == 1 ? 3 * pixel : pixel), 200) << width << "x" << height;
                    }
                }
            }
        }
    }
}

TEST(JpegDecoder, Rgb24IsRedGreenBlueInMemory) {
    const Decoded decoded(FlatJpeg(320, 240, Ycc(1, 1), {100, 127, 177}), 320, 240, 1);
    ASSERT_EQ(decoded.result, 1);
    EXPECT_EQ(decoded.Byte(0), 100 + ((91881 * 50 + 32768) >> 16));
    EXPECT_EQ(decoded.Byte(1), 100 + ((-46802 * 50 + 32768) >> 16));
    EXPECT_EQ(decoded.Byte(2), 100);
}

TEST(JpegDecoder, YuvWrittenDirectly) {
    const Decoded decoded(FlatJpeg(100, 75, Ycc(2, 2), {100, 90, 170}), 320, 240, 2);
    ASSERT_EQ(decoded.result, 1);
    EXPECT_EQ(decoded.info.outputFormat, 2);
    const std::size_t luma = 82 * 320 + 110;
    EXPECT_EQ(decoded.Byte(luma), 100);
    EXPECT_EQ(decoded.Byte(luma + 99), 100);
    EXPECT_EQ(decoded.Byte(luma + 100), kUntouched);
    EXPECT_EQ(decoded.Byte(luma + 74 * 320), 100);
    EXPECT_EQ(decoded.Byte(luma + 75 * 320), kUntouched);
    const std::size_t plane = 320 * 240;
    const std::size_t chroma = 41 * 160 + 55;
    EXPECT_EQ(decoded.Byte(plane + chroma), 90);
    EXPECT_EQ(decoded.Byte(plane + chroma + 49), 90);
    EXPECT_EQ(decoded.Byte(plane + chroma + 50), 128);
    EXPECT_EQ(decoded.Byte(plane + chroma + 37 * 160), 90);
    EXPECT_EQ(decoded.Byte(plane + chroma + 38 * 160), 128);
    EXPECT_EQ(decoded.Byte(plane + 160 * 120 + chroma), 170);
    // On purpose a whole plane is set to 128, as far as the end of the destination.
    EXPECT_EQ(decoded.Byte(2 * plane - 1), 128);
}

TEST(JpegDecoder, GreyYuvKeepsNeutralChroma) {
    const Decoded decoded(FlatJpeg(320, 240, Grey(), {77}), 320, 240, 2);
    ASSERT_EQ(decoded.result, 1);
    EXPECT_EQ(decoded.Byte(0), 77);
    EXPECT_EQ(decoded.Byte(320 * 240), 128);
}

TEST(JpegDecoder, ProgressiveYuvGoesThroughZeroedScratch) {
    const Decoded decoded(FlatProgressive(160, 120, 200), 320, 240, 2);
    ASSERT_EQ(decoded.result, 1);
    EXPECT_EQ(decoded.info.outputFormat, 2);
    EXPECT_EQ(decoded.Byte(0), 0); // around the picture: black, not what was there
    EXPECT_EQ(decoded.Byte(320 * 240), 128);
    // 200 as RGB565 is 200, 200, 200.
    EXPECT_EQ(decoded.Byte(120 * 320 + 160), (19595 * 200 >> 16) + (38470 * 200 >> 16) + ((7471 * 200 + 32768) >> 16));
    // The conversion covers the planes and no more.
    EXPECT_EQ(decoded.Byte(320 * 240 * 3 / 2), kUntouched);
}

TEST(JpegDecoder, RgbPictures) {
    const Decoded decoded(FlatRgb(16, 16, {248, 4, 80}), 16, 16);
    ASSERT_EQ(decoded.result, 1);
    EXPECT_EQ(decoded.Word(5, 5), 0xF800u | 1 << 5 | 10);
    const Decoded yuv(FlatRgb(16, 16, {248, 4, 80}), 16, 16, 2);
    ASSERT_EQ(yuv.result, 1);
    EXPECT_EQ(yuv.Byte(0), (19595 * 248 >> 16) + (38470 * 4 >> 16) + ((7471 * 80 + 32768) >> 16));
}

TEST(JpegDecoder, OutputFormatsBeyondTwoAreRefused) {
    EXPECT_EQ(Decoded(FlatGrey(16, 16, 9), 16, 16, 0).result, 1);
    std::vector<std::uint8_t> pixels(16 * 16 * 4);
    JpegImageInfo info{};
    for (const int format : {3, -1}) {
        info.outputFormat = format;
        const Bytes file = FlatGrey(16, 16, 9);
        EXPECT_EQ(ImgDecodeJPEG(file.data(), static_cast<int>(file.size()), pixels.data(), 16, 16, &info), 0);
    }
}

TEST(JpegDecoder, OddTargetsInEveryFormatStayInside) {
    const Bytes files[] = {FlatGrey(40, 30, 90, 2, 2), FlatProgressive(40, 30, 90), FlatRgb(40, 30, {1, 2, 3}),
                           FlatGrey(3, 50, 90, 2, 1), FlatJpeg(50, 3, Grey(), {9})};
    for (const Bytes& file : files) {
        for (int width = 1; width < 45; width += 3) {
            for (int height = 1; height < 35; height += 3) {
                for (int format = 0; format < 3; ++format) {
                    EXPECT_EQ(Decoded(file, width, height, format).result, 1);
                }
            }
        }
    }
}

TEST(JpegDecoder, AnEmptyFitWritesNothingAndSucceeds) {
    const Decoded decoded(FlatGrey(1, 600, 90));
    EXPECT_EQ(decoded.result, 1);
    EXPECT_TRUE(decoded.Untouched(160, 120));
    EXPECT_EQ(Decoded(FlatGrey(8, 8, 90), 0, 0).result, 1);
}

TEST(JpegDecoder, SubsamplingThatIsKnown) {
    for (const auto& [h, v, known] : {std::tuple{1, 1, 1}, {2, 1, 1}, {2, 2, 1}, {1, 2, 0}, {4, 1, 0}, {4, 2, 0}}) {
        EXPECT_EQ(Decoded(FlatGrey(40, 40, 90, h, v)).result, known) << h << "x" << v;
    }
    // Only the relation to luma matters, and both chroma components must agree.
    EXPECT_EQ(Decoded(FlatJpeg(40, 40, {{1, 4, 2}, {2, 2, 1}, {3, 2, 1}}, {90, 127, 127})).result, 1);
    EXPECT_EQ(Decoded(FlatJpeg(40, 40, {{1, 2, 2}, {2, 1, 1}, {3, 2, 2}}, {90, 127, 127})).result, 0);
    EXPECT_EQ(Decoded(FlatJpeg(40, 40, {{1, 1, 1}, {2, 2, 2}, {3, 2, 2}}, {90, 127, 127})).result, 0);
}

TEST(JpegDecoder, GreyWithFactorsAboveOne) {
    const auto file = Builder()
                          .Soi()
                          .App0()
                          .Quant()
                          .Frame(0xC0, 24, 24, {{1, 2, 2, 0}})
                          .Huffman()
                          .Scan({1})
                          .Raw(FlatScan(24, 24, Grey(), {90}))
                          .Eoi()
                          .Done();
    const Decoded decoded(file, 24, 24);
    ASSERT_EQ(decoded.result, 1);
    EXPECT_EQ(decoded.Word(23, 23), GreyWord(90));
}

TEST(JpegDecoder, ALargeThumbnailIsDecodedInPlaceOfThePicture) {
    const Bytes thumbnail = FlatGrey(400, 300, 200);
    for (const char* order : {"II", "MM"}) {
        const Bytes file = JpegWithThumbnail(order, thumbnail);
        EXPECT_EQ(Decoded(file).Word(160, 120), GreyWord(200)) << order;
        EXPECT_EQ(Decoded(file, 320, 240, 2).Byte(0), 200);
        EXPECT_EQ(Decoded(file, 320, 240, 2, true).Byte(0), 40) << "noThumbnail";
        EXPECT_EQ(Decoded(file, 400, 300, 2).Byte(0), 40) << "not larger than the target";
    }
}

TEST(JpegDecoder, AThumbnailWithABadHeaderFailsTheDecode) {
    Bytes thumbnail = FlatGrey(400, 300, 200);
    thumbnail[1] = 0;
    const Bytes file = JpegWithThumbnail("II", thumbnail);
    EXPECT_EQ(Decoded(file).result, 0);
    EXPECT_EQ(GetLastJpegError(), kThumbnailText);
    EXPECT_EQ(Decoded(file, 320, 240, 0, true).result, 1);
}

Bytes WithRawThumbnail(int photometric, int planar, const Bytes& samples, int width, int height) {
    const std::vector<jpeg_builder::ExifEntry> entries = {
        {256, 4, static_cast<std::uint32_t>(width)},          {257, 4, static_cast<std::uint32_t>(height)},
        {262, 3, static_cast<std::uint32_t>(photometric)},    {273, 4, ExifTailOffset(7)},
        {279, 4, static_cast<std::uint32_t>(samples.size())}, {259, 3, 1}, // behind StripByteCounts, so that it stands
        {284, 3, static_cast<std::uint32_t>(planar)}};
    return Builder()
        .Soi()
        .Segment(0xE1, ExifBody("II", entries, samples))
        .Quant()
        .Frame(0xC0, 64, 64, Grey())
        .Huffman()
        .Scan({1})
        .Raw(FlatScan(64, 64, Grey(), {40}))
        .Eoi()
        .Done();
}

TEST(JpegDecoder, RawThumbnails) {
    constexpr int kWidth = 20;
    constexpr int kHeight = 10;
    Bytes pixels;
    Bytes planes;
    for (int i = 0; i < kWidth * kHeight; ++i) {
        pixels.insert(pixels.end(), {200, 100, 50});
    }
    for (const int level : {200, 100, 50}) {
        planes.insert(planes.end(), kWidth * kHeight, static_cast<std::uint8_t>(level));
    }
    const unsigned rgb = 200u >> 3 << 11 | 100 >> 2 << 5 | 50 >> 3;
    for (const int format : {0, 2}) {
        const Decoded chunky(WithRawThumbnail(2, 1, pixels, kWidth, kHeight), 16, 8, format);
        const Decoded planar(WithRawThumbnail(2, 2, planes, kWidth, kHeight), 16, 8, format);
        ASSERT_EQ(chunky.result, 1);
        EXPECT_EQ(chunky.buffer, planar.buffer);
        if (format == 0) {
            EXPECT_EQ(chunky.Word(7, 4), rgb);
        }
    }
    // YCbCr with a chroma pair for each pixel, for two and for four.
    const Bytes ycc422 = [] {
        Bytes bytes;
        for (int i = 0; i < kWidth / 2 * kHeight; ++i) {
            bytes.insert(bytes.end(), {200, 200, 127, 127});
        }
        return bytes;
    }();
    const Bytes ycc420 = [] {
        Bytes bytes;
        for (int i = 0; i < kWidth / 2 * kHeight / 2; ++i) {
            bytes.insert(bytes.end(), {200, 200, 200, 200, 127, 127});
        }
        return bytes;
    }();
    Bytes ycc444;
    for (int i = 0; i < kWidth * kHeight; ++i) {
        ycc444.insert(ycc444.end(), {200, 127, 127});
    }
    const std::vector<const Bytes*> all = {&ycc444, &ycc422, &ycc420};
    for (const Bytes* samples : all) {
        const Decoded decoded(WithRawThumbnail(6, 1, *samples, kWidth, kHeight), 16, 8);
        ASSERT_EQ(decoded.result, 1);
        EXPECT_EQ(decoded.Word(7, 4), GreyWord(200));
        EXPECT_EQ(Decoded(WithRawThumbnail(6, 1, *samples, kWidth, kHeight), 16, 8, 2).Byte(8 * 16 + 3), 127);
    }
    EXPECT_EQ(Decoded(WithRawThumbnail(2, 1, ycc422, kWidth, kHeight), 16, 8).result, 0) << "too few bytes";
    EXPECT_EQ(Decoded(WithRawThumbnail(1, 1, pixels, kWidth, kHeight), 16, 8).result, 0) << "another interpretation";
    EXPECT_EQ(GetLastJpegError(), kDecodingText);
}

TEST(JpegDecoder, StripByteCountsLastLeavesARawThumbnailUnused) {
    Bytes pixels(20 * 10 * 3, 200);
    Bytes file = WithRawThumbnail(2, 1, pixels, 20, 10);
    // Swap the tags 279 and 259, so that the compression comes first.
    for (std::size_t i = 0; i + 24 < file.size(); ++i) {
        if (file[i] == 0x17 && file[i + 1] == 1 && file[i + 12] == 0x03 && file[i + 13] == 1) {
            std::swap_ranges(file.begin() + static_cast<std::ptrdiff_t>(i),
                             file.begin() + static_cast<std::ptrdiff_t>(i) + 12,
                             file.begin() + static_cast<std::ptrdiff_t>(i) + 12);
            break;
        }
    }
    EXPECT_EQ(Decoded(file, 16, 8).Word(8, 4), GreyWord(40));
}

struct Reports {
    std::vector<int> percents;
    static void Add(void* context, int percent) { static_cast<Reports*>(context)->percents.push_back(percent); }
};

TEST(JpegDecoder, ProgressIsReportedAroundColourConversion) {
    for (const Bytes& file : {FlatGrey(40, 40, 90), FlatProgressive(40, 40, 90)}) {
        Reports reports;
        std::vector<std::uint8_t> pixels(320 * 240 * 2);
        JpegImageInfo info{};
        info.progressContext = &reports;
        info.progressCallback = &Reports::Add;
        ASSERT_EQ(ImgDecodeJPEG(file.data(), static_cast<int>(file.size()), pixels.data(), 320, 240, &info), 1);
        EXPECT_EQ(reports.percents, (std::vector<int>{80, 100}));
    }
}

TEST(JpegDecoder, FailuresLeaveTheirText) {
    JpegImageInfo info{};
    std::vector<std::uint8_t> pixels(8 * 8 * 2);
    const Bytes none(10, 0);
    EXPECT_EQ(ImgDecodeJPEG(none.data(), 10, pixels.data(), 8, 8, &info), 0);
    EXPECT_EQ(GetLastJpegError(), kHeaderText);
    EXPECT_EQ(Decoded(FlatGrey(40, 40, 90, 1, 2)).result, 0);
    EXPECT_EQ(GetLastJpegError(), kDecodingText);
    EXPECT_EQ(Decoded(FlatGrey(40, 40, 90)).result, 1);
    EXPECT_EQ(GetLastJpegError(), kDecodingText) << "a success changes nothing";
    const Bytes good = FlatGrey(8, 8, 90);
    EXPECT_EQ(ImgDecodeJPEG(good.data(), static_cast<int>(good.size()), nullptr, 8, 8, &info), 0);
    EXPECT_EQ(ImgDecodeJPEG(good.data(), static_cast<int>(good.size()), pixels.data(), 8, 8, nullptr), 0);
}

TEST(JpegDecoder, TheProbeFindsSizesAndThumbnail) {
    JpegImageInfo info{};
    const Bytes file = JpegWithThumbnail("MM", FlatGrey(160, 120, 9), {{256, 4, 33}, {257, 4, 44}});
    ASSERT_EQ(MES_ParseJPEG(file.data(), static_cast<int>(file.size()), &info), 1);
    EXPECT_EQ(info.imageWidth, 800);
    EXPECT_EQ(info.imageHeight, 600);
    EXPECT_EQ(info.thumbWidth, 33); // the tags as they stand
    EXPECT_EQ(info.thumbHeight, 44);
}

} // namespace
