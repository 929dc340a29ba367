#include "tests/shell/ShellFixture.h"

namespace shell {

namespace {

class TestDialog final : public CVelDialog {
public:
    TestDialog(GView* parent, const WCHAR* resource) : CVelDialog(parent), name(resource) {}
    const WCHAR* GetResourceName() const override { return name; }
    int OnInitDialog() override {
        const int base = CVelDialog::OnInitDialog();
        if (place) {
            PlaceTopmost(120, 52, 560, 376);
        }
        return base && !endEarly;
    }
    const WCHAR* name;
    bool place = true;
    bool endEarly = false;
};

} // namespace

TEST_F(ShellFixture, ADialogRunsUntilItIsEnded) {
    TestView& view = Open();
    TestDialog dialog(&view, u"VelDMBSettings");
    shell->DuringModal([&] {
        EXPECT_EQ(CVelDialog::FromHandle(GView::GetFrontWindow()), &dialog);
        EXPECT_EQ(CVelDialog::FromHandle(view.GetSafeHwnd()), nullptr);
        EXPECT_FALSE(shell->Press(21)) << "the view takes no touch now";
        shell->Click(240, 20);
        shell->Press(3);
    });
    EXPECT_EQ(dialog.DoModal(), kDialogOk);
    EXPECT_EQ(dialog.GetSafeHwnd(), nullptr);
    shell->DuringModal([&] { shell->Press(4); });
    EXPECT_EQ(dialog.DoModal(), kDialogCancel) << "a dialog may run again";
    shell->DuringModal([&] { dialog.EndDialog(0); });
    EXPECT_EQ(dialog.DoModal(), 0);
}

TEST_F(ShellFixture, EscapeAndReturnAnswerADialog) {
    TestView& view = Open();
    TestDialog dialog(&view, u"VelDMBSettings");
    shell->DuringModal([&] { shell->Key(27); });
    EXPECT_EQ(dialog.DoModal(), kDialogCancel);
    shell->DuringModal([&] { shell->Key(13); });
    EXPECT_EQ(dialog.DoModal(), kDialogOk);
}

TEST_F(ShellFixture, ADialogWithoutSkinCannotBeMade) {
    TestView& view = Open();
    TestDialog dialog(&view, u"NoSuchSkin");
    EXPECT_EQ(dialog.DoModal(), kDialogFailed);
}

TEST_F(ShellFixture, InitialisationEndedEarlyRunsTheDialogAllTheSame) {
    TestView& view = Open();
    TestDialog dialog(&view, u"VelDMBSettings");
    dialog.place = false;
    dialog.endEarly = true;
    shell->DuringModal([&] {
        EXPECT_EQ(CVelDialog::FromHandle(GView::GetFrontWindow()), &dialog);
        shell->Press(4);
    });
    EXPECT_EQ(dialog.DoModal(), kDialogCancel);
}

TEST_F(ShellFixture, ADialogThatNothingCanEndIsCancelled) {
    TestView& view = Open();
    TestDialog dialog(&view, u"VelDMBSettings");
    EXPECT_EQ(dialog.DoModal(), kDialogCancel);
    EXPECT_TRUE(Logged("unanswered"));
}

TEST_F(ShellFixture, DialogsNestAndTheInnerOneTakesTheInput) {
    TestView& view = Open();
    TestDialog outer(&view, u"VelDMBSettings");
    TestDialog inner(&outer, u"VelDMBDebug");
    int innerResult = 0;
    shell->DuringModal([&] {
        shell->DuringModal([&] {
            EXPECT_EQ(shell->ModalDepth(), 2);
            shell->Press(3);
        });
        innerResult = inner.DoModal();
        outer.EndDialog(kDialogCancel);
    });
    EXPECT_EQ(outer.DoModal(), kDialogCancel);
    EXPECT_EQ(innerResult, kDialogOk);
}

TEST_F(ShellFixture, ADialogPaintsItsSkin) {
    TestView& view = Open();
    for (const WCHAR* name : {u"VelDMBSettings", u"VelDMBDebug", u"VelDMBChList"}) {
        TestDialog dialog(&view, name);
        dialog.place = false;
        shell->DuringModal([&] {
            EXPECT_NE(shell->Screen()[240 * 800 + 400], 0u);
            dialog.EndDialog(kDialogOk);
        });
        EXPECT_EQ(dialog.DoModal(), kDialogOk);
    }
}

} // namespace shell
