#include "host/codec/LayerGeometry.h"

#include <algorithm>
#include <span>

namespace codec {

namespace {

// Lines of the base layers of a group of eight short windows, before the limit to the lines that are sent.
int ShortBaseEnd(const RateTables& rate, int baseBand, int windows) {
    const int lines = 4 * baseBand * windows;
    if (rate.enhancementStep != 8)
        return lines - lines % rate.enhancementStep;
    // Round to a place that the steps of 12, 12 and 8 lines continue from.
    const int rest = lines % static_cast<int>(kCodingBand);
    if (rest >= 16)
        return lines - rest + 20;
    if (rest >= 4)
        return lines - rest + 8;
    return lines;
}

void LayOutGroups(const RateTables& rate, const BlockHeader& header, LayerGeometry& geometry) {
    const int bandsEnd = BandEdges(rate, header)[header.maxSfb];
    geometry.groups = 0;
    if (!header.IsShort()) {
        geometry.groups = 1;
        geometry.group[0] = {1, 0, std::min(static_cast<int>(kCodingBand) * header.baseBand, bandsEnd), bandsEnd};
        return;
    }
    int window = 0;
    while (window < static_cast<int>(kShortWindows)) {
        LineGroup group{1, 128 * window, 0, 0};
        while (++window < static_cast<int>(kShortWindows) && (header.grouping >> (7 - window) & 1) != 0)
            ++group.windows;
        group.lastLine = bandsEnd * group.windows;
        group.baseEnd = std::min(ShortBaseEnd(rate, header.baseBand, group.windows), group.lastLine);
        geometry.group[geometry.groups++] = group;
    }
}

int BandCount(int lines) {
    return (lines + static_cast<int>(kCodingBand) - 1) / static_cast<int>(kCodingBand);
}

// Appends a layer that brings its group to `endLine`, starting where the group's previous layer ended.
void AppendLayer(LayerGeometry& geometry, std::array<int, kShortWindows>& groupEnd, unsigned group, int endLine) {
    Layer& layer = geometry.layer[geometry.layers++];
    layer.group = static_cast<std::uint8_t>(group);
    layer.startLine = groupEnd[group];
    layer.endLine = endLine;
    layer.startBand = static_cast<std::uint8_t>(BandCount(groupEnd[group]));
    layer.endBand = static_cast<std::uint8_t>(BandCount(endLine));
    groupEnd[group] = endLine;
}

void LayOutLines(const RateTables& rate, const BlockHeader& header, LayerGeometry& geometry) {
    std::array<int, kShortWindows> groupEnd{};
    geometry.layers = 0;
    for (unsigned g = 0; g < geometry.groups; ++g) {
        const int baseEnd = geometry.group[g].baseEnd;
        for (int end = kCodingBand; groupEnd[g] < baseEnd; end += kCodingBand)
            AppendLayer(geometry, groupEnd, g, std::min(end, baseEnd));
    }
    geometry.baseLayers = geometry.layers;

    unsigned group = 0;
    int turn = 0; // windows of the group that have had their layer
    for (unsigned k = 0; k < header.topLayer; ++k) {
        int end = groupEnd[group] + rate.enhancementStep;
        if (rate.enhancementStep == 8 && end % static_cast<int>(kCodingBand) != 0)
            end += 4;
        AppendLayer(geometry, groupEnd, group, std::min(end, geometry.group[group].lastLine));
        if (++turn == geometry.group[group].windows) {
            turn = 0;
            group = (group + 1) % geometry.groups;
        }
    }
}

// All scalefactor bands of a segment are sent in its first layer, so the segment's end line decides, not the
// layer's.
void LayOutScalefactorBands(std::span<const std::uint16_t> edges, const BlockHeader& header, LayerGeometry& geometry) {
    std::array<std::uint8_t, kShortWindows> groupEnd{};
    for (int first = 0; first < geometry.layers;) {
        const Layer& opening = geometry.layer[first];
        int last = first;
        while (last + 1 < geometry.layers && geometry.layer[last + 1].group == opening.group &&
               geometry.layer[last + 1].endBand == opening.endBand)
            ++last;
        const int windows = geometry.group[opening.group].windows;
        const std::uint8_t start = groupEnd[opening.group];
        int sfb = std::max<int>(start, 1);
        while (sfb < header.maxSfb && edges[static_cast<std::size_t>(sfb)] * windows < geometry.layer[last].endLine)
            ++sfb;
        const auto end = static_cast<std::uint8_t>(std::min<int>(sfb, header.maxSfb));
        for (int l = first; l <= last; ++l) {
            geometry.layer[l].startSfb = l == first ? start : end;
            geometry.layer[l].endSfb = end;
            geometry.layer[l].segmentEnd = l == last;
        }
        groupEnd[opening.group] = end;
        first = last + 1;
    }
}

void LayOutQuads(std::span<const std::uint16_t> edges, const BlockHeader& header, LayerGeometry& geometry) {
    for (unsigned g = 0; g < geometry.groups; ++g) {
        const auto firstLine = static_cast<unsigned>(geometry.group[g].firstLine);
        const auto windows = static_cast<unsigned>(geometry.group[g].windows);
        unsigned quad = firstLine / kQuadLines;
        for (unsigned sfb = 0; sfb < header.maxSfb; ++sfb) {
            for (unsigned line = firstLine + edges[sfb]; line < firstLine + edges[sfb + 1]; line += kQuadLines) {
                for (unsigned w = 0; w < windows; ++w)
                    geometry.quad[quad++] = {static_cast<std::uint16_t>(line + 128 * w),
                                             static_cast<std::uint16_t>(SfbIndex(g, sfb))};
            }
        }
    }
}

// Bits set aside for the side information of a layer: for each of its bands so many, all channels together.
struct Reserve {
    int firstBand = 0; // coding band 0
    int otherBand = 0;
    int sfb = 0;

