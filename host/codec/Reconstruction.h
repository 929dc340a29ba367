// From quantised lines and side information to the spectrum of each channel: dequantisation, M/S, noise
// substitution, intensity and temporal noise shaping, in this order (ISO/IEC 14496-3, 4.6).
#pragma once

#include <array>
#include <cstdint>

#include "host/codec/BitPlanes.h"
#include "host/codec/BlockHeader.h"
#include "host/codec/BsacTables.h"
#include "host/codec/LayerGeometry.h"
#include "host/codec/SideInformation.h"

namespace codec {

// 1024 lines, or eight windows of 128 one after another. The scale is that of 16-bit samples.
// Aligned for the transform, which takes whole spectra and short windows.
struct alignas(64) Spectrum : std::array<float, kBlockSamples> {};
using Spectra = std::array<Spectrum, kMaxChannels>;

class Reconstruction {
public:
    Reconstruction();

    // Restarts the noise at its first number.
    void Reset() { noiseSeed = kFirstSeed; }

    // Sets all lines of the channels in use, to finite values whatever the levels and filters say.
    void Run(const RateTables& rate, const BlockHeader& header, const LayerGeometry& geometry,
             const SideInformation& info, const BitPlanes& planes, Spectra& spectra);

private:
    static constexpr std::uint32_t kFirstSeed = 0x2545F491;
    static constexpr unsigned kSmall = 256; // magnitudes with a table entry; larger ones are rare
    static constexpr int kLowestLevel = -63;
    static constexpr int kHighestLevel = 255;

    using Four [[gnu::vector_size(4 * sizeof(float))]] = float;

    [[nodiscard]] float Gain(int level) const;
    // Sets all lines, those of noise and intensity bands to 0.
    void Dequantise(const BlockHeader& header, const LayerGeometry& geometry, const SideInformation& info,
                    const BitPlanes& planes, Spectra& spectra) const;
    [[nodiscard]] Four QuadValues(const Quad& quad, unsigned channel, int level) const;
    // Noise bands, and those that channel 1 gets from channel 0.
    void FillBands(std::span<const std::uint16_t> edges, const BlockHeader& header, const LayerGeometry& geometry,
                   const SideInformation& info, Spectra& spectra);
    void SubstituteNoise(const SideInformation& info, unsigned index, unsigned firstLine, unsigned lines,
                         Spectra& spectra);

    std::array<float, kSmall> power{};                          // n^(4/3)
    std::array<float, kHighestLevel - kLowestLevel + 1> gain{}; // 2^((level - 100) / 4)
    std::uint32_t noiseSeed = kFirstSeed;
};

} // namespace codec
