// Baseline and progressive scans, restarts, and coded data that is damaged or missing.
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

TEST(JpegScans, BaselineInSeveralScans) {
    Builder builder =
        Builder().Soi().App0().Quant(0).Huffman().Frame(0xC0, 20, 20, {{1, 2, 2, 0}, {2, 1, 1, 1}, {3, 1, 1, 1}});
    // Luma alone has 3x3 blocks without padding; the chroma table comes between the scans.
    const auto blocks = [](int count, int first) {
        BitWriter bits;
        for (int i = 0; i < count; ++i) {
            PutDc(bits, i == 0 ? first : 0);
            PutEndOfBlock(bits);
        }
        return bits.Finish();
    };
    builder.Scan({1}).Raw(blocks(9, 100 - 128));
    builder.Quant(1, 16).Scan({3}).Raw(blocks(4, 20)).Scan({2}).Raw(blocks(4, -10)).Eoi();
    const Decoded decoded(builder.Done(), 20, 20, 2);
    ASSERT_EQ(decoded.result, 1);
    EXPECT_EQ(decoded.Byte(0), 100);
    EXPECT_EQ(decoded.Byte(399), 100);
    EXPECT_EQ(decoded.Byte(400), 108);
    EXPECT_EQ(decoded.Byte(599), 168);
}

TEST(JpegScans, AComponentWithoutAScanStaysAt128) {
    const auto file = Builder()
                          .Soi()
                          .App0()
                          .Quant()
                          .Huffman()
                          .Frame(0xC0, 8, 8, Ycc(1, 1))
                          .Scan({1})
                          .Raw(FlatScan(8, 8, Grey(), {60}))
                          .Eoi()
                          .Done();
    const Decoded decoded(file, 8, 8, 2);
    ASSERT_EQ(decoded.result, 1);
    EXPECT_EQ(decoded.Byte(0), 60);
    EXPECT_EQ(decoded.Byte(64), 128);
}

TEST(JpegScans, RestartIntervalsAreHonoured) {
    // Every interval of two blocks begins with its own level.
    Builder builder = Builder().Soi().App0().Quant().Huffman().Restart(2).Frame(0xC0, 48, 8, Grey()).Scan({1});
    for (int interval = 0; interval < 3; ++interval) {
        BitWriter bits;
        PutDc(bits, 10 * interval);
        PutEndOfBlock(bits);
        PutDc(bits, 1);
        PutEndOfBlock(bits);
        builder.Raw(bits.Finish());
        if (interval < 2) {
            builder.Raw({0xFF, 0xD0 + interval});
        }
    }
    const Decoded decoded(builder.Eoi().Done(), 48, 8, 2);
    ASSERT_EQ(decoded.result, 1);
    for (int block = 0; block < 6; ++block) {
        EXPECT_EQ(decoded.Byte(static_cast<std::size_t>(8 * block)), 128 + block / 2 * 10 + block % 2) << block;
    }
}

TEST(JpegScans, ALostRestartIntervalIsMadeUpFor) {
    Builder builder = Builder().Soi().App0().Quant().Huffman().Restart(1).Frame(0xC0, 24, 8, Grey()).Scan({1});
    const auto block = [](int level) {
        BitWriter bits;
        PutDc(bits, level);
        PutEndOfBlock(bits);
        return bits.Finish();
    };
    builder.Raw(block(10)).Raw({0xFF, 0xD1}).Raw(block(30)).Eoi(); // the second interval and its marker are missing
    const Decoded decoded(builder.Done(), 24, 8, 2);
    ASSERT_EQ(decoded.result, 1);
    EXPECT_EQ(decoded.Byte(0), 138);
    EXPECT_EQ(decoded.Byte(8), 128);
    EXPECT_EQ(decoded.Byte(16), 158);
}

