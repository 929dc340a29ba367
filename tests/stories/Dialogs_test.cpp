// The channel list.
#include <functional>
#include <string>

#include "platform/velshell/VelFileDialog.h"
#include "tests/stories/Story.h"

using namespace stories;

namespace {
class DialogStory : public Story {
protected:
    void SetUp() override { Open(); }
    // Does something while the dialog is open.
    void Then(std::function<void()> action) { device.shell.DuringModal(std::move(action)); }
    [[nodiscard]] WString Text(UINT id) const { return device.shell.Element(id)->GetText(); }
    bool Press(UINT id) {
        const bool pressed = device.shell.Press(id);
        return pressed;
    }
};
} // namespace

// ---- Channel list ------------------------------------------------------------------------------------------------------

// Edge case: a radio picked on its tab posts its position in the list, not its line.
TEST_F(DialogStory, PickedRadioPostsItsPositionInTheList) {
    Then([this] { EXPECT_TRUE(Press(61)); });
    Then([this] {
        EXPECT_EQ(Text(40), WTEXT("[CH12] MUSIC"));
        EXPECT_EQ(Text(41), WTEXT("[CH8] JAZZ"));
        EXPECT_TRUE(Press(41));
    });
    Then([this] { Press(3); });
    Forget();
    Command(kCmdList);
    EXPECT_TRUE(Saw("post view 1124 3 0"));
    EXPECT_EQ(peer->CurChannel(), kJazz);
}

TEST_F(DialogStory, ListOpensOnTheTabOfTheSession) {
    Tune(kMusic);
    Then([this] {
        EXPECT_EQ(device.shell.Element(61)->GetState(), kButtonPressed);
        EXPECT_EQ(device.shell.Element(60)->GetState(), kButtonNormal);
        device.shell.Key(27);
    });
    Command(kCmdList);
}

// Edge case: while a recording plays, the list opens on the files.
TEST_F(DialogStory, ListOpensOnTheFilesWhileOnePlays) {
    Tune(kNews);
    peer->PlayDMBFile(WTEXT("\\SDMMC Card\\DMB\\a.dmb"));
    Then([this] {
        EXPECT_EQ(device.shell.Element(62)->GetState(), kButtonPressed);
        EXPECT_FALSE(device.shell.Element(45)->IsVisible());
        device.shell.Key(27);
    });
    Command(kCmdList);
}

// Edge case: cancelled with an empty list, the text is that of no channels; without a list file it is the other one.
TEST_F(DialogStory, CancelledEmptyListShowsThatThereAreNoChannels) {
    peer->List().RemoveAllRecords();
    peer->ChannelCount() = 0;
    Then([this] { device.shell.Key(27); });
    Command(kCmdList);
    EXPECT_EQ(Info(), TextOf(kTextNoChannel));
    peer->ChannelCount() = -1;
    Then([this] { device.shell.Key(27); });
    Command(kCmdList);
    EXPECT_EQ(Info(), TextOf(kTextPickChannel));
}

TEST_F(DialogStory, CancelledListGuardsTheToggleForAMoment) {
    Tune(kNews);
    Then([this] { device.shell.Key(27); });
    Command(kCmdList);
    EXPECT_EQ(peer->ToggleGuard(), 1);
    Wait(200);
    EXPECT_EQ(peer->ToggleGuard(), 0);
}

// Edge case: the tab that is current already does not refresh the list.
TEST_F(DialogStory, CurrentTabDoesNotRefresh) {
    Then([this] {
        Forget();
        EXPECT_TRUE(Press(60));
    });
    Then([this] {
        EXPECT_FALSE(Saw("1025"));
        EXPECT_TRUE(Press(62));
    });
    Then([this] {
        EXPECT_TRUE(Saw("1025"));
        device.shell.Key(27);
    });
    Command(kCmdList);
}

TEST_F(DialogStory, OtherKindsAreNotListed) {
    peer->List().AppendRecord(harness::Channel(211280000, "DATA", 9, 3));
    Then([this] {
        EXPECT_EQ(Text(42), WTEXT("[CH8] MOVIE"));
        EXPECT_EQ(Text(43), WString());
        device.shell.Key(27);
    });
    Command(kCmdList);
}

