#include "host/codec/BlockEncoder.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <random>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "host/codec/ArithmeticDecoder.h"

namespace {

using namespace codec;

// What a decoder makes of a block.
struct Decoded {
    BlockHeader header;
    LayerGeometry geometry;
    SideInformation info;
    BitPlanes planes;
    LayerLoop<ArithmeticDecoder> layers;

    BsacStatus Run(const RateTables& rate, unsigned channels, std::span<const std::uint8_t> bytes) {
        const BsacStatus status = ReadBlockHeader(bytes, rate, channels, header);
        if (status != BsacStatus::kOk)
            return status;
        const auto bits = static_cast<int>(bytes.size() * 8);
        const BsacStatus layout = LayOutLayers(rate, header, bits, geometry);
        if (layout != BsacStatus::kOk)
            return layout;
        info = SideInformation{};
        planes.Reset(channels);
        layers.Run(bytes, header, geometry, bits, info, planes);
        return BsacStatus::kOk;
    }
};

class RandomBlocks {
public:
    explicit RandomBlocks(unsigned seed) : random(seed) {}

    unsigned Below(unsigned limit) { return static_cast<unsigned>(random() % limit); }

    const RateTables& Rate() {
        static constexpr unsigned kRates[] = {48000, 44100, 32000, 24000, 22050, 16000, 12000, 11025, 8000};
        return *FindRate(kRates[Below(std::size(kRates))]);
    }

    // Every field of the header takes every value, as far as the values are legal together.
    void FillHeader(const RateTables& rate, BlockHeader& header) {
        const auto field = [&](unsigned limit) { return static_cast<std::uint8_t>(Below(limit)); };
        header.channels = 1 + Below(2);
        header.segmented = Below(3) == 0;
        header.topLayer = field(64);
        header.baseSnfThreshold = field(4);
        header.baseBand = field(32);
        header.windowSequence = static_cast<WindowSequence>(Below(4));
        header.windowShape = static_cast<WindowShape>(Below(2));
        header.maxSfb = field(static_cast<unsigned>(BandEdges(rate, header).size()));
        header.grouping = header.IsShort() ? field(128) : 0;
        header.noisePresent = Below(4) == 0;
        header.noiseStartSfb = header.noisePresent ? field(64) : 0;
        header.stereoMask = header.channels == 2 ? static_cast<StereoMask>(Below(4)) : StereoMask::kNone;
        for (unsigned c = 0; c < header.channels; ++c) {
            ChannelHeader& channel = header.channel[c];
            channel.maxScalefactor = field(256);
            channel.cbandSiType = field(32);
            channel.baseScalefactorModel = field(8);
            channel.enhScalefactorModel = field(8);
            channel.maxSfbSiLength = field(16);
            channel.tnsPresent = Below(4) == 0;
            if (channel.tnsPresent)
                FillTns(header, channel);
        }
    }

    void FillTns(const BlockHeader& header, ChannelHeader& channel) {
        const bool isShort = header.IsShort();
        for (unsigned w = 0; w < (isShort ? 8U : 1U); ++w) {
            TnsWindow& window = channel.tns[w];
            window.filterCount = static_cast<std::uint8_t>(Below(isShort ? 2 : 4));
            window.fineResolution = window.filterCount > 0 && Below(2) != 0;
            for (unsigned f = 0; f < window.filterCount; ++f) {
                TnsFilter& filter = window.filters[f];
                filter.length = static_cast<std::uint8_t>(Below(isShort ? 16 : 64));
                filter.order = static_cast<std::uint8_t>(Below(isShort ? 8 : 32));
                if (filter.order == 0)
                    continue;
                filter.downwards = Below(2) != 0;
                filter.compressed = Below(2) != 0;
                const int bits = 3 + (window.fineResolution ? 1 : 0) - (filter.compressed ? 1 : 0);
                for (unsigned i = 0; i < filter.order; ++i)
                    filter.coefficients[i] =
                        static_cast<std::int8_t>(static_cast<int>(Below(1U << bits)) - (1 << (bits - 1)));
            }
        }
    }

