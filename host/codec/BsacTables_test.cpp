#include "host/codec/BsacTables.h"

#include <algorithm>
#include <numeric>

#include <gtest/gtest.h>

namespace {

using namespace codec;

std::vector<CumulativeModel> AllModels() {
    std::vector<CumulativeModel> models(kCbandSiModels.begin(), kCbandSiModels.end());
    models.insert(models.end(), kScalefactorModels.begin() + 1, kScalefactorModels.end());
    for (const CumulativeModel model :
         {kCbandSiBand0Model, kMsUsedModel, kStereoInfoModel, kNoiseFlagModel, kNoiseModeModel, kNoiseEnergyModel})
        models.push_back(model);
    return models;
}

TEST(BsacTables, CumulativeModelsFallStrictlyFromBelowTheScaleToZero) {
    for (const CumulativeModel model : AllModels()) {
        EXPECT_LT(model.front(), kProbabilityScale);
        EXPECT_EQ(model.back(), 0);
        EXPECT_EQ(std::adjacent_find(model.begin(), model.end(), std::less_equal<>()), model.end());
    }
}

TEST(BsacTables, ProbabilitiesOfAModelSumUpToTheScale) {
    for (const CumulativeModel model : AllModels()) {
        unsigned sum = kProbabilityScale - model[0];
        for (std::size_t k = 1; k < model.size(); ++k)
            sum += model[k - 1] - model[k];
        EXPECT_EQ(sum, kProbabilityScale);
    }
}

TEST(BsacTables, ModelsHaveOneEntryForEachSymbol) {
    constexpr std::size_t kCbandSi[] = {5, 7, 9, 11, 13, 15, 23};
    for (std::size_t m = 0; m < kCbandSiModels.size(); ++m)
        EXPECT_EQ(kCbandSiModels[m].size(), kCbandSi[m]);
    EXPECT_EQ(kCbandSiBand0Model.size(), kLargestCbandSi + 1);
    constexpr std::size_t kScalefactor[] = {0, 4, 8, 16, 16, 32, 32, 64};
    for (std::size_t m = 0; m < kScalefactorModels.size(); ++m)
        EXPECT_EQ(kScalefactorModels[m].size(), kScalefactor[m]);
    EXPECT_EQ(kNoiseEnergyModel.size(), 512U);
    EXPECT_EQ(kNoiseEnergyModel[0], 16352);
}

TEST(BsacTables, EveryTypesLargestValueIsASymbolOfItsModel) {
    for (const CbandSiType& type : kCbandSiTypes) {
        EXPECT_LE(type.largestBand0, kLargestCbandSi);
        ASSERT_LT(type.modelOther, kCbandSiModels.size());
        EXPECT_LT(type.largestOther, kCbandSiModels[type.modelOther].size());
        EXPECT_GE(type.reservedBits, 5);
        EXPECT_LE(type.reservedBits, 12);
    }
}

TEST(BsacTables, PlaneModelsReachThePlaneThatTheirNumberSays) {
    EXPECT_EQ(kPlaneModels[0].topPlane, 0);
    for (unsigned i = 1; i <= kLargestCbandSi; ++i)
        EXPECT_EQ(kPlaneModels[i].topPlane, i <= 14 ? (i + 1) / 2 : i - 7) << i;
}

TEST(BsacTables, EveryReachableProbabilityLiesInsideTheScale) {
    for (unsigned i = 1; i <= kLargestCbandSi; ++i) {
        const PlaneModel& model = kPlaneModels[i];
        for (unsigned d = 0; d < model.topPlane; ++d) {
            for (const std::uint8_t p0 : model.rows[d].p0) {
                EXPECT_GT(p0, 0);
                EXPECT_LT(p0, kPlaneScale);
            }
        }
    }
}

TEST(BsacTables, RepeatedPlaneTablesAreTheSameRows) {
    for (unsigned i : {11U, 13U, 15U, 22U})
        EXPECT_EQ(kPlaneModels[i].rows, kPlaneModels[9].rows);
    for (unsigned i : {12U, 14U})
        EXPECT_EQ(kPlaneModels[i].rows, kPlaneModels[10].rows);
    EXPECT_NE(kPlaneModels[9].rows, kPlaneModels[10].rows);
}

TEST(BsacTables, ContextsAreThereExactlyWhereTheLineMayBeZero) {
    std::array<int, kContexts> uses{};
    for (unsigned v = 0; v < 16; ++v) {
        for (unsigned position = 0; position < 4; ++position) {
            const bool lineIsZero = (v >> (3 - position) & 1) == 0;
            for (unsigned b = 0; b < 1U << position; ++b) {
                const std::uint8_t context = kSpectralContext[v][kContextPosition[position] + b];
                if (lineIsZero) {
                    ASSERT_LT(context, kContexts);
                    ++uses[context];
                } else {
                    ASSERT_EQ(context, kNoContext) << v << ' ' << position << ' ' << b;
                }
            }
        }
    }
    EXPECT_EQ(std::count(uses.begin(), uses.end(), 0), 0) << "every context is used";
    EXPECT_EQ(uses[kNoContext], 1) << "a line that has none is not taken for another";
}

TEST(BsacTables, BandEdgesRiseInQuadsFromZeroToTheWindow) {
    for (unsigned index = 3; index <= 11; ++index) {
        const RateTables* rate = FindRateByIndex(index);
        ASSERT_NE(rate, nullptr);
        EXPECT_EQ(FindRate(rate->rate), rate);
        EXPECT_EQ(SamplingFrequencyIndex(rate->rate), index);
        for (const auto& [edges, last] : {std::pair(rate->longBands, 1024), std::pair(rate->shortBands, 128)}) {
            EXPECT_EQ(edges.front(), 0);
            EXPECT_EQ(edges.back(), last);
            EXPECT_EQ(std::adjacent_find(edges.begin(), edges.end(), std::greater_equal<>()), edges.end());
            EXPECT_TRUE(std::all_of(edges.begin(), edges.end(), [](int edge) { return edge % 4 == 0; }));
        }
        EXPECT_LE(rate->tnsBandsLong, rate->longBands.size() - 1);
        EXPECT_LE(rate->tnsBandsShort, rate->shortBands.size() - 1);
    }
}

TEST(BsacTables, NumberOfBandsOfEachRate) {
    const std::pair<unsigned, std::size_t> kLong[] = {{48000, 49}, {44100, 49}, {32000, 51}, {24000, 47}, {22050, 47},
                                                      {16000, 43}, {12000, 43}, {11025, 43}, {8000, 40}};
    for (const auto& [rate, bands] : kLong) {
        EXPECT_EQ(FindRate(rate)->longBands.size() - 1, bands) << rate;
        EXPECT_EQ(FindRate(rate)->shortBands.size() - 1, rate >= 32000 ? 14U : 15U) << rate;
    }
}

TEST(BsacTables, RatesWithoutLayersAreNotFound) {
    for (unsigned index : {0U, 1U, 2U, 12U, 13U, 15U})
        EXPECT_EQ(FindRateByIndex(index), nullptr) << index;
    EXPECT_EQ(FindRate(96000), nullptr);
}

} // namespace
