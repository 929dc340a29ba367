#include "host/codec/LayerLoop.h"

#include <algorithm>

namespace codec {

namespace {

// The lines that are new with layer l get their planes, the highest of which is returned.
unsigned OpenLines(const LayerGeometry& geometry, int l, const SideInformation& info, BitPlanes& planes) {
    const Layer& layer = geometry.layer[l];
    const int first = geometry.group[layer.group].firstLine;
    const int end = first + layer.endLine;
    unsigned highest = 0;
    for (int line = first + layer.startLine; line < end;) {
        const int band = line / static_cast<int>(kCodingBand);
        const int bandEnd = std::min((band + 1) * static_cast<int>(kCodingBand), end);
        highest = std::max(highest, planes.Open(line, bandEnd, {info.cbandSi[0][band], info.cbandSi[1][band]}));
        line = bandEnd;
    }
    return highest;
}

QuadSet LinesOf(const LayerGeometry& geometry, unsigned group, int startLine, int endLine) {
    const int first = geometry.group[group].firstLine;
    QuadSet set;
    set.AddLines(first + startLine, first + endLine);
    return set;
}

template <class Coder>
void CodeOwnLines(Coder& coder, const BlockHeader& header, const LayerGeometry& geometry, int l, unsigned highest,
                  BitPlanes& planes) {
    const Layer& layer = geometry.layer[l];
    const unsigned lowest = geometry.IsBase(l) ? header.baseSnfThreshold + 1U : 1U;
    planes.Code(coder, {.quads = LinesOf(geometry, layer.group, layer.startLine, layer.endLine),
                        .highest = highest,
                        .lowest = lowest,
                        .thenAll = !header.segmented,
                        .limited = header.segmented});
}

} // namespace

template <class Coder>
void LayerLoop<Coder>::RunWhole(typename Coder::Medium medium, const BlockHeader& header, const LayerGeometry& geometry,
                                int blockBits, SideInformation& info, BitPlanes& planes) {
    segmentCount = 1;
    Segment<Coder>& segment = segments[0];
    segment.startBit = geometry.offset[0];
    segment.endBit = blockBits;
    segment.coder.Start(medium, static_cast<std::size_t>(segment.startBit), static_cast<std::size_t>(segment.endBit));

    for (int l = 0; l < geometry.layersPresent; ++l) {
        segment.coder.Grant(geometry.Budget(l)); // debts and left-overs go from layer to layer
        CodeCodingBands(segment.coder, header, geometry, l, info);
        const unsigned highest = OpenLines(geometry, l, info, planes);
        CodeScalefactorBands(segment.coder, header, geometry, l, info);
        CodeOwnLines(segment.coder, header, geometry, l, highest, planes);
    }
}

template <class Coder>
void LayerLoop<Coder>::RunSegmented(typename Coder::Medium medium, const BlockHeader& header,
                                    const LayerGeometry& geometry, int blockBits, SideInformation& info,
                                    BitPlanes& planes) {
    int bit = geometry.offset[0];
    bool first = true; // the layer opens a segment
    for (int l = 0; l < geometry.layersPresent; ++l) {
        if (first) {
            int length = 0;
            int last = l;
            for (;; ++last) {
                length += std::max(geometry.Budget(last), 0);
                if (geometry.layer[last].segmentEnd)
                    break;
            }
            Segment<Coder>& segment = segments[segmentCount++];
            segment.lastLayer = last;
            segment.startBit = std::min(bit, blockBits);
            bit += length;
            segment.endBit = std::min(bit, blockBits);
            segment.coder.Start(medium, static_cast<std::size_t>(segment.startBit),
                                static_cast<std::size_t>(segment.endBit));
            segment.coder.Grant(geometry.Budget(l) - 1);
        } else {
            segments[segmentCount - 1].coder.Grant(geometry.Budget(l));
        }
        first = geometry.layer[l].segmentEnd;
        Segment<Coder>& segment = segments[segmentCount - 1];
        if (!segment.coder.Spent()) {
            CodeCodingBands(segment.coder, header, geometry, l, info);
            const unsigned highest = OpenLines(geometry, l, info, planes);
            CodeScalefactorBands(segment.coder, header, geometry, l, info);
            CodeOwnLines(segment.coder, header, geometry, l, highest, planes);
        } else {
            SkipSideInformation(geometry, l, info);
            OpenLines(geometry, l, info, planes);
        }
    }
    SpendLeftovers(header, geometry, planes);
}

// Each segment's code goes on with the lines that are coded up to its end and then, while bits are left, with
// the lines of the layers above.
template <class Coder>
void LayerLoop<Coder>::SpendLeftovers(const BlockHeader& header, const LayerGeometry& geometry, BitPlanes& planes) {
    std::array<int, kShortWindows> codedEnd{};
    for (unsigned g = 0; g < geometry.groups; ++g)
        codedEnd[g] = geometry.group[g].baseEnd;
    int l = 0;
    for (int s = 0; s < segmentCount; ++s) {
        Segment<Coder>& segment = segments[s];
        if (!header.IsShort())
            codedEnd[0] = geometry.group[0].baseEnd;
        for (; l <= segment.lastLayer; ++l) {
            if (!geometry.IsBase(l))
                codedEnd[geometry.layer[l].group] = geometry.layer[l].endLine;
        }
        if (segment.coder.Spent())
            continue;
        QuadSet set;
        for (unsigned g = 0; g < geometry.groups; ++g)
            set.AddLines(geometry.group[g].firstLine, geometry.group[g].firstLine + codedEnd[g]);
        planes.Code(segment.coder, {.quads = set, .limited = true});
        for (int k = segment.lastLayer + 1; k < geometry.layersPresent && !segment.coder.Spent(); ++k) {
            const Layer& layer = geometry.layer[k];
            int& end = codedEnd[layer.group];
            planes.Code(segment.coder, {.quads = LinesOf(geometry, layer.group, end, layer.endLine), .limited = true});
            // On purpose: with short windows the ends stay advanced for the segments that follow, until an
            // enhancement layer of the group comes round.
            end = std::max(end, layer.endLine);
        }
    }
}

template <class Coder>
void LayerLoop<Coder>::Run(typename Coder::Medium medium, const BlockHeader& header, const LayerGeometry& geometry,
                           int blockBits, SideInformation& info, BitPlanes& planes) {
    segmentCount = 0;
    if (geometry.layersPresent == 0)
        return;
    if (header.segmented)
        RunSegmented(medium, header, geometry, blockBits, info, planes);
    else
        RunWhole(medium, header, geometry, blockBits, info, planes);
}

template struct LayerLoop<ArithmeticDecoder>;
template struct LayerLoop<ArithmeticEncoder>;

} // namespace codec