    // Side information and lines for a header whose layers are known.
    void FillContent(const LayerGeometry& geometry, BlockContent& content) {
        for (int l = 0; l < geometry.layers; ++l)
            FillLayer(geometry, l, content);
    }

private:
    void FillLayer(const LayerGeometry& geometry, int l, BlockContent& content) {
        const BlockHeader& header = content.header;
        const Layer& layer = geometry.layer[l];
        const auto first = static_cast<unsigned>(geometry.group[layer.group].firstLine);
        for (unsigned c = 0; c < header.channels; ++c) {
            const CbandSiType& type = kCbandSiTypes[header.channel[c].cbandSiType];
            const unsigned largest = layer.startBand == 0 ? type.largestBand0 : type.largestOther;
            for (unsigned band = layer.startBand; band < layer.endBand; ++band) {
                const unsigned cbandSi = Below(3) == 0 ? Below(largest + 1) : Below(std::min(largest, 5U) + 1);
                content.info.cbandSi[c][first / kCodingBand + band] = static_cast<std::uint8_t>(cbandSi);
            }
            for (int line = layer.startLine; line < layer.endLine; ++line) {
                const unsigned at = first + static_cast<unsigned>(line);
                const unsigned planes = kPlaneModels[content.info.cbandSi[c][at / kCodingBand]].topPlane;
                const int limit = 1 << (Below(3) == 0 ? planes : Below(planes + 1));
                const int magnitude = static_cast<int>(Below(static_cast<unsigned>(limit)));
                content.lines[c][at] = static_cast<std::int16_t>(Below(2) != 0 ? -magnitude : magnitude);
            }
        }
        for (unsigned sfb = layer.startSfb; sfb < layer.endSfb; ++sfb)
            FillSfb(geometry.IsBase(l), sfb, SfbIndex(layer.group, sfb), content);
    }

    void FillSfb(bool base, unsigned sfb, unsigned index, BlockContent& content) {
        static constexpr int kLargestDifference[8] = {0, 3, 7, 15, 15, 31, 31, 63};
        const BlockHeader& header = content.header;
        SideInformation& info = content.info;
        if (header.stereoMask == StereoMask::kMsPerBand)
            info.stereo[index] = static_cast<StereoInfo>(Below(2));
        if (header.stereoMask == StereoMask::kInfoPerBand)
            info.stereo[index] = static_cast<StereoInfo>(Below(4));
        const bool mayBeNoise =
            header.noisePresent && sfb >= header.noiseStartSfb && header.stereoMask != StereoMask::kMsEverywhere;
        for (unsigned c = 0; c < header.channels && mayBeNoise; ++c)
            info.noise[c][index] = Below(2) != 0;
        if (info.noise[0][index] && info.noise[1][index] && info.stereo[index] == StereoInfo::kOutOfPhase)
            info.noiseMode[index] = static_cast<std::uint8_t>(Below(4));
        for (unsigned c = 0; c < header.channels; ++c) {
            const ChannelHeader& channel = header.channel[c];
            const int largest = kLargestDifference[base ? channel.baseScalefactorModel : channel.enhScalefactorModel];
            const int difference = static_cast<int>(Below(static_cast<unsigned>(largest) + 1));
            int level = channel.maxScalefactor - difference;
            if (info.noise[c][index])
                level = info.noiseStart[c] - difference;
            else if (c == 1 && IsIntensity(info, index))
                level = PositionFromCode(difference);
            info.level[c][index] = static_cast<std::int16_t>(level);
        }
    }

