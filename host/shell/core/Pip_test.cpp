#include "tests/shell/ShellFixture.h"

namespace shell {

namespace {

bool Equal(const RECT& a, const RECT& b) {
    return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
}

} // namespace

TEST_F(ShellFixture, SmallAndBackInOrder) {
    TestView& view = Open();
    view.ResetPIPosition();
    TestView::Calls().clear();
    EXPECT_TRUE(shell->Minimize());
    EXPECT_TRUE(shell->Document().IsMinimized());
    RECT client = {};
    GetClientRect(view.GetSafeHwnd(), &client);
    EXPECT_TRUE(Equal(client, {0, 0, 320, 240}));
    EXPECT_FALSE(shell->Minimize()) << "is small already";
    EXPECT_FALSE(view.Find(27)->IsVisible());
    EXPECT_TRUE(view.Find(26)->IsVisible());
    EXPECT_TRUE(Equal(view.Find(25)->GetRect(), {248, 179, 312, 239})) << "counted from the right and bottom edge";
    shell->Restore();
    EXPECT_FALSE(shell->Document().IsMinimized());
    EXPECT_EQ(TestView::Calls(), (Calls{"TransferToPIP", "MoveToPIPWindow", "MoveToPIPWindow", "RestoreFromPIP own"}));
    GetClientRect(view.GetSafeHwnd(), &client);
    EXPECT_TRUE(Equal(client, {0, 0, 800, 480}));
    EXPECT_TRUE(Equal(view.Find(25)->GetRect(), {124, 402, 228, 474}));
    EXPECT_TRUE(view.Find(27)->IsVisible());
}

TEST_F(ShellFixture, AMovedSmallWindowHandsBackItsOwnRectangle) {
    TestView& view = Open();
    view.ResetPIPosition();
    shell->Minimize();
    shell->MoveSmall({10, 20, 490, 308});
    TestView::Calls().clear();
    PostMessageW(GView::GetMainWindow(), WM_COMMAND, 17, 0);
    shell->RunUntilIdle();
    EXPECT_EQ(TestView::Calls(), (Calls{"MoveToPIPWindow", "RestoreFromPIP other"}));
    EXPECT_TRUE(Equal(*view.GetPIPRect(), {10, 20, 490, 308}));
    EXPECT_EQ(view.GetPIPRect(), view.GetPIPRect()) << "the stored object itself";
}

TEST_F(ShellFixture, AStoredPlaceOffTheScreenIsNotUsed) {
    TestView& view = Open();
    for (const RECT& bad : {RECT{0, 0, 0, 0}, RECT{700, 400, 1020, 640}, RECT{-5, 0, 315, 240}, RECT{65535, 1, 2, 3}}) {
        view.SmallPlace() = bad;
        ASSERT_TRUE(shell->Minimize());
        RECT client = {};
        GetClientRect(view.GetSafeHwnd(), &client);
        EXPECT_TRUE(Equal(client, {0, 0, 320, 240}));
        shell->MoveSmall(bad);
        EXPECT_TRUE(Equal(client, {0, 0, 320, 240}));
        shell->Restore();
    }
}

TEST_F(ShellFixture, CanMinimizeNeedsARectangleAndAFullWindow) {
    TestView& view = Open();
    const RECT empty = {5, 5, 5, 5};
    const RECT good = {0, 0, 320, 240};
    EXPECT_FALSE(view.CanMinimize(nullptr));
    EXPECT_FALSE(view.CanMinimize(&empty));
    EXPECT_TRUE(view.CanMinimize(&good));
    shell->Minimize();
    EXPECT_FALSE(view.CanMinimize(&good));
}

TEST_F(ShellFixture, TheFullSizeButtonRestoresAndTheSmallButtonMinimizes) {
    Open();
    EXPECT_TRUE(shell->Press(19));
    shell->RunUntilIdle();
    EXPECT_TRUE(shell->Document().IsMinimized());
    EXPECT_TRUE(shell->Press(17));
    shell->RunUntilIdle();
    EXPECT_FALSE(shell->Document().IsMinimized());
}

TEST_F(ShellFixture, SwapShowsTheOtherFace) {
    TestView& view = Open();
    const auto pixels = [&] {
        const std::uint32_t* screen = shell->Screen();
        std::vector<std::uint32_t> button;
        for (int y = 402; y < 474; ++y) {
            button.insert(button.end(), screen + y * 800 + 460, screen + y * 800 + 564);
        }
        return button;
    };
    const auto normal = pixels();
    view.SwapPIPButton(view.Find(27), 1, 1);
    EXPECT_NE(pixels(), normal);
    view.SwapPIPButton(view.Find(27), 0, 1);
    EXPECT_EQ(pixels(), normal);
    view.SwapPIPButton(nullptr, 1, 1);
}

} // namespace shell
