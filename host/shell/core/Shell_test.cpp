#include "tests/shell/ShellFixture.h"
#include "tests/support/Places.h"

namespace shell {

TEST_F(ShellFixture, LifeOfAViewHasItsOrder) {
    TestView& view = Open();
    EXPECT_EQ(TestView::Calls(), (Calls{"OnCreate", "Theme", "LoadProfile", "Preload", "Active"}));
    EXPECT_NE(view.GetSafeHwnd(), nullptr);
    EXPECT_TRUE(view.IsActivated());
    TestView::Calls().clear();
    EXPECT_TRUE(shell->CloseView());
    EXPECT_EQ(TestView::Calls(), (Calls{"SaveProfile", "Deactive", "Destroy", "ReleaseInterface 0", "~"}));
    EXPECT_EQ(shell->View(), nullptr);
    EXPECT_FALSE(shell->CloseView());
}

TEST_F(ShellFixture, AViewThatRefusesItsWindowIsDeleted) {
    TestView::RefuseCreate() = true;
    EXPECT_EQ(shell->OpenView(TestView::classTestView), nullptr);
    EXPECT_EQ(TestView::Calls(), (Calls{"OnCreate", "~"}));
    EXPECT_EQ(shell->View(), nullptr);
}

TEST_F(ShellFixture, OnlyOnePlayerViewOpensAtATime) {
    Open();
    EXPECT_EQ(shell->OpenView(TestView::classTestView), nullptr);
    EXPECT_EQ(shell->OpenView("NoSuchClass"), nullptr);
}

TEST_F(ShellFixture, AClassThatIsNoPlayerViewIsRefused) {
    EXPECT_EQ(shell->OpenView(GView::classGView), nullptr);
    struct Plain final : GObject {};
    const GRuntimeClass plain = {"Plain", []() -> GObject* { return new Plain; }, nullptr};
    EXPECT_EQ(shell->OpenView(plain), nullptr);
}

TEST_F(ShellFixture, LibrariesAnnounceAndWithdraw) {
    const GRuntimeClass* const classes[] = {&TestView::classTestView};
    const GExtensionLibrary library = {u"Own", classes, 1};
    GRegisterExtension(&library);
    GRegisterExtension(&library);
    EXPECT_NE(shell->OpenView("TestView"), nullptr);
    shell->CloseView();
    GWithdrawExtension(&library);
    GWithdrawExtension(&library);
    EXPECT_EQ(shell->OpenView("TestView"), nullptr);
}

TEST_F(ShellFixture, AModuleLoadsUnloadsAndLoadsAgain) {
    const auto file = std::filesystem::path(testing_support::BinaryDir()) / "lib" / "libshell_test_module.so";
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(shell->OpenView("TestView"), nullptr);
        ASSERT_EQ(shell->LoadModule(file), "");
        EXPECT_NE(shell->OpenView("TestView"), nullptr);
        EXPECT_TRUE(shell->UnloadModule(file));
        EXPECT_EQ(shell->View(), nullptr);
        EXPECT_FALSE(shell->UnloadModule(file));
    }
}

TEST_F(ShellFixture, AModuleThatCannotBeLoadedIsNamedWithTheReason) {
    const std::string missing = shell->LoadModule("/nowhere/libmissing.so");
    EXPECT_NE(missing.find("libmissing.so"), std::string::npos);
    EXPECT_NE(missing.find("No such file"), std::string::npos);
    const auto text = root / "text.so";
    std::ofstream(text) << "no library";
    EXPECT_NE(shell->LoadModule(text).find("text.so"), std::string::npos);
}

TEST_F(ShellFixture, MessagesGoThroughTheMapRowsInOrderThenTheBase) {
    TestView& view = Open();
    TestView::Calls().clear();
    EXPECT_EQ(system.loop().Send(view.GetSafeHwnd(), WM_USER + 100, 41), 42);
    EXPECT_EQ(system.loop().Send(view.GetSafeHwnd(), WM_USER + 101, 41), 0);
    for (const UINT id : {19u + 0x10000u, 20u, 25u + 0x70000u, 26u}) {
        system.loop().Send(view.GetSafeHwnd(), WM_COMMAND, id);
    }
    EXPECT_EQ(TestView::Calls(), (Calls{"TransferToPIP", "MoveToPIPWindow", "command 20", "command 25"}))
        << "19, the small window, is the base's and 26 nobody's";
}

TEST_F(ShellFixture, AnUnknownTimerReachesTheBase) {
    TestView& view = Open();
    SetTimer(view.GetSafeHwnd(), 99, 50, nullptr);
    shell->Wait(60);
    EXPECT_TRUE(Logged("host timer 99"));
}

TEST_F(ShellFixture, KeysReachTheBaseAsKeyUpWithTheirRepeatCount) {
    Open();
    shell->Key(33, 2);
    shell->RunUntilIdle();
    EXPECT_TRUE(Logged("post view 257 33 3221225474"));
    EXPECT_TRUE(Logged("host key 33"));
}

