// The settings and the debug dialog.
#include <functional>
#include <string>

#include "tests/stories/Story.h"

using namespace stories;

namespace {
class SettingsStory : public Story {
protected:
    void SetUp() override { Open(); }
    // Does something while the dialog is open.
    void Then(std::function<void()> action) { device.shell.DuringModal(std::move(action)); }
    [[nodiscard]] WString Text(UINT id) const { return device.shell.Element(id)->GetText(); }
    bool Press(UINT id) { return device.shell.Press(id); }
};
} // namespace

// ---- Settings ----------------------------------------------------------------------------------------------------------

// Edge case: previous at the first length shows the last, next at the last shows the first.
TEST_F(SettingsStory, LengthsWrap) {
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

// A ratio above 1 can only come from a damaged file; no anchor is for it.
TEST_F(SettingsStory, SelectorWithoutAnAnchorStaysWhereTheSkinHasIt) {
    view->SetRatioOnOff(0);
    RECT skins{};
    Then([&] {
        skins = device.shell.Element(16)->GetRect(); // off, the first anchor
        device.shell.Key(27);
    });
    Command(kCmdSetting);
    view->SetRatioOnOff(7);
    Then([&] {
        const RECT& rect = device.shell.Element(16)->GetRect();
        EXPECT_EQ(rect.left, skins.left);
        EXPECT_EQ(rect.top, skins.top);
        Press(3);
    });
    Command(kCmdSetting);
    EXPECT_EQ(view->GetRatioOnOff(), 7u) << "OK stores what was read";
}

TEST_F(SettingsStory, OkStoresBothValuesAndSavesTheProfile) {
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
TEST_F(SettingsStory, CancelStoresNothing) {
    Then([this] { Press(13); });
    Then([this] { Press(14); });
    Then([this] { Press(4); });
    Command(kCmdSetting);
    EXPECT_EQ(view->GetRecordTime(), 0u);
    EXPECT_EQ(view->GetRatioOnOff(), 0u);
    EXPECT_FALSE(std::filesystem::exists(device.Profile() / "DMB.dat"));
}

// Edge case: ratio-on when it is on moves nothing.
TEST_F(SettingsStory, RatioSelectorMovesOnlyOnAChange) {
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
TEST_F(SettingsStory, DebugButtonNeedsDebugMode) {
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

TEST_F(SettingsStory, DebugDialogSelectsRowsAndTheSignalDisplay) {
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
TEST_F(SettingsStory, RowToggledTwiceIsAsItWas) {
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
TEST_F(SettingsStory, RowByteBeyondOneShowsAndFallsToZero) {
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

TEST_F(SettingsStory, SelectorsStandOnTheirAnchors) {
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

TEST_F(SettingsStory, SignalSelectorMovesOnlyOnAChange) {
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

TEST_F(SettingsStory, RatioIsAppliedAtOnceWhilePicturePlays) {
    Tune(kNews);
    Forget();
    Then([this] { Press(14); });
    Then([this] { Press(3); });
    Command(kCmdSetting);
    EXPECT_TRUE(Saw("aspect 1"));
}

// Edge case: cancel leaves rows and switch alone.
TEST_F(SettingsStory, CancelledDebugDialogStoresNothing) {
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
