// The screen: title, information, progress bar, labels, slides, small form.
#include <thread>

#include "dataservice/PadInfo.h"
#include "platform/gdi.h"
#include "tests/stories/Story.h"

using namespace stories;
using scripted::Kind;

namespace {
class ScreenStory : public Story {
protected:
    void SetUp() override { Open(); }
    [[nodiscard]] std::uint32_t Pixel(int x, int y) { return device.shell.Screen()[y * 800 + x] & 0xFFFFFF; }
    // How many pixels of an area are not what they were.
    [[nodiscard]] int Changed(const RECT& area, const std::vector<std::uint32_t>& before) {
        const std::uint32_t* now = device.shell.Screen();
        int changed = 0;
        for (LONG y = area.top; y < area.bottom; ++y)
            for (LONG x = area.left; x < area.right; ++x)
                changed += now[y * 800 + x] != before[static_cast<std::size_t>(y * 800 + x)] ? 1 : 0;
        return changed;
    }
    [[nodiscard]] std::vector<std::uint32_t> Snapshot() {
        const std::uint32_t* pixels = device.shell.Screen();
        return {pixels, pixels + 800 * 480};
    }
};
} // namespace

// Edge cases: 5 of 10 is 182 pixels at (215, 218), 12 of 10 is 365, 3 of 0 is nothing.
TEST_F(ScreenStory, ProgressBarIsAsLongAsTheWork) {
    const auto width = [this](const std::vector<std::uint32_t>& before) {
        int longest = 0;
        for (int x = 0; x < 800; ++x)
            if (Changed({x, 218, x + 1, 226}, before) > 0)
                longest = x - 215 + 1;
        return longest;
    };
    auto before = Snapshot();
    peer->DrawProgressBar(3, 0);
    EXPECT_EQ(width(before), 0);
    peer->DrawProgressBar(5, 10);
    EXPECT_EQ(width(before), 182);
    EXPECT_EQ(Changed({0, 0, 800, 218}, before), 0);
    EXPECT_EQ(Changed({0, 226, 800, 480}, before), 0);
    EXPECT_EQ(Changed({0, 218, 215, 226}, before), 0);
    peer->DrawProgressBar(12, 10);
    EXPECT_EQ(width(before), 365);
}

// Edge case: no text hides the information element, a text shows it.
TEST_F(ScreenStory, InformationHidesAndShows) {
    peer->ShowInfo(WTEXT("hello"));
    EXPECT_EQ(Info(), WTEXT("hello"));
    peer->ShowInfo(nullptr);
    EXPECT_EQ(Info(), WString());
}

// Edge case: a television session draws no label text, even with a history.
TEST_F(ScreenStory, TelevisionDrawsNoLabels) {
    Tune(kNews);
    device.shell.Video().visible = false;
    InvalidateRect(view->GetSafeHwnd(), nullptr, FALSE);
    Idle();
    const auto before = Snapshot();
    peer->Labels() = {WTEXT("text")};
    InvalidateRect(view->GetSafeHwnd(), nullptr, FALSE);
    Idle();
    EXPECT_EQ(Changed(peer->DlsRect(), before), 0);
    peer->Labels().clear();
}

TEST_F(ScreenStory, RadioDrawsItsLabelsInWhite) {
    Tune(kMusic);
    OnAir();
    Idle();
    const auto before = Snapshot();
    Label("\xB0\xA1\xB3\xAA\xB4\xD9 LABEL");
    EXPECT_GT(Changed(peer->DlsRect(), before), 100);
    bool white = false;
    for (LONG y = peer->DlsRect().top; y < peer->DlsRect().bottom && !white; ++y)
        for (LONG x = peer->DlsRect().left; x < peer->DlsRect().right && !white; ++x)
            white = Pixel(x, y) == 0xFFFFFF;
    EXPECT_TRUE(white);
}

TEST_F(ScreenStory, PaintingLeavesNoLockHeld) {
    Tune(kMusic);
    OnAir();
    InvalidateRect(view->GetSafeHwnd(), nullptr, FALSE); // nothing to draw: the history is empty, no slide is there
    Idle();
    bool free = false;
    std::thread other([&] {
        free = peer->LabelLock().TryEnter() && peer->SlideLock().TryEnter();
        if (free) {
            peer->LabelLock().Leave();
            peer->SlideLock().Leave();
        }
    });
    other.join();
    EXPECT_TRUE(free);
}

TEST_F(ScreenStory, ThemeFindsTheElementsAndScansEveryRowAgain) {
    BYTE mask[kChannelTableRows] = {};
    view->SetScanFrequency(mask);
    view->Theme();
    EXPECT_EQ(view->GetScanFrequency()[20], 1);
    EXPECT_EQ(peer->DlsRect().left, Element(kElementDLS).GetRect().left);
    EXPECT_EQ(peer->SlideRect().right - peer->SlideRect().left, 320);
    EXPECT_EQ(peer->SlideRect().bottom - peer->SlideRect().top, 240);
}

