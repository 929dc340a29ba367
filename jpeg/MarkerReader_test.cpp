#include "jpeg/MarkerReader.h"

#include "tests/jpeg/JpegBuilder.h"

#include <gtest/gtest.h>

namespace jpeg {
namespace {

using jpeg_builder::Builder;
using jpeg_builder::Bytes;
using jpeg_builder::ComponentSpec;
using jpeg_builder::Grey;
using jpeg_builder::Ycc;

constexpr std::initializer_list<int> kCodedData = {0x12, 0x34, 0x56, 0x78};

Status Read(const Builder& builder) {
    const Bytes file = builder.Done();
    MarkerReader reader(file);
    return reader.ReadToFirstScan();
}

// Everything up to the frame header.
Builder Start() {
    return Builder().Soi().App0().Quant().Huffman();
}

Status ReadFrame(const std::vector<ComponentSpec>& components, int marker = 0xC0) {
    std::vector<int> ids;
    for (const auto& component : components) {
        ids.push_back(component.id);
    }
    return Read(Start().Frame(marker, 16, 16, components).Scan(ids).Raw(kCodedData));
}

TEST(MarkerReader, LiteralFrameHeader) {
    const Bytes file = Start()
                           .Raw({0xFF, 0xC2, 0, 17, 8, 0x01, 0x2C, 0x01, 0x90, 3, 1, 0x22, 0, 2, 0x11, 1, 3, 0x11, 1})
                           .Scan({1, 2, 3}, 0, 0, 0x01)
                           .Raw(kCodedData)
                           .Done();
    MarkerReader reader(file);
    ASSERT_EQ(reader.ReadToFirstScan(), Status::kOk);
    const Frame& frame = reader.GetFrame();
    EXPECT_EQ(frame.kind, FrameKind::kProgressive);
    EXPECT_EQ(frame.height, 300);
    EXPECT_EQ(frame.width, 400);
    EXPECT_EQ(frame.componentCount, 3);
    EXPECT_EQ(frame.hMax, 2);
    EXPECT_EQ(frame.vMax, 2);
    EXPECT_EQ(frame.components[1].quantId, 1);
    EXPECT_EQ(frame.McusPerLine(), 25);
    EXPECT_EQ(frame.BlocksPerLine(1), 25);
    EXPECT_EQ(reader.Scan().approxLow, 1);
    EXPECT_EQ(reader.Scan().spectralEnd, 0);
    EXPECT_EQ(reader.Position(), file.size() - kCodedData.size());
}

// Edge case: the full decoder stops looking for FF D8 after 2048 bytes.
TEST(MarkerReader, StartOfImageIsLookedForIn2048Bytes) {
    const Bytes picture = Start().Frame(0xC0, 16, 16, Grey()).Scan({1}).Raw(kCodedData).Done();
    // Stray bytes that hold a frame header of another size, in front of the picture.
    const Bytes decoy = Builder().Frame(0xC0, 99, 99, Grey()).Raw({0, 0, 0, 0, 0, 0}).Done();
    for (const std::size_t junk : {0u, 100u, 2046u, 2047u, 2048u, 3000u}) {
        Bytes file = decoy;
        file.resize(std::max(junk, decoy.size()), 0);
        const std::size_t at = file.size();
        file.insert(file.end(), picture.begin(), picture.end());
        MarkerReader reader(file);
        EXPECT_EQ(reader.ReadToFirstScan(), Status::kOk) << at;
        EXPECT_EQ(reader.GetFrame().width, 16) << at; // the decoy lies before the start in every case
    }
}

// Edge case: markers are read from byte 2048 on when no FF D8 lies before.
TEST(MarkerReader, WithoutStartOfImageReadingBeginsAt2048) {
    Bytes file(2040, 0);
    const Bytes picture = Start().Frame(0xC0, 16, 16, Grey()).Scan({1}).Raw(kCodedData).Done();
    file.insert(file.end(), 8, 0);
    file.insert(file.end(), picture.begin() + 2, picture.end()); // no start of image at all
    MarkerReader reader(file);
    EXPECT_EQ(reader.ReadToFirstScan(), Status::kOk);
    file.resize(2048);
    MarkerReader shorter(file);
    EXPECT_EQ(shorter.ReadToFirstScan(), Status::kStartOfImageTooLate);
}

// Edge case: an SOF1 picture is not decoded.
TEST(MarkerReader, OnlyBaselineAndProgressiveFramesAreAccepted) {
    EXPECT_EQ(ReadFrame(Grey(), 0xC0), Status::kOk);
    EXPECT_EQ(ReadFrame(Grey(), 0xC2), Status::kOk);
    for (const int marker : {0xC1, 0xC3, 0xC5, 0xC6, 0xC7, 0xC9, 0xCA, 0xCB, 0xCD, 0xCE, 0xCF}) {
        EXPECT_EQ(ReadFrame(Grey(), marker), Status::kScanBeforeFrame) << marker;
    }
}

// Edge case: a sampling factor of 0 or 5 fails.
TEST(MarkerReader, SamplingFactorZeroOrFiveFails) {
    EXPECT_EQ(ReadFrame(Ycc(4, 4)), Status::kOk);
    EXPECT_EQ(ReadFrame(Ycc(0, 1)), Status::kSamplingFactor);
    EXPECT_EQ(ReadFrame(Ycc(1, 0)), Status::kSamplingFactor);
    EXPECT_EQ(ReadFrame(Ycc(5, 1)), Status::kSamplingFactor);
    EXPECT_EQ(ReadFrame(Ycc(1, 5)), Status::kSamplingFactor);
}

// Edge case: four components fail.
TEST(MarkerReader, FourComponentsFail) {
    EXPECT_EQ(Read(Start().Frame(0xC0, 16, 16, {{1}, {2}, {3}, {4}}).Scan({1, 2, 3}).Raw(kCodedData)),
              Status::kComponentCount);
}

// Edge case: 12-bit precision fails.
TEST(MarkerReader, TwelveBitPrecisionFails) {
    EXPECT_EQ(Read(Start().Frame(0xC0, 16, 16, Grey(), 12).Scan({1}).Raw(kCodedData)), Status::kPrecisionNotEight);
}

TEST(MarkerReader, FrameLengthMustFit) {
    EXPECT_EQ(Read(Start().Raw({0xFF, 0xC0, 0, 12, 8, 0, 16, 0, 16, 1, 1, 0x11, 0, 0}).Scan({1}).Raw(kCodedData)),
              Status::kFrameHeaderLength);
}

TEST(MarkerReader, QuantisationTables) {
    Bytes two(130, 1);
    two[0] = 0;
    two[65] = 3;
    EXPECT_EQ(
        Read(Builder().Soi().App0().Huffman().Segment(0xDB, two).Frame(0xC0, 16, 16, Grey()).Scan({1}).Raw(kCodedData)),
        Status::kOk);
    two.pop_back();
    EXPECT_EQ(
        Read(Builder().Soi().App0().Huffman().Segment(0xDB, two).Frame(0xC0, 16, 16, Grey()).Scan({1}).Raw(kCodedData)),
        Status::kQuantTableCut);
    EXPECT_EQ(Read(Start().Quant(0x10).Frame(0xC0, 16, 16, Grey()).Scan({1}).Raw(kCodedData)),
              Status::kQuantTable16Bit);
    EXPECT_EQ(Read(Start().Quant(4).Frame(0xC0, 16, 16, Grey()).Scan({1}).Raw(kCodedData)), Status::kTableId);
}

TEST(MarkerReader, SixtyNineBytesMustFollowTheQuantisationMarker) {
    Bytes file = Builder().Soi().Quant().Done();
    file.push_back(0);
    MarkerReader reader(file); // 68 behind the marker
    EXPECT_EQ(reader.ReadToFirstScan(), Status::kQuantTableCut);
    file.push_back(0);
    MarkerReader longer(file);
    EXPECT_EQ(longer.ReadToFirstScan(), Status::kEndsBeforeScan);
}

TEST(MarkerReader, HuffmanTables) {
    const auto withTable = [](const Bytes& body) {
        return Read(Start().Segment(0xC4, body).Frame(0xC0, 16, 16, Grey()).Scan({1}).Raw(kCodedData));
    };
    Bytes table(17 + 2, 0);
    table[1] = 2;
    EXPECT_EQ(withTable(table), Status::kOk);
    table.pop_back();
    EXPECT_EQ(withTable(table), Status::kHuffmanTableCut);
    EXPECT_EQ(withTable(Bytes(10, 0)), Status::kHuffmanTableCut);
    Bytes classTwo(17, 0);
    classTwo[0] = 0x20;
    EXPECT_EQ(withTable(classTwo), Status::kTableId);
    Bytes idFour(17, 0);
    idFour[0] = 0x04;
    EXPECT_EQ(withTable(idFour), Status::kTableId);
    Bytes tooMany(17 + 257, 0);
    tooMany[8] = 255;
    tooMany[9] = 2;
    EXPECT_EQ(withTable(tooMany), Status::kHuffmanTableTooLong);
}

// Edge case: a restart segment of length 5 fails.
TEST(MarkerReader, RestartSegmentOfLengthFiveFails) {
    EXPECT_EQ(Read(Start().Segment(0xDD, {0, 4, 0}).Frame(0xC0, 16, 16, Grey()).Scan({1}).Raw(kCodedData)),
              Status::kRestartLength);
    const Bytes file = Start().Restart(258).Frame(0xC0, 16, 16, Grey()).Scan({1}).Raw(kCodedData).Done();
    MarkerReader reader(file);
    ASSERT_EQ(reader.ReadToFirstScan(), Status::kOk);
    EXPECT_EQ(reader.GetTables().restartInterval, 258);
}

TEST(MarkerReader, ScanHeaders) {
    const auto withScan = [](std::initializer_list<int> scan) {
        return Read(Start().Frame(0xC0, 16, 16, Ycc(1, 1)).Raw(scan).Raw(kCodedData));
    };
    EXPECT_EQ(withScan({0xFF, 0xDA, 0, 12, 3, 1, 0, 2, 0, 3, 0, 0, 63, 0}), Status::kOk);
    EXPECT_EQ(withScan({0xFF, 0xDA, 0, 8, 1, 2, 0x33, 0, 63, 0}), Status::kOk);
    EXPECT_EQ(withScan({0xFF, 0xDA, 0, 13, 3, 1, 0, 2, 0, 3, 0, 0, 63, 0, 0}), Status::kScanHeaderLength);
    EXPECT_EQ(withScan({0xFF, 0xDA, 0, 6, 0, 0, 63, 0, 0, 0}), Status::kScanHeaderLength);
    EXPECT_EQ(withScan({0xFF, 0xDA, 0, 14, 4, 1, 0, 2, 0, 3, 0, 3, 0, 0, 63, 0}), Status::kScanHeaderLength);
    EXPECT_EQ(withScan({0xFF, 0xDA, 0, 8, 1, 9, 0, 0, 63, 0}), Status::kScanComponentUnknown);
    EXPECT_EQ(withScan({0xFF, 0xDA, 0, 10, 2, 1, 0, 1, 0, 0, 63, 0}), Status::kScanComponentUnknown);
    EXPECT_EQ(withScan({0xFF, 0xDA, 0, 8, 1, 1, 0x40, 0, 63, 0}), Status::kTableId);
    EXPECT_EQ(withScan({0xFF, 0xDA, 0, 8, 1, 1, 0x04, 0, 63, 0}), Status::kTableId);
}

TEST(MarkerReader, TwelveBytesMustFollowTheScanMarker) {
    Bytes file = Start().Frame(0xC0, 16, 16, Grey()).Scan({1}).Done();
    file.insert(file.end(), 3, 0);
    MarkerReader reader(file);
    EXPECT_EQ(reader.ReadToFirstScan(), Status::kScanHeaderCut);
    file.push_back(0);
    MarkerReader longer(file);
    EXPECT_EQ(longer.ReadToFirstScan(), Status::kOk);
}

TEST(MarkerReader, TablesMustComeBeforeTheFirstScan) {
    EXPECT_EQ(Read(Builder().Soi().Quant().Frame(0xC0, 16, 16, Grey()).Scan({1}).Raw(kCodedData)),
              Status::kNoHuffmanTable);
    EXPECT_EQ(Read(Builder().Soi().Huffman().Frame(0xC0, 16, 16, Grey()).Scan({1}).Raw(kCodedData)),
              Status::kNoQuantTable);
    EXPECT_EQ(Read(Builder().Soi().Quant().Huffman().Scan({1}).Raw(kCodedData)), Status::kScanBeforeFrame);
}

ColourModel ModelOf(const std::vector<int>& ids, bool app0, bool app14, int transform = 0) {
    Frame frame;
    frame.componentCount = static_cast<int>(ids.size());
    for (std::size_t i = 0; i < ids.size(); ++i) {
        frame.components[i].id = static_cast<std::uint8_t>(ids[i]);
    }
    return ColourModelOf(frame, app0, app14, static_cast<std::uint8_t>(transform));
}

TEST(MarkerReader, ColourModelIsTheFirstRuleThatFits) {
    EXPECT_EQ(ModelOf({7, 8, 9}, true, false), ColourModel::kYcc);
    EXPECT_EQ(ModelOf({7, 8, 9}, true, true, 0), ColourModel::kYcc); // APP0 wins over APP14
    EXPECT_EQ(ModelOf({7, 8, 9}, false, true, 1), ColourModel::kYcc);
    EXPECT_EQ(ModelOf({1, 2, 3}, false, true, 0), ColourModel::kYcc); // and so do the usual ids
    EXPECT_EQ(ModelOf({0, 1, 2}, false, false), ColourModel::kYcc);
    EXPECT_EQ(ModelOf({'R', 'G', 'B'}, false, true, 0), ColourModel::kRgb);
    EXPECT_EQ(ModelOf({'R', 'G', 'B'}, false, true, 2), ColourModel::kNone);
    EXPECT_EQ(ModelOf({'R', 'G', 'B'}, false, false), ColourModel::kNone);
    EXPECT_EQ(ModelOf({3, 2, 1}, false, false), ColourModel::kNone);
    EXPECT_EQ(ModelOf({1}, false, false), ColourModel::kGrey);
    EXPECT_EQ(ModelOf({1}, true, true, 1), ColourModel::kGrey); // one component is always grey
    EXPECT_EQ(ModelOf({1, 2}, true, true, 1), ColourModel::kNone);
    EXPECT_EQ(ModelOf({}, true, true, 1), ColourModel::kNone);
}

TEST(MarkerReader, App14KeepsTheLastByteOfItsSegment) {
    const std::vector<ComponentSpec> rgb = {{'R'}, {'G'}, {'B'}};
    const auto read = [&](const Bytes& body) {
        const Bytes file = Builder()
                               .Soi()
                               .Quant()
                               .Huffman()
                               .Segment(0xEE, body)
                               .Frame(0xC0, 16, 16, rgb)
                               .Scan({'R', 'G', 'B'})
                               .Raw(kCodedData)
                               .Done();
        MarkerReader reader(file);
        (void)!static_cast<int>(reader.ReadToFirstScan());
        return reader.Colour();
    };
    EXPECT_EQ(read({'A', 'd', 'o', 'b', 'e', 0, 100, 0, 0, 0, 0, 0}), ColourModel::kRgb);
    EXPECT_EQ(read({1}), ColourModel::kYcc);
    EXPECT_EQ(read({}), ColourModel::kRgb);
}

TEST(MarkerReader, GreyIgnoresItsFactors) {
    const Bytes file = Start().Frame(0xC0, 17, 17, {{1, 4, 3, 0}}).Scan({1}).Raw(kCodedData).Done();
    MarkerReader reader(file);
    ASSERT_EQ(reader.ReadToFirstScan(), Status::kOk);
    EXPECT_EQ(reader.GetFrame().BlocksPerLine(0), 3);
    EXPECT_EQ(reader.GetFrame().McusPerLine(), 3);
}

TEST(MarkerReader, LaterScansAreFoundBehindCodedData) {
    const Bytes file = Start()
                           .Frame(0xC0, 16, 16, Ycc(1, 1))
                           .Scan({1})
                           .Raw({1, 2, 0xFF, 0, 0xFF, 0xD0, 3})
                           .Restart(5)
                           .Scan({2})
                           .Raw({4, 4, 4, 4})
                           .Eoi()
                           .Scan({3})
                           .Raw(kCodedData)
                           .Done();
    MarkerReader reader(file);
    ASSERT_EQ(reader.ReadToFirstScan(), Status::kOk);
    bool found = false;
    reader.ReadToNextScan(reader.Position(), found);
    EXPECT_TRUE(found);
    EXPECT_EQ(reader.Scan().components[0].component, 1);
    EXPECT_EQ(reader.GetTables().restartInterval, 5);
    reader.ReadToNextScan(reader.Position(), found);
    EXPECT_FALSE(found); // the image ends before the third
}

TEST(MarkerReader, DamageBetweenScansEndsThePicture) {
    const Bytes file = Start()
                           .Frame(0xC0, 16, 16, Ycc(1, 1))
                           .Scan({1})
                           .Raw(kCodedData)
                           .Segment(0xDD, {0, 5, 0})
                           .Scan({2})
                           .Raw(kCodedData)
                           .Done();
    MarkerReader reader(file);
    ASSERT_EQ(reader.ReadToFirstScan(), Status::kOk);
    bool found = true;
    reader.ReadToNextScan(reader.Position(), found);
    EXPECT_FALSE(found);
}

} // namespace
} // namespace jpeg
