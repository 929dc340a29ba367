// Bounds on memory and time, whatever the input, and every allocation failing in turn.
#include "jpeg/JpegDecoder.h"

#include "tests/jpeg/AllocationMeter.h"
#include "tests/jpeg/Decoded.h"
#include "tests/jpeg/JpegBuilder.h"

#include <gtest/gtest.h>

#include <algorithm>
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

// The bounds are those of a release build; they are of processor time, so that a busy machine does not break them.
// Instrumented and emulated code is slower by a factor of its own, which a runaway would pass by far.
#if defined(__SANITIZE_ADDRESS__) || defined(__arm__)
constexpr double kInstrumented = 30.0;
#elif !defined(NDEBUG)
constexpr double kInstrumented = 10.0;
#else
constexpr double kInstrumented = 1.0;
#endif
constexpr double kHeaderSeconds = 0.1 * kInstrumented;   // 20000x20000 and 100 bytes of data
constexpr double kMegabyteSeconds = 2.0 * kInstrumented; // any megabyte

// The least of some decodes, as neighbours on the machine only add; stops at the first below the bound.
double LeastSecondsFor(const Bytes& file, double bound) {
    double least = SecondsFor(file);
    for (int i = 0; i < 9 && least >= bound; ++i) {
        least = std::min(least, SecondsFor(file));
    }
    return least;
}

// Table DC 0 whose shortest code, 0, says that a difference of one bit follows: zero bits are a ramp, not a plain.
Builder& RampTable(Builder& builder) {
    return builder.Segment(0xC4, {0x00, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x01, 0x00});
}

// A frame of the largest size and 100 bytes of data.
Bytes HugeFile(int frame, const std::vector<ComponentSpec>& components, int interval, bool isRamp, int height = 20000) {
    Builder builder;
    builder.Soi().App0().Quant().Huffman();
    if (isRamp) {
        RampTable(builder);
    }
    builder.Restart(interval).Frame(frame, 20000, height, components);
    std::vector<int> ids;
    for (const ComponentSpec& component : components) {
        ids.push_back(component.id);
    }
    return builder.Scan(ids, 0, frame == 0xC0 ? 63 : 0).Raw(Bytes(100, 0x35)).Done();
}

TEST(JpegBounds, AHugeBaselineHeaderWithLittleDataComesBackAtOnce) {
    for (const auto& components : {Ycc(1, 1), Ycc(2, 1), Ycc(2, 2), Grey()}) {
        for (const int interval : {0, 1, 3, 65535}) {
            for (const bool isRamp : {false, true}) {
                EXPECT_LT(LeastSecondsFor(HugeFile(0xC0, components, interval, isRamp), kHeaderSeconds), kHeaderSeconds)
                    << interval;
                // One line of MCUs, whatever the picture's height.
                EXPECT_LT(allocation_meter::PeakBytes(), 1 * kMiB);
            }
        }
    }
}

TEST(JpegBounds, AHugeProgressiveHeaderWithLittleDataComesBackAtOnce) {
    for (const auto& components : {Ycc(1, 1), Ycc(2, 1), Ycc(2, 2), Grey()}) {
        for (const int interval : {0, 1, 3, 65535}) {
            EXPECT_LT(LeastSecondsFor(HugeFile(0xC2, components, interval, true), kHeaderSeconds), kHeaderSeconds)
                << interval;
            EXPECT_LT(allocation_meter::PeakBytes(), 37 * kMiB); // 2500 x 2500 x 3 coefficients
        }
    }
}

TEST(JpegBounds, TheLargestProgressivePictureFitsItsBound) {
    // The tallest of 20000 pixels' width that is not reduced into 320x240.
    EXPECT_LT(LeastSecondsFor(HugeFile(0xC2, Ycc(1, 1), 0, false, 479), kHeaderSeconds), kHeaderSeconds);
    EXPECT_GT(allocation_meter::PeakBytes(), 58 * kMiB);
    EXPECT_LT(allocation_meter::PeakBytes(), 61 * kMiB);
}

