#include "host/codec/BlockEncoder.h"

#include <algorithm>

namespace codec {

bool BlockEncoder::Encode(const RateTables& rate, BlockContent& content, wire::BitWriter& writer) {
    BlockHeader& header = content.header;
    block.Clear();
    WriteBlockHeader(header, block);
    if (header.frameLength > kMaxBlockBytes || header.bits > header.FrameBits())
        return false;
    const auto blockBits = static_cast<int>(header.FrameBits());
    if (LayOutLayers(rate, header, blockBits, geometry) != BsacStatus::kOk)
        return false;
    content.info.noiseStartKnown.fill(false);
    planes.Reset(header.channels, &content.lines);
    layers.Run({}, header, geometry, blockBits, content.info, planes);
    for (int s = 0; s < layers.segmentCount; ++s) {
        if (!layers.segments[s].coder.Fits())
            return false;
    }
    for (int s = 0; s < layers.segmentCount; ++s)
        layers.segments[s].coder.WriteTo(block);
    while (block.BitCount() < header.FrameBits())
        block.Write(0, static_cast<unsigned>(std::min<std::size_t>(header.FrameBits() - block.BitCount(), 32)));
    writer.WriteBytes(block.Bytes());
    return true;
}

} // namespace codec