TEST_F(ScreenStory, TitleNamesTheCurrentOrTheGivenChannel) {
    Tune(kNews);
    Send(WM_DMB_SHOWCHLABEL, kJazz, 1);
    EXPECT_EQ(WString(device.shell.Title()), WTEXT("[CH8] JAZZ"));
    Send(WM_DMB_SHOWCHLABEL, kJazz, 0);
    EXPECT_EQ(WString(device.shell.Title()), WTEXT("[CH12] NEWS"));
    Send(WM_DMB_SHOWCHLABEL, 99, 1);
    EXPECT_EQ(WString(device.shell.Title()), WString());
}

// Edge case: during playback of a file the title is empty.
TEST_F(ScreenStory, TitleIsEmptyWhileAFilePlays) {
    Tune(kNews);
    peer->PlayDMBFile(WTEXT("\\SDMMC Card\\DMB\\a.dmb"));
    Idle();
    for (const LPARAM useIndex : {1, 0}) {
        view->SetTitle(WTEXT("of before"));
        Send(WM_DMB_SHOWCHLABEL, kJazz, useIndex);
        EXPECT_EQ(WString(device.shell.Title()), WString());
    }
}

// ---- Slides ------------------------------------------------------------------------------------------------------------

TEST_F(ScreenStory, SlideIsDecodedAndPaintedIntoItsArea) {
    Tune(kMusic);
    OnAir();
    std::filesystem::copy_file(harness::TestData("broadcast/slide.jpg"), device.Root() / "MotBody.dat");
    const auto before = Snapshot();
    Report(Kind::DABSource, IDMB_EVENT_MOT);
    EXPECT_EQ(peer->SlideReady(), 1);
    EXPECT_EQ(peer->SlideHeaderSize(), 52u);
    EXPECT_GT(Changed(peer->SlideRect(), before), 10000);
}

// Edge case: an empty slide file never yields a picture.
TEST_F(ScreenStory, EmptySlideFileIsRefusedByTheProbe) {
    Tune(kMusic);
    OnAir();
    harness::WriteFile(device.Root() / "MotBody.dat", "");
    Command(kCmdDecodeSlide);
    EXPECT_EQ(peer->SlideReady(), 0);
    EXPECT_EQ(device.ce.debug().Lines().back(), WTEXT("[MES_ParseJPEG] failed!\n"));
}

TEST_F(ScreenStory, MissingSlideFileIsSilent) {
    Tune(kMusic);
    device.ce.debug().Clear();
    Command(kCmdDecodeSlide);
    EXPECT_TRUE(device.ce.debug().Lines().empty());
    EXPECT_EQ(peer->MotBody(), nullptr);
}

// Edge case: a smaller body after a larger one uses the buffer again.
TEST_F(ScreenStory, SmallerSlideUsesTheBufferAgain) {
    Tune(kMusic);
    harness::WriteFile(device.Root() / "MotBody.dat", std::string(1000, 'x'));
    Command(kCmdDecodeSlide);
    const BYTE* buffer = peer->MotBody();
    EXPECT_EQ(peer->MotBodySize(), 1000u);
    harness::WriteFile(device.Root() / "MotBody.dat", std::string(10, 'x'));
    Command(kCmdDecodeSlide);
    EXPECT_EQ(peer->MotBody(), buffer);
    EXPECT_EQ(peer->MotBodySize(), 1000u);
}

TEST_F(ScreenStory, ShortReadOfASlideDecodesNothing) {
    Tune(kMusic);
    std::filesystem::copy_file(harness::TestData("broadcast/slide.jpg"), device.Root() / "MotBody.dat");
    device.ce.files().SetFaults({.readBytes = 100});
    Command(kCmdDecodeSlide);
    EXPECT_EQ(peer->SlideReady(), 0);
}

TEST_F(ScreenStory, StoppingForgetsTheSlideAndKeepsItsBuffers) {
    Tune(kMusic);
    OnAir();
    std::filesystem::copy_file(harness::TestData("broadcast/slide.jpg"), device.Root() / "MotBody.dat");
    Command(kCmdDecodeSlide);
    ASSERT_EQ(peer->SlideReady(), 1);
    view->Stop();
    EXPECT_EQ(peer->SlideReady(), 0);
    EXPECT_NE(peer->SlideDib(), nullptr);
    EXPECT_EQ(peer->SlideHeaderSize(), 52u);
}

// ---- Small form --------------------------------------------------------------------------------------------------------

