// The arithmetic-coded part of a block: layer after layer, side information and bit-planes as far as each
// layer's budget goes (ISO/IEC 14496-3, 4.5.2.6). Decoder and encoder run the same loop, so they spend the
// same budgets.
#pragma once

#include <array>

#include "host/codec/BitPlanes.h"
#include "host/codec/BlockHeader.h"
#include "host/codec/LayerGeometry.h"
#include "host/codec/SideInformation.h"

namespace codec {

// One arithmetic code for the whole block, or, in a segmented block, one for each segment, and its place in the
// block.
template <class Coder> struct Segment {
    Coder coder;
    int lastLayer = 0;
    int startBit = 0;
    int endBit = 0;
};

template <class Coder> struct LayerLoop {
    // Codes the layers that are present. `info` and `planes` must be as new for a decoder and filled for an
    // encoder. `blockBits` is where the data ends, as for LayOutLayers.
    void Run(typename Coder::Medium medium, const BlockHeader& header, const LayerGeometry& geometry, int blockBits,
             SideInformation& info, BitPlanes& planes);

    // The segments that Run coded, in the order of their bits.
    std::array<Segment<Coder>, kMaxLayers> segments;
    int segmentCount = 0;

private:
    void RunWhole(typename Coder::Medium medium, const BlockHeader& header, const LayerGeometry& geometry,
                  int blockBits, SideInformation& info, BitPlanes& planes);
    void RunSegmented(typename Coder::Medium medium, const BlockHeader& header, const LayerGeometry& geometry,
                      int blockBits, SideInformation& info, BitPlanes& planes);
    void SpendLeftovers(const BlockHeader& header, const LayerGeometry& geometry, BitPlanes& planes);
};

} // namespace codec
