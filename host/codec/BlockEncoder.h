// Writes one block from its fields: the inverse of what BsacDecoder does between BlockHeader and BitPlanes.
#pragma once

#include "host/codec/ArithmeticEncoder.h"
#include "host/codec/BitPlanes.h"
#include "host/codec/BlockHeader.h"
#include "host/codec/BsacTables.h"
#include "host/codec/LayerGeometry.h"
#include "host/codec/LayerLoop.h"
#include "host/codec/SideInformation.h"
#include "host/wire/BitWriter.h"

namespace codec {

// What a block is to say. Lines need |q| < 2^topPlane of their coding band's cband_si, a cband_si the range
// of its channel's type, differences of levels the range of their models.
struct BlockContent {
    BlockHeader header; // frameLength is the size the block gets
    SideInformation info;
    QuantisedLines lines{};
};

class BlockEncoder {
public:
    // Appends a block of header.frameLength bytes to `writer`, which stands at a byte. Planes that do not fit
    // into the budgets are left out from the lowest on, and the last bits of the code may come out different
    // from what was wanted: Planes() has the lines as a decoder will get them. False, with nothing appended,
    // when the side information does not fit or the layers have no base.
    [[nodiscard]] bool Encode(const RateTables& rate, BlockContent& content, wire::BitWriter& writer);

    // Of the last block. No layers when the block has no lines.
    [[nodiscard]] const BitPlanes& Planes() const { return planes; }
    [[nodiscard]] const LayerGeometry& Geometry() const { return geometry; }

private:
    LayerGeometry geometry;
    LayerLoop<ArithmeticEncoder> layers;
    BitPlanes planes;
    wire::BitWriter block;
};

} // namespace codec
