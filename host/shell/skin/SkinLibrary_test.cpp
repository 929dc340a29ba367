#include "host/shell/skin/SkinLibrary.h"

#include "host/shell/skin/SkinError.h"

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

TEST_F(SkinFolder, APictureOfTwiceTheSizeIsTakenForFineSurfacesWhereItFits) {
    Write("a.skin", head + "button 3\nrect 0 0 1 1\nface both coarse wrong\n");
    Write("texts.txt", "");
    const auto put = [this](const char* name, int side) {
        return Surface(side, side).WritePng(folder / "images" / name);
    };
    ASSERT_TRUE(put("both.png", 3) && put("both@2x.png", 6) && put("coarse.png", 3));
    ASSERT_TRUE(put("wrong.png", 3) && put("wrong@2x.png", 8));
    GdiState gdi;
    SkinLibrary library(folder, gdi);
    const SkinImage* both = library.Picture("both");
    EXPECT_EQ(both->At(2).PixelWidth(), 6);
    EXPECT_EQ(both->At(2).Width(), 3);
    EXPECT_EQ(both->At(1).PixelWidth(), 3);
    EXPECT_EQ(library.Picture("coarse")->At(2).PixelWidth(), 3);
    EXPECT_EQ(library.Picture("wrong")->At(2).PixelWidth(), 3) << "four by four units are not three by three";
    ASSERT_TRUE(put("coarse@2x.png", 6));
    EXPECT_EQ(library.Picture("coarse")->At(2).PixelWidth(), 3) << "looked for once";
    library.DropFine();
    EXPECT_EQ(library.Picture("coarse")->At(2).PixelWidth(), 6);
}

} // namespace shell
