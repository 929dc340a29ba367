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

} // namespace shell