TEST_F(DialogStory, PickedFilePlays) {
    std::filesystem::create_directory(device.Card() / "DMB");
    harness::WriteFile(device.Card() / "DMB/NEWS_070307210509.dmb", "x");
    harness::WriteFile(device.Card() / "DMB/notes.txt", "x");
    Then([this] { Press(62); });
    Then([this] {
        EXPECT_EQ(Text(40), WTEXT("NEWS_070307210509.dmb"));
        EXPECT_EQ(Text(41), WString());
        Press(40);
    });
    Then([this] { Press(3); });
    Command(kCmdList);
    EXPECT_TRUE(Saw("parser.Load"));
    EXPECT_EQ(peer->FileName(), WTEXT("\\SDMMC Card\\DMB\\NEWS_070307210509.dmb"));
}

// A file that is there already does not matter: the tab's faces, margins and states are the dialog's own.
TEST_F(DialogStory, TabsDressTheRows) {
    Then([this] {
        EXPECT_EQ(device.shell.Element(1)->GetState(), 0);
        EXPECT_EQ(device.shell.Element(30)->GetState(), 0);
        for (UINT row = 40; row < 50; ++row)
            EXPECT_TRUE(device.shell.Element(row)->IsVisible()) << row;
        EXPECT_EQ(device.shell.Element(40)->GetRect().right - device.shell.Element(40)->GetRect().left,
                  device.shell.Element(40)->GetImageSet()->GetImage(1)->GetWidth());
        Press(62);
    });
    Then([this] {
        EXPECT_EQ(device.shell.Element(1)->GetState(), 2);
        EXPECT_EQ(device.shell.Element(30)->GetState(), 1);
        for (UINT row = 40; row < 50; ++row)
            EXPECT_EQ(device.shell.Element(row)->IsVisible() != 0, row < 45) << row;
        EXPECT_EQ(device.shell.Element(44)->GetRect().right - device.shell.Element(44)->GetRect().left,
                  device.shell.Element(44)->GetImageSet()->GetImage(0)->GetWidth());
        Press(61);
    });
    Then([this] {
        EXPECT_EQ(device.shell.Element(1)->GetState(), 1);
        EXPECT_EQ(device.shell.Element(30)->GetState(), 0);
        device.shell.Key(27);
    });
    Command(kCmdList);
}

TEST_F(DialogStory, TenRowsAreShownAndTheRestIsReachedByKeysAndWheel) {
    peer->List().RemoveAllRecords();
    for (int i = 0; i < 25; ++i)
        peer->List().AppendRecord(harness::Channel(205280000, "\xB9\xE6\xBC\xDB " + std::to_string(i), 1, kKindDMB));
    peer->ChannelCount() = 25;
    Then([this] {
        EXPECT_EQ(Text(40), WTEXT("[CH12] 방송 0"));
        EXPECT_EQ(Text(49), WTEXT("[CH12] 방송 9"));
        device.shell.Key(34);
        Idle();
        device.shell.Key(34);
        Idle();
        EXPECT_EQ(Text(49), WTEXT("[CH12] 방송 19")) << "the mark went down by ten and ten";
        device.shell.Wheel(200, 200, -1);
        Idle();
        EXPECT_EQ(Text(49), WTEXT("[CH12] 방송 22"));
        device.shell.Key(35);
        Idle();
        EXPECT_EQ(Text(49), WTEXT("[CH12] 방송 24"));
        Forget();
        device.shell.Key(13);
    });
    Command(kCmdList);
    EXPECT_TRUE(Saw("post view 1124 24 0"));
}

TEST_F(DialogStory, RefreshMessageReadsTheFolderAgain) {
    std::filesystem::create_directory(device.Card() / "DMB");
    Then([this] { Press(62); });
    Then([this] {
        EXPECT_EQ(Text(40), WString());
        harness::WriteFile(device.Card() / "DMB/a.dmb", "x");
        PostMessageW(GView::GetFrontWindow(), WM_LIST_REFRESH, 0, 0);
    });
    Then([this] {
        EXPECT_EQ(Text(40), WTEXT("a.dmb"));
        Press(60);
    });
    Then([this] {
        PostMessageW(GView::GetFrontWindow(), WM_LIST_REFRESH, 0, 0);
        Idle();
        EXPECT_EQ(Text(40), WTEXT("[CH12] NEWS"));
        device.shell.Key(27);
    });
    Command(kCmdList);
}

TEST_F(DialogStory, ListOpensOnTheFilesForAnUnknownKind) {
    peer->List().AppendRecord(harness::Channel(211280000, "ODD", 9, 7));
    Tune(5);
    Then([this] {
        EXPECT_EQ(device.shell.Element(62)->GetState(), kButtonPressed);
        device.shell.Key(27);
    });
    Command(kCmdList);
}
