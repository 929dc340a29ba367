#include "host/codec/BlockPlan.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>

namespace codec {

namespace {

constexpr int kMiddleSideFiner = 2; // left and right get the sum of both errors: steps 2^(-1/2)
constexpr int kFinestFiner = 7;     // differences up to 7 are cheap to send
// A band may have noise in proportion to its energy to the power of this, as far as kFinestFiner allows: with
// 0 all noise would be alike, with 1 all signal-to-noise ratios.
constexpr double kNoiseFollowsEnergy = 0.3;
constexpr double kQuietEnergy = 16; // of a line: below half a sample
constexpr int kLargestMagnitude = 8191;

double Energy(const float* lines, unsigned count) {
    double sum = 0;
    for (unsigned i = 0; i < count; ++i)
        sum += static_cast<double>(lines[i]) * lines[i];
    return sum;
}

// Bits for a symbol of the model.
double SymbolBits(CumulativeModel model, unsigned symbol) {
    if (model.empty())
        return 0;
    const double above = symbol == 0 ? kProbabilityScale : model[symbol - 1];
    return std::log2(kProbabilityScale / (above - model[symbol]));
}

} // namespace

// Calls visit(group, sfb, index, first line, lines) for each window of each band.
template <class Visit> void BlockPlan::ForEachBand(const Visit& visit) const {
    const std::span<const std::uint16_t> edges = BandEdges(rate, header);
    for (unsigned g = 0; g < groupCount; ++g) {
        for (unsigned sfb = 0; sfb < header.maxSfb; ++sfb) {
            for (unsigned w = 0; w < static_cast<unsigned>(groups[g].windows); ++w)
                visit(g, sfb, SfbIndex(g, sfb), static_cast<unsigned>(groups[g].firstLine) + 128 * w + edges[sfb],
                      static_cast<unsigned>(edges[sfb + 1] - edges[sfb]));
        }
    }
}

BlockPlan::BlockPlan(const RateTables& rateTables, const BlockHeader& blockHeader, const Spectra& spectra)
    : rate(rateTables), header(blockHeader), original(spectra), coded(spectra) {
    // The groups follow from the header alone, so the layers can be laid out as for any length.
    LayerGeometry geometry;
    static_cast<void>(LayOutLayers(rate, header, static_cast<int>(header.FrameBits()), geometry));
    groups = geometry.group;
    groupCount = geometry.groups;
    if (header.channels == 2)
        ChooseStereo();
    ShapeNoise();
}

// Middle and side where they take fewer bits, that is, where the product of their energies is smaller.
void BlockPlan::ChooseStereo() {
    std::array<std::array<double, 4>, kSfbsPerBlock> energy{}; // left, right, middle, side
    ForEachBand([&](unsigned, unsigned, unsigned index, unsigned first, unsigned lines) {
        for (unsigned i = first; i < first + lines; ++i) {
            const double left = original[0][i];
            const double right = original[1][i];
            energy[index][0] += left * left;
            energy[index][1] += right * right;
            energy[index][2] += (left + right) * (left + right) / 2;
            energy[index][3] += (left - right) * (left - right) / 2;
        }
    });
    ForEachBand([&](unsigned, unsigned, unsigned index, unsigned first, unsigned lines) {
        const auto& e = energy[index];
        const double quiet = kQuietEnergy * lines;
        if ((e[2] + quiet) * (e[3] + quiet) >= (e[0] + quiet) * (e[1] + quiet))
            return;
        stereo[index] = StereoInfo::kMidSide;
        for (unsigned i = first; i < first + lines; ++i) {
            coded[0][i] = (original[0][i] + original[1][i]) / 2;
            coded[1][i] = (original[0][i] - original[1][i]) / 2;
        }
    });
}

void BlockPlan::ShapeNoise() {
    double loudestBand = 0;
    float loudestLine = 0;
    std::array<std::array<double, kSfbsPerBlock>, kMaxChannels> energy{};
    std::array<unsigned, kSfbsPerBlock> count{};
    ForEachBand([&](unsigned, unsigned, unsigned index, unsigned first, unsigned lines) {
        count[index] += lines;
        for (unsigned c = 0; c < header.channels; ++c) {
            energy[c][index] += Energy(&original[c][first], lines);
            for (unsigned i = first; i < first + lines; ++i)
                loudestLine = std::max(loudestLine, std::abs(original[c][i]));
        }
    });
    ForEachBand([&](unsigned, unsigned, unsigned index, unsigned, unsigned) {
        for (unsigned c = 0; c < header.channels; ++c)
            loudestBand = std::max(loudestBand, energy[c][index] / count[index]);
    });
    silent = loudestBand < kQuietEnergy;
    coarsestLevel = static_cast<int>(std::ceil(100 + 4 * std::log2(std::max(loudestLine, 1.0F))));
    ForEachBand([&](unsigned, unsigned, unsigned index, unsigned, unsigned) {
        const bool shared = stereo[index] == StereoInfo::kMidSide;
        for (unsigned c = 0; c < header.channels; ++c) {
            // Middle and side of a band get the same noise: what the louder of left and right allows.
            const double both = std::max(energy[0][index], energy[1][index]);
            const double mean = (shared ? both : energy[c][index]) / count[index];
            const double share = std::max(mean, kQuietEnergy) / std::max(loudestBand, kQuietEnergy);
            // A step of one level is 2^(1/4) in amplitude, 2^(1/2) in energy.
            const int steps = static_cast<int>(std::lround(-2 * kNoiseFollowsEnergy * std::log2(share)));
            finer[c][index] = std::clamp(steps, 0, kFinestFiner - kMiddleSideFiner) + (shared ? kMiddleSideFiner : 0);
            weight[c][index] =
                static_cast<float>(std::exp2(std::clamp(steps, 0, kFinestFiner - kMiddleSideFiner) / 2.0));
        }
    });
}

void BlockPlan::QuantiseBand(unsigned channel, unsigned group, unsigned sfb, int level, BlockContent& content) const {
    const std::span<const std::uint16_t> edges = BandEdges(rate, header);
    const auto firstLine = static_cast<unsigned>(groups[group].firstLine);
    const auto windows = static_cast<unsigned>(groups[group].windows);
    const auto inverseStep = static_cast<float>(std::exp2((100 - level) / 4.0));
    auto& lines = content.lines[channel];
    unsigned target = firstLine + edges[sfb] * windows;
    bool any = false;
    for (unsigned line = edges[sfb]; line < edges[sfb + 1]; line += kQuadLines) {
        for (unsigned w = 0; w < windows; ++w) {
            for (unsigned k = 0; k < kQuadLines; ++k, ++target) {
                const float x = coded[channel][firstLine + 128 * w + line + k];
                const float scaled = std::abs(x) * inverseStep;
                const auto magnitude =
                    std::min(static_cast<int>(std::sqrt(scaled * std::sqrt(scaled)) + 0.4054F), kLargestMagnitude);
                lines[target] = static_cast<std::int16_t>(x < 0 ? -magnitude : magnitude);
                any = any || magnitude != 0;
            }
        }
    }
    // A level nobody needs is put where it costs least.
    content.info.level[channel][SfbIndex(group, sfb)] = static_cast<std::int16_t>(any ? level : -1);
}

void BlockPlan::ChooseCodingBands(unsigned channel, BlockContent& content) const {
    unsigned largestBand0 = 0;
    unsigned largestOther = 0;
    for (unsigned g = 0; g < groupCount; ++g) {
        const auto first = static_cast<unsigned>(groups[g].firstLine);
        for (int start = 0; start < groups[g].lastLine; start += kCodingBand) {
            const unsigned line = first + static_cast<unsigned>(start);
            unsigned bits = 0;
            for (unsigned i = line; i < line + kCodingBand; ++i)
                bits = std::max(bits, static_cast<unsigned>(
                                          std::bit_width(static_cast<unsigned>(std::abs(content.lines[channel][i])))));
            unsigned top = 0; // lines with a 1 in the top plane
            for (unsigned i = line; i < line + kCodingBand && bits > 0; ++i)
                top += static_cast<unsigned>(std::abs(content.lines[channel][i])) >> (bits - 1);
            unsigned cbandSi = 0;
            // Up to seven planes there is a model for few and one for many lines that reach the top.
            if (bits > 7)
                cbandSi = bits + 7;
            else if (bits > 0)
                cbandSi = 2 * bits - (top > (bits == 1 ? 7U : 2U) ? 0 : 1);
            content.info.cbandSi[channel][line / kCodingBand] = static_cast<std::uint8_t>(cbandSi);
            (start == 0 ? largestBand0 : largestOther) = std::max(start == 0 ? largestBand0 : largestOther, cbandSi);
        }
    }
    unsigned best = 0;
    unsigned bestBits = ~0U;
    for (unsigned type = 0; type < kCbandSiTypes.size(); ++type) {
        const CbandSiType& candidate = kCbandSiTypes[type];
        if (candidate.largestBand0 >= largestBand0 && candidate.largestOther >= largestOther &&
            candidate.reservedBits < bestBits) {
            best = type;
            bestBits = candidate.reservedBits;
        }
    }
    content.header.channel[channel].cbandSiType = static_cast<std::uint8_t>(best);
}

void BlockPlan::ChooseModels(BlockContent& content) const {
    for (unsigned c = 0; c < header.channels; ++c) {
        ChannelHeader& channel = content.header.channel[c];
        auto& level = content.info.level[c];
        int largest = 0;
        ForEachBand([&](unsigned, unsigned, unsigned index, unsigned, unsigned) {
            largest = std::max<int>(largest, level[index]);
        });
        std::array<unsigned, 64> histogram{};
        int widest = 0;
        ForEachBand([&](unsigned, unsigned, unsigned index, unsigned, unsigned) {
            if (level[index] < 0)
                level[index] = static_cast<std::int16_t>(largest);
            const int difference = largest - level[index];
            widest = std::max(widest, difference);
            ++histogram[static_cast<std::size_t>(difference)];
        });
        channel.maxScalefactor = static_cast<std::uint8_t>(largest);
        unsigned best = 0;
        double bestBits = 1e9;
        for (unsigned m = 0; m < kScalefactorModels.size(); ++m) {
            const CumulativeModel model = kScalefactorModels[m];
            if (widest > std::max(static_cast<int>(model.size()) - 1, 0))
                continue;
            double bits = 0;
            for (int d = 0; d <= widest; ++d)
                bits += histogram[static_cast<std::size_t>(d)] * SymbolBits(model, static_cast<unsigned>(d));
            if (bits < bestBits) {
                bestBits = bits;
                best = m;
            }
        }
        double longest = 0;
        for (int d = 0; d <= widest; ++d) {
            if (histogram[static_cast<std::size_t>(d)] > 0)
                longest = std::max(longest, SymbolBits(kScalefactorModels[best], static_cast<unsigned>(d)));
        }
        channel.baseScalefactorModel = channel.enhScalefactorModel = static_cast<std::uint8_t>(best);
        const int flags = header.channels == 2 ? 2 : 0; // room for ms_used
        channel.maxSfbSiLength =
            static_cast<std::uint8_t>(std::clamp(static_cast<int>(std::ceil(longest)) - 5 + flags, 0, 15));
    }
}

void BlockPlan::Quantise(int level, BlockContent& content) const {
    content = BlockContent{};
    content.header = header;
    content.info.stereo = stereo;
    bool middleSide = false;
    for (unsigned g = 0; g < groupCount; ++g) {
        for (unsigned sfb = 0; sfb < header.maxSfb; ++sfb) {
            const unsigned index = SfbIndex(g, sfb);
            middleSide = middleSide || stereo[index] == StereoInfo::kMidSide;
            for (unsigned c = 0; c < header.channels; ++c)
                QuantiseBand(c, g, sfb, std::clamp(level - finer[c][index], 0, 255), content);
        }
    }
    content.header.stereoMask = middleSide ? StereoMask::kMsPerBand : StereoMask::kNone;
    for (unsigned c = 0; c < header.channels; ++c)
        ChooseCodingBands(c, content);
    ChooseModels(content);
}

double BlockPlan::Distortion(const Spectra& decoded) const {
    double sum = 0;
    ForEachBand([&](unsigned, unsigned, unsigned index, unsigned first, unsigned lines) {
        for (unsigned c = 0; c < header.channels; ++c) {
            double error = 0;
            for (unsigned i = first; i < first + lines; ++i) {
                const double difference = static_cast<double>(original[c][i]) - decoded[c][i];
                error += difference * difference;
            }
            sum += error * weight[c][index];
        }
    });
    return sum;
}

} // namespace codec
