// Which lines, coding bands and scalefactor bands each layer of a block carries, and at which bit it is due
// (ISO/IEC 14496-3, 4.5.2.6.2.5).
//
// Lines. A block has one group of 1024 lines, or, with eight short windows, groups of 1..8 windows of 128
// lines. The lines of a group of w windows form one vector: quads of four lines go round the windows, so that
// line i (a multiple of 4) + k of window b is at i * w + 4 * b + k. Groups lie one after the other. 32 lines
// of a group's vector are a coding band. A scalefactor band spans all windows of its group.
//
// Layers. Base layers take 32 lines each, group after group, up to the base end. Every enhancement layer
// takes the next few lines of one group: of the only one, or of each in turn, a group of w windows w times in
// a row. Neighbouring layers with the same group and the same last coding band are a segment.
//
// Worked example: 48 kHz stereo, a long block of 113 bytes with a header of 96 bits, base_band 10, top_layer
// 32, cband_si_type 12 for both channels (8 reserved bits), max_sfb_si_len 2 and 5, max_sfb 46 (the last line
// is 864). 10 base layers of 32 lines end at line 320; then layer 10 has lines 320..331, layer 11 332..343,
// layer 12 344..351, which ends coding band 10 and with it the segment: all scalefactor bands that begin
// below 352 are sent in layer 10. Layer 0 reserves 11 bits for coding band 0 and 2 + 5 or 5 + 5 for each of 8
// scalefactor bands, in each channel: 2 * 11 + 8 * (7 + 10) = 158. The base layers need 755 bits in all, more
// than the 672 that the rate rule gives them:
//
//   layer      lines    sfb    reserved  offset -> next
//   0          0-31     0-7    158       96 -> 254
//   1          32-63    8-12   101       254 -> 355
//   9          288-319  28     ...       ... -> 755
//   10         320-331  29     33        755 -> 803
//   12         344-351  -      0         851 -> 883
//   13         352-363  30     33        883 -> 904   (the block ends at 904)
//   14         364-375  -      0         904 -> 904
//   41         652-663  -      0         904 -> 2048  (the last offset is the target, beyond the block's end)
#pragma once

#include <array>
#include <cstdint>

#include "host/codec/BlockHeader.h"
#include "host/codec/BsacStatus.h"
#include "host/codec/BsacTables.h"

namespace codec {

inline constexpr unsigned kMaxLayers = 95;  // at most 32 base layers and 63 enhancement layers
inline constexpr unsigned kCodingBand = 32; // lines
inline constexpr unsigned kMaxSfb = 51;     // scalefactor bands of a window, largest of all rates

inline constexpr unsigned kSfbsPerGroup = 16; // of short windows; a long block uses the indices 0..50
inline constexpr unsigned kSfbsPerBlock = kShortWindows * kSfbsPerGroup;

// The place of a scalefactor band among those of the block.
[[nodiscard]] constexpr unsigned SfbIndex(unsigned group, unsigned sfb) {
    return group * kSfbsPerGroup + sfb;
}

struct Layer {
    std::uint8_t group = 0;
    std::uint8_t startBand = 0, endBand = 0; // coding bands that are new with this layer
    std::uint8_t startSfb = 0, endSfb = 0;   // scalefactor bands that are new with this layer
    bool segmentEnd = false;
    int startLine = 0, endLine = 0; // lines of the layer, in the group's vector
};

struct LineGroup {
    int windows = 1;
    int firstLine = 0; // of the group in the block: 128 lines for each window before it
    int baseEnd = 0;   // lines of the base layers
    int lastLine = 0;  // end of the last scalefactor band that is sent
};

// Where four neighbouring lines of the block belong. Lines of a group of w windows come in quads that go round the windows.
struct QuadPlace {
    std::uint16_t spectrumLine = 0; // of the first one, windows one after another
    std::uint16_t sfbIndex = 0;     // see SfbIndex
};

// All that lines and bands of the layers depend on. Blocks in a row mostly have it in common.
struct LayerShape {
    const RateTables* rate = nullptr;
    unsigned channels = 0;
    bool isShort = false;
    std::uint8_t grouping = 0;
    std::uint8_t baseBand = 0;
    std::uint8_t maxSfb = 0;
    std::uint8_t topLayer = 0;

    [[nodiscard]] bool operator==(const LayerShape&) const = default;
};

struct LayerGeometry {
    LayerShape shape; // what is here was laid out for
    unsigned groups = 0;
    std::array<LineGroup, kShortWindows> group;
    std::array<QuadPlace, kQuads> quad; // of those in bands that are sent

    int baseLayers = 0;
    int layers = 0; // base and enhancement layers
    // Layers that can be decoded: all, but in a block that was cut short only those that lie before the cut.
    int layersPresent = 0;
    std::array<Layer, kMaxLayers + 1> layer;
    // Bit at which a layer is due; [layers] is the end of the last one. Need not rise from layer to layer.
    std::array<int, kMaxLayers + 1> offset;
    std::array<int, kMaxLayers + 1> target; // the same by the rate rule alone, for base layers 0

    [[nodiscard]] bool IsBase(int l) const { return l < baseLayers; }
    [[nodiscard]] int Budget(int l) const { return offset[l + 1] - offset[l]; }
};

// Lays out the layers of a block with a legal header. `blockBits` is where the block's data ends: 8 *
// frame_length, or less when only the first bytes of the block arrived. A whole block may be shorter than the
// targets of its layers: then the zeros after its end belong to the code, and all layers are present.
// kNoBaseLayer when there are lines to send but no base layer to send them in.
[[nodiscard]] BsacStatus LayOutLayers(const RateTables& rate, const BlockHeader& header, int blockBits,
                                      LayerGeometry& geometry);

// The bit at which enhancement layer k = 0..63 is due by the rate rule: 16 + k kbit/s for each channel, in
// whole bytes.
[[nodiscard]] int LayerTarget(const RateTables& rate, unsigned channels, int k);

} // namespace codec