// Edge case: channels, but none selected.
TEST_F(ScreenStory, SmallFormNeedsASelectedChannel) {
    const RECT rect = {0, 0, 320, 240};
    EXPECT_EQ(view->CanMinimize(&rect), 0);
    Tune(kNews);
    EXPECT_EQ(view->CanMinimize(&rect), 1);
    peer->ChannelCount() = 0;
    EXPECT_EQ(view->CanMinimize(&rect), 0);
    peer->ChannelCount() = 5;
}

// Edge case: 320 x 240 puts the label text and the information where they fit.
TEST_F(ScreenStory, SmallFormLaysTheTextsAnew) {
    const LONG left = Element(kElementInfo).GetRect().left;
    peer->FitToPIP({320, 240});
    const RECT& label = peer->DlsRect();
    EXPECT_EQ(label.left, 10);
    EXPECT_EQ(label.top, 68);
    EXPECT_EQ(label.right, 310);
    EXPECT_EQ(label.bottom, 172);
    const RECT& info = Element(kElementInfo).GetRect();
    EXPECT_EQ(info.left, left);
    EXPECT_EQ(info.top, 154);
    EXPECT_EQ(info.right, 320);
    EXPECT_EQ(info.bottom, 186);
}

// Edge case: a full-screen dimension takes the skin's place of the label text.
TEST_F(ScreenStory, FullDimensionTakesTheSkinsPlace) {
    const RECT place = Element(kElementDLS).GetRect();
    for (const SIZE size : {SIZE{800, 240}, SIZE{320, 480}}) {
        peer->FitToPIP({320, 240});
        peer->FitToPIP(size);
        EXPECT_EQ(peer->DlsRect().left, place.left);
        EXPECT_EQ(peer->DlsRect().bottom, place.bottom);
    }
}

// Edge case: 457 pixels show the short text, 458 the long one.
TEST_F(ScreenStory, NarrowWindowShowsTheShortText) {
    Tune(kNews);
    peer->NoSignal() = 1;
    peer->ShowInfo(WTEXT("x"));
    peer->FitToPIP({457, 300});
    EXPECT_EQ(Info(), TextOf(kTextNoSignalShort));
    peer->FitToPIP({458, 300});
    EXPECT_EQ(Info(), TextOf(kTextNoSignal));
    peer->NoSignal() = 0;
}

// Edge case: a move that changes only the height leaves the small toggle where it was.
TEST_F(ScreenStory, SmallToggleKeepsItsDistanceFromTheRightEdge) {
    Tune(kNews);
    ASSERT_TRUE(device.shell.Minimize());
    const RECT before = Element(kElementToggleSmall).GetRect();
    device.shell.MoveSmall({400, 100, 720, 400}); // 320 wide, as it was
    EXPECT_EQ(Element(kElementToggleSmall).GetRect().left, before.left);
    device.shell.MoveSmall({300, 100, 720, 400}); // 100 wider
    EXPECT_EQ(Element(kElementToggleSmall).GetRect().left, before.left + 100);
    EXPECT_EQ(Element(kElementToggleSmall).GetRect().top, before.top);
    device.shell.Restore();
}

TEST_F(ScreenStory, InformationReturnsToItsFullPlace) {
    Tune(kNews);
    const RECT full = Element(kElementInfo).GetRect();
    ASSERT_TRUE(device.shell.Minimize());
    EXPECT_NE(Element(kElementInfo).GetRect().top, full.top);
    device.shell.Restore();
    EXPECT_EQ(Element(kElementInfo).GetRect().top, full.top);
    EXPECT_EQ(Element(kElementInfo).GetRect().right, full.right);
}

TEST_F(ScreenStory, OnlyARectangleFromOutsideIsSaved) {
    Tune(kNews);
    peer->ProfileDirty() = 0;
    view->TransferToPIP();
    view->RestoreFromPIP(view->GetPIPRect());
    EXPECT_EQ(peer->ProfileDirty(), 0);
    const RECT equal = *view->GetPIPRect(); // equal values, another object
    view->TransferToPIP();
    view->RestoreFromPIP(&equal);
    EXPECT_EQ(peer->ProfileDirty(), 1);
}

TEST_F(ScreenStory, SmallViewDecodesWithoutPainting) {
    Tune(kMusic);
    OnAir();
    ASSERT_TRUE(device.shell.Minimize());
    Idle();
    std::filesystem::copy_file(harness::TestData("broadcast/slide.jpg"), device.Root() / "MotBody.dat");
    const auto before = Snapshot();
    Command(kCmdDecodeSlide);
    EXPECT_EQ(peer->SlideReady(), 1);
    EXPECT_EQ(Changed({0, 0, 800, 480}, before), 0);
    device.shell.Restore();
}
