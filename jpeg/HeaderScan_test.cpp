#include "jpeg/HeaderScan.h"

#include "jpeg/JpegDecoder.h"
#include "tests/jpeg/AllocationMeter.h"
#include "tests/jpeg/JpegBuilder.h"

#include <gtest/gtest.h>

#include <cstring>

namespace jpeg {
namespace {

using jpeg_builder::Builder;
using jpeg_builder::Bytes;
using jpeg_builder::Grey;

Bytes Headers(int width, int height, int marker = 0xC0, int precision = 8) {
    return Builder().Soi().Frame(marker, width, height, Grey(), precision).Scan({1}).Raw({0, 0, 0, 0}).Done();
}

TEST(HeaderScan, ModeIsPlainOrExif) {
    const Bytes file = Headers(10, 20);
    EXPECT_EQ(ScanHeaders(file, 2).status, Status::kOk);
    EXPECT_EQ(ScanHeaders(file, 8).status, Status::kOk);
    EXPECT_EQ(ScanHeaders(file, 0).status, Status::kBadScanMode);
    EXPECT_EQ(ScanHeaders(file, 4).status, Status::kBadScanMode);
}

TEST(HeaderScan, EmptyInputFails) {
    EXPECT_EQ(ScanHeaders({}, kExifScan).status, Status::kEmptyInput);
    JpegImageInfo info{};
    const unsigned char byte = 0xFF;
    EXPECT_EQ(MES_ParseJPEG(&byte, 0, &info), 0);
    EXPECT_EQ(MES_ParseJPEG(nullptr, 100, &info), 0);
    EXPECT_STREQ(GetLastJpegError(), "__ImgDecodeJPEG: Header Parsing Error !\n");
}

// Edge case: junk before FF D8 passes the probe at any offset.
TEST(HeaderScan, JunkBeforeStartOfImagePassesAtAnyOffset) {
    for (const std::size_t junk : {1u, 7u, 2047u, 2048u, 5000u}) {
        Bytes file(junk, 0x11);
        const Bytes picture = Headers(10, 20);
        file.insert(file.end(), picture.begin(), picture.end());
        const auto result = ScanHeaders(file, kExifScan);
        EXPECT_EQ(result.status, Status::kOk) << junk;
        EXPECT_EQ(result.width, 10);
        EXPECT_EQ(result.height, 20);
    }
}

TEST(HeaderScan, WithoutStartOfImageFails) {
    EXPECT_EQ(ScanHeaders(Bytes(5000, 0x11), kExifScan).status, Status::kNoStartOfImage);
}

// Edge case: 20001 pixels fail the probe, 20000 pass.
TEST(HeaderScan, TwentyThousandAndOnePixelsFailTwentyThousandPass) {
    EXPECT_EQ(ScanHeaders(Headers(20000, 20000), kExifScan).status, Status::kOk);
    EXPECT_EQ(ScanHeaders(Headers(20001, 1), kExifScan).status, Status::kSizeOutOfRange);
    EXPECT_EQ(ScanHeaders(Headers(1, 20001), kExifScan).status, Status::kSizeOutOfRange);
    EXPECT_EQ(ScanHeaders(Headers(0, 1), kExifScan).status, Status::kSizeOutOfRange);
    EXPECT_EQ(ScanHeaders(Headers(1, 0), kExifScan).status, Status::kSizeOutOfRange);
}

// Edge case: a frame header of 12-bit precision fails the probe.
TEST(HeaderScan, TwelveBitPrecisionFails) {
    EXPECT_EQ(ScanHeaders(Headers(8, 8, 0xC0, 12), kExifScan).status, Status::kPrecisionNotEight);
    EXPECT_EQ(ScanHeaders(Headers(8, 8, 0xC2, 12), kExifScan).status, Status::kPrecisionNotEight);
}

TEST(HeaderScan, OtherFrameTypesLeaveTheSizeAtZero) {
    const auto result = ScanHeaders(Headers(8, 8, 0xC1), kExifScan);
    EXPECT_EQ(result.status, Status::kOk);
    EXPECT_EQ(result.width, 0);
    EXPECT_EQ(result.height, 0);
}

TEST(HeaderScan, SeventeenBytesMustFollowTheFrameMarker) {
    Bytes file = Builder().Soi().Frame(0xC0, 8, 8, Grey()).Done(); // 11 bytes behind the marker
    file.resize(file.size() + 5);
    EXPECT_EQ(ScanHeaders(file, kExifScan).status, Status::kFrameHeaderCut);
    file.push_back(0);
    EXPECT_EQ(ScanHeaders(file, kExifScan).status, Status::kEndsBeforeScan);
}

TEST(HeaderScan, SegmentsMustLieWithinTheData) {
    EXPECT_EQ(ScanHeaders(Builder().Soi().Raw({0xFF, 0xE0, 0, 1}).Raw(Headers(8, 8)).Done(), kExifScan).status,
              Status::kSegmentLength);
    for (const int marker : {0xC4, 0xDB, 0xDD, 0xFE, 0xDC, 0xE0, 0xE1, 0xEF}) {
        const Bytes file = Builder().Soi().Raw({0xFF, marker, 0xFF, 0xFF}).Raw(Headers(8, 8)).Done();
        EXPECT_EQ(ScanHeaders(file, kExifScan).status, Status::kSegmentLength) << marker;
    }
}

TEST(HeaderScan, SegmentsAreSkippedByLength) {
    // A frame header inside a comment is not seen.
    const Bytes inner = Builder().Frame(0xC0, 99, 99, Grey()).Done();
    const Bytes file = Builder().Soi().Segment(0xFE, inner).Raw(Headers(8, 9)).Done();
    EXPECT_EQ(ScanHeaders(file, kExifScan).width, 8);
}

TEST(HeaderScan, UnknownMarkersAreSearchedByteByByte) {
    // On purpose: the frame header inside the segment of an unknown marker counts.
    const Bytes inner = Builder().Frame(0xC0, 99, 77, Grey()).Done();
    const Bytes file = Builder().Soi().Segment(0xF5, inner).Scan({1}).Raw({0, 0, 0, 0, 0, 0, 0, 0}).Done();
    const auto result = ScanHeaders(file, kExifScan);
    EXPECT_EQ(result.status, Status::kOk);
    EXPECT_EQ(result.width, 99);
    EXPECT_EQ(result.height, 77);
}

TEST(HeaderScan, FillAndStrayBytesAreSteppedOver) {
    const Bytes file = Builder()
                           .Soi()
                           .Raw({1, 2, 3, 0xFF, 0xFF, 0xFF})
                           .Raw(Builder().Frame(0xC2, 5, 6, Grey()).Done())
                           .Scan({1})
                           .Raw({0, 0, 0, 0, 0, 0, 0, 0, 0, 0})
                           .Done();
    EXPECT_EQ(ScanHeaders(file, kExifScan).width, 5);
}

TEST(HeaderScan, EndOfDataBeforeTheScanFails) {
    Bytes file = Headers(8, 8);
    for (std::size_t size = 0; size < file.size() - 4 - 8; ++size) {
        EXPECT_NE(ScanHeaders(std::span(file).first(size), kExifScan).status, Status::kOk) << size;
    }
}

TEST(HeaderScan, TheProbeAllocatesNothing) {
    const Bytes file = jpeg_builder::JpegWithThumbnail("II", Headers(400, 300));
    JpegImageInfo info{};
    allocation_meter::Reset();
    const int found = MES_ParseJPEG(file.data(), static_cast<int>(file.size()), &info);
    EXPECT_EQ(allocation_meter::Count(), 0u);
    EXPECT_EQ(found, 1);
    EXPECT_EQ(info.imageWidth, 800);
    EXPECT_EQ(info.imageHeight, 600);
}

} // namespace
} // namespace jpeg