// One block in four scans: DC and its refinement, an AC coefficient and its refinement.
TEST(JpegScans, ProgressiveScansAddUp) {
    const auto bitsOf = [](auto put) {
        BitWriter bits;
        put(bits);
        return bits.Finish();
    };
    const auto progressive = Builder()
                                 .Soi()
                                 .App0()
                                 .Quant()
                                 .Frame(0xC2, 8, 8, Grey())
                                 .Huffman()
                                 .Scan({1}, 0, 0, 0x01)
                                 .Raw(bitsOf([](BitWriter& bits) { PutDc(bits, 8); }))
                                 .Scan({1}, 1, 5, 0x01)
                                 .Raw(bitsOf([](BitWriter& bits) { PutAc(bits, -2), PutEndOfBlock(bits); }))
                                 .Scan({1}, 0, 0, 0x10)
                                 .Raw(bitsOf([](BitWriter& bits) { bits.Put(1, 1); }))
                                 // One correction of k = 1, a new coefficient 1 at k = 2, then the end of the band.
                                 .Scan({1}, 1, 5, 0x10)
                                 .Raw(bitsOf([](BitWriter& bits) {
                                     bits.Put(0b10, 2), bits.Put(1, 1), bits.Put(1, 1), PutEndOfBlock(bits);
                                 }))
                                 .Eoi()
                                 .Raw({0, 0, 0, 0}) // twelve bytes must follow a scan's marker

                                 .Done();
    // DC 17, k1 = -5, k2 = 1 in a baseline file with a table that has all three sizes.
    const Bytes acTable = {0x10, 0, 4, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x00, 0x01, 0x02, 0x03};
    const auto expected = Builder()
                              .Soi()
                              .App0()
                              .Quant()
                              .Frame(0xC0, 8, 8, Grey())
                              .Huffman()
                              .Segment(0xC4, acTable)
                              .Scan({1})
                              .Raw(bitsOf([](BitWriter& bits) {
                                  PutDc(bits, 17);
                                  bits.Put(0b11, 2), bits.Put(0b010, 3); // -5
                                  bits.Put(0b01, 2), bits.Put(1, 1);     // 1
                                  bits.Put(0b00, 2);
                              }))
                              .Eoi()
                              .Done();
    const Decoded got(progressive, 8, 8, 1);
    const Decoded wanted(expected, 8, 8, 1);
    ASSERT_EQ(got.result, 1);
    ASSERT_EQ(wanted.result, 1);
    EXPECT_EQ(got.buffer, wanted.buffer);
}

TEST(JpegScans, EndOfBandRunsCoverManyBlocks) {
    // Three blocks; after the first band coefficient of block 0 a run ends the band in the other two.
    const Bytes acTable = {0x10, 0, 3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x01, 0x10, 0x00};
    BitWriter dc;
    for (int i = 0; i < 3; ++i) {
        PutDc(dc, 0);
    }
    BitWriter ac;
    ac.Put(0b00, 2), ac.Put(1, 1); // block 0: 1 at k = 1
    ac.Put(0b01, 2), ac.Put(1, 1); // a run of three ends: the rest of block 0 and all of blocks 1 and 2
    const auto file = Builder()
                          .Soi()
                          .App0()
                          .Quant(0, 80)
                          .Frame(0xC2, 24, 8, Grey())
                          .Huffman()
                          .Segment(0xC4, acTable)
                          .Scan({1}, 0, 0)
                          .Raw(dc.Finish())
                          .Scan({1}, 1, 63)
                          .Raw(ac.Finish())
                          .Eoi()
                          .Raw({0, 0, 0, 0})
                          .Done();
    const Decoded decoded(file, 24, 8, 1);
    ASSERT_EQ(decoded.result, 1);
    EXPECT_GT(decoded.Byte(0), 128);
    EXPECT_LT(decoded.Byte(3 * 7), 128);
    EXPECT_EQ(decoded.Byte(3 * 8), 128);
    EXPECT_EQ(decoded.Byte(3 * 16), 128);
}

TEST(JpegScans, ScansWithForbiddenParametersArePassedOver) {
    BitWriter dc;
    PutDc(dc, 10);
    const auto file = Builder()
                          .Soi()
                          .App0()
                          .Quant()
                          .Frame(0xC2, 8, 8, Grey())
                          .Huffman()
                          .Scan({1}, 0, 0)
                          .Raw(dc.Finish())
                          .Scan({1}, 0, 5)
                          .Raw({1, 2, 3})
                          .Scan({1}, 9, 3)
                          .Raw({1, 2, 3})
                          .Scan({1}, 1, 64)
                          .Raw({1, 2, 3})
                          .Scan({1}, 1, 5, 0x0E)
                          .Raw({1, 2, 3})
                          .Scan({1}, 1, 5, 0x20)
                          .Raw({1, 2, 3})
                          .Eoi()
                          .Done();
    const Decoded decoded(file, 8, 8, 1);
    ASSERT_EQ(decoded.result, 1);
    EXPECT_EQ(decoded.Byte(0), 138);
    EXPECT_EQ(decoded.Byte(3 * 63), 138);
}

