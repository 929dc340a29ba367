#include "tests/shell/ShellFixture.h"

namespace shell {

TEST_F(ShellFixture, FilesAreToldApartByTheirEnding) {
    const CVelDocument& document = shell->Document();
    EXPECT_EQ(document.CheckFileType(u"\\SDMMC Card\\DMB\\KBS_0712.dmb"), 4);
    EXPECT_EQ(document.CheckFileType(u"A.DMB"), 4);
    EXPECT_EQ(document.CheckFileType(u"a.ts"), 5);
    EXPECT_EQ(document.CheckFileType(u"a.Tsp"), 5);
    EXPECT_EQ(document.CheckFileType(u"a.avi"), 0);
    EXPECT_EQ(document.CheckFileType(u"dmb"), 0);
    EXPECT_EQ(document.CheckFileType(u".dmb"), 0) << "no name";
    EXPECT_EQ(document.CheckFileType(u""), 0);
    EXPECT_EQ(document.CheckFileType(nullptr), 0);
}

TEST_F(ShellFixture, AFolderIsMadeOnce) {
    CVelDocument& document = shell->Document();
    EXPECT_TRUE(document.MakeDirectory(u"\\SDMMC Card\\DMB\\"));
    EXPECT_TRUE(std::filesystem::is_directory(root / "card" / "DMB"));
    EXPECT_TRUE(document.MakeDirectory(u"\\SDMMC Card\\DMB\\")) << "exists already";
    EXPECT_FALSE(document.MakeDirectory(u"\\SDMMC Card\\a\\b"));
    std::ofstream(root / "card" / "file") << "x";
    EXPECT_FALSE(document.MakeDirectory(u"\\SDMMC Card\\file"));
    EXPECT_FALSE(document.MakeDirectory(nullptr));
}

TEST_F(ShellFixture, TheCardIsThereUnlessTakenOut) {
    EXPECT_TRUE(IsAccessableSDMMC());
    ce::FileFaults out;
    out.cardAbsent = true;
    system.files().SetFaults(out);
    EXPECT_FALSE(IsAccessableSDMMC());
}

TEST_F(ShellFixture, FlagsOfTheDocument) {
    CVelDocument& document = shell->Document();
    EXPECT_FALSE(document.IsDMBDebugMode());
    shell->SetDebugMode(true);
    EXPECT_TRUE(document.IsDMBDebugMode());
    EXPECT_EQ(WString(document.GetProfileDirectory()), u"\\Profile\\");
    Open();
    EXPECT_EQ(shell->View()->GetDocument(), &document);
    TestView::Calls().clear();
    shell->SaveAll();
    EXPECT_EQ(TestView::Calls(), (Calls{"SaveProfile"}));
    EXPECT_TRUE(document.IsSaveRequested());
    document.ClearSaveRequest();
    EXPECT_FALSE(document.IsSaveRequested());
}

} // namespace shell
