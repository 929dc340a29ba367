// What a block says about its coding bands and scalefactor bands (ISO/IEC 14496-3, 4.4.2.6: layer_cband_si,
// layer_scf), decoded and encoded by the same code.
#pragma once

#include <array>
#include <cstdint>

#include "host/codec/ArithmeticDecoder.h"
#include "host/codec/ArithmeticEncoder.h"
#include "host/codec/BlockHeader.h"
#include "host/codec/LayerGeometry.h"

namespace codec {

inline constexpr unsigned kBandsPerBlock = kBlockSamples / kCodingBand;

// stereo_info; ms_used is kMidSide.
enum class StereoInfo : std::uint8_t { kIndependent, kMidSide, kInPhase, kOutOfPhase };

struct SideInformation {
    // Of each coding band, by its place in the block.
    std::array<std::array<std::uint8_t, kBandsPerBlock>, kMaxChannels> cbandSi{};

    // Of each scalefactor band, by SfbIndex. What `level` means depends on the band: the scalefactor, the
    // energy of a noise band, or, in channel 1 of an intensity band, the intensity position.
    std::array<std::array<std::int16_t, kSfbsPerBlock>, kMaxChannels> level{};
    std::array<std::array<bool, kSfbsPerBlock>, kMaxChannels> noise{};
    std::array<StereoInfo, kSfbsPerBlock> stereo{};
    std::array<std::uint8_t, kSfbsPerBlock>
        noiseMode{}; // 0..3, only where both channels are noise and stereo is kOutOfPhase

    // Energy from which the differences of a channel's noise bands count down; sent with its first noise
    // band.
    std::array<std::int16_t, kMaxChannels> noiseStart{};
    std::array<bool, kMaxChannels> noiseStartKnown{};
};

// True where channel 1 is made from channel 0. A noise band of channel 1 has an energy in place of a
// position, so it stays noise whatever stereo_info says.
[[nodiscard]] inline bool IsIntensity(const SideInformation& info, unsigned index) {
    return info.stereo[index] >= StereoInfo::kInPhase && !info.noise[1][index];
}

// An intensity position from its code, and back: 0, -1, 1, -2, 2, ...
[[nodiscard]] constexpr int PositionFromCode(int code) {
    return code % 2 != 0 ? -(code + 1) / 2 : code / 2;
}
[[nodiscard]] constexpr int PositionCode(int position) {
    return position < 0 ? -2 * position - 1 : 2 * position;
}

// Codes the cband_si of the coding bands that are new with layer l. The decoder fills `info`, which must be
// clear at the start of a block, and limits values to what the channel's type allows; the encoder writes what
// `info` holds.
template <class Coder>
void CodeCodingBands(Coder& coder, const BlockHeader& header, const LayerGeometry& geometry, int l,
                     SideInformation& info);

// Codes flags and levels of the scalefactor bands that are new with layer l. An encoder's differences must
// fit the channel's models.
template <class Coder>
void CodeScalefactorBands(Coder& coder, const BlockHeader& header, const LayerGeometry& geometry, int l,
                          SideInformation& info);

// Layer l is left out: what is new with it has no value, in an encoder either.
void SkipSideInformation(const LayerGeometry& geometry, int l, SideInformation& info);

} // namespace codec
