#include "host/ce/Text.h"
#include "platform/wince.h"

#include <limits>

#include <gtest/gtest.h>

namespace {

// GoogleTest shows UTF-8 better than UTF-16.
template <typename... Arguments> std::string Formatted(const WCHAR* format, const Arguments&... arguments) {
    return ce::ToUtf8(FormatW(format, arguments...));
}

TEST(Format, NamesOfRecordings) {
    EXPECT_EQ(Formatted(WTEXT("%s_%02d%02d%02d%02d%02d%02d.dmb"), WTEXT("NEWS"), 7, 3, 7, 21, 5, 9),
              "NEWS_070307210509.dmb");
}

TEST(Format, ANullTextIsNamed) {
    const WCHAR* none = nullptr;
    EXPECT_EQ(Formatted(WTEXT("InitDMBFilters(%d, %s)\r\n"), 0, none), "InitDMBFilters(0, (null))\r\n");
    EXPECT_EQ(Formatted(WTEXT("%S %s"), static_cast<const char*>(nullptr), nullptr), "(null) (null)");
}

TEST(Format, NarrowTextIsKorean) {
    EXPECT_EQ(Formatted(WTEXT("[%S]"), "\xC7\xD1\xB1\xB9"), "[한국]");
    EXPECT_EQ(Formatted(WTEXT("[%S]"), ""), "[]");
}

TEST(Format, RealNumbers) {
    EXPECT_EQ(Formatted(WTEXT("RSSI: %2.2f, %d"), -71.5f, 12), "RSSI: -71.50, 12");
    EXPECT_EQ(Formatted(WTEXT("%f|%.0f|%8.1f|%-8.1f|%08.1f|%+.1f"), 1.5, 2.5, 1.25, 1.25, -1.25, 1.0),
              "1.500000|2|     1.2|1.2     |-00001.2|+1.0");
    EXPECT_EQ(Formatted(WTEXT("%.1f"), 1e308).size(), 311u);
    EXPECT_EQ(Formatted(WTEXT("%05.1f"), std::numeric_limits<double>::infinity()), "  inf");
}

TEST(Format, WholeNumbers) {
    EXPECT_EQ(Formatted(WTEXT("%d %i %u"), -1, 7, -1), "-1 7 4294967295");
    EXPECT_EQ(Formatted(WTEXT("%d"), std::numeric_limits<LONG>::min()), "-2147483648");
    EXPECT_EQ(Formatted(WTEXT("%x %X %08x %#x %#X"), 0xBEEF, 0xBEEF, 0x80004005u, 16, 16),
              "beef BEEF 80004005 0x10 0X10");
    EXPECT_EQ(Formatted(WTEXT("%5d|%-5d|%05d|%+d|% d|%.3d"), 42, 42, -42, 42, 42, 7), "   42|42   |-0042|+42| 42|007");
    EXPECT_EQ(Formatted(WTEXT("%hd %hu %ld %lu"), 65535, 65535, -5, 5), "-1 65535 -5 5");
}

TEST(Format, AWideNumberIsTwoWords) {
    const LONGLONG position = 4294967298;
    EXPECT_EQ(Formatted(WTEXT("SetFilePos(%d) %d\r\n"), static_cast<LONG>(position & 0xFFFFFFFF),
                        static_cast<LONG>(position >> 32), 0),
              "SetFilePos(2) 1\r\n");
}

TEST(Format, TextsAndUnits) {
    EXPECT_EQ(
        Formatted(WTEXT("%s %ls|%5s|%-5s|%.2s"), WTEXT("a"), WString(WTEXT("b")), WTEXT("c"), WTEXT("d"), WTEXT("efg")),
        "a b|    c|d    |ef");
    EXPECT_EQ(Formatted(WTEXT("%c%c"), WCHAR{0xD55C}, 'x'), "한x");
}

TEST(Format, PercentSignsAndUnknownLetters) {
    EXPECT_EQ(Formatted(WTEXT("100%% %q")), "100% q");
    EXPECT_EQ(Formatted(WTEXT("end %")), "end ");
    EXPECT_EQ(Formatted(WTEXT("%5")), "");
}

TEST(Format, MissingAndWrongArgumentsAreHarmless) {
    EXPECT_EQ(Formatted(WTEXT("%d %s %f %c."), WTEXT("text"), 7), std::string("0 (null) 0.000000 \0.", 20));
    EXPECT_EQ(Formatted(WTEXT("%s"), 5), "(null)");
    EXPECT_EQ(Formatted(WTEXT("x"), 5, 6), "x");
}

TEST(Format, WidthsAreBounded) {
    EXPECT_EQ(FormatW(WTEXT("%99999999999d"), 1).size(), 1024u);
    EXPECT_EQ(FormatW(WTEXT("%.99999999999f"), 1.0).size(), 101u);
}

} // namespace
