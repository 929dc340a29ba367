#include "graph/RecordName.h"

#include <gtest/gtest.h>

TEST(RecordName, RequiredSpaceFollowsTheLimit) {
    const DWORD expected[] = {51118080, 70778880, 90439680, 149422080, 267386880};
    for (unsigned setting = 0; setting < 5; ++setting)
        EXPECT_EQ(RequiredSpace(RecordLimit(setting)), expected[setting]);
}

// Edge case: exactly enough is enough, one byte less is not.
TEST(RecordName, ExactlyTheRequiredSpaceIsEnough) {
    EXPECT_TRUE(HasSpaceFor(300, 51118080));
    EXPECT_FALSE(HasSpaceFor(300, 51118079));
}

// Edge case: from 4 GiB on no comparison is made.
TEST(RecordName, FourGibibytesAreAlwaysEnough) {
    EXPECT_TRUE(HasSpaceFor(3600, 0x100000000ULL));
    EXPECT_TRUE(HasSpaceFor(3600, 0x100000001ULL));
    EXPECT_FALSE(HasSpaceFor(3600, 51118080));
}

TEST(RecordName, NameIsLabelAndLocalTime) {
    EXPECT_EQ(FormatRecordName(WTEXT("NEWS"), {2007, 3, 7, 21, 5, 9}), WTEXT("NEWS_070307210509.dmb"));
}

// Edge case: midnight of the first of January 2010.
TEST(RecordName, DatePartIsPaddedWithZeros) {
    EXPECT_EQ(FormatRecordName(WTEXT("A"), {2010, 1, 1, 0, 0, 0}), WTEXT("A_100101000000.dmb"));
}

// Edge case: without a record the name begins with an underscore.
TEST(RecordName, MissingLabelBeginsWithAnUnderscore) {
    EXPECT_EQ(FormatRecordName(WString(), {2010, 1, 1, 0, 0, 0}).front(), WCHAR('_'));
}

TEST(RecordName, SettingFromADamagedFileCountsAsTheLongest) {
    EXPECT_EQ(RecordLimit(65535), 3600);
}
