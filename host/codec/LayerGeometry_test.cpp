#include "host/codec/LayerGeometry.h"

#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace codec;

LayerGeometry LayOut(const RateTables& rate, const BlockHeader& header) {
    LayerGeometry geometry;
    EXPECT_EQ(LayOutLayers(rate, header, static_cast<int>(header.FrameBits()), geometry), BsacStatus::kOk);
    return geometry;
}

std::vector<int> EndSfbs(const LayerGeometry& geometry, int first, int count) {
    std::vector<int> ends;
    for (int l = first; l < first + count; ++l)
        ends.push_back(geometry.layer[l].endSfb);
    return ends;
}

std::vector<int> EndLines(const LayerGeometry& geometry, int first, int count) {
    std::vector<int> ends;
    for (int l = first; l < first + count; ++l)
        ends.push_back(geometry.layer[l].endLine);
    return ends;
}

std::vector<int> Offsets(const LayerGeometry& geometry, int first, int count) {
    return {geometry.offset.begin() + first, geometry.offset.begin() + first + count};
}

BlockHeader StereoLong() {
    BlockHeader header;
    header.frameLength = 113;
    header.bits = 96;
    header.channels = 2;
    header.topLayer = 32;
    header.baseBand = 10;
    header.maxSfb = 46;
    for (ChannelHeader& channel : header.channel)
        channel.cbandSiType = 12;
    header.channel[0].maxSfbSiLength = 2;
    header.channel[1].maxSfbSiLength = 5;
    return header;
}

TEST(LayerGeometry, StereoLongBlockThatOverflowsItsBaseLayers) {
    const LayerGeometry geometry = LayOut(*FindRate(48000), StereoLong());
    EXPECT_EQ(geometry.baseLayers, 10);
    EXPECT_EQ(geometry.layers, 42);
    EXPECT_EQ(geometry.layersPresent, 42);
    EXPECT_EQ(geometry.group[0].lastLine, 864);
    EXPECT_EQ(EndLines(geometry, 8, 6), (std::vector{288, 320, 332, 344, 352, 364}));
    EXPECT_EQ(EndSfbs(geometry, 0, 14), (std::vector{8, 13, 17, 20, 22, 24, 26, 27, 28, 29, 30, 30, 30, 31}));
    EXPECT_TRUE(geometry.layer[12].segmentEnd);
    EXPECT_FALSE(geometry.layer[11].segmentEnd);
    EXPECT_EQ(Offsets(geometry, 0, 8), (std::vector{96, 254, 355, 439, 506, 556, 606, 656}));
    EXPECT_EQ(Offsets(geometry, 10, 6), (std::vector{755, 803, 851, 883, 904, 904}));
    EXPECT_EQ(Offsets(geometry, 41, 2), (std::vector{904, 2048})) << "the last end is not clipped";
}

TEST(LayerGeometry, MonoLongBlockLongerThanItsTarget) {
    BlockHeader header;
    header.frameLength = 173;
    header.bits = 72;
    header.topLayer = 32;
    header.baseBand = 10;
    header.maxSfb = 46;
    header.channel[0].cbandSiType = 1;
    header.channel[0].maxSfbSiLength = 5;
    const LayerGeometry geometry = LayOut(*FindRate(44100), header);
    EXPECT_EQ(Offsets(geometry, 0, 14),
              (std::vector{72, 163, 218, 263, 298, 323, 348, 373, 388, 403, 418, 442, 466, 490}));
    EXPECT_EQ(Offsets(geometry, 41, 2), (std::vector{1138, 1384}));
}

BlockHeader GroupedShort() {
    BlockHeader header;
    header.frameLength = 400;
    header.bits = 104;
    header.channels = 2;
    header.topLayer = 32;
    header.baseBand = 10;
    header.windowSequence = WindowSequence::kShort;
    header.maxSfb = 14;
    header.grouping = 0b1011001; // groups of 2, 3, 1 and 2 windows
    return header;
}

TEST(LayerGeometry, ShortBlockOfFourGroups) {
    const LayerGeometry geometry = LayOut(*FindRate(44100), GroupedShort());
    ASSERT_EQ(geometry.groups, 4U);
    const int kWindows[] = {2, 3, 1, 2};
    const int kBase[] = {84, 116, 40, 84};
    const int kLast[] = {256, 384, 128, 256};
    for (unsigned g = 0; g < 4; ++g) {
        EXPECT_EQ(geometry.group[g].windows, kWindows[g]);
        EXPECT_EQ(geometry.group[g].baseEnd, kBase[g]);
        EXPECT_EQ(geometry.group[g].lastLine, kLast[g]);
    }
    EXPECT_EQ(geometry.baseLayers, 12);
    EXPECT_EQ(EndLines(geometry, 0, 12), (std::vector{32, 64, 84, 32, 64, 96, 116, 32, 40, 32, 64, 84}));
    EXPECT_EQ(EndSfbs(geometry, 0, 7), (std::vector{4, 7, 8, 3, 6, 7, 8}));
    EXPECT_EQ(EndLines(geometry, 12, 8), (std::vector{96, 108, 128, 140, 152, 52, 96, 108}));
    EXPECT_EQ(EndSfbs(geometry, 12, 8), (std::vector{9, 9, 8, 9, 9, 9, 9, 9}));
    std::vector<int> groups;
    for (int l = 12; l < 20; ++l)
        groups.push_back(geometry.layer[l].group);
    EXPECT_EQ(groups, (std::vector{0, 0, 1, 1, 1, 2, 3, 3}));
}