    std::mt19937 random;
};

void ExpectSameHeader(const BlockHeader& a, const BlockHeader& b) {
    EXPECT_EQ(a.frameLength, b.frameLength);
    EXPECT_EQ(a.bits, b.bits);
    EXPECT_EQ(a.segmented, b.segmented);
    EXPECT_EQ(a.topLayer, b.topLayer);
    EXPECT_EQ(a.baseSnfThreshold, b.baseSnfThreshold);
    EXPECT_EQ(a.baseBand, b.baseBand);
    EXPECT_EQ(a.windowSequence, b.windowSequence);
    EXPECT_EQ(a.windowShape, b.windowShape);
    EXPECT_EQ(a.maxSfb, b.maxSfb);
    EXPECT_EQ(a.grouping, b.grouping);
    EXPECT_EQ(a.noisePresent, b.noisePresent);
    EXPECT_EQ(a.noiseStartSfb, b.noiseStartSfb);
    EXPECT_EQ(a.stereoMask, b.stereoMask);
    for (unsigned c = 0; c < a.channels; ++c) {
        EXPECT_EQ(a.channel[c].maxScalefactor, b.channel[c].maxScalefactor);
        EXPECT_EQ(a.channel[c].cbandSiType, b.channel[c].cbandSiType);
        EXPECT_EQ(a.channel[c].baseScalefactorModel, b.channel[c].baseScalefactorModel);
        EXPECT_EQ(a.channel[c].enhScalefactorModel, b.channel[c].enhScalefactorModel);
        EXPECT_EQ(a.channel[c].maxSfbSiLength, b.channel[c].maxSfbSiLength);
        ASSERT_EQ(a.channel[c].tnsPresent, b.channel[c].tnsPresent);
        for (unsigned w = 0; w < kShortWindows; ++w) {
            const TnsWindow& x = a.channel[c].tns[w];
            const TnsWindow& y = b.channel[c].tns[w];
            ASSERT_EQ(x.filterCount, y.filterCount);
            EXPECT_EQ(x.fineResolution, y.fineResolution);
            for (unsigned f = 0; f < x.filterCount; ++f) {
                EXPECT_EQ(x.filters[f].length, y.filters[f].length);
                EXPECT_EQ(x.filters[f].order, y.filters[f].order);
                EXPECT_EQ(x.filters[f].downwards, y.filters[f].downwards);
                EXPECT_EQ(x.filters[f].compressed, y.filters[f].compressed);
                EXPECT_EQ(x.filters[f].coefficients, y.filters[f].coefficients);
            }
        }
    }
}

// Lines as the encoder reports them, and all side information of the layers.
void ExpectSameContent(const BlockContent& sent, const BlockEncoder& encoder, const Decoded& got) {
    for (unsigned c = 0; c < sent.header.channels; ++c) {
        for (unsigned line = 0; line < kBlockSamples; ++line)
            ASSERT_EQ(encoder.Planes().Line(c, line), got.planes.Line(c, line)) << "line " << line;
    }
    const LayerGeometry& geometry = encoder.Geometry();
    for (int l = 0; l < geometry.layers; ++l) {
        const Layer& layer = geometry.layer[l];
        for (unsigned c = 0; c < sent.header.channels; ++c) {
            const auto first = static_cast<unsigned>(geometry.group[layer.group].firstLine) / kCodingBand;
            for (unsigned band = first + layer.startBand; band < first + layer.endBand; ++band)
                ASSERT_EQ(sent.info.cbandSi[c][band], got.info.cbandSi[c][band]);
            for (unsigned sfb = layer.startSfb; sfb < layer.endSfb; ++sfb) {
                const unsigned index = SfbIndex(layer.group, sfb);
                ASSERT_EQ(sent.info.level[c][index], got.info.level[c][index]);
                ASSERT_EQ(sent.info.noise[c][index], got.info.noise[c][index]);
                ASSERT_EQ(sent.info.stereo[index], got.info.stereo[index]);
                ASSERT_EQ(sent.info.noiseMode[index], got.info.noiseMode[index]);
            }
        }
    }
}

// The lines that were asked for, wherever all planes fitted; the altered end of a code is reported by the
// encoder itself.
unsigned CountWantedLines(const BlockContent& content, const BlockEncoder& encoder) {
    unsigned same = 0;
    for (unsigned c = 0; c < content.header.channels; ++c) {
        for (unsigned line = 0; line < kBlockSamples; ++line)
            same += encoder.Planes().Line(c, line) == content.lines[c][line] ? 1 : 0;
    }
    return same;
}

TEST(BlockEncoder, TenThousandRandomBlocksDecodeToWhatWasEncoded) {
    constexpr int kBlocks = 10000;
    RandomBlocks random(20260101);
    auto encoder = std::make_unique<BlockEncoder>();
    auto decoded = std::make_unique<Decoded>();
    auto content = std::make_unique<BlockContent>();
    std::set<std::string> combinations;
    std::set<unsigned> rates;
    unsigned long wanted = 0;
    unsigned long lines = 0;
    int blocks = 0;
    for (int attempt = 0; blocks < kBlocks; ++attempt) {
        ASSERT_LT(attempt, 4 * kBlocks) << "most random headers must be encodable";
        *content = BlockContent{};
        const RateTables& rate = random.Rate();
        random.FillHeader(rate, content->header);
        BlockHeader& header = content->header;
        // The layers' lines and bands do not depend on the length, so any length shows them.
        header.frameLength = kMaxBlockBytes;
        wire::BitWriter scratch;
        WriteBlockHeader(header, scratch);
        LayerGeometry geometry;
        if (LayOutLayers(rate, header, static_cast<int>(kMaxBlockBytes) * 8, geometry) != BsacStatus::kOk)
            continue;
        for (unsigned c = 0; c < header.channels; ++c)
            content->info.noiseStart[c] = static_cast<std::int16_t>(random.Below(512));
        random.FillContent(geometry, *content);

        // From scarce to plenty; what does not fit gets more.
        wire::BitWriter writer;
        header.frameLength = static_cast<unsigned>(header.bits / 8) + random.Below(random.Below(2) != 0 ? 100 : 900);
        while (header.frameLength <= kMaxBlockBytes && !encoder->Encode(rate, *content, writer))
            header.frameLength += 1 + header.frameLength / 4;
        if (header.frameLength > kMaxBlockBytes)
            continue;

        ASSERT_EQ(writer.Bytes().size(), header.frameLength);
        ASSERT_EQ(decoded->Run(rate, header.channels, writer.Bytes()), BsacStatus::kOk);
        ExpectSameHeader(header, decoded->header);
        ExpectSameContent(*content, *encoder, *decoded);
        if (HasFailure())
            FAIL() << "block " << blocks;
        wanted += CountWantedLines(*content, *encoder);
        lines += header.channels * kBlockSamples;
        combinations.insert(std::to_string(header.channels) + std::to_string(static_cast<int>(header.windowSequence)) +
                            std::to_string(static_cast<int>(header.windowShape)) +
                            std::to_string(static_cast<int>(header.stereoMask)) + (header.segmented ? 's' : 'w') +
                            (header.noisePresent ? 'n' : '-'));
        rates.insert(rate.rate);
        ++blocks;
    }
    // 4 sequences, 2 shapes, segmented or not, noise or not; one mask for mono and four for stereo.
    EXPECT_EQ(combinations.size(), 4U * 2 * 2 * 2 * 5);
    EXPECT_EQ(rates.size(), 9U);
    EXPECT_GT(static_cast<double>(wanted), 0.3 * static_cast<double>(lines));
}

TEST(BlockEncoder, ABlockWithRoomForAllPlanesComesBackUnchangedWhateverFollowsItsLayers) {
    RandomBlocks random(7);
    auto encoder = std::make_unique<BlockEncoder>();
    auto content = std::make_unique<BlockContent>();
    const RateTables& rate = *FindRate(48000);
    BlockHeader& header = content->header;
    header.channels = 2;
    header.topLayer = 40;
    header.baseBand = 10;
    header.maxSfb = 40;
    for (ChannelHeader& channel : header.channel) {
        channel.cbandSiType = 4;
        channel.maxScalefactor = 120;
        channel.baseScalefactorModel = channel.enhScalefactorModel = 3;
    }
    header.frameLength = kMaxBlockBytes;
    LayerGeometry geometry;
    ASSERT_EQ(LayOutLayers(rate, header, static_cast<int>(kMaxBlockBytes) * 8, geometry), BsacStatus::kOk);
    random.FillContent(geometry, *content);
    wire::BitWriter writer;
    ASSERT_TRUE(encoder->Encode(rate, *content, writer));
    EXPECT_EQ(CountWantedLines(*content, *encoder), 2 * kBlockSamples);
    EXPECT_TRUE(encoder->Planes().Complete());

    // Extension data: behind the last layer 32 zeros, the sync 1111, any bytes. They are no part of the lines.
    std::vector<std::uint8_t> bytes = writer.Take();
    std::size_t used = bytes.size();
    while (bytes[used - 1] == 0)
        --used;
    ASSERT_LT(used + 50, bytes.size());
    for (std::size_t i = used + 4; i < bytes.size(); ++i)
        bytes[i] = static_cast<std::uint8_t>(0xF0 | random.Below(256));
    auto got = std::make_unique<Decoded>();
    ASSERT_EQ(got->Run(rate, 2, bytes), BsacStatus::kOk);
    for (unsigned line = 0; line < kBlockSamples; ++line) {
        for (unsigned c = 0; c < 2; ++c)
            ASSERT_EQ(got->planes.Line(c, line), encoder->Planes().Line(c, line)) << line;
    }
}

TEST(BlockEncoder, RefusesABlockThatCannotHoldItsSideInformation) {
    auto encoder = std::make_unique<BlockEncoder>();
    auto content = std::make_unique<BlockContent>();
    BlockHeader& header = content->header;
    header.baseBand = 10;
    header.maxSfb = 40;
    header.channel[0].baseScalefactorModel = 7;
    header.channel[0].maxScalefactor = 100;
    for (unsigned sfb = 0; sfb < 40; ++sfb)
        content->info.level[0][sfb] = 37;
    header.frameLength = 12;
    wire::BitWriter writer;
    EXPECT_FALSE(encoder->Encode(*FindRate(48000), *content, writer));
    EXPECT_EQ(writer.BitCount(), 0U);
    header.frameLength = 120;
    EXPECT_TRUE(encoder->Encode(*FindRate(48000), *content, writer));
}

TEST(BlockEncoder, RefusesLinesWithoutABaseLayer) {
    auto encoder = std::make_unique<BlockEncoder>();
    auto content = std::make_unique<BlockContent>();
    content->header.maxSfb = 5;
    content->header.frameLength = 100;
    wire::BitWriter writer;
    EXPECT_FALSE(encoder->Encode(*FindRate(48000), *content, writer));
}

} // namespace
