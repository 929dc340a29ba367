#include "dataservice/LabelText.h"

#include <gtest/gtest.h>

// Edge case: seven bytes are three characters; the odd last byte is ignored.
TEST(LabelText, SevenBytesOfUcs2AreThreeCharacters) {
    const BYTE bytes[] = {0xD5, 0x5C, 0xAE, 0x00, 0x00, 0x41, 0x77};
    EXPECT_EQ(DecodeUcs2Label(bytes), WTEXT("한글A"));
}

// Edge case: a zero character ends the text.
TEST(LabelText, ZeroCharacterCutsAUcs2Label) {
    const BYTE bytes[] = {0x00, 0x41, 0x00, 0x00, 0x00, 0x42};
    EXPECT_EQ(DecodeUcs2Label(bytes), WTEXT("A"));
}

// Edge case: the same text twice in a row is stored once.
TEST(LabelText, RepeatedTextIsStoredOnce) {
    std::vector<WString> history;
    EXPECT_TRUE(AppendLabel(history, WTEXT("one")));
    EXPECT_FALSE(AppendLabel(history, WTEXT("one")));
    EXPECT_EQ(history.size(), 1u);
}

// Edge case: equal to an older entry only, it is appended again.
TEST(LabelText, TextEqualToAnOlderEntryIsAppendedAgain) {
    std::vector<WString> history = {WTEXT("one"), WTEXT("two")};
    EXPECT_TRUE(AppendLabel(history, WTEXT("one")));
    EXPECT_EQ(history, (std::vector<WString>{WTEXT("one"), WTEXT("two"), WTEXT("one")}));
}

// Edge case: a fifth distinct text pushes out the oldest.
TEST(LabelText, FifthTextPushesOutTheOldest) {
    std::vector<WString> history = {WTEXT("1"), WTEXT("2"), WTEXT("3"), WTEXT("4")};
    EXPECT_TRUE(AppendLabel(history, WTEXT("5")));
    EXPECT_EQ(history, (std::vector<WString>{WTEXT("2"), WTEXT("3"), WTEXT("4"), WTEXT("5")}));
}

// Edge case: an empty text is ignored.
TEST(LabelText, EmptyTextIsIgnored) {
    std::vector<WString> history = {WTEXT("1")};
    EXPECT_FALSE(AppendLabel(history, WString()));
    EXPECT_EQ(history.size(), 1u);
}
