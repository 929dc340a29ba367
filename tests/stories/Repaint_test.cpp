// What asks for a repaint, and what does not: a mark drawn onto the screen stands until its place is painted again.
#include <vector>

#include "platform/gdi.h"
#include "tests/stories/Story.h"

using namespace stories;

namespace {

class RepaintStory : public Story {
protected:
    void SetUp() override {
        Open();
        Tune(kMusic);
        OnAir();
    }
    void DrawMark(const RECT& place) {
        const HDC dc = GetDC(view->GetSafeHwnd());
        SetTextColor(dc, 0x000000FF);
        RECT area = place;
        DrawTextW(dc, WTEXT("MARK"), 4, &area, DT_WORDBREAK);
        ReleaseDC(view->GetSafeHwnd(), dc);
        const std::uint32_t* pixels = device.shell.Screen();
        marked.assign(pixels, pixels + 800 * 480);
    }
    // Is the window as it was when the mark was drawn?
    [[nodiscard]] bool IsMarkThere() {
        Idle();
        const std::uint32_t* pixels = device.shell.Screen();
        return std::equal(marked.begin(), marked.end(), pixels);
    }
    // A picture is there and its command is posted; painted or not, the mark's place tells.
    void DecodeSlide() {
        std::filesystem::copy_file(harness::TestData("broadcast/slide.jpg"), device.Root() / "MotBody.dat",
                                   std::filesystem::copy_options::overwrite_existing);
        Command(kCmdDecodeSlide);
    }

private:
    std::vector<std::uint32_t> marked;
};

} // namespace

// Edge case: a label equal to the last one is dropped and causes no repaint.
TEST_F(RepaintStory, RepeatedLabelPaintsNothing) {
    Label("one");
    DrawMark(peer->DlsRect());
    Label("one");
    EXPECT_TRUE(IsMarkThere());
    Label("two");
    EXPECT_FALSE(IsMarkThere());
}

TEST_F(RepaintStory, EmptyLabelPaintsNothing) {
    Label("one");
    DrawMark(peer->DlsRect());
    Label("");
    EXPECT_TRUE(IsMarkThere());
}

TEST_F(RepaintStory, NewLabelPaintsNothingButItsPlace) {
    DrawMark(peer->SlideRect());
    const RECT full = peer->DlsRect();
    peer->DlsRect() = {0, 0, 1, 1}; // one pixel that nothing draws into
    Label("one");
    EXPECT_TRUE(IsMarkThere());
    peer->DlsRect() = full;
}

TEST_F(RepaintStory, NewSlidePaintsItsPlace) {
    DrawMark(peer->SlideRect());
    DecodeSlide();
    EXPECT_FALSE(IsMarkThere());
}

// Edge case: a small view decodes and marks a slide ready and does not invalidate.
TEST_F(RepaintStory, SlideInASmallViewPaintsNothing) {
    ASSERT_TRUE(device.shell.Minimize());
    Idle();
    const RECT full = peer->SlideRect();
    peer->SlideRect() = {20, 60, 220, 160}; // where a paint would be seen
    DrawMark(peer->SlideRect());
    DecodeSlide();
    EXPECT_EQ(peer->SlideReady(), 1);
    EXPECT_TRUE(IsMarkThere());
    InvalidateRect(view->GetSafeHwnd(), &peer->SlideRect(), FALSE);
    EXPECT_FALSE(IsMarkThere()) << "a paint would have taken the mark away";
    peer->SlideRect() = full;
    device.shell.Restore();
}
