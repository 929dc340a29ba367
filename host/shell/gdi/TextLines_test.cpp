#include "host/shell/gdi/TextLines.h"

#include <gtest/gtest.h>

namespace shell {

namespace {

// Every unit is one wide.
int Count(WStringView text) {
    return static_cast<int>(text.size());
}

std::vector<WString> Lines(WStringView text, int width, bool wordBreak = true) {
    std::vector<WString> result;
    for (const TextLine& line : BreakLines(text, width, wordBreak, Count)) {
        result.emplace_back(text.substr(line.start, line.length));
    }
    return result;
}

using Expected = std::vector<WString>;

} // namespace

TEST(TextLines, BreakAtBlanks) {
    EXPECT_EQ(Lines(u"one two three", 7), (Expected{u"one two", u"three"}));
    EXPECT_EQ(Lines(u"one two three", 13), (Expected{u"one two three"}));
    EXPECT_EQ(Lines(u"one   two", 5), (Expected{u"one", u"two"})) << "the blanks at the break belong to no line";
}

TEST(TextLines, BreakBetweenHangulSyllables) {
    EXPECT_EQ(Lines(u"가나다라마", 2), (Expected{u"가나", u"다라", u"마"}));
    EXPECT_EQ(Lines(u"KBS뉴스", 3), (Expected{u"KBS뉴", u"스"})) << "not between a letter and a syllable";
}

TEST(TextLines, AWordWiderThanTheLineStaysWhole) {
    EXPECT_EQ(Lines(u"a abcdefgh b", 4), (Expected{u"a", u"abcdefgh", u"b"}));
    EXPECT_EQ(Lines(u"가나", 0), (Expected{u"가", u"나"}));
}

TEST(TextLines, LineEndsEndLinesAndATrailingOneAddsNone) {
    EXPECT_EQ(Lines(u"a\nb", 9), (Expected{u"a", u"b"}));
    EXPECT_EQ(Lines(u"a\nb\n", 9), (Expected{u"a", u"b"}));
    EXPECT_EQ(Lines(u"a\n\nb", 9), (Expected{u"a", u"", u"b"}));
    EXPECT_EQ(Lines(u"a\r\nb", 9), (Expected{u"a", u"b"}));
    EXPECT_EQ(Lines(u"", 9), (Expected{}));
    EXPECT_EQ(Lines(u"\n", 9), (Expected{u""}));
}

TEST(TextLines, WithoutWordBreakOnlyLineEndsCount) {
    EXPECT_EQ(Lines(u"one two\nthree", 3, false), (Expected{u"one two", u"three"}));
}

TEST(TextLines, OnlyBlanksIsOneEmptyLine) {
    EXPECT_EQ(Lines(u"   ", 1), (Expected{u""}));
}

TEST(Prefixes, ASingleOneVanishesAndMarks) {
    const PrefixedText text = ResolvePrefixes(u"A&B");
    EXPECT_EQ(text.text, u"AB");
    EXPECT_EQ(text.underlined, 1u);
}

TEST(Prefixes, ADoubledOneShowsAndMarksNothing) {
    const PrefixedText text = ResolvePrefixes(u"A&&B");
    EXPECT_EQ(text.text, u"A&B");
    EXPECT_EQ(text.underlined, WString::npos);
    EXPECT_EQ(ResolvePrefixes(u"A&").text, u"A");
    EXPECT_EQ(ResolvePrefixes(u"").text, u"");
}

} // namespace shell
