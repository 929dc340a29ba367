#include "host/wire/LabelText.h"

#include <gtest/gtest.h>

namespace wire {
namespace {

ByteVector Bytes(std::string_view text) {
    return {text.begin(), text.end()};
}

TEST(LabelText, EbuLatinIsNeitherAsciiNorLatinOne) {
    const ByteVector text = {0x91, 0x97, 0x99, 0xA9, 0x24, 0x5C, 0x5E, 0x60, 0x7B, 0x7F, 'a'};
    EXPECT_EQ(DecodeText(text, kCharsetEbuLatin), "äöü€łŮŁĄ«Ħa");
}

TEST(LabelText, KoreanBytesUnderCharsetZeroAreKorean) {
    const ByteVector text = {0xC7, 0xD1, 0xB1, 0xB9, 0xB9, 0xE6, 0xBC, 0xDB,
                             0x20, 0xB6, 0xF3, 0xB5, 0xF0, 0xBF, 0xC0, 0x20};
    EXPECT_TRUE(IsStrictKorean(text));
    EXPECT_EQ(DecodeLabel(text, kCharsetEbuLatin), "한국방송 라디오");
    // They go into the channel record as they are.
    EXPECT_EQ(LabelToCodePage949(text, kCharsetEbuLatin), std::string(text.begin(), text.end() - 1));
}

TEST(LabelText, RealEbuLatinSurvivesTheKoreanTest) {
    const ByteVector text = {'L', 'S', 'F', ' ', 'H', 0x91, 'l', 'f', 't', 'e', ' ', 0xD7, 0x8D, ' ', ' ', ' '};
    EXPECT_FALSE(IsStrictKorean(text));
    EXPECT_EQ(DecodeLabel(text, kCharsetEbuLatin), "LSF Hälfte Öß");
}

TEST(LabelText, APairCutAtTheEndIsNotKorean) {
    EXPECT_FALSE(IsStrictKorean(ByteVector{0xC7, 0xD1, 0xB1}));
    EXPECT_FALSE(IsStrictKorean(Bytes("plain")));
    EXPECT_FALSE(IsStrictKorean(ByteVector{0xC7, 0x41}));
    EXPECT_FALSE(IsStrictKorean(ByteVector{0xFE, 0xFE})); // a pair, but nothing is assigned there
}

TEST(LabelText, ALabelsEndMayCutItsLastCharacter) {
    const std::string korean = "\xC7\xD1\xB1\xB9\xB9\xE6\xBC\xDB"; // four syllables
    EXPECT_EQ(DecodeLabel(Bytes("A" + korean + "\xB0\xF8\xBB\xE7\xB6\xF3\xB5"), kCharsetEbuLatin), "A한국방송공사라");
    // One pair before it may be two Latin letters as well.
    EXPECT_EQ(DecodeLabel(ByteVector{0xC7, 0xD1, 0xB5}, kCharsetEbuLatin), "ÒÄİ");
    const std::string utf8 = "라디오 방송";
    EXPECT_EQ(DecodeLabel(Bytes(utf8.substr(0, 14)), kCharsetUtf8), "라디오 방");
    EXPECT_EQ(DecodeLabel(Bytes(utf8.substr(0, 15)), kCharsetUtf8), "라디오 방");
    EXPECT_EQ(DecodeLabel(Bytes(utf8), kCharsetUtf8), utf8);
    EXPECT_EQ(DecodeLabel(Bytes("\x80\x80"), kCharsetUtf8), "\uFFFD\uFFFD");
}

TEST(LabelText, LatinTwoHasItsOwnLetters) {
    EXPECT_EQ(DecodeText(ByteVector{'R', 0xE1, 'd', 'i', 'o', ' ', 0xA9}, kCharsetLatin2), "Rádio Š");
}

TEST(LabelText, Ucs2IsBigEndianAndMayHoldZeroBytes) {
    const ByteVector text = {0xD5, 0x5C, 0x00, 0x20, 0x00, 0x41, 0xD8, 0x3D, 0xDE, 0x00, 0x12};
    EXPECT_EQ(DecodeText(text, kCharsetUcs2), "한 A\U0001F600");
    EXPECT_EQ(DecodeText(ByteVector{0xD8, 0x00}, kCharsetUcs2), "\uFFFD");
}

TEST(LabelText, MalformedUtf8IsReplacedNotTrusted) {
    EXPECT_EQ(DecodeText(ByteVector{'a', 0xED, 0x95, 'b'}, kCharsetUtf8), "a\uFFFD\uFFFDb");
    EXPECT_EQ(DecodeText(ByteVector{0xC0, 0x80}, kCharsetUtf8), "\uFFFD\uFFFD");
    EXPECT_EQ(DecodeText(ByteVector{0xED, 0xA0, 0x80}, kCharsetUtf8), "\uFFFD\uFFFD\uFFFD");
}

TEST(LabelText, ControlCodesAreRemovedAsCharactersNotAsBytes) {
    EXPECT_EQ(RemoveControlCodes(ByteVector{'a', 0x0A, 'b', 0x0B, 0x1F, 'c'}, kCharsetUtf8), Bytes("abc"));
    // U+0A0B holds both bytes and stays; U+000A goes.
    EXPECT_EQ(RemoveControlCodes(ByteVector{0x0A, 0x0B, 0x00, 0x0A, 0x00, 0x41}, kCharsetUcs2),
              (ByteVector{0x0A, 0x0B, 0x00, 0x41}));
    EXPECT_EQ(RemoveControlCodes(ByteVector{'a', 0, 'b', 0, 0}, kCharsetEbuLatin), Bytes("ab"));
    EXPECT_EQ(RemoveControlCodes(ByteVector{0, 'a', 0, 0}, kCharsetUcs2), (ByteVector{0, 'a'}));
}

TEST(LabelText, PaddingIsCutFromLabelsOnly) {
    EXPECT_EQ(DecodeLabel(Bytes("KURZ            "), 0), "KURZ");
    EXPECT_EQ(DecodeLabel(ByteVector{'A', 0, 0}, 0), "A");
    EXPECT_EQ(DecodeLabel(ByteVector{'A', 0, 'B'}, 0), "A B");
    EXPECT_EQ(DecodeLabel(Bytes("                "), 0), "");
    EXPECT_EQ(DecodeText(Bytes("x "), 0), "x ");
}

TEST(LabelText, CodePage949AndBack) {
    const std::string narrow = ToCodePage949("한국 ABC");
    EXPECT_EQ(narrow.size(), 8u);
    EXPECT_EQ(FromCodePage949(narrow), "한국 ABC");
    // A syllable of the extension beyond KS X 1001.
    EXPECT_EQ(FromCodePage949(ToCodePage949("똠")), "똠");
    EXPECT_EQ(FromCodePage949("a\xFF"
                              "b"),
              "a\uFFFDb");
}

TEST(LabelText, LettersThatThePageLacksLoseTheirAccent) {
    EXPECT_EQ(ToCodePage949("LSF Hälfte Öőč"), "LSF Halfte Ooc");
    EXPECT_EQ(ToCodePage949("☂日"), "?" + ToCodePage949("日"));
}

TEST(LabelText, CuttingNeverSplitsADoubleByteCharacter) {
    const std::string eight = ToCodePage949("한국방송라디오일");
    ASSERT_EQ(eight.size(), 16u);
    EXPECT_EQ(CutCodePage949(eight, 16), eight);
    EXPECT_EQ(CutCodePage949(eight, 15).size(), 14u);
    const std::string shifted = "A" + eight;
    EXPECT_EQ(CutCodePage949(shifted, 16), shifted.substr(0, 15));
    EXPECT_EQ(CutCodePage949("\xC7", 16), "");
}

TEST(LabelText, TransmittersEncodeWhatReceiversDecode) {
    ByteVector out;
    ASSERT_TRUE(EncodeEbuLatin("Grüße łĄ", out));
    EXPECT_EQ(DecodeText(out, kCharsetEbuLatin), "Grüße łĄ");
    EXPECT_FALSE(EncodeEbuLatin("한", out));
    EXPECT_EQ(DecodeText(EncodeUcs2("한 A\U0001F600"), kCharsetUcs2), "한 A\U0001F600");
}

} // namespace
} // namespace wire
