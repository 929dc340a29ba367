// Bounds on memory and time, whatever the input, and every allocation failing in turn.
#include "jpeg/JpegDecoder.h"

#include "tests/jpeg/AllocationMeter.h"
#include "tests/jpeg/Decoded.h"
#include "tests/jpeg/JpegBuilder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <ctime>
#include <string>
#include <tuple>
#include <vector>

namespace {

using namespace jpeg_builder;

constexpr std::size_t kMiB = std::size_t{1} << 20;

// Processor seconds of one decode into 320x240.
double SecondsFor(const Bytes& file, int wanted = 1) {
    std::vector<std::uint8_t> pixels(320 * 240 * 2);
    JpegImageInfo info{};
    allocation_meter::Reset();
    const std::clock_t begin = std::clock();
    EXPECT_EQ(ImgDecodeJPEG(file.data(), static_cast<int>(file.size()), pixels.data(), 320, 240, &info), wanted);
    return static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
}

// Sanitizers and emulators are slower by more than this; a runaway is slower by far more.
#if defined(__SANITIZE_ADDRESS__) || defined(__arm__)
constexpr double kSlow = 30.0;
#else
constexpr double kSlow = 1.0;
#endif

TEST(JpegBounds, AHugeBaselineHeaderWithLittleDataComesBackAtOnce) {
    for (const auto& [h, v] : {std::pair{1, 1}, {2, 2}}) {
        for (const int interval : {0, 1}) {
            const auto file = Builder()
                                  .Soi()
                                  .App0()
                                  .Quant()
                                  .Huffman()
                                  .Restart(interval)
                                  .Frame(0xC0, 20000, 20000, Ycc(h, v))
                                  .Scan({1, 2, 3})
                                  .Raw(Bytes(100, 0x35))
                                  .Done();
            EXPECT_LT(SecondsFor(file), 0.3 * kSlow); // measured 0.05, on a busy machine more
            EXPECT_LT(allocation_meter::PeakBytes(), 1 * kMiB);
        }
    }
}

TEST(JpegBounds, AHugeProgressiveHeaderWithLittleDataComesBackAtOnce) {
    const auto file = Builder()
                          .Soi()
                          .App0()
                          .Quant()
                          .Huffman()
                          .Frame(0xC2, 20000, 20000, Ycc(1, 1))
                          .Scan({1, 2, 3}, 0, 0)
                          .Raw(Bytes(100, 0x35))
                          .Done();
    EXPECT_LT(SecondsFor(file), 0.4 * kSlow);
    EXPECT_LT(allocation_meter::PeakBytes(), 37 * kMiB); // 2500 x 2500 x 3 coefficients
}

TEST(JpegBounds, TheLargestProgressivePictureFitsItsBound) {
    // The tallest of 20000 pixels' width that is not reduced into 320x240.
    const auto file = Builder()
                          .Soi()
                          .App0()
                          .Quant()
                          .Huffman()
                          .Frame(0xC2, 20000, 479, Ycc(1, 1))
                          .Scan({1, 2, 3}, 0, 0)
                          .Raw(Bytes(100, 0x35))
                          .Done();
    EXPECT_LT(SecondsFor(file), 0.6 * kSlow);
    EXPECT_GT(allocation_meter::PeakBytes(), 58 * kMiB);
    EXPECT_LT(allocation_meter::PeakBytes(), 61 * kMiB);
}

TEST(JpegBounds, MoreCoefficientsThanTheBoundAreRefused) {
    const auto file = Builder()
                          .Soi()
                          .App0()
                          .Quant()
                          .Huffman()
                          .Frame(0xC2, 8000, 8000, Ycc(1, 1))
                          .Scan({1, 2, 3}, 0, 0)
                          .Raw(Bytes(100, 0x35))
                          .Done();
    std::vector<std::uint8_t> pixels(std::size_t{8000} * 8000 * 2);
    JpegImageInfo info{};
    allocation_meter::Reset();
    EXPECT_EQ(ImgDecodeJPEG(file.data(), static_cast<int>(file.size()), pixels.data(), 8000, 8000, &info), 0);
    EXPECT_LT(allocation_meter::PeakBytes(), 1 * kMiB);
}

// A megabyte of scan headers, each with a run that refines nothing in every block.
TEST(JpegBounds, AMegabyteOfRefinementScansComesToAnEnd) {
    const Bytes acTable = {0x10, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xE0, 0x01};
    Builder builder =
        Builder().Soi().App0().Quant().Huffman().Segment(0xC4, acTable).Frame(0xC2, 20000, 479, Ycc(1, 1));
    BitWriter runs; // 0 and 14 ones: 32767 blocks
    for (int i = 0; i < 5; ++i) {
        runs.Put(0x3FFF, 15);
    }
    const Bytes coded = runs.Finish();
    Bytes file = builder.Done();
    const Bytes scan = Builder().Scan({1}, 1, 63, 0x10).Raw(coded).Done();
    while (file.size() + scan.size() < 1000000) {
        file.insert(file.end(), scan.begin(), scan.end());
    }
    EXPECT_LT(SecondsFor(file), 2.0 * kSlow);
    EXPECT_LT(allocation_meter::PeakBytes(), 64 * kMiB);
}

TEST(JpegBounds, AMegabyteOfScanHeadersComesToAnEnd) {
    for (const int frame : {0xC0, 0xC2}) {
        Bytes file = Builder().Soi().App0().Quant().Huffman().Frame(frame, 20000, 20000, Ycc(2, 2)).Done();
        const Bytes table = {0x00, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x01};
        const Bytes scan = Builder().Segment(0xC4, table).Scan({1}, 0, 0, 0).Raw({0x55}).Done();
        while (file.size() + scan.size() < 1000000) {
            file.insert(file.end(), scan.begin(), scan.end());
        }
        EXPECT_LT(SecondsFor(file), 2.0 * kSlow);
        EXPECT_LT(allocation_meter::PeakBytes(), 64 * kMiB);
    }
}

TEST(JpegBounds, EveryFailedAllocationIsARefusal) {
    const Bytes files[] = {FlatGrey(640, 480, 90, 2, 2), FlatGrey(400, 300, 90, 2, 1), FlatGrey(2000, 300, 90),
                           FlatProgressive(400, 300, 90), FlatRgb(40, 40, {1, 2, 3})};
    for (const Bytes& file : files) {
        for (int format = 0; format < 3; ++format) {
            std::vector<std::uint8_t> pixels(320 * 240 * 3);
            JpegImageInfo info{};
            info.outputFormat = format;
            std::size_t failures = 0;
            for (int result = 0; result == 0;) {
                allocation_meter::FailAt(failures + 1);
                result = ImgDecodeJPEG(file.data(), static_cast<int>(file.size()), pixels.data(), 320, 240, &info);
                failures += result == 0 ? 1 : 0;
                ASSERT_LT(failures, 100u);
            }
            allocation_meter::FailAt(0);
            EXPECT_GT(failures, 3u);
            EXPECT_STREQ(GetLastJpegError(), "__ImgDecodeJPEG: Decoding Error !\n");
        }
    }
}

} // namespace
