#include "view/ProfileRecord.h"

#include <vector>

#include <gtest/gtest.h>

TEST(ProfileRecord, WordsStandInTheirOrder) {
    const ProfileRecord record{7, 3, {480, 250, 790, 440}, 1};
    const std::array<BYTE, kProfileBytes> expected = {16,  0, 7,    0,    3,    0,    0xE0, 0x01,
                                                      250, 0, 0x16, 0x03, 0xB8, 0x01, 1,    0};
    EXPECT_EQ(EncodeProfile(record, 16), expected);
    const auto back = DecodeProfile(expected);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->currentChannel, 7);
    EXPECT_EQ(back->recordTime, 3);
    EXPECT_EQ(back->pipRect.left, 480);
    EXPECT_EQ(back->pipRect.bottom, 440);
    EXPECT_EQ(back->ratioOnOff, 1);
}

// Edge case: word 1 of 65535 means no channel, both ways.
TEST(ProfileRecord, NoChannelIsStoredAs65535) {
    const auto bytes = EncodeProfile({-1, 0, {}, 0}, 16);
    EXPECT_EQ(bytes[2], 0xFF);
    EXPECT_EQ(bytes[3], 0xFF);
    const auto back = DecodeProfile(bytes);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->currentChannel, -1);
}

// Edge case: 18 bytes whose first word is 16 are rejected.
TEST(ProfileRecord, LengthMismatchIsRejected) {
    std::vector<BYTE> file(18, 0);
    file[0] = 16;
    EXPECT_FALSE(DecodeProfile(file));
}

TEST(ProfileRecord, LongerFileThatTellsItsLengthIsGood) {
    std::vector<BYTE> file(18, 0);
    file[0] = 18;
    file[2] = 5;
    const auto record = DecodeProfile(file);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->currentChannel, 5);
}

TEST(ProfileRecord, ShorterFileThatTellsItsLengthIsRejected) {
    for (BYTE length = 0; length < kProfileBytes; ++length) {
        std::vector<BYTE> file(length, 0);
        if (length > 0)
            file[0] = length;
        EXPECT_FALSE(DecodeProfile(file)) << int{length};
    }
}

TEST(ProfileRecord, ValuesAreCutToSixteenBits) {
    const auto bytes = EncodeProfile({0x12345, 0, {-1, 0, 0, 0}, 0}, 16);
    EXPECT_EQ(bytes[2], 0x45);
    EXPECT_EQ(bytes[3], 0x23);
    EXPECT_EQ(bytes[6], 0xFF);
    EXPECT_EQ(bytes[7], 0xFF);
}
