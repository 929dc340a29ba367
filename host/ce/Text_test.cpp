#include "host/ce/Text.h"

#include <gtest/gtest.h>

namespace ce {
namespace {

using namespace std::string_literals;

TEST(NarrowText, HangulBothWays) {
    const std::string narrow = "KBS \xC7\xD1\xB1\xB9"; // 한국
    EXPECT_EQ(NarrowToWide(narrow), u"KBS \uD55C\uAD6D");
    EXPECT_EQ(WideToNarrow(u"KBS \uD55C\uAD6D"), narrow);
}

TEST(NarrowText, SyllablesOfTheExtension) {
    // U+B620 is not in KS X 1001, only in the unified code: 8C 63.
    EXPECT_EQ(NarrowToWide("\x8C\x63"), u"\uB620");
    EXPECT_EQ(WideToNarrow(u"\uB620"), "\x8C\x63");
}

TEST(NarrowText, ALoneLeadByteBecomesAReplacement) {
    EXPECT_EQ(NarrowToWide("A\xC7"), u"A\uFFFD");
    EXPECT_EQ(NarrowToWide("\xC7"), u"\uFFFD");
}

TEST(NarrowText, ABrokenLeadByteDoesNotSwallowWhatFollows) {
    EXPECT_EQ(NarrowToWide("\xC7 B"), u"\uFFFD B");
    EXPECT_EQ(NarrowToWide("\xC7\xD1\xC7"), u"\uD55C\uFFFD");
    EXPECT_EQ(NarrowToWide("\x80x\xFFy"), u"\uFFFDx\uFFFDy");
}

TEST(NarrowText, NulIsACharacter) {
    EXPECT_EQ(NarrowToWide("a\0b\0"s), u"a\0b\0"s);
    EXPECT_EQ(NarrowToWide(""), u"");
}

TEST(NarrowText, LongTextsCrossTheBuffer) {
    std::string narrow;
    std::u16string wide;
    for (int i = 0; i < 5000; ++i) {
        narrow += i % 3 == 0 ? "x" : "\xC7\xD1";
        wide += i % 3 == 0 ? u'x' : u'\uD55C';
    }
    EXPECT_EQ(NarrowToWide(narrow), wide);
    EXPECT_EQ(WideToNarrow(wide), narrow);
}

TEST(NarrowText, WhatTheCodePageLacksBecomesAQuestionMark) {
    EXPECT_EQ(WideToNarrow(u"a\u0E01\u00E9b"), "a??b");
    EXPECT_EQ(WideToNarrow(u"\U0001F4FA!"), "?!");
    EXPECT_EQ(WideToNarrow(u"x\xD800y"), "x?y");
}

TEST(Utf8, BothWays) {
    const std::string utf8 = "aé한\U0001F4FA";
    EXPECT_EQ(FromUtf8(utf8), u"aé한\U0001F4FA");
    EXPECT_EQ(ToUtf8(u"aé한\U0001F4FA"), utf8);
}

TEST(Utf8, BrokenSequencesBecomeReplacements) {
    EXPECT_EQ(FromUtf8("\xED\x95"), u"\uFFFD\uFFFD");           // cut
    EXPECT_EQ(FromUtf8("\xC0\xAF"), u"\uFFFD\uFFFD");           // longer than needed
    EXPECT_EQ(FromUtf8("\xED\xA0\x80"), u"\uFFFD\uFFFD\uFFFD"); // a surrogate
    EXPECT_EQ(FromUtf8("\xF4\x90\x80\x80").size(), 4u);         // beyond the last character
    EXPECT_EQ(ToUtf8(u"\xDC00x\xD800"), "\xEF\xBF\xBDx\xEF\xBF\xBD");
}

TEST(Utf8, WellFormedMeansNoLoneSurrogate) {
    EXPECT_TRUE(IsWellFormed(u"한\U0001F4FA\uFFFD"));
    EXPECT_FALSE(IsWellFormed(u"\xD83D"));
    EXPECT_FALSE(IsWellFormed(u"\xDCFA\xD83D"));
}

} // namespace
} // namespace ce
