#include "tests/shell/ShellFixture.h"

namespace shell {

TEST_F(ShellFixture, AQuestionReturnsTheScriptedAnswer) {
    TestView& view = Open();
    shell->Answer(1011, true);
    EXPECT_EQ(view.MsgBox(1011, kBoxOkCancel), 1);
    shell->Answer(std::nullopt, false);
    EXPECT_EQ(view.MsgBox(1011, kBoxOkCancel), 2);
    ASSERT_EQ(shell->BoxRecords().size(), 2u);
    EXPECT_EQ(shell->BoxRecords()[0].resource, u"VelDMB");
    EXPECT_EQ(shell->BoxRecords()[0].textId, 1011);
    EXPECT_EQ(shell->BoxRecords()[0].style, kBoxOkCancel);
    EXPECT_EQ(shell->BoxRecords()[0].answer, 1);
    EXPECT_FALSE(shell->BoxRecords()[0].posted);
    EXPECT_TRUE(Logged("box VelDMB 1011 style 1"));
}

TEST_F(ShellFixture, AnAnswerForAnotherTextWaits) {
    TestView& view = Open();
    shell->Answer(1010, true);
    EXPECT_EQ(view.MsgBox(1011, kBoxOkCancel), 2);
    EXPECT_TRUE(Logged("unanswered"));
    EXPECT_EQ(view.MsgBox(1010, kBoxOkCancel), 1);
}

TEST_F(ShellFixture, ABoxShowsItsTextAndButtons) {
    TestView& view = Open();
    shell->DuringModal([&] {
        EXPECT_EQ(WString(shell->Element(11)->GetText()), view.GetMessageW(1011));
        EXPECT_TRUE(shell->Element(3)->IsVisible());
        EXPECT_TRUE(shell->Element(4)->IsVisible());
        EXPECT_FALSE(shell->Element(12)->IsVisible());
        shell->Press(4);
    });
    EXPECT_EQ(view.MsgBox(1011, kBoxOkCancel), 2);
}

TEST_F(ShellFixture, AnOpenBoxIsClosedByForce) {
    TestView& view = Open();
    EXPECT_EQ(view.ForceIDOKtoMsgBox(), 0);
    EXPECT_EQ(view.ForceIDCancelToMsgBox(), 0);
    shell->DuringModal([&] { EXPECT_NE(view.ForceIDOKtoMsgBox(), 0); });
    EXPECT_EQ(view.MsgBox(1011, kBoxOkCancel), 1);
    shell->DuringModal([&] { EXPECT_NE(view.ForceIDCancelToMsgBox(), 0); });
    EXPECT_EQ(view.MsgBox(1011, kBoxOkCancel), 2);
}

TEST_F(ShellFixture, KeysGoToTheViewWhileItsBoxIsOpen) {
    TestView& view = Open();
    shell->DuringModal([&] { shell->Key(195); });
    EXPECT_EQ(view.MsgBox(1011, kBoxOkCancel), 2);
    EXPECT_TRUE(Logged("host key 195"));
}

TEST_F(ShellFixture, EscapeThatTheViewHandsOnCancelsTheBoxInFront) {
    TestView& view = Open();
    shell->DuringModal([&] { shell->Key(27); });
    EXPECT_EQ(view.MsgBox(1011, kBoxOkCancel), 2);
    EXPECT_FALSE(Logged("unanswered"));
    PostMessageW(view.GetSafeHwnd(), WM_USER + 7, 1010, kBoxError);
    shell->RunUntilIdle();
    ASSERT_TRUE(shell->IsBoxOpen());
    shell->Key(27);
    shell->RunUntilIdle();
    EXPECT_FALSE(shell->IsBoxOpen());
    EXPECT_EQ(shell->BoxRecords().back().answer, kDialogCancel);
}

TEST_F(ShellFixture, EscapeOnTheHomeScreenCancelsTheBoxInFront) {
    Open();
    ASSERT_TRUE(shell->ShowHome());
    PostMessageW(GView::GetMainWindow(), WM_USER + 7, 5, kBoxError);
    shell->RunUntilIdle();
    ASSERT_TRUE(shell->IsBoxOpen());
    shell->Key(27);
    shell->RunUntilIdle();
    EXPECT_FALSE(shell->IsBoxOpen());
    EXPECT_FALSE(shell->View()->IsActivated()) << "home is still in front";
}

TEST_F(ShellFixture, MessagesAreHandledWhileABoxIsOpen) {
    TestView& view = Open();
    PostMessageW(view.GetSafeHwnd(), WM_COMMAND, 20, 0);
    shell->Answer(std::nullopt, true);
    view.MsgBox(1011, kBoxOkCancel);
    EXPECT_EQ(TestView::Calls().back(), "command 20") << "before the answer";
}

TEST_F(ShellFixture, APostedRequestShowsTheTextOfItsWindow) {
    TestView& view = Open();
    PostMessageW(view.GetSafeHwnd(), WM_USER + 7, 1010, kBoxError);
    shell->RunUntilIdle();
    ASSERT_TRUE(shell->IsBoxOpen());
    EXPECT_EQ(shell->BoxRecords().back().resource, u"VelDMB");
    EXPECT_TRUE(shell->Press(12));
    shell->RunUntilIdle();
    EXPECT_FALSE(shell->IsBoxOpen());
    EXPECT_EQ(shell->BoxRecords().back().answer, kDialogOk);

    PostMessageW(GView::GetMainWindow(), WM_USER + 7, 5, kBoxError);
    shell->RunUntilIdle();
    EXPECT_EQ(shell->BoxRecords().back().resource, u"VelMain");
    EXPECT_EQ(WString(shell->Element(11)->GetText()), u"메모리 카드를 사용할 수 없습니다.");
    view.ForceIDOKtoMsgBox();
    shell->RunUntilIdle();
    EXPECT_FALSE(shell->IsBoxOpen());
}

TEST_F(ShellFixture, ASkinWithoutANoticeShowsItInTheBoxWithoutButtons) {
    shell.reset();
    const auto product = std::filesystem::path(testing_support::BinaryDir()) / "skin";
    std::filesystem::copy(product, root / "skin", std::filesystem::copy_options::recursive);
    std::filesystem::remove(root / "skin" / "VelNotice.skin");
    ::shell::Setup setup;
    setup.skinFolder = root / "skin";
    shell = std::make_unique<Shell>(system, setup);
    TestView& view = Open();
    const auto isShown = [this](UINT element) {
        const GButton* button = shell->Element(element);
        return button != nullptr && button->IsVisible();
    };
    const WORD text = 1013;
    PostMessageW(view.GetSafeHwnd(), WM_USER + 7, text, kBoxNotice);
    shell->RunUntilIdle();
    ASSERT_TRUE(shell->IsBoxOpen());
    EXPECT_EQ(WString(shell->Element(11)->GetText()), WString(view.GetMessageW(text)));
    EXPECT_TRUE(isShown(11));
    EXPECT_FALSE(isShown(3) || isShown(4) || isShown(12)) << "nobody waits for an answer";
    shell->Wait(3000);
    EXPECT_FALSE(shell->IsBoxOpen()) << "by itself";
    PostMessageW(view.GetSafeHwnd(), WM_USER + 7, text, kBoxNotice);
    shell->RunUntilIdle();
    shell->Click(400, 240);
    shell->RunUntilIdle();
    EXPECT_FALSE(shell->IsBoxOpen()) << "on a touch";
    EXPECT_EQ(view.MsgBox(text, kBoxNotice), 1);
}

TEST_F(ShellFixture, ANoticeClosesByItselfOrOnATouch) {
    TestView& view = Open();
    PostMessageW(view.GetSafeHwnd(), WM_USER + 7, 1013, kBoxNotice);
    shell->RunUntilIdle();
    EXPECT_TRUE(shell->IsBoxOpen());
    shell->Wait(3000);
    EXPECT_FALSE(shell->IsBoxOpen());
    PostMessageW(view.GetSafeHwnd(), WM_USER + 7, 1013, kBoxNotice);
    shell->RunUntilIdle();
    shell->Click(400, 240);
    shell->RunUntilIdle();
    EXPECT_FALSE(shell->IsBoxOpen());
    EXPECT_EQ(view.MsgBox(1013, kBoxNotice), 1) << "needs no answer";
}

TEST_F(ShellFixture, ALaterPostedBoxTakesThePlaceOfTheFirst) {
    TestView& view = Open();
    PostMessageW(view.GetSafeHwnd(), WM_USER + 7, 1013, kBoxError);
    PostMessageW(view.GetSafeHwnd(), WM_USER + 7, 1009, kBoxError);
    shell->RunUntilIdle();
    EXPECT_EQ(shell->BoxRecords().size(), 2u);
    EXPECT_EQ(shell->BoxRecords()[0].answer, kDialogCancel);
    EXPECT_EQ(shell->BoxRecords()[1].answer, 0);
    shell->CloseView();
    EXPECT_FALSE(shell->IsBoxOpen()) << "it goes with the view";
}

TEST_F(ShellFixture, IdleInputIsAskedWhenNothingIsScripted) {
    TestView& view = Open();
    int asked = 0;
    shell->SetIdleInput([&] { return ++asked < 3 || shell->Press(3); });
    EXPECT_EQ(view.MsgBox(1011, kBoxOkCancel), 1);
    EXPECT_EQ(asked, 3);
    shell->SetIdleInput({});
}

TEST_F(ShellFixture, ABoxThatNobodyWaitsForLeavesTheViewUsable) {
    TestView& view = Open();
    PostMessageW(view.GetSafeHwnd(), WM_USER + 7, 1013, kBoxError);
    shell->RunUntilIdle();
    EXPECT_TRUE(shell->Press(21)) << "the view's";
    EXPECT_EQ(shell->Element(20), view.Find(20));
    shell->Key(34);
    shell->RunUntilIdle();
    EXPECT_EQ(TestView::Calls().back(), "command 21");
    EXPECT_TRUE(Logged("host key 34"));
    EXPECT_TRUE(shell->IsBoxOpen());
}

} // namespace shell
