// Label texts on the screen: what is painted equals what the same calls paint here, with the measure and the rectangle of the rules.
#include <filesystem>
#include <string>
#include <vector>

#include "platform/gdi.h"
#include "tests/stories/Story.h"

using namespace stories;

namespace {

using Pixels = std::vector<std::uint32_t>;

class LabelStory : public Story {
protected:
    explicit LabelStory(const std::filesystem::path& skin = harness::ProductSkin()) : Story(skin) {}
    void SetUp() override {
        Open();
        Tune(kMusic);
        OnAir();
    }

    [[nodiscard]] Pixels Screen() {
        const std::uint32_t* pixels = device.shell.Screen();
        return {pixels, pixels + 800 * 480};
    }
    [[nodiscard]] Pixels ScreenAfterPaint() {
        InvalidateRect(view->GetSafeHwnd(), nullptr, FALSE);
        Idle();
        return Screen();
    }
    // The screen without labels and these texts on it, drawn here.
    [[nodiscard]] Pixels DrawnHere(const std::vector<WString>& texts, HFONT font) {
        peer->Labels().clear();
        (void)ScreenAfterPaint();
        WString joined;
        for (const WString& text : texts)
            joined += WTEXT("\u25B6 ") + text + WTEXT("\n");
        const HDC dc = GetDC(view->GetSafeHwnd());
        SetBkMode(dc, TRANSPARENT);
        SetTextColor(dc, 0x00FFFFFF);
        SelectObject(dc, font);
        RECT area = peer->DlsRect();
        DrawTextW(dc, joined.c_str(), static_cast<int>(joined.size()), &area, DT_WORDBREAK);
        ReleaseDC(view->GetSafeHwnd(), dc);
        return Screen();
    }
    // The screen with these as the view's labels, drawn by the view.
    [[nodiscard]] Pixels DrawnByTheView(const std::vector<WString>& texts) {
        peer->Labels() = texts;
        return ScreenAfterPaint();
    }
    [[nodiscard]] SIZE Measured(const WString& text, HFONT font) {
        const HDC dc = GetDC(view->GetSafeHwnd());
        SelectObject(dc, font);
        SIZE size{};
        GetTextExtentExPointW(dc, text.c_str(), static_cast<int>(text.size()), 0, nullptr, nullptr, &size);
        ReleaseDC(view->GetSafeHwnd(), dc);
        return size;
    }
    // Pixels that differ, outside the label area only or everywhere.
    [[nodiscard]] int Differing(const Pixels& a, const Pixels& b, bool outsideOnly = false) {
        const RECT& area = peer->DlsRect();
        int count = 0;
        for (int y = 0; y < 480; ++y) {
            for (int x = 0; x < 800; ++x) {
                const bool inside = x >= area.left && x < area.right && y >= area.top && y < area.bottom;
                const auto at = static_cast<std::size_t>(y * 800 + x);
                count += !(inside && outsideOnly) && a[at] != b[at] ? 1 : 0;
            }
        }
        return count;
    }
    [[nodiscard]] HFONT LabelFont() { return Element(kElementDLS).GetFont(); }
};

// The product's skin with the first occurrence of a text in the view's file changed.
struct ChangedSkin {
    ChangedSkin(const std::string& from, const std::string& to) {
        std::filesystem::copy(harness::ProductSkin(), folder.path / "skin", std::filesystem::copy_options::recursive);
        const std::filesystem::path file = folder.path / "skin/VelDMB.skin";
        std::string text = harness::ReadFile(file);
        text.replace(text.find(from), from.size(), to);
        harness::WriteFile(file, text);
    }
    harness::TemporaryFolder folder;
};

class FontlessLabelStory : private ChangedSkin, public LabelStory {
protected:
    FontlessLabelStory() : ChangedSkin("    font label\n", ""), LabelStory(folder.path / "skin") {}
};

class NoLabelElementStory : private ChangedSkin, public LabelStory {
protected:
    NoLabelElementStory() : ChangedSkin("text 51\n", "text 5100\n"), LabelStory(folder.path / "skin") {}
};

} // namespace

// Edge case: three short texts are all drawn, oldest first, each with its prefix.
TEST_F(LabelStory, ThreeShortTextsStandOneUnderTheOther) {
    const std::vector<WString> texts = {WTEXT("one"), WTEXT("가나다"), WTEXT("three")};
    const Pixels wanted = DrawnHere(texts, LabelFont());
    const Pixels without = DrawnByTheView({});
    const Pixels seen = DrawnByTheView(texts);
    EXPECT_EQ(Differing(seen, wanted), 0);
    EXPECT_GT(Differing(seen, without), 100);
}

// Edge case: a text longer than the area is drawn with everything before it, and nothing leaves the area.
TEST_F(LabelStory, TextLongerThanTheAreaIsClippedByIt) {
    WString text;
    while (text.size() < 190)
        text += WTEXT("longer than the area ");
    const std::vector<WString> texts = {WTEXT("before it"), text};
    const Pixels wanted = DrawnHere(texts, LabelFont());
    const Pixels without = DrawnByTheView({});
    const Pixels seen = DrawnByTheView(texts);
    EXPECT_EQ(Differing(seen, wanted), 0);
    EXPECT_GT(Differing(seen, without), 1000);
    EXPECT_EQ(Differing(seen, without, true), 0);
}

TEST_F(LabelStory, ThePrefixCountsWhenALineIsMeasured) {
    const RECT& area = peer->DlsRect();
    const LONG width = area.right - area.left;
    std::vector<WString> texts;
    LONG height = 0;
    for (const WCHAR* begin : {WTEXT("a"), WTEXT("b"), WTEXT("c")}) {
        WString text = begin;
        while (Measured(WTEXT("\u25B6 ") + text, LabelFont()).cx <= width)
            text += WTEXT(" x");
        const SIZE alone = Measured(text, LabelFont());
        ASSERT_LE(alone.cx, width) << "a line alone, two with its prefix";
        height = alone.cy;
        texts.push_back(text);
    }
    const LONG lines = (area.bottom - area.top) / height;
    ASSERT_TRUE(lines == 3 || lines == 4) << lines;
    const Pixels wanted = DrawnHere({texts.end() - lines / 2, texts.end()}, LabelFont());
    EXPECT_EQ(Differing(DrawnByTheView(texts), wanted), 0);
}

TEST_F(FontlessLabelStory, IsDrawnInTheDefaultFont) {
    ASSERT_EQ(LabelFont(), nullptr);
    const std::vector<WString> texts = {WTEXT("in the default font, 기본 글꼴")};
    const Pixels wanted = DrawnHere(texts, view->GetDefaultFont());
    EXPECT_EQ(Differing(DrawnByTheView(texts), wanted), 0);
}

TEST_F(NoLabelElementStory, IsDrawnInTheDefaultFontWhereTheLayoutPutsIt) {
    ASSERT_EQ(view->Find(kElementDLS), nullptr);
    EXPECT_EQ(peer->DlsRect().right, 0) << "the skin gives no place";
    peer->DlsRect() = {24, 224, 432, 336};
    const std::vector<WString> texts = {WTEXT("without an element of its own")};
    const Pixels wanted = DrawnHere(texts, view->GetDefaultFont());
    EXPECT_EQ(Differing(DrawnByTheView(texts), wanted), 0);
}
