#include "host/shell/core/FileDetails.h"
#include "platform/velshell/VelFileDialog.h"
#include "tests/shell/ShellFixture.h"

namespace shell {

namespace {

class TestList final : public CVelFileDialog {
public:
    explicit TestList(GView* parent, int type = kListTypeRecordings)
        : CVelFileDialog(parent, u"\\SDMMC Card\\DMB\\", type) {}
    const WCHAR* GetResourceName() const override { return u"VelDMBChList"; }
};

void MakeFiles(const std::filesystem::path& card, std::initializer_list<const char*> names) {
    std::filesystem::create_directory(card / "DMB");
    for (const char* name : names) {
        std::ofstream(card / "DMB" / name) << "x";
    }
}

} // namespace

TEST_F(ShellFixture, RecordingsOfBothKindsAreListed) {
    MakeFiles(root / "card", {"b.ts", "a.dmb", "c.tsp", "d.txt", "한글.dmb"});
    std::filesystem::create_directory(root / "card" / "DMB" / "folder.dmb");
    TestView& view = Open();
    TestList list(&view);
    shell->DuringModal([&] {
        EXPECT_EQ(list.GetFileLines(), (std::vector<WString>{u"a.dmb", u"b.ts", u"c.tsp", u"한글.dmb"}));
        EXPECT_EQ(WString(shell->Element(40)->GetText()), u"a.dmb");
        EXPECT_EQ(WString(shell->Element(43)->GetText()), u"한글.dmb");
        EXPECT_EQ(WString(shell->Element(44)->GetText()), u"");
        EXPECT_TRUE(shell->Press(41));
    });
    shell->DuringModal([&] { EXPECT_TRUE(shell->Press(41)); });
    EXPECT_EQ(list.DoModal(), kDialogOk) << "the first touch marks, the second takes";
    EXPECT_EQ(list.GetSelection(), 1);
    TestList only(&view, kFileTypeTS);
    shell->DuringModal([&] { EXPECT_EQ(only.GetFileLines().size(), 2u); });
    EXPECT_EQ(only.DoModal(), kDialogCancel);
    EXPECT_EQ(only.GetSelection(), -1);
}

TEST_F(ShellFixture, AFileThatTheViewDoesNotPlayIsNotListed) {
    MakeFiles(root / "card", {"a.dmb", "b.dmb", "c.ts"});
    TestView& view = Open();
    view.refusedFile = u"\\SDMMC Card\\DMB\\b.dmb";
    TestList list(&view);
    shell->DuringModal([&] { EXPECT_EQ(list.GetFileLines(), (std::vector<WString>{u"a.dmb", u"c.ts"})); });
    EXPECT_EQ(list.DoModal(), kDialogCancel);
}

TEST_F(ShellFixture, AListScrollsByPages) {
    MakeFiles(root / "card", {"1.dmb", "2.dmb", "3.dmb", "4.dmb", "5.dmb", "6.dmb", "7.dmb"});
    TestView& view = Open();
    TestList list(&view);
    shell->DuringModal([&] { EXPECT_TRUE(shell->Press(72)); });
    shell->DuringModal([&] {
        EXPECT_EQ(WString(shell->Element(40)->GetText()), u"3.dmb") << "the last page is full";
        EXPECT_TRUE(shell->Press(71));
    });
    shell->DuringModal([&] {
        EXPECT_EQ(WString(shell->Element(40)->GetText()), u"1.dmb");
        shell->Key(40);
        shell->Key(40);
        shell->Key(13);
    });
    EXPECT_EQ(list.DoModal(), kDialogOk);
    EXPECT_EQ(list.GetSelection(), 1) << "the arrow keys marked the second line";
}

TEST(FileDetails, TheLengthIsThePlayingTimeAndTheSizeOnlyWithoutOne) {
    EXPECT_EQ(LengthText(5 << 20, 0u), u"0:00");
    EXPECT_EQ(LengthText(5 << 20, 59u), u"0:59");
    EXPECT_EQ(LengthText(5 << 20, 60u), u"1:00");
    EXPECT_EQ(LengthText(5 << 20, 754u), u"12:34");
    EXPECT_EQ(LengthText(5 << 20, 3599u), u"59:59");
    EXPECT_EQ(LengthText(5 << 20, 3600u), u"1:00:00");
    EXPECT_EQ(LengthText(5 << 20, 36061u), u"10:01:01");
    EXPECT_EQ(LengthText(5 << 20, std::nullopt), u"5.0 MB");
    EXPECT_EQ(LengthText(0, std::nullopt), u"0.0 MB");
}

TEST_F(ShellFixture, OnlyFilesThatAreSeenAreAskedForTheirTimeAndOnlyOnce) {
    MakeFiles(root / "card", {"1.dmb", "2.dmb", "3.dmb", "4.dmb", "5.dmb", "6.dmb", "7.dmb"});
    std::vector<WString> asked;
    shell->SetPlayingTimeSource([&](const WCHAR* path) -> std::optional<UINT> {
        asked.emplace_back(path);
        return asked.size() == 1 ? std::nullopt : std::optional(83u);
    });
    TestView& view = Open();
    TestList list(&view);
    shell->DuringModal([&] {
        (void)shell->Screen();
        ASSERT_EQ(asked.size(), 5u);
        EXPECT_EQ(asked[0], u"\\SDMMC Card\\DMB\\1.dmb");
        EXPECT_EQ(asked[4], u"\\SDMMC Card\\DMB\\5.dmb");
        InvalidateRect(GView::GetFrontWindow(), nullptr, FALSE);
        (void)shell->Screen();
        EXPECT_TRUE(shell->Press(72));
    });
    shell->DuringModal([&] {
        (void)shell->Screen();
        ASSERT_EQ(asked.size(), 7u) << "the two that came into sight";
        EXPECT_EQ(asked[6], u"\\SDMMC Card\\DMB\\7.dmb");
        PostMessageW(GView::GetFrontWindow(), WM_LIST_REFRESH, 0, 0);
    });
    shell->DuringModal([&] {
        InvalidateRect(GView::GetFrontWindow(), nullptr, FALSE);
        (void)shell->Screen();
        EXPECT_EQ(asked.size(), 12u) << "a folder that is read again may hold other files";
        shell->Key(27);
    });
    EXPECT_EQ(list.DoModal(), kDialogCancel);
}

TEST_F(ShellFixture, AMissingFolderIsAnEmptyList) {
    TestView& view = Open();
    TestList list(&view);
    shell->DuringModal([&] {
        EXPECT_TRUE(list.GetFileLines().empty());
        shell->Press(40);
        shell->Key(34);
        shell->Press(3);
    });
    EXPECT_EQ(list.DoModal(), kDialogOk);
    EXPECT_EQ(list.GetSelection(), -1);
}

} // namespace shell
