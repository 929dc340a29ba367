// The fixed-width part at the start of a block, bsac_raw_data_block (ISO/IEC 14496-3, 4.4.2.6), reading and
// writing.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "host/codec/BsacStatus.h"
#include "host/codec/BsacTables.h"
#include "host/wire/BitReader.h"
#include "host/wire/BitWriter.h"

namespace codec {

inline constexpr unsigned kBlockSamples = 1024;
inline constexpr unsigned kShortWindows = 8;

// Four neighbouring lines: layers and scalefactor bands begin and end at these.
inline constexpr unsigned kQuadLines = 4;
inline constexpr unsigned kQuads = kBlockSamples / kQuadLines;
inline constexpr unsigned kMaxChannels = 2;
inline constexpr unsigned kMaxBlockBytes = 2047; // frame_length has 11 bits

enum class WindowSequence : std::uint8_t { kLong, kStart, kShort, kStop };
enum class WindowShape : std::uint8_t { kSine, kKaiserBessel };

// ms_mask_present: how the two channels of a stereo block share bands.
enum class StereoMask : std::uint8_t { kNone, kMsPerBand, kMsEverywhere, kInfoPerBand };

struct TnsFilter {
    std::uint8_t length = 0; // in scalefactor bands, downwards from the filter before
    std::uint8_t order = 0;
    bool downwards = false;
    bool compressed = false; // coefficients are sent with one bit less; their scale stays
    std::array<std::int8_t, 31> coefficients{};
};

struct TnsWindow {
    std::uint8_t filterCount = 0;
    bool fineResolution = false; // coef_res: 4 bits instead of 3
    std::array<TnsFilter, 3> filters{};
};

struct ChannelHeader {
    std::uint8_t maxScalefactor = 0;
    std::uint8_t cbandSiType = 0;
    std::uint8_t baseScalefactorModel = 0; // index into kScalefactorModels, base layers
    std::uint8_t enhScalefactorModel = 0;  // ... enhancement layers
    std::uint8_t maxSfbSiLength = 0;       // steers budgets only: reserved bits of a scalefactor band, less 5
    bool tnsPresent = false;
    std::array<TnsWindow, kShortWindows> tns{}; // only [0] unless eight short windows
};

struct BlockHeader {
    unsigned frameLength = 0; // bytes of the block with this header
    unsigned channels = 1;
    bool segmented = false;            // sba_mode: each segment of layers has its own arithmetic code
    std::uint8_t topLayer = 0;         // number of enhancement layers
    std::uint8_t baseSnfThreshold = 0; // base layers code planes above this one in their own turn
    std::uint8_t baseBand = 0;
    WindowSequence windowSequence = WindowSequence::kLong;
    WindowShape windowShape = WindowShape::kSine;
    std::uint8_t maxSfb = 0;
    std::uint8_t grouping = 0; // 7 bits, first = window 1; 1 joins a window to the group of the window before
    bool noisePresent = false;
    std::uint8_t noiseStartSfb = 0;
    StereoMask stereoMask = StereoMask::kNone;
    std::array<ChannelHeader, kMaxChannels> channel{};
    std::size_t bits = 0; // of the header, after alignment

    [[nodiscard]] bool IsShort() const { return windowSequence == WindowSequence::kShort; }
    [[nodiscard]] std::size_t FrameBits() const { return static_cast<std::size_t>(frameLength) * 8; }
};

// The bands of the header's window at a rate: edges, one more than bands.
[[nodiscard]] inline std::span<const std::uint16_t> BandEdges(const RateTables& rate, const BlockHeader& header) {
    return header.IsShort() ? rate.shortBands : rate.longBands;
}

// Reads the header of a block of `channels` channels. `bytes` begins with the block and may end before it
// does: a shortened block keeps its frame_length, but its header must be there. On kOk all of `header` is set
// and legal (maxSfb within the bands of the rate, filter counts and orders within their arrays).
[[nodiscard]] BsacStatus ReadBlockHeader(std::span<const std::uint8_t> bytes, const RateTables& rate, unsigned channels,
                                         BlockHeader& header);

// Appends the header, aligned to a byte, and sets header.bits. header_length is made from its size.
void WriteBlockHeader(BlockHeader& header, wire::BitWriter& writer);

} // namespace codec
