#include "tests/shell/ShellFixture.h"

namespace shell {

TEST_F(ShellFixture, AMissingElementIsNotFound) {
    const TestView& view = Open();
    EXPECT_EQ(view.Find(4711), nullptr);
    EXPECT_NE(view.Find(43), nullptr);
}

TEST_F(ShellFixture, ElementsKeepWhatTheyAreGiven) {
    TestView& view = Open();
    GButton& text = *view.Find(43);
    EXPECT_EQ(text.GetId(), 43u);
    EXPECT_FALSE(text.IsVisible());
    text.SetText(u"신호", 1);
    EXPECT_EQ(WString(text.GetText()), u"신호");
    text.SetText(nullptr, 0);
    EXPECT_EQ(WString(text.GetText()), u"");
    text.SetState(200, 1);
    EXPECT_EQ(text.GetState(), 200);
    text.SetRect({1, 2, 3, 4}, 1);
    EXPECT_EQ(text.GetRect().bottom, 4);
    view.ShowButton(43, 1, 1);
    EXPECT_TRUE(text.IsVisible());
    view.ShowButton(4711, 1, 1);
    EXPECT_NE(text.GetFont(), nullptr);
    EXPECT_EQ(view.Find(45)->GetFont(), nullptr) << "uses the default font";
    EXPECT_NE(view.GetDefaultFont(), nullptr);
}

TEST_F(ShellFixture, AnImageSetHasItsPicturesByNumber) {
    TestView& view = Open();
    const GImageSet* levels = view.Find(10)->GetImageSet();
    ASSERT_NE(levels, nullptr);
    EXPECT_EQ(levels->GetCount(), 7);
    EXPECT_NE(levels->GetImage(0), nullptr);
    EXPECT_EQ(levels->GetImage(7), nullptr);
    EXPECT_EQ(levels->GetImage(-1), nullptr);
    EXPECT_EQ(view.Find(20)->GetImageSet(), nullptr);
    ASSERT_NE(view.GetBackground(), nullptr);
    EXPECT_EQ(view.GetBackground()->GetWidth(), 800);
    EXPECT_EQ(view.GetBackground()->GetHeight(), 480);
}

TEST_F(ShellFixture, TheAntennaShowsPictureTextOrNothingByState) {
    TestView& view = Open();
    GButton& antenna = *view.Find(10);
    const auto pixels = [&] {
        const std::uint32_t* screen = shell->Screen();
        std::vector<std::uint32_t> area;
        for (int y = 6; y < 54; ++y) {
            area.insert(area.end(), screen + y * 800 + 576, screen + y * 800 + 648);
        }
        return area;
    };
    const auto grey = pixels();
    antenna.SetState(kButtonNormal, 1);
    antenna.SetBackground(antenna.GetImageSet()->GetImage(6), 1);
    const auto full = pixels();
    EXPECT_NE(full, grey);
    antenna.SetState(kButtonPressed, 1);
    antenna.SetText(u"23", 1);
    const auto text = pixels();
    EXPECT_NE(text, full);
    antenna.SetState(kButtonDisabled, 1);
    EXPECT_EQ(pixels(), grey);
    antenna.SetState(kButtonNormal, 1);
    EXPECT_EQ(pixels(), full) << "the text shows in the pressed state only";
    antenna.SetBackground(nullptr, 1);
    EXPECT_EQ(pixels(), grey) << "the skin's own picture again";
}

TEST_F(ShellFixture, ASelectorHasItsAnchors) {
    TestView& view = Open();
    int count = -1;
    EXPECT_EQ(view.Find(43)->GetAnchors(&count), nullptr);
    EXPECT_EQ(count, 0);
    class Settings final : public CVelDialog {
    public:
        using CVelDialog::CVelDialog;
        const WCHAR* GetResourceName() const override { return u"VelDMBSettings"; }
    } settings(&view);
    settings.Theme();
    const POINT* anchors = settings.Find(16)->GetAnchors(&count);
    ASSERT_EQ(count, 2);
    EXPECT_EQ(anchors[1].x, settings.Find(14)->GetRect().left) << "value 1 is 'on'";
    EXPECT_EQ(anchors[0].x, settings.Find(15)->GetRect().left);
}

TEST_F(ShellFixture, ThemeMakesElementsAnew) {
    TestView& view = Open();
    view.Find(43)->Show(1, 0);
    view.Theme();
    EXPECT_FALSE(view.Find(43)->IsVisible());
}

TEST_F(ShellFixture, ButtonsAreLargeEnoughForAFinger) {
    TestView& view = Open();
    class Named final : public CVelDialog {
    public:
        Named(GView* parent, const WCHAR* resource) : CVelDialog(parent), name(resource) {}
        const WCHAR* GetResourceName() const override { return name; }
        const WCHAR* name;
    };
    const auto check = [](const GFactory& widgets, UINT id) {
        const GButton* button = widgets.Find(id);
        ASSERT_NE(button, nullptr) << id;
        const RECT& rect = button->GetRect();
        EXPECT_GE(rect.right - rect.left, 60) << id;
        EXPECT_GE(rect.bottom - rect.top, 60) << id;
    };
    for (const UINT id : {17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27}) {
        check(view, id);
    }
    Named settings(&view, u"VelDMBSettings");
    settings.Theme();
    for (const UINT id : {3, 4, 7, 12, 13, 14, 15}) {
        check(settings, id);
    }
    Named debug(&view, u"VelDMBDebug");
    debug.Theme();
    for (UINT id = 10; id <= 32; ++id) {
        check(debug, id);
    }
    Named list(&view, u"VelDMBChList");
    list.Theme();
    for (const UINT id : {3, 4, 40, 41, 42, 43, 44, 45, 46, 47, 48, 49, 60, 61, 62, 71, 72}) {
        check(list, id);
    }
    Named box(&view, u"VelMsgBox");
    box.Theme();
    for (const UINT id : {3, 4, 12}) {
        check(box, id);
    }
}

TEST_F(ShellFixture, EveryTextIsThereInBothLanguages) {
    TestView& view = Open();
    for (const Language language : {Language::Korean, Language::English}) {
        shell->SetLanguage(language);
        for (const WORD id : {1001, 1002, 1004, 1005, 1008, 1009, 1010, 1011, 1012, 1013, 1014, 1015, 1016}) {
            EXPECT_NE(WString(view.GetMessageW(id)), u"") << id;
        }
    }
}

} // namespace shell
