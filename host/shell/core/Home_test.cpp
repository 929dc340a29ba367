// The home screen: what it shows, what is in front, and what it does with the view.
#include "tests/shell/ShellFixture.h"

namespace shell {

namespace {

constexpr UINT kClock = 20, kDate = 21, kTile = 30, kLine = 31, kLeave = 32;

class HomeScreen : public ShellFixture {
protected:
    // A text of the home screen, which must be the window in front.
    [[nodiscard]] WString Text(UINT element) const {
        const GButton* found = shell->Element(element);
        return found ? WString(found->GetText()) : WString(u"none");
    }
    [[nodiscard]] bool HomeIsInFront() const { return shell->Element(kTile) != nullptr; }
};

} // namespace

TEST_F(HomeScreen, ShowsTimeAndDateInBothLanguages) {
    clock.SetWall(1777977000); // 2026-05-05 10:30 in Greenwich
    shell->Wait(500);
    EXPECT_EQ(Text(kClock), u"19:30");
    EXPECT_EQ(Text(kDate), u"5월 5일 화요일");
    shell->SetLanguage(Language::English);
    EXPECT_EQ(Text(kDate), u"Tuesday, 5 May");
    shell->Wait(60 * 1000);
    EXPECT_EQ(Text(kClock), u"19:31");
}

TEST_F(HomeScreen, InvitesThenNamesWhatPlaysAndWhatPlayedLast) {
    shell->SetLanguage(Language::English);
    EXPECT_EQ(Text(kLine), u"Touch TV & Radio to begin.");
    TestView& view = Open();
    view.SetTitle(u"[CH8] NEWS");
    view.SetPlayMode(kPlayModePlaying);
    EXPECT_TRUE(shell->ShowHome());
    EXPECT_EQ(Text(kLine), u"Now playing\n[CH8] NEWS");
    view.SetPlayMode(kPlayModeRecording);
    shell->Wait(500);
    EXPECT_EQ(Text(kLine), u"Recording\n[CH8] NEWS");
    view.SetPlayMode(kPlayModePaused);
    shell->Wait(500);
    EXPECT_EQ(Text(kLine), u"On hold\n[CH8] NEWS");
    view.SetTitle(u""); // a view between two channels
    shell->Wait(500);
    EXPECT_EQ(Text(kLine), u"On hold\n[CH8] NEWS");
    shell->CloseView();
    EXPECT_EQ(Text(kLine), u"Last watched\n[CH8] NEWS");
}

TEST_F(HomeScreen, TileOpensAClosedViewAgain) {
    EXPECT_FALSE(shell->ShowView()); // none was ever open
    EXPECT_TRUE(shell->Press(kTile));
    shell->RunUntilIdle();
    EXPECT_EQ(shell->View(), nullptr);

    std::vector<const CVelPlayerView*> told;
    shell->SetViewListener([&](const CVelPlayerView* view) { told.push_back(view); });
    const CVelPlayerView* first = &Open();
    EXPECT_FALSE(HomeIsInFront());
    static_cast<TestView*>(shell->View())->OnCloseView();
    shell->RunUntilIdle();
    EXPECT_EQ(shell->View(), nullptr);
    EXPECT_TRUE(HomeIsInFront());
    EXPECT_TRUE(shell->Press(kTile));
    shell->RunUntilIdle();
    EXPECT_NE(shell->View(), nullptr);
    EXPECT_FALSE(HomeIsInFront());
    ASSERT_EQ(told.size(), 3u);
    EXPECT_EQ(told[0], first);
    EXPECT_EQ(told[1], nullptr);
    EXPECT_EQ(told[2], shell->View());
    shell->CloseView();
    shell->SetViewListener({});
}

TEST_F(HomeScreen, HoldsTheViewAndBringsItBack) {
    TestView& view = Open();
    TestView::Calls().clear();
    EXPECT_FALSE(shell->ShowView()); // it is in front
    EXPECT_TRUE(shell->ShowHome());
    EXPECT_FALSE(shell->ShowHome());
    EXPECT_EQ(TestView::Calls(), (Calls{"HoldForBackView 1 active", "Deactive"}));
    EXPECT_FALSE(view.IsActivated());
    EXPECT_TRUE(HomeIsInFront());
    shell->Click(700, 430); // the view's settings button lies here, but not in front
    shell->RunUntilIdle();
    EXPECT_EQ(TestView::Calls().size(), 2u);

    TestView::Calls().clear();
    shell->Key(13);
    shell->RunUntilIdle();
    EXPECT_FALSE(HomeIsInFront());
    EXPECT_EQ(TestView::Calls(), (Calls{"Active", "HoldForBackView 0 active"}));
    EXPECT_TRUE(view.IsActivated());
}

TEST_F(HomeScreen, HomeKeyOfTheViewHoldsIt) {
    const TestView& view = Open();
    PostMessageW(view.GetSafeHwnd(), WM_KEYUP, 36, 1);
    shell->RunUntilIdle();
    EXPECT_TRUE(HomeIsInFront());
    EXPECT_TRUE(Logged("host key 36"));
}

TEST_F(HomeScreen, AHeldViewMayBeClosed) {
    Open();
    EXPECT_TRUE(shell->ShowHome());
    EXPECT_TRUE(shell->CloseView());
    EXPECT_TRUE(HomeIsInFront());
    Open();
    EXPECT_FALSE(HomeIsInFront());
}

TEST_F(HomeScreen, SmallViewLeavesHomeToTheFingerAndTheTileRestoresIt) {
    Open().ResetPIPosition();
    ASSERT_TRUE(shell->Minimize());
    EXPECT_FALSE(shell->ShowHome()); // it is seen already
    TestView::Calls().clear();
    shell->Click(100, 250);
    shell->RunUntilIdle();
    EXPECT_FALSE(shell->Document().IsMinimized());
    EXPECT_EQ(TestView::Calls(), (Calls{"MoveToPIPWindow", "RestoreFromPIP own"}));
}

TEST_F(HomeScreen, QuitLeaves) {
    bool told = false;
    shell->SetQuitListener([&] { told = true; });
    EXPECT_TRUE(shell->Press(kLeave));
    shell->RunUntilIdle();
    EXPECT_TRUE(told);
    EXPECT_TRUE(shell->IsQuitting());
}

TEST_F(HomeScreen, ReasonLiesOverTheViewAndItsSmallFormIsShort) {
    TestView& view = Open();
    view.ResetPIPosition();
    shell->SetLanguage(Language::English);
    ReasonShown now{Reason::Source, false};
    shell->SetReasonSource([&] { return now; });
    const auto text = [&](UINT id) {
        const GButton* element = view.Find(id);
        return element->IsVisible() ? WString(element->GetText()) : WString(u"hidden");
    };
    constexpr UINT kReason = 71, kReasonIcon = 72, kRadioReason = 73;
    EXPECT_EQ(text(kReason), u"hidden");
    shell->Wait(500);
    EXPECT_EQ(text(kReason), u"Nothing to receive from.\nCheck the receiver or the broadcast file.");
    EXPECT_TRUE(view.Find(kReasonIcon)->IsVisible());
    EXPECT_EQ(text(kRadioReason), u"hidden");
    EXPECT_TRUE(Logged("reason 1"));

    ASSERT_TRUE(shell->Minimize());
    EXPECT_EQ(text(kReason), u"Nothing to receive from.");
    EXPECT_FALSE(view.Find(kReasonIcon)->IsVisible());
    shell->Restore();
    EXPECT_EQ(text(kReason), u"Nothing to receive from.\nCheck the receiver or the broadcast file.");

    shell->SetLanguage(Language::Korean);
    EXPECT_EQ(text(kReason), u"수신기를 찾을 수 없습니다.\n수신기 연결이나 방송 파일을 확인해 주세요.");
    now = {Reason::WeakSignal, true};
    shell->Wait(500);
    EXPECT_NE(text(kReason), u"hidden"); // nothing else is on the screen
    constexpr UINT kStation = 42;
    view.Find(kStation)->Show(1, 0);
    shell->Wait(500);
    EXPECT_EQ(text(kReason), u"hidden");
    EXPECT_NE(text(kRadioReason), u"hidden");
    view.Theme(); // a changed skin keeps it
    view.Find(kStation)->Show(1, 0);
    EXPECT_NE(text(kRadioReason), u"hidden");
    now = {};
    shell->Wait(500);
    EXPECT_EQ(text(kRadioReason), u"hidden");
    shell->SetReasonSource({});
}

TEST_F(HomeScreen, SignOfARecordingAndTheStationsName) {
    TestView& view = Open();
    constexpr UINT kRecordSign = 70, kSmallName = 8;
    view.SetTitle(u"[CH12] 별밤 라디오");
    EXPECT_EQ(WString(view.Find(1)->GetText()), u"[CH12] 별밤 라디오");
    EXPECT_EQ(WString(view.Find(kSmallName)->GetText()), u"별밤 라디오");
    view.SetTitle(u"plain title");
    EXPECT_EQ(WString(view.Find(kSmallName)->GetText()), u"plain title");
    EXPECT_FALSE(view.Find(kRecordSign)->IsVisible());
    view.SetPlayMode(kPlayModeRecording);
    EXPECT_TRUE(view.Find(kRecordSign)->IsVisible());
    view.ShowControls(0, 0);
    EXPECT_TRUE(view.Find(kRecordSign)->IsVisible());
    view.SetPlayMode(kPlayModePlaying);
    EXPECT_FALSE(view.Find(kRecordSign)->IsVisible());
}

} // namespace shell