TEST_F(ShellFixture, PressPostsTheCommandOfAnEnabledButton) {
    TestView& view = Open();
    EXPECT_TRUE(shell->Press(21));
    EXPECT_TRUE(Logged("post view command 21"));
    shell->RunUntilIdle();
    EXPECT_EQ(TestView::Calls().back(), "command 21");
    EXPECT_FALSE(shell->Press(23)) << "disabled";
    EXPECT_FALSE(shell->Press(26)) << "hidden";
    EXPECT_FALSE(shell->Press(43)) << "no button";
    EXPECT_FALSE(shell->Press(999)) << "missing";
    view.refused = 21;
    EXPECT_FALSE(shell->Press(21)) << "refused by the view";
}

TEST_F(ShellFixture, ATouchPressesWhatLiesThereWhenLetGoOverIt) {
    Open();
    shell->ClearLog();
    shell->Click(240, 410); // 21
    shell->RunUntilIdle();
    EXPECT_EQ(TestView::Calls().back(), "command 21");
    TestView::Calls().clear();
    shell->TouchDown(240, 410);
    shell->RunUntilIdle();
    shell->TouchUp(400, 200);
    shell->RunUntilIdle();
    EXPECT_EQ(TestView::Calls(), Calls{});
}

TEST_F(ShellFixture, ControlsHideByThemselvesOverThePictureAndReturnOnATouch) {
    TestView& view = Open();
    shell->Wait(10000);
    EXPECT_TRUE(view.IsToolVisibled()) << "without moving picture they stay";
    PostMessageW(view.GetSafeHwnd(), WM_USER + 5, 0x180418, 0);
    shell->RunUntilIdle();
    EXPECT_TRUE(Logged("video on"));
    view.ShowControls(1, 1);
    shell->Wait(static_cast<int>(view.GetMenuTimeout()) - 1);
    EXPECT_TRUE(view.IsToolVisibled());
    shell->Wait(1);
    EXPECT_FALSE(view.IsToolVisibled());
    EXPECT_FALSE(shell->Element(1)->IsVisible());
    shell->Click(400, 200);
    shell->RunUntilIdle();
    EXPECT_TRUE(view.IsToolVisibled());
    view.ResetMenuTimeout(200);
    shell->Wait(200);
    EXPECT_FALSE(view.IsToolVisibled());
}

TEST_F(ShellFixture, ToggleAndTitleSurviveANewSkin) {
    TestView& view = Open();
    view.SetTitle(u"CH12 KBS");
    view.EnableToggle(0);
    EXPECT_FALSE(shell->Press(27));
    view.Theme();
    EXPECT_FALSE(view.IsToggleEnabled());
    EXPECT_EQ(view.Find(27)->GetState(), kButtonDisabled);
    EXPECT_EQ(WString(view.Find(1)->GetText()), u"CH12 KBS");
    EXPECT_EQ(WString(shell->Title()), u"CH12 KBS");
    EXPECT_TRUE(Logged("title CH12 KBS"));
    view.EnableToggle(1);
    EXPECT_EQ(view.Find(27)->GetState(), kButtonNormal);
    EXPECT_EQ(view.GetBarElement(0), view.Find(1));
    EXPECT_EQ(view.GetBarElement(1), view.Find(2));
    EXPECT_EQ(view.GetBarElement(2), nullptr);
    view.SetTitle(nullptr);
    EXPECT_EQ(WString(shell->Title()), u"");
}

TEST_F(ShellFixture, InvalidPartsArePaintedAtIdleAndOnlyThose) {
    TestView& view = Open();
    shell->RunUntilIdle();
    RECT clip = {};
    int kind = -1;
    view.onDraw = [&](HDC dc) { kind = GetClipBox(dc, &clip); };
    const int before = view.paints;
    const RECT part = {10, 20, 30, 40};
    InvalidateRect(view.GetSafeHwnd(), &part, 0);
    EXPECT_EQ(view.paints, before) << "not before idle";
    shell->RunUntilIdle();
    EXPECT_EQ(view.paints, before + 1);
    EXPECT_EQ(kind, SIMPLEREGION);
    EXPECT_EQ(clip.left, 10);
    EXPECT_EQ(clip.bottom, 40);
    view.Find(21)->SetState(kButtonPressed, 1);
    EXPECT_EQ(view.paints, before + 2) << "a redraw request paints at once";
}

TEST_F(ShellFixture, ClosingFromInsideAModalLoopWaitsForItsEnd) {
    TestView& view = Open();
    view.onCommand = [&](UINT) { view.MsgBox(1011, kBoxOkCancel); };
    shell->DuringModal([&] {
        EXPECT_EQ(shell->ModalDepth(), 1);
        EXPECT_TRUE(shell->CloseView());
        EXPECT_NE(shell->View(), nullptr);
        shell->Press(3);
    });
    shell->Press(21);
    shell->RunUntilIdle();
    EXPECT_EQ(shell->View(), nullptr);
}