    explicit Reserve(const BlockHeader& header) {
        for (unsigned c = 0; c < header.channels; ++c) {
            firstBand += kBand0ReservedBits;
            otherBand += kCbandSiTypes[header.channel[c].cbandSiType].reservedBits;
            sfb += header.channel[c].maxSfbSiLength + 5;
        }
    }
    [[nodiscard]] int Bits(const Layer& layer) const {
        const int bands = layer.endBand - layer.startBand;
        const int firstBands = bands > 0 && layer.startBand == 0 ? 1 : 0;
        return firstBands * firstBand + (bands - firstBands) * otherBand +
               std::max(layer.endSfb - layer.startSfb, 0) * sfb;
    }
};

// Offsets by the rate rule from the top down, then what the base layers lack or have left over is shared out.
void LayOutOffsets(const BlockHeader& header, int blockBits, LayerGeometry& geometry) {
    const int layers = geometry.layers;
    const int base = geometry.baseLayers;
    const Reserve reserve(header);
    std::array<int, kMaxLayers> reserved;
    for (int l = 0; l < layers; ++l)
        reserved[l] = reserve.Bits(geometry.layer[l]);

    auto& offset = geometry.offset;
    const int headerBits = static_cast<int>(header.bits);
    offset[layers] = std::max(static_cast<int>(header.FrameBits()), geometry.target[layers]);
    int start = offset[layers] - reserved[layers - 1]; // latest start of the layer below that leaves room for this one
    for (int l = layers - 1; l >= base; --l) {
        offset[l] = std::min(start, geometry.target[l]);
        start = offset[l] - reserved[l - 1];
    }
    for (int l = base - 1; l >= 1; --l) {
        offset[l] = start;
        start = offset[l] - reserved[l - 1];
    }
    offset[0] = headerBits;

    if (headerBits > start) {
        // The base layers do not fit: the enhancement layers, last first, give up what they have beyond their
        // reserve. A layer with less than its reserve raises the debt.
        int debt = headerBits - start;
        int shift = 0;
        int nextOffset = offset[layers];
        for (int l = layers - 1; l >= base && (debt > 0 || shift != 0); --l) {
            const int given = debt > 0 ? std::min(nextOffset - offset[l] - reserved[l], debt) : 0;
            nextOffset = offset[l];
            debt -= given;
            shift += given;
            offset[l] += shift;
        }
        for (int l = 1; l < base; ++l)
            offset[l] += shift;
    } else {
        const int spare = start - headerBits;
        for (int l = 1; l < base; ++l)
            offset[l] = offset[l - 1] + reserved[l - 1] + spare / base + (l <= spare % base ? 1 : 0);
    }

    // What comes after a cut is lost, not zero, and a decoder looks as far ahead as its register holds.
    constexpr int kLookAhead = 30;
    geometry.layersPresent = layers;
    if (blockBits < static_cast<int>(header.FrameBits())) {
        geometry.layersPresent = 0;
        while (geometry.layersPresent < layers && offset[geometry.layersPresent + 1] + kLookAhead <= blockBits)
            ++geometry.layersPresent;
    }

    // The end of the last layer stays where it is: its budget may reach beyond the block, where all bits are
    // 0.
    for (int l = layers - 1; l >= 0 && offset[l] > blockBits; --l)
        offset[l] = blockBits;
}

} // namespace

int LayerTarget(const RateTables& rate, unsigned channels, int k) {
    const int bits = static_cast<int>((16U + static_cast<unsigned>(k)) * 1000U * kBlockSamples / rate.rate);
    return static_cast<int>(channels) * 8 * (bits / 8);
}

namespace {

// What depends on the shape alone.
void LayOutShape(const RateTables& rate, const BlockHeader& header, LayerGeometry& geometry) {
    LayOutGroups(rate, header, geometry);
    LayOutLines(rate, header, geometry);
    LayOutScalefactorBands(BandEdges(rate, header), header, geometry);
    LayOutQuads(BandEdges(rate, header), header, geometry);
    geometry.target.fill(0);
    for (int l = geometry.baseLayers; l <= geometry.layers; ++l)
        geometry.target[l] = LayerTarget(rate, header.channels, l - geometry.baseLayers);
}

} // namespace

BsacStatus LayOutLayers(const RateTables& rate, const BlockHeader& header, int blockBits, LayerGeometry& geometry) {
    const LayerShape shape{&rate,           header.channels, header.IsShort(), header.grouping,
                           header.baseBand, header.maxSfb,   header.topLayer};
    if (geometry.shape != shape) {
        LayOutShape(rate, header, geometry);
        geometry.shape = shape;
    }
    geometry.layersPresent = 0;
    if (geometry.baseLayers == 0) {
        geometry.shape = {};
        geometry.layers = 0; // without lines the block ends with its header
        return header.maxSfb == 0 ? BsacStatus::kOk : BsacStatus::kNoBaseLayer;
    }
    LayOutOffsets(header, blockBits, geometry);
    return BsacStatus::kOk;
}

} // namespace codec
