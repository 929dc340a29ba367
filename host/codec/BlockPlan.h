// The encoder's choices for one block: which bands are coded as middle and side, how fine each band's steps
// are relative to the others, which models suit the outcome.
#pragma once

#include <array>

#include "host/codec/BlockEncoder.h"
#include "host/codec/BlockHeader.h"
#include "host/codec/BsacTables.h"
#include "host/codec/Reconstruction.h"
#include "host/codec/SideInformation.h"

namespace codec {

class BlockPlan {
public:
    // Takes the spectra of a block, whose header has all that does not follow from them: sizes, layers,
    // window, maxSfb, grouping. Chooses stereo and the shape of the noise.
    BlockPlan(const RateTables& rate, const BlockHeader& header, const Spectra& spectra);

    // Quantises with steps of 2^((level - 100) / 4) in the coarsest band and fills `content` for
    // BlockEncoder.
    void Quantise(int level, BlockContent& content) const;

    // How bad `decoded` is: the error of each band weighed against the band's energy.
    [[nodiscard]] double Distortion(const Spectra& decoded) const;

    // True when there is nothing worth coding.
    [[nodiscard]] bool Silent() const { return silent; }

    // Quantised this coarsely, at most the loudest line is left. Levels below make sense.
    [[nodiscard]] int CoarsestLevel() const { return coarsestLevel; }

private:
    void ChooseStereo();
    void ShapeNoise();
    void ChooseModels(BlockContent& content) const;
    void ChooseCodingBands(unsigned channel, BlockContent& content) const;
    void QuantiseBand(unsigned channel, unsigned group, unsigned sfb, int level, BlockContent& content) const;

    template <class Visit> void ForEachBand(const Visit& visit) const;

    const RateTables& rate;
    BlockHeader header;
    std::array<LineGroup, kShortWindows> groups{};
    unsigned groupCount = 0;

    Spectra original; // left and right, windows one after another
    Spectra coded;    // the same, middle and side where chosen
    std::array<StereoInfo, kSfbsPerBlock> stereo{};
    std::array<std::array<int, kSfbsPerBlock>, kMaxChannels> finer{};    // steps below the coarsest level
    std::array<std::array<float, kSfbsPerBlock>, kMaxChannels> weight{}; // of errors of left and right
    bool silent = false;
    int coarsestLevel = 0;
};

} // namespace codec
