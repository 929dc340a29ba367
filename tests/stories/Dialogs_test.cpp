// The channel list, the settings and the debug dialog.
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

// ---- Settings ----------------------------------------------------------------------------------------------------------

// Edge case: previous at the first length shows the last, next at the last shows the first.
TEST_F(DialogStory, LengthsWrap) {
    Then([this] { Press(12); });
    Then([this] {
        EXPECT_EQ(Text(11), WTEXT("60분"));
        Press(13);
    });
    Then([this] {
        EXPECT_EQ(Text(11), WTEXT("5분"));
        device.shell.Key(27);
    });
    Command(kCmdSetting);
}

TEST_F(DialogStory, OkStoresBothValuesAndSavesTheProfile) {
    Then([this] { Press(13); });
    Then([this] { Press(14); });
    Then([this] { Press(3); });
    Command(kCmdSetting);
    EXPECT_EQ(view->GetRecordTime(), 1u);
    EXPECT_EQ(view->GetRatioOnOff(), 1u);
    const std::string bytes = device.ReadProfile();
    ASSERT_EQ(bytes.size(), 16u);
    EXPECT_EQ(bytes[4], 1);
    EXPECT_EQ(bytes[14], 1);
}

// Edge case: cancel after changing both leaves the view and the profile alone.
TEST_F(DialogStory, CancelStoresNothing) {
    Then([this] { Press(13); });
    Then([this] { Press(14); });
    Then([this] { Press(4); });
    Command(kCmdSetting);
    EXPECT_EQ(view->GetRecordTime(), 0u);
    EXPECT_EQ(view->GetRatioOnOff(), 0u);
    EXPECT_FALSE(std::filesystem::exists(device.Profile() / "DMB.dat"));
}

// Edge case: ratio-on when it is on moves nothing.
TEST_F(DialogStory, RatioSelectorMovesOnlyOnAChange) {
    RECT off{};
    RECT moved{};
    Then([&] {
        off = device.shell.Element(16)->GetRect();
        Press(14);
    });
    Then([&] {
        const RECT on = device.shell.Element(16)->GetRect();
        EXPECT_TRUE(on.left != off.left || on.top != off.top);
        EXPECT_EQ(on.right - on.left, off.right - off.left);
        moved = {on.left + 1, on.top + 1, on.right + 1, on.bottom + 1};
        device.shell.Element(16)->SetRect(moved, 0);
        Press(14);
    });
    Then([&] {
        EXPECT_EQ(device.shell.Element(16)->GetRect().left, moved.left) << "it was put back on its anchor";
        device.shell.Key(27);
    });
    Command(kCmdSetting);
}

// Edge case: without debug mode the debug button stays hidden.
TEST_F(DialogStory, DebugButtonNeedsDebugMode) {
    Then([this] {
        EXPECT_FALSE(device.shell.Element(7)->IsVisible());
        device.shell.Key(27);
    });
    Command(kCmdSetting);
    device.shell.SetDebugMode(true);
    Then([this] {
        EXPECT_TRUE(device.shell.Element(7)->IsVisible());
        device.shell.Key(27);
    });
    Command(kCmdSetting);
}

// ---- Debug dialog ------------------------------------------------------------------------------------------------------

TEST_F(DialogStory, DebugDialogSelectsRowsAndTheSignalDisplay) {
    device.shell.SetDebugMode(true);
    Then([this] { Press(13); }); // a settings value that is lost
    Then([this] { Press(7); });
    Then([this] { Press(10); });
    Then([this] { Press(31); });
    Then([this] { Press(3); });
    Command(kCmdSetting);
    EXPECT_EQ(view->GetScanFrequency()[0], 0);
    EXPECT_EQ(view->GetScanFrequency()[1], 1);
    EXPECT_EQ(view->GetSNRDebug(), 1u);
    EXPECT_EQ(view->GetRecordTime(), 0u);
    EXPECT_FALSE(std::filesystem::exists(device.Profile() / "DMB.dat"));
    view->SetSNRDebug(0);
}

// Edge case: a row toggled twice is as it was, and its button too.
TEST_F(DialogStory, RowToggledTwiceIsAsItWas) {
    device.shell.SetDebugMode(true);
    BYTE mask[kChannelTableRows] = {};
    view->SetScanFrequency(mask);
    Then([this] { Press(7); });
    Then([this] { Press(14); });
    Then([this] {
        EXPECT_EQ(device.shell.Element(14)->GetState(), 1);
        Press(14);
    });
    Then([this] {
        EXPECT_EQ(device.shell.Element(14)->GetState(), 0);
        Press(3);
    });
    Command(kCmdSetting);
    EXPECT_EQ(view->GetScanFrequency()[4], 0);
}

