#include "platform/gdi.h"
#include "tests/shell/ShellFixture.h"

#include <array>

namespace shell {

namespace {

// Draws into the view's window and reads it back from the screen.
class Canvas {
public:
    explicit Canvas(TestView& view) : window(view.GetSafeHwnd()), dc(GetDC(window)) {}
    ~Canvas() { ReleaseDC(window, dc); }
    const HWND window;
    const HDC dc;
};

struct Dib {
    BITMAPINFOHEADER header;
    std::array<DWORD, 3> masks;
};

Dib Header565(LONG width, LONG height) {
    return {{40, width, height, 1, 16, BI_BITFIELDS, 0, 0, 0, 0, 0}, {0xF800, 0x07E0, 0x001F}};
}

int StretchInto(HDC dc, const RECT& target, const Dib& dib, const void* pixels, int width, int height) {
    return StretchDIBits(dc, target.left, target.top, target.right - target.left, target.bottom - target.top, 0, 0,
                         width, height, pixels, reinterpret_cast<const BITMAPINFO*>(&dib), DIB_RGB_COLORS, SRCCOPY);
}

} // namespace

class GdiTest : public ShellFixture {
protected:
    GdiTest() : view(Open()) { shell->RunUntilIdle(); }
    [[nodiscard]] std::uint32_t At(int x, int y) { return shell->Screen()[y * 800 + x]; }
    TestView& view;
};

TEST_F(GdiTest, TopDownBitFieldPicturesExpandByRepeatingBits) {
    const Canvas canvas(view);
    // A row of three pixels takes 8 bytes: rows end at 4-byte boundaries.
    const WORD pixels[] = {0x8410, 0x0841, 0xFFFF, 0, 0xF800, 0x07E0, 0x001F, 0};
    const Dib dib = Header565(3, -2);
    EXPECT_NE(StretchInto(canvas.dc, {100, 100, 103, 102}, dib, pixels, 3, 2), 0);
    EXPECT_EQ(At(100, 100), 0xFF848284u);
    EXPECT_EQ(At(101, 100), 0xFF080808u);
    EXPECT_EQ(At(102, 100), 0xFFFFFFFFu);
    EXPECT_EQ(At(100, 101), 0xFFFF0000u);
    EXPECT_EQ(At(101, 101), 0xFF00FF00u);
    EXPECT_EQ(At(102, 101), 0xFF0000FFu);
    const Dib bottomUp = Header565(3, 2);
    EXPECT_NE(StretchInto(canvas.dc, {100, 100, 103, 102}, bottomUp, pixels, 3, 2), 0);
    EXPECT_EQ(At(100, 101), 0xFF848284u) << "a positive height stores the last row first";
}

TEST_F(GdiTest, EnlargingRepeatsPixels) {
    const Canvas canvas(view);
    const WORD pixels[] = {0xF800, 0x001F};
    EXPECT_NE(StretchInto(canvas.dc, {200, 100, 206, 103}, Header565(2, -1), pixels, 2, 1), 0);
    for (int y = 100; y < 103; ++y) {
        EXPECT_EQ(At(202, y), 0xFFFF0000u);
        EXPECT_EQ(At(203, y), 0xFF0000FFu);
    }
}

TEST_F(GdiTest, ShrinkingAndsWhatItEliminates) {
    const Canvas canvas(view);
    const WORD pixels[] = {0xF800, 0x8410, 0x8410, 0x8410}; // a red corner over grey
    EXPECT_NE(StretchInto(canvas.dc, {200, 100, 201, 101}, Header565(2, -2), pixels, 2, 2), 0);
    EXPECT_EQ(At(200, 100), 0xFF840000u);
}

TEST_F(GdiTest, NothingIsDrawnWithoutBitsOrWidth) {
    const Canvas canvas(view);
    const WORD pixels[] = {0xF800, 0xF800};
    const std::uint32_t before = At(200, 100);
    EXPECT_EQ(StretchInto(canvas.dc, {200, 100, 210, 110}, Header565(2, -1), nullptr, 2, 1), 0);
    EXPECT_NE(StretchInto(canvas.dc, {200, 100, 200, 110}, Header565(2, -1), pixels, 2, 1), 0) << "no failure";
    EXPECT_EQ(At(200, 100), before);
    Dib odd = Header565(2, -1);
    odd.header.biBitCount = 4;
    EXPECT_EQ(StretchInto(canvas.dc, {200, 100, 210, 110}, odd, pixels, 2, 1), 0);
    EXPECT_EQ(StretchInto(canvas.dc, {200, 100, 210, 110}, Header565(2, -1), pixels, 3, 1), 0) << "beyond the picture";
}

TEST_F(GdiTest, TheStripStretchesToABar) {
    const Canvas canvas(view);
    const HBITMAP strip = LoadBitmapW(nullptr, MAKEINTRESOURCEW(2001));
    ASSERT_NE(strip, nullptr);
    EXPECT_EQ(LoadBitmapW(nullptr, MAKEINTRESOURCEW(2002)), nullptr);
    const std::uint32_t right = At(215 + 182, 220);
    const HGDIOBJ before = SelectObject(view.GetCanvas(), strip);
    ASSERT_NE(before, nullptr);
    EXPECT_TRUE(StretchBlt(canvas.dc, 215, 218, 0, 8, view.GetCanvas(), 0, 0, 1, 8, SRCCOPY)) << "width 0 succeeds";
    EXPECT_TRUE(StretchBlt(canvas.dc, 215, 218, 182, 8, view.GetCanvas(), 0, 0, 1, 8, SRCCOPY));
    EXPECT_EQ(At(215, 220), At(215 + 181, 220));
    EXPECT_NE(At(215, 220), right);
    EXPECT_EQ(At(215 + 182, 220), right);
    EXPECT_FALSE(DeleteObject(strip)) << "still selected";
    EXPECT_EQ(SelectObject(view.GetCanvas(), before), static_cast<HGDIOBJ>(strip));
    EXPECT_TRUE(DeleteObject(strip));
    EXPECT_FALSE(DeleteObject(strip)) << "gone";
}

TEST_F(GdiTest, TextIsMeasuredWhole) {
    const Canvas canvas(view);
    SIZE whole = {};
    SIZE limited = {};
    const WString text = u"디지털 방송";
    const int length = static_cast<int>(text.size());
    EXPECT_TRUE(GetTextExtentExPointW(canvas.dc, text.c_str(), length, 0, nullptr, nullptr, &whole));
    EXPECT_TRUE(GetTextExtentExPointW(canvas.dc, text.c_str(), length, 10, nullptr, nullptr, &limited));
    EXPECT_GT(whole.cx, 40);
    EXPECT_EQ(whole.cx, limited.cx);
    SIZE withBreak = {};
    const WString broken = text + u"\n";
    GetTextExtentExPointW(canvas.dc, broken.c_str(), length + 1, 0, nullptr, nullptr, &withBreak);
    EXPECT_GT(withBreak.cx, whole.cx) << "a line end counts as a glyph";
    EXPECT_EQ(withBreak.cy, whole.cy);
    EXPECT_FALSE(GetTextExtentExPointW(nullptr, text.c_str(), length, 0, nullptr, nullptr, &whole));
}

TEST_F(GdiTest, DrawTextBreaksHangulAndReturnsTheHeight) {
    const Canvas canvas(view);
    SIZE size = {};
    const WString text = u"가나다라마바사아";
    GetTextExtentExPointW(canvas.dc, text.c_str(), 8, 0, nullptr, nullptr, &size);
    RECT area = {100, 80, 100 + size.cx / 2 + 2, 400};
    SetBkMode(canvas.dc, TRANSPARENT);
    EXPECT_EQ(DrawTextW(canvas.dc, text.c_str(), -1, &area, DT_WORDBREAK), 2 * size.cy);
    EXPECT_EQ(DrawTextW(canvas.dc, text.c_str(), -1, &area, 0), size.cy) << "without breaking it is one line";
    const WString ended = u"가\n나\n";
    EXPECT_EQ(DrawTextW(canvas.dc, ended.c_str(), -1, &area, DT_WORDBREAK), 2 * size.cy)
        << "the last line end adds none";
    EXPECT_EQ(DrawTextW(canvas.dc, text.c_str(), 2, &area, DT_WORDBREAK), size.cy) << "two syllables of it";
}

TEST_F(GdiTest, TextStaysInsideItsRectangle) {
    const Canvas canvas(view);
    const WORD grey[] = {0x8410};
    StretchInto(canvas.dc, {0, 60, 800, 390}, Header565(1, -1), grey, 1, 1);
    RECT area = {100, 100, 130, 110};
    SetBkMode(canvas.dc, TRANSPARENT);
    SetTextColor(canvas.dc, RGB(255, 255, 255));
    const WString wide = u"WWWWWWWWWWWWWWW";
    DrawTextW(canvas.dc, wide.c_str(), -1, &area, DT_WORDBREAK);
    bool inside = false;
    bool outside = false;
    const std::uint32_t* screen = shell->Screen();
    for (int y = 70; y < 380; ++y) {
        for (int x = 0; x < 800; ++x) {
            const bool changed = screen[y * 800 + x] != 0xFF848284u;
            const bool within = x >= 100 && x < 130 && y >= 100 && y < 110;
            inside = inside || (changed && within);
            outside = outside || (changed && !within);
        }
    }
    EXPECT_TRUE(inside);
    EXPECT_FALSE(outside);
}

TEST_F(GdiTest, AFreshContextIsBlackOnOpaqueWhite) {
    const Canvas canvas(view);
    EXPECT_EQ(SetTextColor(canvas.dc, RGB(1, 2, 3)), RGB(0, 0, 0));
    EXPECT_EQ(SetTextColor(canvas.dc, RGB(0, 0, 0)), RGB(1, 2, 3));
    RECT area = {100, 100, 300, 140};
    const WString text = u"    .";
    DrawTextW(canvas.dc, text.c_str(), -1, &area, 0);
    EXPECT_EQ(At(101, 101), 0xFFFFFFFFu);
    EXPECT_EQ(SetBkMode(canvas.dc, TRANSPARENT), OPAQUE);
    EXPECT_EQ(SetBkMode(canvas.dc, OPAQUE), TRANSPARENT);
}

TEST_F(GdiTest, AnAmpersandMarksAndADoubledOneShows) {
    const Canvas canvas(view);
    SetBkMode(canvas.dc, TRANSPARENT);
    const auto draw = [&](const WCHAR* text) {
        const WORD grey[] = {0x8410};
        StretchInto(canvas.dc, {100, 100, 300, 140}, Header565(1, -1), grey, 1, 1);
        RECT area = {100, 100, 300, 140};
        DrawTextW(canvas.dc, text, -1, &area, DT_WORDBREAK);
        const std::uint32_t* screen = shell->Screen();
        std::vector<std::uint32_t> pixels;
        for (int y = 100; y < 140; ++y) {
            pixels.insert(pixels.end(), screen + y * 800 + 100, screen + y * 800 + 300);
        }
        return pixels;
    };
    const auto plain = draw(u"AB");
    EXPECT_NE(draw(u"A&B"), plain) << "the B is underlined";
    EXPECT_NE(draw(u"A&&B"), plain);
    EXPECT_EQ(draw(u"AB&"), plain) << "a last single one vanishes";
}

TEST_F(GdiTest, ClipBoxTellsEmptyFromError) {
    RECT box = {1, 2, 3, 4};
    EXPECT_EQ(GetClipBox(nullptr, &box), RGN_ERROR);
    const Canvas canvas(view);
    EXPECT_EQ(GetClipBox(canvas.dc, &box), SIMPLEREGION);
    EXPECT_EQ(box.right, 800);
    EXPECT_EQ(box.bottom, 480);
}

TEST_F(GdiTest, DeadHandlesAreRefused) {
    const HDC dc = GetDC(view.GetSafeHwnd());
    EXPECT_TRUE(ReleaseDC(view.GetSafeHwnd(), dc));
    EXPECT_FALSE(ReleaseDC(view.GetSafeHwnd(), dc));
    RECT area = {0, 0, 10, 10};
    EXPECT_EQ(DrawTextW(dc, u"A", -1, &area, 0), 0);
    EXPECT_EQ(SelectObject(dc, view.GetDefaultFont()), nullptr);
    EXPECT_EQ(GetDC(nullptr), nullptr);
    EXPECT_FALSE(InvalidateRect(nullptr, nullptr, 0));
    EXPECT_FALSE(GetClientRect(nullptr, &area));
    EXPECT_FALSE(DeleteObject(view.GetDefaultFont())) << "the skin's own";
}

} // namespace shell