TEST(JpegScans, MissingTablesAreRefused) {
    const auto start = [] { return Builder().Soi().App0().Quant().Huffman(); };
    const Bytes coded = FlatScan(8, 8, Grey(), {90});
    EXPECT_EQ(Decoded(start().Frame(0xC0, 8, 8, {{1, 1, 1, 2}}).Scan({1}).Raw(coded).Eoi().Done()).result, 0);
    EXPECT_EQ(Decoded(start().Frame(0xC0, 8, 8, {{1, 1, 1, 7}}).Scan({1}).Raw(coded).Eoi().Done()).result, 0);
    EXPECT_EQ(
        Decoded(start().Frame(0xC0, 8, 8, Grey()).Raw({0xFF, 0xDA, 0, 8, 1, 1, 0x10, 0, 63, 0}).Raw(coded).Eoi().Done())
            .result,
        0);
    EXPECT_EQ(
        Decoded(start().Frame(0xC0, 8, 8, Grey()).Raw({0xFF, 0xDA, 0, 8, 1, 1, 0x01, 0, 63, 0}).Raw(coded).Eoi().Done())
            .result,
        0);
    EXPECT_STREQ(GetLastJpegError(), "__ImgDecodeJPEG: Decoding Error !\n");
}

TEST(JpegScans, AnOversubscribedTableIsRefusedWhenAScanUsesIt) {
    const Bytes broken = {0x01, 3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 2, 3};
    const auto withScan = [&](std::initializer_list<int> scan) {
        return Builder()
            .Soi()
            .App0()
            .Quant()
            .Huffman()
            .Segment(0xC4, broken)
            .Frame(0xC0, 8, 8, Grey())
            .Raw(scan)
            .Raw(FlatScan(8, 8, Grey(), {90}))
            .Eoi()
            .Done();
    };
    EXPECT_EQ(Decoded(withScan({0xFF, 0xDA, 0, 8, 1, 1, 0x00, 0, 63, 0})).result, 1);
    EXPECT_EQ(Decoded(withScan({0xFF, 0xDA, 0, 8, 1, 1, 0x10, 0, 63, 0})).result, 0);
}

TEST(JpegScans, ATruncatedFileSucceeds) {
    const Bytes baseline = FlatGrey(400, 300, 90, 2, 2);
    const Bytes progressive = FlatProgressive(400, 300, 90);
    const std::vector<const Bytes*> wholes = {&baseline, &progressive};
    for (const Bytes* whole : wholes) {
        std::size_t coded = 0;
        for (std::size_t i = 0; i + 1 < whole->size(); ++i) {
            if ((*whole)[i] == 0xFF && (*whole)[i + 1] == 0xDA) {
                coded = i + 18;
            }
        }
        for (std::size_t size = coded; size < whole->size(); size += 7) {
            EXPECT_EQ(Decoded(Bytes(whole->begin(), whole->begin() + static_cast<std::ptrdiff_t>(size))).result, 1);
        }
    }
}

TEST(JpegScans, BeyondTheDataBlocksAreReadFromZeros) {
    // The code 0000 is category 0: the level stays; the code 0 ends the block.
    const auto file = Builder()
                          .Soi()
                          .App0()
                          .Quant()
                          .Huffman()
                          .Frame(0xC0, 800, 8, Grey())
                          .Scan({1})
                          .Raw([] {
                              BitWriter bits;
                              PutDc(bits, 33);
                              PutEndOfBlock(bits);
                              return bits.Finish();
                          }())
                          .Raw({0xFF, 0xD9, 0, 0})
                          .Done();
    const Decoded decoded(file, 800, 8, 2);
    ASSERT_EQ(decoded.result, 1);
    EXPECT_EQ(decoded.Byte(0), 161);
    EXPECT_EQ(decoded.Byte(799), decoded.Byte(400));
}

} // namespace