// Edge case: a row byte beyond 1 shows as the button's state and becomes 0 at the first touch.
TEST_F(DialogStory, RowByteBeyondOneShowsAndFallsToZero) {
    device.shell.SetDebugMode(true);
    BYTE mask[kChannelTableRows] = {};
    mask[5] = 3;
    mask[6] = 7;
    view->SetScanFrequency(mask);
    Then([this] { Press(7); });
    Then([this] {
        EXPECT_EQ(device.shell.Element(15)->GetState(), 3);
        Press(15);
    });
    Then([this] {
        EXPECT_EQ(device.shell.Element(15)->GetState(), 0);
        Press(3);
    });
    Command(kCmdSetting);
    EXPECT_EQ(view->GetScanFrequency()[5], 0);
    EXPECT_EQ(view->GetScanFrequency()[6], 7) << "all bytes go back as they are";
}

TEST_F(DialogStory, SelectorsStandOnTheirAnchors) {
    const auto onAnchor = [this](UINT id, int option) {
        const GButton* marker = device.shell.Element(id);
        int count = 0;
        const POINT* anchors = marker->GetAnchors(&count);
        return count == 2 && marker->GetRect().left == anchors[option].x && marker->GetRect().top == anchors[option].y;
    };
    device.shell.SetDebugMode(true);
    view->SetRatioOnOff(1);
    Then([&] {
        EXPECT_TRUE(onAnchor(16, 1));
        Press(15);
    });
    Then([&] {
        EXPECT_TRUE(onAnchor(16, 0));
        Press(7);
    });
    Then([&] {
        EXPECT_TRUE(onAnchor(33, 0));
        Press(31);
    });
    Then([&] {
        EXPECT_TRUE(onAnchor(33, 1));
        device.shell.Key(27);
    });
    Command(kCmdSetting);
    EXPECT_EQ(view->GetRatioOnOff(), 1u) << "the way over the debug dialog stores nothing";
    EXPECT_EQ(view->GetSNRDebug(), 0u);
}

TEST_F(DialogStory, SignalSelectorMovesOnlyOnAChange) {
    device.shell.SetDebugMode(true);
    LONG moved = 0;
    Then([this] { Press(7); });
    Then([&] {
        RECT rect = device.shell.Element(33)->GetRect();
        moved = ++rect.left;
        ++rect.right;
        device.shell.Element(33)->SetRect(rect, 0);
        Press(32); // off already
    });
    Then([&] {
        EXPECT_EQ(device.shell.Element(33)->GetRect().left, moved) << "it was put back on its anchor";
        Press(31);
    });
    Then([&] {
        EXPECT_NE(device.shell.Element(33)->GetRect().left, moved);
        device.shell.Key(27);
    });
    Command(kCmdSetting);
}

TEST_F(DialogStory, RatioIsAppliedAtOnceWhilePicturePlays) {
    Tune(kNews);
    Forget();
    Then([this] { Press(14); });
    Then([this] { Press(3); });
    Command(kCmdSetting);
    EXPECT_TRUE(Saw("aspect 1"));
}

// Edge case: cancel leaves rows and switch alone.
TEST_F(DialogStory, CancelledDebugDialogStoresNothing) {
    device.shell.SetDebugMode(true);
    Then([this] { Press(7); });
    Then([this] { Press(10); });
    Then([this] { Press(31); });
    Then([this] { Press(4); });
    Command(kCmdSetting);
    EXPECT_EQ(view->GetScanFrequency()[0], 1);
    EXPECT_EQ(view->GetSNRDebug(), 0u);
}

// ---- A skin without a background for the settings ----------------------------------------------------------------------

namespace {
// The product's skin, but for that picture.
struct PlainSkin {
    PlainSkin() {
        std::filesystem::copy(harness::ProductSkin(), folder.path / "skin", std::filesystem::copy_options::recursive);
        std::string text = harness::ReadFile(folder.path / "skin/VelDMBSettings.skin");
        const std::size_t line = text.find("background ");
        text.erase(line, text.find('\n', line) - line);
        harness::WriteFile(folder.path / "skin/VelDMBSettings.skin", text);
    }
    harness::TemporaryFolder folder;
};

class PlainSkinStory : private PlainSkin, public Story {
protected:
    PlainSkinStory() : Story(folder.path / "skin") {}
    void SetUp() override { Open(); }
};
} // namespace

TEST_F(PlainSkinStory, SettingsWithoutABackgroundStoreNothing) {
    view->SetRecordTime(2);
    view->SetRatioOnOff(1);
    device.ce.debug().Clear();
    device.shell.DuringModal([this] {
        EXPECT_EQ(device.ce.debug().Lines(), std::vector<WString>{WTEXT("DMBSettingDlg: no exist resources\n")});
        device.shell.Press(3);
    });
    Command(kCmdSetting);
    EXPECT_EQ(device.shell.ModalDepth(), 0) << "the user can leave it";
    EXPECT_EQ(view->GetRecordTime(), 2u);
    EXPECT_EQ(view->GetRatioOnOff(), 1u);
    EXPECT_FALSE(std::filesystem::exists(device.Profile() / "DMB.dat"));
}
