#include "host/codec/Reconstruction.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <span>

#include "host/codec/TemporalNoiseShaping.h"

namespace codec {

Reconstruction::Reconstruction() {
    for (unsigned n = 0; n < kSmall; ++n)
        power[n] = static_cast<float>(std::pow(n, 4.0 / 3.0));
    // The largest magnitude, 2^15 - 1, with the largest level is below 2^59: far above all sound, but finite.
    for (int level = kLowestLevel; level <= kHighestLevel; ++level)
        gain[static_cast<std::size_t>(level - kLowestLevel)] = static_cast<float>(std::exp2((level - 100) / 4.0));
}

inline float Reconstruction::Gain(int level) const {
    return gain[static_cast<std::size_t>(std::clamp(level, kLowestLevel, kHighestLevel) - kLowestLevel)];
}

namespace {

using FourBits [[gnu::vector_size(4 * sizeof(float))]] = std::uint32_t;

// The signs of four lines by their bits in Quad::negative.
constexpr std::array<std::array<std::uint32_t, kQuadLines>, 16> kSigns = [] {
    std::array<std::array<std::uint32_t, kQuadLines>, 16> signs{};
    for (unsigned bits = 0; bits < signs.size(); ++bits) {
        for (unsigned line = 0; line < kQuadLines; ++line)
            signs[bits][line] = (bits >> line & 1) << 31;
    }
    return signs;
}();

} // namespace

[[gnu::always_inline]] inline Reconstruction::Four Reconstruction::QuadValues(const Quad& quad, unsigned channel,
                                                                              int level) const {
    const std::uint16_t* magnitude = &quad.magnitude[static_cast<std::size_t>(kQuadLines) * channel];
    std::uint64_t all = 0;
    std::memcpy(&all, magnitude, sizeof all);
    Four values;
    if ((all & 0xFF00FF00FF00FF00U) == 0) [[likely]] {
        values = Four{power[magnitude[0]], power[magnitude[1]], power[magnitude[2]], power[magnitude[3]]};
    } else {
        for (unsigned k = 0; k < kQuadLines; ++k)
            values[k] = static_cast<float>(magnitude[k] * std::cbrt(static_cast<double>(magnitude[k])));
    }
    const auto signs = std::bit_cast<FourBits>(kSigns[quad.negative >> (kQuadLines * channel) & 15]);
    return std::bit_cast<Four>(std::bit_cast<FourBits>(values * Gain(level)) ^ signs);
}

void Reconstruction::Dequantise(const BlockHeader& header, const LayerGeometry& geometry, const SideInformation& info,
                                const BitPlanes& planes, Spectra& spectra) const {
    const bool stereo = header.channels == 2;
    const bool midSideEverywhere = header.stereoMask == StereoMask::kMsEverywhere;
    for (unsigned c = 0; c < header.channels; ++c)
        spectra[c].fill(0);
    const QuadSet& opened = planes.Opened();
    for (unsigned w = 0; w < kQuads / 64; ++w) {
        for (std::uint64_t left = opened.Word(w); left != 0; left &= left - 1) {
            const unsigned place = w * 64 + static_cast<unsigned>(std::countr_zero(left));
            const Quad& quad = planes.At(place);
            const auto [line, index] = geometry.quad[place];
            const Four first = QuadValues(quad, 0, info.level[0][index]);
            if (!stereo || IsIntensity(info, index)) {
                std::memcpy(&spectra[0][line], &first, sizeof first);
                continue;
            }
            const Four second = QuadValues(quad, 1, info.level[1][index]);
            // Sum and difference, or each as it is: without a branch, as bands differ.
            const bool midSide = midSideEverywhere || info.stereo[index] == StereoInfo::kMidSide;
            const FourBits mask = (midSide ? ~std::uint32_t{0} : 0) + FourBits{};
            const auto masked = [&mask](Four values) {
                return std::bit_cast<Four>(std::bit_cast<FourBits>(values) & mask);
            };
            const Four sum = first + masked(second);
            const Four difference =
                masked(first) + std::bit_cast<Four>(std::bit_cast<FourBits>(second) ^ (mask & 0x80000000U));
            std::memcpy(&spectra[0][line], &sum, sizeof sum);
            std::memcpy(&spectra[1][line], &difference, sizeof difference);
        }
    }
}

namespace {

// Numbers in [-1, 1), by a linear congruence.
float NextNoise(std::uint32_t& seed) {
    seed = seed * 1664525U + 1013904223U;
    return static_cast<float>(static_cast<std::int32_t>(seed)) * 0x1p-31F;
}

// Fills the lines with noise whose sum of squares is 2^(energy / 2).
void MakeNoise(std::uint32_t& seed, int energy, float sign, float* lines, unsigned count) {
    double sum = 0;
    for (unsigned i = 0; i < count; ++i) {
        lines[i] = NextNoise(seed);
        sum += static_cast<double>(lines[i]) * lines[i];
    }
    const double length = std::min<double>(std::exp2(energy / 4.0), kLargestLine);
    const auto scale = static_cast<float>(sum > 0 ? length / std::sqrt(sum) : 0);
    for (unsigned i = 0; i < count; ++i)
        lines[i] *= sign * scale;
}

} // namespace

void Reconstruction::SubstituteNoise(const SideInformation& info, unsigned index, unsigned firstLine, unsigned lines,
                                     Spectra& spectra) {
    const std::uint32_t shared = noiseSeed;
    if (info.noise[0][index])
        MakeNoise(noiseSeed, info.level[0][index], 1, &spectra[0][firstLine], lines);
    if (!info.noise[1][index])
        return;
    // noise_mode: 0 independent noise, 2 the same with opposite sign, else the same in both channels.
    const unsigned mode = info.noise[0][index] ? info.noiseMode[index] : 0;
    std::uint32_t copy = shared;
    MakeNoise(mode == 0 ? noiseSeed : copy, info.level[1][index], mode == 2 ? -1.0F : 1.0F, &spectra[1][firstLine],
              lines);
}

void Reconstruction::FillBands(std::span<const std::uint16_t> edges, const BlockHeader& header,
                               const LayerGeometry& geometry, const SideInformation& info, Spectra& spectra) {
    for (unsigned g = 0; g < geometry.groups; ++g) {
        const auto firstWindowLine = static_cast<unsigned>(geometry.group[g].firstLine);
        for (unsigned w = 0; w < static_cast<unsigned>(geometry.group[g].windows); ++w) {
            for (unsigned sfb = 0; sfb < header.maxSfb; ++sfb) {
                const unsigned index = SfbIndex(g, sfb);
                const unsigned first = firstWindowLine + 128 * w + edges[sfb];
                const unsigned lines = edges[sfb + 1] - edges[sfb];
                if (header.noisePresent)
                    SubstituteNoise(info, index, first, lines, spectra);
                if (header.channels == 2 && IsIntensity(info, index)) {
                    const double sign = info.stereo[index] == StereoInfo::kInPhase ? 1 : -1;
                    const auto factor = static_cast<float>(sign * std::exp2(-info.level[1][index] / 4.0));
                    for (unsigned i = 0; i < lines; ++i)
                        spectra[1][first + i] = spectra[0][first + i] * factor;
                }
            }
        }
    }
}

void Reconstruction::Run(const RateTables& rate, const BlockHeader& header, const LayerGeometry& geometry,
                         const SideInformation& info, const BitPlanes& planes, Spectra& spectra) {
    Dequantise(header, geometry, info, planes, spectra);
    if (header.noisePresent || header.stereoMask == StereoMask::kInfoPerBand)
        FillBands(BandEdges(rate, header), header, geometry, info, spectra);

    const unsigned windows = header.IsShort() ? kShortWindows : 1;
    const unsigned windowLines = kBlockSamples / windows;
    for (unsigned c = 0; c < header.channels; ++c) {
        if (!header.channel[c].tnsPresent)
            continue;
        for (unsigned w = 0; w < windows; ++w)
            ApplyTns(rate, header, header.channel[c].tns[w],
                     std::span<float>(spectra[c]).subspan(static_cast<std::size_t>(w) * windowLines, windowLines));
    }
}

} // namespace codec
