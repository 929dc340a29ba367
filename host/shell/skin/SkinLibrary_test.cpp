#include "host/shell/skin/SkinLibrary.h"

#include "host/ce/Text.h"
#include "host/shell/gdi/TextLines.h"
#include "host/shell/skin/SkinError.h"
#include "tests/support/Places.h"

#include <fstream>
#include <gtest/gtest.h>
#include <unistd.h>

namespace shell {

namespace {

class SkinFolder : public testing::Test {
protected:
    SkinFolder() {
        std::filesystem::remove_all(folder);
        std::filesystem::create_directories(folder / "images");
    }
    ~SkinFolder() override { std::filesystem::remove_all(folder); }
    void Write(const char* name, const std::string& content) { std::ofstream(folder / name) << content; }
    // The error of loading, as "file:line: reason" without the folder; empty when it loads.
    std::string ErrorOf() {
        GdiState gdi;
        try {
            const SkinLibrary library(folder, gdi);
        } catch (const SkinError& error) {
            const std::string file = std::filesystem::path(error.file).filename().string();
            return file + ":" + std::to_string(error.line) + ": " + error.reason;
        }
        return {};
    }
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("dmb-skin-" + std::to_string(getpid()));
    const std::string head = "resource R\nsize 8 8\ndefine-font default NanumGothic 20\n";
};

} // namespace

TEST_F(SkinFolder, WhatIsMissingIsNamed) {
    EXPECT_NE(ErrorOf().find("holds no .skin file"), std::string::npos);
    Write("a.skin", head);
    EXPECT_EQ(ErrorOf(), "texts.txt:0: cannot be read");
    Write("texts.txt", "");
    EXPECT_EQ(ErrorOf(), "");
    Write("a.skin", head + "button 3\nrect 0 0 1 1\nicon nowhere\n");
    EXPECT_EQ(ErrorOf(), "a.skin:4: the picture 'nowhere' is missing or no PNG picture");
    Write("images/nowhere.png", "no picture");
    EXPECT_EQ(ErrorOf(), "a.skin:4: the picture 'nowhere' is missing or no PNG picture");
    EXPECT_TRUE(Surface(2, 2).WritePng(folder / "images" / "nowhere.png"));
    EXPECT_EQ(ErrorOf(), "");
    Write("b.skin", head);
    EXPECT_EQ(ErrorOf(), "b.skin:0: resource 'R' has another file already");
}

TEST_F(SkinFolder, AFolderThatIsNotThere) {
    GdiState gdi;
    EXPECT_THROW(SkinLibrary(folder / "none", gdi), SkinError);
}

TEST_F(SkinFolder, FindsByName) {
    Write("a.skin", head);
    Write("texts.txt", "resource R\nmessage 7 가 a\n");
    GdiState gdi;
    const SkinLibrary library(folder, gdi);
    EXPECT_NE(library.Find(u"R"), nullptr);
    EXPECT_EQ(library.Find(u"S"), nullptr);
    EXPECT_EQ(WString(library.Text(u"R", 7, Language::Korean)), u"가");
    EXPECT_EQ(WString(library.Text(u"R", 7, Language::English)), u"a");
    EXPECT_EQ(WString(library.Text(u"R", 8, Language::English)), u"");
    EXPECT_EQ(WString(library.Text(u"S", 7, Language::English)), u"");
    EXPECT_EQ(library.Bitmap(2001), nullptr);
}

TEST(ProductSkin, CaptionsFitTheirElementsInBothLanguages) {
    GdiState gdi;
    const SkinLibrary library(std::filesystem::path(testing_support::BinaryDir()) / "skin", gdi);
    for (const WCHAR* resource :
         {u"VelMain", u"VelDMB", u"VelDMBSettings", u"VelDMBDebug", u"VelDMBChList", u"VelMsgBox"}) {
        const Skin* skin = library.Find(resource);
        ASSERT_NE(skin, nullptr);
        const RECT window = {0, 0, skin->description.width, skin->description.height};
        for (const ElementDescription& element : skin->description.elements) {
            const RECT& rect = element.rect;
            EXPECT_TRUE(rect.left >= 0 && rect.top >= 0 && rect.right <= window.right && rect.bottom <= window.bottom)
                << element.id;
            const FontDescription& font = skin->description.fonts.at(element.font.empty() ? "default" : element.font);
            for (const LocalText& caption : element.captions) {
                for (const std::string& text : caption) {
                    const SIZE size = gdi.text.Measure({font.family, font.pixels, font.bold}, ce::FromUtf8(text));
                    EXPECT_LE(size.cx + element.margin, rect.right - rect.left) << element.id << " " << text;
                    EXPECT_LE(size.cy, rect.bottom - rect.top) << element.id;
                }
            }
        }
    }
}

TEST(ProductSkin, MessagesFitTheBoxInBothLanguages) {
    GdiState gdi;
    const SkinLibrary library(std::filesystem::path(testing_support::BinaryDir()) / "skin", gdi);
    const Skin* box = library.Find(u"VelMsgBox");
    const ElementDescription& area = box->description.elements.front();
    ASSERT_EQ(area.id, 11u);
    const FontDescription& font = box->description.fonts.at("default");
    const FontSpec spec = {font.family, font.pixels, font.bold};
    const auto measure = [&](WStringView part) { return static_cast<int>(gdi.text.Measure(spec, part).cx); };
    for (WORD id = 0; id < 2000; ++id) {
        for (const Language language : {Language::Korean, Language::English}) {
            const WString text = std::max(WString(library.Text(u"VelDMB", id, language)),
                                          WString(library.Text(u"VelMain", id, language)));
            const auto lines = BreakLines(text, area.rect.right - area.rect.left, true, measure);
            EXPECT_LE(static_cast<int>(lines.size()) * gdi.text.LineHeight(spec), area.rect.bottom - area.rect.top)
                << id;
            for (const TextLine& line : lines) {
                EXPECT_LE(measure(WStringView(text).substr(line.start, line.length)), area.rect.right - area.rect.left)
                    << id;
            }
        }
    }
}

} // namespace shell