// A scan of zero bits alone: all of them spelled out, block by block; the restart markers without any data between them;
// and nothing at all.
struct ZeroScans {
    Bytes spelled;
    Bytes markers;
};
ZeroScans ScansOfZeros(int mcus, int blocksPerMcu, int interval) {
    ZeroScans scans;
    BitWriter bits;
    const auto flush = [&] {
        const Bytes part = bits.Finish();
        scans.spelled.insert(scans.spelled.end(), part.begin(), part.end());
        bits = BitWriter();
    };
    for (int mcu = 0, restart = 0; mcu < mcus; ++mcu) {
        if (interval != 0 && mcu != 0 && mcu % interval == 0) {
            flush();
            const Bytes marker{0xFF, static_cast<std::uint8_t>(0xD0 + (restart++ & 7))};
            scans.spelled.insert(scans.spelled.end(), marker.begin(), marker.end());
            scans.markers.insert(scans.markers.end(), marker.begin(), marker.end());
        }
        for (int block = 0; block < blocksPerMcu; ++block) {
            bits.Put(0, 2); // a difference of -1
            PutEndOfBlock(bits);
        }
    }
    flush();
    return scans;
}

// The end, and as many bytes as must follow a scan header of one component.
const Bytes kTail = {0xFF, 0xD9, 0, 0, 0, 0, 0, 0};

Bytes Joined(Bytes head, const Bytes& tail) {
    head.insert(head.end(), tail.begin(), tail.end());
    return head;
}

TEST(JpegBounds, LinesWithoutDataAreWhatTheirBlocksWouldBe) {
    constexpr int kSide = 2000; // an eighth of it is 250
    for (const auto& components : {Ycc(1, 1), Ycc(2, 1), Ycc(2, 2), Grey()}) {
        const auto mcusFor = [](int factor) { return (kSide + 8 * factor - 1) / (8 * factor); };
        std::vector<int> ids;
        int blocks = 0;
        for (const ComponentSpec& component : components) {
            ids.push_back(component.id);
            blocks += component.h * component.v;
        }
        for (const int interval : {0, 1, 7, 300}) {
            Builder builder;
            RampTable(builder.Soi().App0().Quant(0, 1).Huffman());
            const Bytes headers = builder.Restart(interval).Frame(0xC0, kSide, kSide, components).Scan(ids).Done();
            const auto scans = ScansOfZeros(mcusFor(components[0].h) * mcusFor(components[0].v), blocks, interval);
            for (int format = 0; format < 3; ++format) {
                const Decoded spelled(Joined(headers, Joined(scans.spelled, kTail)), 200, 200, format);
                ASSERT_EQ(spelled.result, 1);
                EXPECT_EQ(Decoded(Joined(headers, kTail), 200, 200, format).buffer, spelled.buffer)
                    << interval << " " << format;
                EXPECT_EQ(Decoded(Joined(headers, Joined(scans.markers, kTail)), 200, 200, format).buffer,
                          spelled.buffer)
                    << interval << " " << format;
            }
        }
    }
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
    EXPECT_LT(LeastSecondsFor(file, kMegabyteSeconds), kMegabyteSeconds);
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
        EXPECT_LT(LeastSecondsFor(file, kMegabyteSeconds), kMegabyteSeconds);
        EXPECT_LT(allocation_meter::PeakBytes(), 64 * kMiB);
    }
}

// Scans that hold restart markers alone: each marker would open an interval of 65535 MCUs without data.
TEST(JpegBounds, AMegabyteOfRestartMarkersComesToAnEnd) {
    const Bytes acTable = {0x10, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xE0, 0x01};
    struct Kind {
        int frame;
        int height;
        int first;
        int last;
        int approximation;
        std::size_t markers; // in a scan; 0 = a single scan with all of them
    };
    for (const Kind& kind :
         {Kind{0xC0, 20000, 0, 63, 0, 0}, Kind{0xC2, 20000, 0, 0, 0, 100}, Kind{0xC2, 20000, 0, 0, 0x10, 100},
          Kind{0xC2, 1900, 1, 63, 0, 10}, Kind{0xC2, 479, 1, 63, 0, 3}, Kind{0xC2, 479, 1, 63, 0x10, 3}}) {
        Bytes file = Builder()
                         .Soi()
                         .App0()
                         .Quant()
                         .Huffman()
                         .Segment(0xC4, acTable)
                         .Restart(65535)
                         .Frame(kind.frame, 20000, kind.height, Grey())
                         .Done();
        while (file.size() < 1000000) {
            const Bytes scan = Builder().Scan({1}, kind.first, kind.last, kind.approximation).Done();
            file.insert(file.end(), scan.begin(), scan.end());
            for (std::size_t i = 0; (kind.markers == 0 || i < kind.markers) && file.size() < 1000000; ++i) {
                file.push_back(0xFF);
                file.push_back(static_cast<std::uint8_t>(0xD0 + (i & 7)));
            }
        }
        EXPECT_LT(LeastSecondsFor(file, kMegabyteSeconds), kMegabyteSeconds)
            << kind.height << " " << kind.first << " " << kind.approximation;
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