TEST_F(ShellFixture, OnCloseViewClosesUnlessTheViewMayNot) {
    TestView& view = Open();
    view.closable = 0;
    view.OnCloseView();
    shell->RunUntilIdle();
    EXPECT_NE(shell->View(), nullptr);
    view.closable = 1;
    view.OnCloseView();
    shell->RunUntilIdle();
    EXPECT_EQ(shell->View(), nullptr);
}

TEST_F(ShellFixture, QuitCancelsModalLoopsAndClosesTheView) {
    TestView& view = Open();
    int answer = 0;
    bool told = false;
    shell->SetQuitListener([&] { told = true; });
    view.onCommand = [&](UINT) { answer = view.MsgBox(1011, kBoxOkCancel); };
    shell->DuringModal([&] { shell->Quit(); });
    shell->Press(21);
    shell->RunUntilIdle();
    EXPECT_TRUE(told);
    EXPECT_EQ(answer, kDialogCancel);
    EXPECT_TRUE(shell->IsQuitting());
    EXPECT_EQ(shell->View(), nullptr);
}

TEST_F(ShellFixture, TheScreenShowsTheVideoUnderTheView) {
    TestView& view = Open();
    const std::vector<std::uint32_t> green(64, 0x0000FF00);
    shell->Video().Present(8, 8, green, 1.0);
    const auto at = [&](int x, int y) { return shell->Screen()[y * 800 + x]; };
    EXPECT_NE(at(400, 240), 0xFF00FF00u);
    system.loop().Send(view.GetSafeHwnd(), WM_USER + 5, 0x180418);
    view.SetPreserveAspectRatio(0);
    EXPECT_EQ(at(400, 240), 0xFF00FF00u);
    EXPECT_EQ(at(2, 200), 0xFF00FF00u) << "without keeping the aspect ratio the picture fills the window";
    view.SetPreserveAspectRatio(1);
    EXPECT_EQ(at(2, 200), 0xFF000000u);
    system.loop().Send(view.GetSafeHwnd(), WM_USER + 5, 0);
    EXPECT_NE(at(400, 240), 0xFF00FF00u);
}

TEST_F(ShellFixture, AScreenshotIsAPictureFile) {
    Open();
    EXPECT_TRUE(shell->Screenshot(root / "screen.png"));
    EXPECT_GT(std::filesystem::file_size(root / "screen.png"), 1000u);
    EXPECT_FALSE(shell->Screenshot(root / "nowhere" / "screen.png"));
    EXPECT_TRUE(shell->ScreenshotWindow(shell->View()->GetSafeHwnd(), root / "view.png"));
    EXPECT_FALSE(shell->ScreenshotWindow(nullptr, root / "none.png"));
}

TEST_F(ShellFixture, TextsFollowTheLanguageAndTheResource) {
    TestView& view = Open();
    EXPECT_NE(WString(view.GetMessageW(1008)), u"");
    EXPECT_EQ(WString(view.GetMessageW(5)), u"") << "the main window's text";
    EXPECT_EQ(WString(view.GetMessageW(4242)), u"");
    EXPECT_EQ(WString(view.Find(20)->GetText()), u"채널 검색");
    shell->SetLanguage(Language::English);
    EXPECT_EQ(WString(view.GetMessageW(1012)), u"Weak signal.");
    EXPECT_EQ(WString(view.Find(20)->GetText()), u"Scan");
}

TEST_F(ShellFixture, NarrowTextEndsAtItsFirstZeroByte) {
    EXPECT_EQ(GMessage::atou("\xB0\xA1KBS\0xyz", 9, 0), u"가KBS");
    EXPECT_EQ(GMessage::atou("AB", 1, 0), u"A");
    EXPECT_EQ(GMessage::atou(nullptr, 5, 0), u"");
    EXPECT_EQ(GMessage::atou("A\xB0", 2, 0), u"A\uFFFD");
}

TEST_F(ShellFixture, LeaksAreTold) {
    TestView& view = Open();
    shell->RunUntilIdle();
    view.ShowControls(0, 0);
    const HDC dc = GetDC(view.GetSafeHwnd());
    const HBITMAP strip = LoadBitmapW(nullptr, MAKEINTRESOURCEW(2001));
    PostMessageW(view.GetSafeHwnd(), WM_USER + 100, 0, 0);
    EXPECT_EQ(shell->Leaks(),
              (Calls{"1 windows", "1 waiting messages", "1 contexts not released", "1 drawing objects not deleted"}));
    EXPECT_TRUE(ReleaseDC(view.GetSafeHwnd(), dc));
    EXPECT_TRUE(DeleteObject(strip));
    shell->RunUntilIdle();
}

} // namespace shell