TEST(LayerGeometry, ShortBaseEndsContinueThePatternOfTheSteps) {
    BlockHeader header = GroupedShort();
    header.grouping = 0b0111111; // groups of 1 and 7 windows
    const LayerGeometry geometry = LayOut(*FindRate(44100), header);
    EXPECT_EQ(geometry.group[0].baseEnd, 40);
    EXPECT_EQ(geometry.group[1].baseEnd, 276);
}

TEST(LayerGeometry, LowRatesTakeLongerSteps) {
    const std::pair<unsigned, int> kSteps[] = {{32000, 16}, {24000, 16}, {16000, 32}, {11025, 32}, {8000, 64}};
    for (const auto& [rate, step] : kSteps) {
        BlockHeader header;
        header.frameLength = 300;
        header.bits = 72;
        header.topLayer = 5;
        header.baseBand = 4;
        header.maxSfb = 30;
        const LayerGeometry geometry = LayOut(*FindRate(rate), header);
        EXPECT_EQ(geometry.layer[4].endLine, 128 + step) << rate;
        EXPECT_EQ(geometry.layer[5].endLine, 128 + 2 * step) << rate;
    }
}

TEST(LayerGeometry, TargetsAreWholeBytesForEachChannel) {
    EXPECT_EQ(LayerTarget(*FindRate(48000), 1, 0), 336);
    EXPECT_EQ(LayerTarget(*FindRate(48000), 2, 0), 672);
    EXPECT_EQ(LayerTarget(*FindRate(48000), 2, 32), 2048);
    EXPECT_EQ(LayerTarget(*FindRate(44100), 1, 0), 368);
    EXPECT_EQ(LayerTarget(*FindRate(44100), 1, 32), 1112);
    EXPECT_EQ(LayerTarget(*FindRate(24000), 1, 3), 808);
    EXPECT_EQ(LayerTarget(*FindRate(11025), 1, 63), 7336);
}

TEST(LayerGeometry, ABlockWithoutABaseLayerIsRefusedUnlessItHasNoLines) {
    LayerGeometry geometry;
    BlockHeader header = StereoLong();
    header.baseBand = 0;
    EXPECT_EQ(LayOutLayers(*FindRate(48000), header, 904, geometry), BsacStatus::kNoBaseLayer);
    header.maxSfb = 0;
    EXPECT_EQ(LayOutLayers(*FindRate(48000), header, 904, geometry), BsacStatus::kOk);
    EXPECT_EQ(geometry.layers, 0);
    // The rounding of short windows at low rates can leave every group without base lines.
    header = GroupedShort();
    header.baseBand = 1;
    header.grouping = 0;
    EXPECT_EQ(LayOutLayers(*FindRate(24000), header, 3200, geometry), BsacStatus::kNoBaseLayer);
}

TEST(LayerGeometry, ACutBlockHasTheLayersBeforeTheCut) {
    BlockHeader header = StereoLong();
    header.frameLength = 256;
    LayerGeometry whole;
    ASSERT_EQ(LayOutLayers(*FindRate(48000), header, 2048, whole), BsacStatus::kOk);
    int before = 0;
    for (int bits = 0; bits < 2048; bits += 8) {
        LayerGeometry cut;
        ASSERT_EQ(LayOutLayers(*FindRate(48000), header, bits, cut), BsacStatus::kOk);
        EXPECT_GE(cut.layersPresent, before);
        before = cut.layersPresent;
        for (int l = 0; l < cut.layersPresent; ++l) {
            EXPECT_EQ(cut.offset[l], whole.offset[l]);
            EXPECT_LE(cut.offset[l + 1], bits);
        }
    }
    EXPECT_GT(before, 38);
}

TEST(LayerGeometry, LayersOfAGroupFollowEachOtherAndStayInItsLines) {
    for (unsigned rate : {48000U, 44100U, 32000U, 24000U, 22050U, 16000U, 12000U, 11025U, 8000U}) {
        for (unsigned baseBand = 1; baseBand < 32; ++baseBand) {
            for (unsigned grouping = 0; grouping < 128; grouping += 5) {
                BlockHeader header = GroupedShort();
                header.topLayer = 63;
                header.baseBand = static_cast<std::uint8_t>(baseBand);
                header.grouping = static_cast<std::uint8_t>(grouping);
                LayerGeometry geometry;
                if (LayOutLayers(*FindRate(rate), header, 3200, geometry) != BsacStatus::kOk)
                    continue;
                ASSERT_LE(geometry.layers, static_cast<int>(kMaxLayers));
                std::array<int, kShortWindows> end{};
                std::array<int, kShortWindows> sfb{};
                for (int l = 0; l < geometry.layers; ++l) {
                    const Layer& layer = geometry.layer[l];
                    ASSERT_EQ(layer.startLine, end[layer.group]);
                    ASSERT_EQ(layer.startSfb, sfb[layer.group]);
                    ASSERT_EQ(layer.endLine % 4, 0);
                    ASSERT_GE(layer.endLine, layer.startLine);
                    ASSERT_GE(layer.endSfb, layer.startSfb);
                    ASSERT_LE(layer.endLine, geometry.group[layer.group].lastLine);
                    end[layer.group] = layer.endLine;
                    sfb[layer.group] = layer.endSfb;
                }
            }
        }
    }
}

} // namespace
