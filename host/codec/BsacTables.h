// The numbers of ER BSAC (ISO/IEC 14496-3:2009, subpart 4): probability models, contexts, scalefactor bands.
//
// Probabilities have the scale 16384. A cumulative model falls and ends with 0: symbol k owns the range
// [model[k], model[k - 1]), with 16384 in front of the first entry. A `p0` is the probability of a 0 bit.
#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace codec {

inline constexpr unsigned kProbabilityScale = 16384;

using CumulativeModel = std::span<const std::uint16_t>;
// In front of the model its memory has a kProbabilityScale, and behind it zeros up to a multiple of this many entries; both may
// be read too.
inline constexpr unsigned kModelGroup = 8;

// Table 4.A.31: what the 5-bit cband_si_type of a channel says.
struct CbandSiType {
    std::uint8_t reservedBits; // set aside in the layer budget for each coding band other than band 0
    std::uint8_t largestBand0; // largest legal cband_si of band 0
    std::uint8_t largestOther; // ... and of the others
    std::uint8_t modelOther;   // index into kCbandSiModels for the others; band 0 uses kCbandSiBand0Model
};
extern const std::array<CbandSiType, 32> kCbandSiTypes;

// 4.5.2.6.2.5: bits set aside in the layer budget for coding band 0, whatever the type.
inline constexpr int kBand0ReservedBits = 11;

// Tables 4.A.44 to 4.A.50 and 4.A.51: cband_si of the coding bands.
extern const std::array<CumulativeModel, 7> kCbandSiModels;
extern const CumulativeModel kCbandSiBand0Model;

// Tables 4.A.37 to 4.A.43 (models 1..7): scalefactor differences. Model 0 is empty: no symbol, difference 0.
extern const std::array<CumulativeModel, 8> kScalefactorModels;

// Tables 4.A.52 to 4.A.55.
extern const CumulativeModel kMsUsedModel;
extern const CumulativeModel kStereoInfoModel;
extern const CumulativeModel kNoiseFlagModel;
extern const CumulativeModel kNoiseModeModel;

// Start value of the noise energy of a channel: 512 equally probable values.
extern const CumulativeModel kNoiseEnergyModel;

// p0 of a sign bit; 1 is negative.
inline constexpr unsigned kSignP0 = 8192;

// A cband_si is at most this (table 4.A.33), a bit-plane at most kLargestPlane: quantised lines fit 15 bits.
inline constexpr unsigned kLargestCbandSi = 22;
inline constexpr unsigned kLargestPlane = 15;

inline constexpr unsigned kContexts = 65;

// A number of higher bits above this is coded like this one.
inline constexpr unsigned kLargestHigherBits = 16;

// The standard has the p0 of magnitude bits in 64ths.
inline constexpr unsigned kPlaneScale = 64;

// The p0 of a magnitude bit, in parts of kPlaneScale, by what is known of the line: at [context] when its higher bits are
// all 0, else at [kContexts - 1 + the number that its higher bits make, at most kLargestHigherBits].
struct PlaneRow {
    std::array<std::uint8_t, kContexts + kLargestHigherBits> p0{};
    std::uint32_t zeros = 0; // the product of the p0 of four lines that are all 0 and stay so
};

// Table 4.A.33 with the tables 4.A.56 to 4.A.77 it points to: how the planes of a coding band are coded. The distance
// d of a plane from the top plane picks a row, d = 0 .. topPlane - 1.
struct PlaneModel {
    std::uint8_t topPlane;
    const PlaneRow* rows; // by d
};
// By cband_si; entry 0 (all lines zero) has top plane 0 and no rows.
extern const std::array<PlaneModel, kLargestCbandSi + 1> kPlaneModels;

// Table 4.A.34: context of a line whose higher bits are all 0, as [v][start of position + b], where a quad is
// four neighbouring lines, v has a bit for each of its lines with a 1 in a higher plane (first line = bit 3),
// position is the place of the line in the quad, and b are the bits of this plane that the quad's earlier
// lines have got, in order. So the contexts of a quad's lines are a binary tree, each node before its two children, which are at
// twice its place + 1 and, after a 1, + 2.
inline constexpr std::uint8_t kNoContext = 0; // cannot occur: v says that the line itself is not zero
using ContextTree = std::array<std::uint8_t, 16>;
extern const std::array<ContextTree, 16> kSpectralContext;
inline constexpr std::array<std::uint8_t, 4> kContextPosition{0, 1, 3, 7};
inline constexpr unsigned kContextLeaves = 15; // where the tree's places would go on

// What depends on the sampling rate.
struct RateTables {
    unsigned rate; // Hz
    std::span<const std::uint16_t>
        longBands; // edges of the scalefactor bands, long window: bands + 1 entries, last 1024
    std::span<const std::uint16_t> shortBands; // ... short window, last 128
    std::uint8_t tnsBandsLong;                 // TNS filters no band from here on
    std::uint8_t tnsBandsShort;
    std::uint8_t enhancementStep; // lines an enhancement layer adds; at 8: 12, 12, 8 lines for each 32
};

// The tables for a samplingFrequencyIndex; nullptr for rates that BSAC layers are not defined
// for.
[[nodiscard]] const RateTables* FindRateByIndex(unsigned samplingFrequencyIndex);
[[nodiscard]] const RateTables* FindRate(unsigned rate);
// The index to send for a rate of FindRate.
[[nodiscard]] unsigned SamplingFrequencyIndex(unsigned rate);

} // namespace codec
