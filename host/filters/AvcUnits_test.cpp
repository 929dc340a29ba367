#include "host/filters/AvcUnits.h"

#include <gtest/gtest.h>

using namespace filters;

namespace {
// One sequence and one picture parameter set of two bytes each; lengths of two bytes.
const Bytes kRecord = {1, 66, 0xC0, 13, 0xFD, 0xE1, 0, 2, 0x67, 0x42, 1, 0, 2, 0x68, 0xCE};
} // namespace

TEST(AvcUnits, ReadsTheConfigurationRecord) {
    const auto configuration = AvcConfiguration::Parse(kRecord);
    ASSERT_TRUE(configuration);
    EXPECT_EQ(configuration->lengthBytes, 2u);
    EXPECT_EQ(configuration->parameterSets, (Bytes{0, 0, 0, 1, 0x67, 0x42, 0, 0, 0, 1, 0x68, 0xCE}));
    for (std::size_t size = 0; size < kRecord.size(); ++size)
        EXPECT_FALSE(AvcConfiguration::Parse(ByteSpan(kRecord).first(size))) << size;
}

TEST(AvcUnits, TakesBothFramings) {
    const auto configuration = AvcConfiguration::Parse(kRecord);
    const Bytes withLengths = {0, 2, 0x41, 0x9A, 0, 1, 0x01};
    EXPECT_EQ(ToByteStream(withLengths, &*configuration), (Bytes{0, 0, 0, 1, 0x41, 0x9A, 0, 0, 0, 1, 0x01}));
    const Bytes withStartCodes = {0, 0, 1, 0x41, 0x9A};
    EXPECT_EQ(ToByteStream(withStartCodes, &*configuration), withStartCodes);
    EXPECT_FALSE(ToByteStream(Bytes{0, 9, 0x41}, &*configuration));
}

TEST(AvcUnits, ALengthThatLooksLikeAStartCodeIsALength) {
    auto configuration = AvcConfiguration::Parse(kRecord);
    configuration->lengthBytes = 4;
    Bytes unit = {0, 0, 1, 4};
    unit.resize(4 + 260, 0x41);
    const auto stream = ToByteStream(unit, &*configuration);
    ASSERT_TRUE(stream);
    EXPECT_EQ((*stream)[4], 0x41);
    EXPECT_EQ(stream->size(), 264u);
}

TEST(AvcUnits, RandomAccessGetsTheParameterSets) {
    const auto configuration = AvcConfiguration::Parse(kRecord);
    const auto stream = ToByteStream(Bytes{0, 2, 0x65, 0x88}, &*configuration);
    ASSERT_TRUE(stream);
    const AvcUnitInfo info = InspectAvcUnit(*stream);
    EXPECT_TRUE(info.randomAccess);
    EXPECT_TRUE(info.hasParameterSets);
}

TEST(AvcUnits, KnowsRandomAccessPoints) {
    EXPECT_TRUE(InspectAvcUnit(Bytes{0, 0, 0, 1, 0x65, 0x88}).randomAccess);
    EXPECT_TRUE(InspectAvcUnit(Bytes{0, 0, 1, 0x06, 6, 1, 0xC4, 0x80, 0, 0, 1, 0x41, 0x9A}).randomAccess);
    EXPECT_FALSE(InspectAvcUnit(Bytes{0, 0, 1, 0x06, 5, 1, 0xC4, 0x80, 0, 0, 1, 0x41, 0x9A}).randomAccess);
    EXPECT_FALSE(InspectAvcUnit(Bytes{}).hasSlice);
}

TEST(AvcUnits, SplitsAtDelimiters) {
    const Bytes two = {0, 0, 0, 1, 9, 0x10, 0, 0, 1, 0x65, 1, 0, 0, 0, 1, 9, 0x30, 0, 0, 1, 0x41, 1};
    EXPECT_EQ(AvcUnitStarts(two), (std::vector<std::size_t>{0, 11}));
}
