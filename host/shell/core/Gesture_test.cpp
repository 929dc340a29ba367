#include "host/shell/core/Gesture.h"

#include "platform/gdi.h"
#include "platform/velshell/VelFileDialog.h"
#include "tests/shell/ShellFixture.h"

#include <array>
#include <chrono>

#include <gtest/gtest.h>

namespace shell {

namespace {

std::array<LONG, 4> Sides(const RECT& rect) {
    return {rect.left, rect.top, rect.right, rect.bottom};
}

class TouchedList final : public CVelFileDialog {
public:
    explicit TouchedList(GView* parent) : CVelFileDialog(parent, u"\\SDMMC Card\\DMB\\", kListTypeRecordings) {}
    const WCHAR* GetResourceName() const override { return u"VelDMBChList"; }
};

class GestureOnScreen : public ShellFixture {
protected:
    void Drag(std::initializer_list<POINT> way) {
        shell->TouchDown(way.begin()->x, way.begin()->y);
        for (const POINT& point : way) {
            shell->TouchMove(point.x, point.y);
        }
        const POINT& end = *(way.end() - 1);
        shell->TouchUp(end.x, end.y);
        shell->RunUntilIdle();
    }
    [[nodiscard]] bool IsAt(const RECT& place) const {
        const auto lines = shell->Log();
        const auto last = std::find_if(lines.rbegin(), lines.rend(),
                                       [](const std::string& line) { return line.compare(0, 6, "small ") == 0; });
        const std::string text = std::to_string(place.left) + " " + std::to_string(place.top) + " " +
                                 std::to_string(place.right) + " " + std::to_string(place.bottom);
        return last != lines.rend() && *last == "small " + text;
    }
};

} // namespace

TEST(Gesture, ATremblingFingerDragsNothing) {
    EXPECT_FALSE(IsDrag({100, 100}, {112, 88}));
    EXPECT_TRUE(IsDrag({100, 100}, {113, 100}));
    EXPECT_TRUE(IsDrag({100, 100}, {100, 87}));
}

TEST(Gesture, TheWayDownFromTheTitleBarMakesSmall) {
    EXPECT_TRUE(MakesSmall({400, 30}, {400, 126}));
    EXPECT_FALSE(MakesSmall({400, 30}, {400, 125})) << "too short";
    EXPECT_FALSE(MakesSmall({400, 60}, {400, 300})) << "begins below the bar";
    EXPECT_FALSE(MakesSmall({400, 30}, {600, 130})) << "more across than down";
}

TEST(Gesture, TheSmallWindowStaysOnTheScreen) {
    const RECT place = {472, 232, 792, 472};
    EXPECT_EQ(Sides(MovedBy(place, -100, -50)), (std::array<LONG, 4>{372, 182, 692, 422}));
    EXPECT_EQ(Sides(MovedBy(place, 900, 900)), (std::array<LONG, 4>{480, 240, 800, 480}));
    EXPECT_EQ(Sides(MovedBy(place, -900, -900)), (std::array<LONG, 4>{0, 0, 320, 240}));
}

TEST(Gesture, TheCornerPicksTheNearerOfTwoSizes) {
    const RECT place = {100, 50, 420, 290};
    EXPECT_EQ(DragOfSmall(place, {419, 289}), Drag::SizeSmall);
    EXPECT_EQ(DragOfSmall(place, {371, 289}), Drag::MoveSmall);
    EXPECT_EQ(Sides(SizedTo(place, {440, 300})), Sides(place));
    EXPECT_EQ(Sides(SizedTo(place, {570, 400})), (std::array<LONG, 4>{100, 50, 580, 410}));
    EXPECT_EQ(Sides(SizedTo({480, 240, 800, 480}, {900, 700})), (std::array<LONG, 4>{320, 120, 800, 480}))
        << "pushed back onto the screen";
}

TEST(Gesture, RowsFollowToTheNearestWholeOne) {
    EXPECT_EQ(RowsDragged(300, 271, 60), 0);
    EXPECT_EQ(RowsDragged(300, 270, 60), 1);
    EXPECT_EQ(RowsDragged(300, 181, 60), 2);
    EXPECT_EQ(RowsDragged(100, 131, 60), -1);
    EXPECT_EQ(RowsDragged(100, 131, 0), 0);
}

TEST_F(GestureOnScreen, FromTheTitleBarDownAndADoubleTapBack) {
    TestView& view = Open();
    view.ResetPIPosition();
    Drag({{300, 20}, {300, 80}, {300, 130}, {300, 200}});
    EXPECT_TRUE(shell->Document().IsMinimized());
    shell->Click(600, 350);
    shell->RunUntilIdle();
    shell->Wait(500);
    shell->Click(600, 350);
    shell->RunUntilIdle();
    EXPECT_TRUE(shell->Document().IsMinimized()) << "two slow taps are no double tap";
    shell->Click(600, 350);
    shell->RunUntilIdle();
    EXPECT_FALSE(shell->Document().IsMinimized());
}

TEST_F(GestureOnScreen, AViewThatRefusesTheButtonRefusesTheGesture) {
    TestView& view = Open();
    view.refused = 19;
    Drag({{300, 20}, {300, 200}});
    EXPECT_FALSE(shell->Document().IsMinimized());
}

TEST_F(GestureOnScreen, TheSmallWindowFollowsTheFinger) {
    TestView& view = Open();
    view.ResetPIPosition();
    ASSERT_TRUE(shell->Minimize());
    TestView::Calls().clear();
    Drag({{600, 300}, {605, 304}});
    EXPECT_EQ(TestView::Calls(), Calls{}) << "a tremble is a tap";
    Drag({{600, 300}, {550, 280}, {500, 200}, {100, 100}});
    EXPECT_TRUE(IsAt({0, 32, 320, 272}));
    EXPECT_EQ(TestView::Calls(), (Calls{"MoveToPIPWindow", "MoveToPIPWindow", "MoveToPIPWindow"}));
    shell->Restore();
    EXPECT_EQ(TestView::Calls().back(), "RestoreFromPIP other");
}

TEST_F(GestureOnScreen, ADragThatBeginsOnAButtonDoesNotPressIt) {
    TestView& view = Open();
    view.ResetPIPosition();
    ASSERT_TRUE(shell->Minimize());
    TestView::Calls().clear();
    Drag({{500, 440}, {480, 400}, {500, 440}}); // on the channel button and back to it
    EXPECT_EQ(std::count(TestView::Calls().begin(), TestView::Calls().end(), "command 24"), 0);
    shell->Click(500, 440);
    shell->RunUntilIdle();
    EXPECT_EQ(TestView::Calls().back(), "command 24");
}

TEST_F(GestureOnScreen, TheCornerChangesBetweenTwoSizes) {
    TestView& view = Open();
    view.SmallPlace() = {100, 50, 420, 290};
    ASSERT_TRUE(shell->Minimize());
    Drag({{415, 285}, {500, 350}, {575, 405}});
    EXPECT_TRUE(IsAt({100, 50, 580, 410}));
    Drag({{575, 405}, {500, 350}, {430, 300}});
    EXPECT_TRUE(IsAt({100, 50, 420, 290}));
}

TEST_F(GestureOnScreen, AListFollowsTheFingerTheWheelAndTheKeys) {
    std::filesystem::create_directory(root / "card" / "DMB");
    for (char name = 'a'; name <= 'z'; ++name) {
        std::ofstream(root / "card" / "DMB" / (std::string(1, name) + ".dmb")) << "x";
    }
    TouchedList list(&Open());
    const auto first = [this] { return WString(shell->Element(40)->GetText()); };
    shell->DuringModal([&] {
        EXPECT_EQ(first(), u"a.dmb");
        const RECT row = shell->Element(42)->GetRect();
        const POINT from = {20 + row.left + 50, 34 + row.top + 20};
        Drag({from, {from.x, from.y - 61}, {from.x, from.y - 122}});
        EXPECT_EQ(first(), u"c.dmb") << "two rows";
        EXPECT_EQ(list.GetSelection(), -1);
        Drag({from, {from.x, from.y + 61}});
        EXPECT_EQ(first(), u"b.dmb");
        shell->Wheel(from.x, from.y, -1);
        shell->RunUntilIdle();
        EXPECT_EQ(first(), u"e.dmb") << "a notch is three rows";
        shell->Wheel(from.x, from.y, 5);
        shell->RunUntilIdle();
        EXPECT_EQ(first(), u"a.dmb") << "not beyond the first";
        shell->Key(35);
        shell->RunUntilIdle();
        EXPECT_EQ(first(), u"v.dmb") << "End";
        shell->Key(36);
        shell->RunUntilIdle();
        EXPECT_EQ(first(), u"a.dmb") << "Home";
        shell->Key(27);
    });
    EXPECT_EQ(list.DoModal(), kDialogCancel);
}

TEST_F(GestureOnScreen, FilesShowDateAndLengthBesideTheirNames) {
    std::filesystem::create_directory(root / "card" / "DMB");
    const auto file = root / "card" / "DMB" / "a.dmb";
    std::ofstream(file) << "x";
    const std::string longName(60, 'n');
    std::ofstream(root / "card" / "DMB" / (longName + ".dmb")) << "x";
    TouchedList list(&Open());
    const auto rightHalf = [this](int row) {
        const std::uint32_t* screen = shell->Screen();
        const RECT rect = shell->Element(40 + static_cast<UINT>(row))->GetRect();
        std::vector<std::uint32_t> pixels;
        for (LONG y = rect.top; y < rect.bottom; ++y) {
            const std::uint32_t* line = screen + y * 800; // the list fills the screen
            pixels.insert(pixels.end(), line + rect.right - 180, line + rect.right);
        }
        return pixels;
    };
    std::vector<std::uint32_t> before;
    shell->DuringModal([&] {
        before = rightHalf(0);
        EXPECT_EQ(before, rightHalf(0));
        EXPECT_NE(before, rightHalf(4)) << "nothing beside a row without a file";
        const WString shown = shell->Element(41)->GetText();
        EXPECT_EQ(shown.back(), u'\u2026') << "a long name leaves room";
        EXPECT_LT(shown.size(), 60u);
        std::filesystem::last_write_time(file, std::filesystem::file_time_type::clock::now() - std::chrono::hours(48));
        PostMessageW(GView::GetFrontWindow(), WM_LIST_REFRESH, 0, 0);
    });
    shell->DuringModal([&] {
        InvalidateRect(GView::GetFrontWindow(), nullptr, FALSE);
        EXPECT_NE(before, rightHalf(0)) << "another date";
        shell->Key(27);
    });
    EXPECT_EQ(list.DoModal(), kDialogCancel);
}

} // namespace shell
