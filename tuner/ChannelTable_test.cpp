#include "tuner/ChannelTable.h"

#include <gtest/gtest.h>

TEST(ChannelTable, RowsFollowTheBandThreeRule) {
    for (int row = 0; row < kChannelTableRows; ++row) {
        const DWORD expected =
            175280000u + 6000000u * static_cast<DWORD>(row / 3) + 1728000u * static_cast<DWORD>(row % 3);
        EXPECT_EQ(ChannelTable[row].frequency, expected) << "row " << row;
    }
    EXPECT_EQ(ChannelTable[0].frequency, 175280000u);
    EXPECT_EQ(ChannelTable[20].frequency, 214736000u);
}

TEST(ChannelTable, TheThreeBlocksOfAChannelCarryTheSameName) {
    EXPECT_EQ(WString(ChannelTable[0].name), WTEXT("CH7"));
    EXPECT_EQ(WString(ChannelTable[2].name), WTEXT("CH7"));
    EXPECT_EQ(WString(ChannelTable[3].name), WTEXT("CH8"));
    EXPECT_EQ(WString(ChannelTable[20].name), WTEXT("CH13"));
}

// Edge case: block B of channel 7, and a frequency that no row has.
TEST(ChannelTable, NameOfBlockBIsTheChannelsAndOfZeroIsTheNumber) {
    EXPECT_EQ(FormatChannelName(177008000), WTEXT("[CH7]"));
    EXPECT_EQ(FormatChannelName(181280000), WTEXT("[CH8]"));
    EXPECT_EQ(FormatChannelName(0), WTEXT("[0]"));
    EXPECT_EQ(FormatChannelName(-1), WTEXT("[-1]"));
}
