#include "host/shell/skin/SkinDescription.h"

#include "host/shell/skin/MessageTexts.h"
#include "host/shell/skin/SkinError.h"

#include <gtest/gtest.h>

namespace shell {

namespace {

const std::string kHead = "resource R\nsize 800 480\ndefine-font default NanumGothic 20\n"; // three lines

// The error of a description, as "line: reason"; empty when it has none.
std::string ErrorOf(const std::string& content) {
    try {
        (void)ReadSkinDescription("a.skin", content);
    } catch (const SkinError& error) {
        EXPECT_EQ(error.file, "a.skin");
        EXPECT_EQ(std::string(error.what()), "a.skin:" + std::to_string(error.line) + ": " + error.reason);
        return std::to_string(error.line) + ": " + error.reason;
    }
    return {};
}

std::string ErrorAfterHead(const std::string& content) {
    return ErrorOf(kHead + content);
}

} // namespace

TEST(SkinDescription, ReadsEveryAttribute) {
    const SkinDescription skin = ReadSkinDescription("a.skin", kHead + R"(
background back   # comment
bitmap 2001 strip
define-font big "Nanum Square" 30 bold
button 24
    rect 10 20 100 70
    small -72 -68 64 60
    face n p d
    other-face o
    icon i
    other-icon j
    patch 16
    images a b c
    caption "이전" "Prev \"x\" \\ \n"
    font big
    colour #010203 #04050607
    align right
    margin 9
    wrap
    text-when-pressed
    state 2
    control both
    role toggle
    anchors 1 2 3 4
    hidden
text 43
    rect 0 0 1 1
picture 2
    rect -5 0 1 1
)");
    EXPECT_EQ(skin.resource, "R");
    EXPECT_EQ(skin.width, 800);
    EXPECT_EQ(skin.background, "back");
    EXPECT_EQ(skin.bitmaps.at(2001), "strip");
    EXPECT_EQ(skin.fonts.at("big").family, "Nanum Square");
    EXPECT_TRUE(skin.fonts.at("big").bold);
    ASSERT_EQ(skin.elements.size(), 3u);
    const ElementDescription& e = skin.elements[0];
    EXPECT_EQ(e.id, 24u);
    EXPECT_EQ(e.line, 8);
    EXPECT_EQ(e.kind, ElementKind::Button);
    EXPECT_EQ(e.rect.right, 110);
    EXPECT_EQ(e.small.x, -72);
    EXPECT_EQ(e.faces[0].images[2], "d");
    EXPECT_EQ(e.faces[1].images[0], "o");
    EXPECT_EQ(e.faces[1].icon, "j");
    EXPECT_EQ(e.patchBorder, 16);
    EXPECT_EQ(e.imageSet.size(), 3u);
    EXPECT_EQ(e.captions[0][0], "이전");
    EXPECT_EQ(e.captions[0][1], "Prev \"x\" \\ \n");
    EXPECT_EQ(e.colours[0], (Colour{1, 2, 3, 255}));
    EXPECT_EQ(e.colours[2], (Colour{4, 5, 6, 7}));
    EXPECT_EQ(e.align, Align::Right);
    EXPECT_EQ(e.margin, 9);
    EXPECT_TRUE(e.wrap && e.textWhenPressed && e.hidden);
    EXPECT_EQ(e.state, 2);
    EXPECT_EQ(e.control, ControlGroup::Both);
    EXPECT_EQ(e.role, Role::Toggle);
    EXPECT_EQ(e.anchors.size(), 2u);
    EXPECT_EQ(skin.elements[1].kind, ElementKind::Text);
    EXPECT_EQ(skin.elements[2].rect.left, -5);
}

TEST(SkinDescription, ErrorsNameTheLineAndTheReason) {
    EXPECT_EQ(ErrorAfterHead("buton 3\n"), "4: unknown keyword 'buton'");
    EXPECT_EQ(ErrorAfterHead("\n# x\nbutton x\n"), "6: 'x' is not a whole number");
    EXPECT_EQ(ErrorAfterHead("button 70000\n"), "4: '70000' is outside 1..65535");
    EXPECT_EQ(ErrorAfterHead("button 3\nrect 1 2 3\n"), "5: 'rect' has 3 arguments, expected 4");
    EXPECT_EQ(ErrorAfterHead("button 3\nrect 1 2 0 3\n"), "5: '0' is outside 1..4096");
    EXPECT_EQ(ErrorAfterHead("button 3\nrect 1 2 1e9 3\n"), "5: '1e9' is not a whole number");
    EXPECT_EQ(ErrorAfterHead("button 3\nrect 0 0 1 1\nbutton 3\n"), "6: element 3 is described twice");
    EXPECT_EQ(ErrorAfterHead("button 3\n"), "4: element 3 has no 'rect'");
    EXPECT_EQ(ErrorAfterHead("button 3\nrect 0 0 1 1\nfont big\n"), "4: element 3 uses the unknown font 'big'");
    EXPECT_EQ(ErrorAfterHead("button 3\ncolour red\n"), "5: 'red' is not a colour (#rrggbb or #rrggbbaa)");
    EXPECT_EQ(ErrorAfterHead("button 3\ncolour \"\"\n"), "5: '' is not a colour (#rrggbb or #rrggbbaa)");
    EXPECT_EQ(ErrorAfterHead("button 3\nface ../../etc/x\n"),
              "5: '../../etc/x' is not a name (letters, digits, - and _)");
    EXPECT_EQ(ErrorAfterHead("button 3\nalign middle\n"), "5: 'middle' is none of: left, centre, right");
    EXPECT_EQ(ErrorAfterHead("button 3\nanchors 1 2 3\n"), "5: 'anchors' needs pairs of x and y");
    EXPECT_EQ(ErrorAfterHead("button 3\ncaption \"a\n"), "5: a quoted text is not closed properly");
    EXPECT_EQ(ErrorAfterHead("button 3\ncaption \"a\"b c\n"), "5: a quoted text is not closed properly");
    EXPECT_EQ(ErrorAfterHead("button 3\ncaption \"\\q\" b\n"), "5: a quoted text is not closed properly");
    EXPECT_EQ(ErrorAfterHead("rect 0 0 1 1\n"), "4: unknown keyword 'rect'") << "before the first element";
    EXPECT_EQ(ErrorAfterHead("button \xB0\xA1\n"), "4: the line is not UTF-8 text");
}

TEST(SkinDescription, TheHeadMustBeWhole) {
    EXPECT_EQ(ErrorOf(""), "0: no 'resource' line");
    EXPECT_EQ(ErrorOf("resource R\n"), "0: no 'size' line");
    EXPECT_EQ(ErrorOf("resource R\nsize 1 1\n"), "0: no font named 'default'");
    EXPECT_EQ(ErrorOf(kHead), "");
    EXPECT_EQ(ErrorOf("resource R\r\nsize 1 1\r\ndefine-font default F 9"), "") << "any line ends";
}

TEST(MessageTexts, TheSameNumberIsDifferentInEachResource) {
    const MessageTexts texts = ReadMessageTexts("t", "resource A\nmessage 1 가 a\nresource B\nmessage 1 \"나 다\" b\n");
    EXPECT_EQ(texts.at("A").at(1)[0], "가");
    EXPECT_EQ(texts.at("B").at(1)[0], "나 다");
    EXPECT_EQ(texts.at("B").at(1)[1], "b");
}

TEST(MessageTexts, ErrorsNameTheLine) {
    const auto lineOf = [](const char* content) {
        try {
            (void)ReadMessageTexts("t", content);
        } catch (const SkinError& error) {
            return error.line;
        }
        return -1;
    };
    EXPECT_EQ(lineOf("message 1 a b\n"), 1);
    EXPECT_EQ(lineOf("resource A\nmessage 1 a\n"), 2);
    EXPECT_EQ(lineOf("resource A\nmessage x a b\n"), 2);
    EXPECT_EQ(lineOf("resource A\nmessage 65536 a b\n"), 2);
    EXPECT_EQ(lineOf("resource A\nmessage 1 a b\nmessage 1 a b\n"), 3);
    EXPECT_EQ(lineOf("resource\n"), 1);
    EXPECT_EQ(lineOf("\n\nfoo\n"), 3);
}

} // namespace shell
