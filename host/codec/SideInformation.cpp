#include "host/codec/SideInformation.h"

#include <algorithm>

namespace codec {

template <class Coder>
void CodeCodingBands(Coder& coder, const BlockHeader& header, const LayerGeometry& geometry, int l,
                     SideInformation& info) {
    const Layer& layer = geometry.layer[l];
    const unsigned firstBand = static_cast<unsigned>(geometry.group[layer.group].firstLine) / kCodingBand;
    for (unsigned c = 0; c < header.channels; ++c) {
        const CbandSiType& type = kCbandSiTypes[header.channel[c].cbandSiType];
        // The layer's first band decides for all of them: a layer of 64 lines sends bands 0 and 1 alike.
        const bool first = layer.startBand == 0;
        const CumulativeModel model = first ? kCbandSiBand0Model : kCbandSiModels[type.modelOther];
        const unsigned largest = first ? type.largestBand0 : type.largestOther;
        for (unsigned band = layer.startBand; band < layer.endBand; ++band) {
            std::uint8_t& cbandSi = info.cbandSi[c][firstBand + band];
            cbandSi = static_cast<std::uint8_t>(std::min(coder.Symbol(model, cbandSi), largest));
        }
    }
}

namespace {

// The flags that both channels share, and noise_flag.
template <class Coder>
void CodeFlags(Coder& coder, const BlockHeader& header, unsigned sfb, unsigned index, SideInformation& info) {
    if (header.stereoMask == StereoMask::kMsEverywhere)
        return;
    if (header.stereoMask == StereoMask::kMsPerBand)
        info.stereo[index] =
            static_cast<StereoInfo>(coder.Symbol(kMsUsedModel, static_cast<unsigned>(info.stereo[index])));
    if (header.stereoMask == StereoMask::kInfoPerBand)
        info.stereo[index] =
            static_cast<StereoInfo>(coder.Symbol(kStereoInfoModel, static_cast<unsigned>(info.stereo[index])));
    if (!header.noisePresent || sfb < header.noiseStartSfb)
        return;
    for (unsigned c = 0; c < header.channels; ++c)
        info.noise[c][index] = coder.Symbol(kNoiseFlagModel, info.noise[c][index] ? 1 : 0) != 0;
    if (info.stereo[index] == StereoInfo::kOutOfPhase && info.noise[0][index] && info.noise[1][index])
        info.noiseMode[index] = static_cast<std::uint8_t>(coder.Symbol(kNoiseModeModel, info.noiseMode[index]));
}

template <class Coder> unsigned CodeDifference(Coder& coder, CumulativeModel model, int wanted) {
    return model.empty() ? 0 : coder.Symbol(model, static_cast<unsigned>(wanted));
}

template <class Coder>
void CodeLevel(Coder& coder, CumulativeModel model, unsigned channel, int largest, unsigned index,
               SideInformation& info) {
    std::int16_t& level = info.level[channel][index];
    if (info.noise[channel][index]) {
        std::int16_t& start = info.noiseStart[channel];
        if (!info.noiseStartKnown[channel]) {
            start = static_cast<std::int16_t>(coder.Symbol(kNoiseEnergyModel, static_cast<unsigned>(start)));
            info.noiseStartKnown[channel] = true;
        }
        level = static_cast<std::int16_t>(start - static_cast<int>(CodeDifference(coder, model, start - level)));
    } else if (channel == 1 && IsIntensity(info, index)) {
        level = static_cast<std::int16_t>(
            PositionFromCode(static_cast<int>(CodeDifference(coder, model, PositionCode(level)))));
    } else {
        level = static_cast<std::int16_t>(largest - static_cast<int>(CodeDifference(coder, model, largest - level)));
    }
}

} // namespace

template <class Coder>
void CodeScalefactorBands(Coder& coder, const BlockHeader& header, const LayerGeometry& geometry, int l,
                          SideInformation& info) {
    const Layer& layer = geometry.layer[l];
    for (unsigned c = 0; c < header.channels; ++c) {
        const ChannelHeader& channel = header.channel[c];
        const CumulativeModel model =
            kScalefactorModels[geometry.IsBase(l) ? channel.baseScalefactorModel : channel.enhScalefactorModel];
        for (unsigned sfb = layer.startSfb; sfb < layer.endSfb; ++sfb) {
            const unsigned index = SfbIndex(layer.group, sfb);
            if (c == 0)
                CodeFlags(coder, header, sfb, index, info);
            CodeLevel(coder, model, c, channel.maxScalefactor, index, info);
        }
    }
}

void SkipSideInformation(const LayerGeometry& geometry, int l, SideInformation& info) {
    const Layer& layer = geometry.layer[l];
    const unsigned firstBand = static_cast<unsigned>(geometry.group[layer.group].firstLine) / kCodingBand;
    for (unsigned c = 0; c < kMaxChannels; ++c) {
        for (unsigned band = layer.startBand; band < layer.endBand; ++band)
            info.cbandSi[c][firstBand + band] = 0;
    }
    for (unsigned sfb = layer.startSfb; sfb < layer.endSfb; ++sfb) {
        const unsigned index = SfbIndex(layer.group, sfb);
        for (unsigned c = 0; c < kMaxChannels; ++c) {
            info.level[c][index] = 0;
            info.noise[c][index] = false;
        }
        info.stereo[index] = StereoInfo::kIndependent;
        info.noiseMode[index] = 0;
    }
}

template void CodeCodingBands(ArithmeticDecoder&, const BlockHeader&, const LayerGeometry&, int, SideInformation&);
template void CodeCodingBands(ArithmeticEncoder&, const BlockHeader&, const LayerGeometry&, int, SideInformation&);
template void CodeScalefactorBands(ArithmeticDecoder&, const BlockHeader&, const LayerGeometry&, int, SideInformation&);
template void CodeScalefactorBands(ArithmeticEncoder&, const BlockHeader&, const LayerGeometry&, int, SideInformation&);

} // namespace codec
