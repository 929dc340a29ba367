// The small form on a random walk: every rectangle keeps to its formula, and the session never ends.
#include <algorithm>
#include <array>
#include <random>
#include <vector>

#include "platform/gdi.h"
#include "tests/stories/Story.h"

using namespace stories;

namespace {

using Sides = std::array<LONG, 4>;

Sides SidesOf(const RECT& rect) {
    return {rect.left, rect.top, rect.right, rect.bottom};
}

constexpr LONG kScreenWidth = 800, kScreenHeight = 480;
constexpr LONG kLeast = 120;

class PipStory : public Story {
protected:
    void SetUp() override {
        Open();
        Tune(kNews);
        fullInfo = Element(kElementInfo).GetRect();
        skinLabel = Element(kElementDLS).GetRect();
        toggle = Element(kElementToggleSmall).GetRect();
    }

    // What the formulas give for a small window of this size that was reached from another width.
    void ExpectSmall(const RECT& place) {
        const LONG width = place.right - place.left;
        const LONG height = place.bottom - place.top;
        const bool fullDimension = width == kScreenWidth || height == kScreenHeight;
        EXPECT_EQ(SidesOf(peer->DlsRect()),
                  fullDimension ? SidesOf(skinLabel) : (Sides{10, 68, width - 10, height - 68}));
        EXPECT_EQ(SidesOf(Element(kElementInfo).GetRect()), (Sides{fullInfo.left, height - 86, width, height - 54}));
        // As far from the right edge as it is in the full window.
        EXPECT_EQ(SidesOf(Element(kElementToggleSmall).GetRect()),
                  (Sides{toggle.left + width - kScreenWidth, toggle.top, toggle.right + width - kScreenWidth,
                         toggle.bottom}));
        RECT client{};
        GetClientRect(view->GetSafeHwnd(), &client);
        EXPECT_EQ(SidesOf(client), (Sides{0, 0, width, height}));
    }
    void ExpectFull() {
        EXPECT_EQ(SidesOf(peer->DlsRect()), SidesOf(skinLabel));
        EXPECT_EQ(SidesOf(Element(kElementInfo).GetRect()), SidesOf(fullInfo));
        EXPECT_EQ(SidesOf(Element(kElementToggleSmall).GetRect()), SidesOf(toggle));
        EXPECT_EQ(SidesOf(peer->InfoRect()), SidesOf(fullInfo));
    }

    RECT fullInfo{};
    RECT skinLabel{};
    RECT toggle{};
};

} // namespace

TEST_F(PipStory, AThousandRandomStepsKeepEveryRectangleAtItsFormula) {
    std::mt19937 random(20070307);
    const auto between = [&random](LONG low, LONG high) {
        return low + static_cast<LONG>(random() % static_cast<unsigned>(high - low + 1));
    };
    const auto anyPlace = [&] {
        // Now and then as wide or as high as the screen, or nearly.
        const LONG width = random() % 8 == 0 ? kScreenWidth - between(0, 1) : between(kLeast, kScreenWidth);
        const LONG height = random() % 8 == 0 ? kScreenHeight - between(0, 1) : between(kLeast, kScreenHeight);
        const LONG left = between(0, kScreenWidth - width);
        const LONG top = between(0, kScreenHeight - height);
        return RECT{left, top, left + width, top + height};
    };
    bool small = false;
    RECT place{};
    int transfers = 0, moves = 0, restores = 0;
    Forget();
    for (int step = 0; step < 1000 && !HasFailure(); ++step) {
        SCOPED_TRACE(step);
        if (!small) {
            if (random() % 2 == 0)
                peer->PipRect() = anyPlace();
            ASSERT_TRUE(device.shell.Minimize());
            place = *view->GetPIPRect();
            small = true;
            ++transfers;
        } else if (random() % 3 == 0) {
            device.shell.Restore();
            EXPECT_EQ(SidesOf(*view->GetPIPRect()), SidesOf(place)) << "what the user left is kept";
            small = false;
            ++restores;
        } else {
            place = anyPlace();
            device.shell.MoveSmall(place);
            ++moves;
        }
        if (random() % 4 == 0)
            Idle();
        if (small)
            ExpectSmall(place);
        else
            ExpectFull();
        EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying);
    }
    EXPECT_GT(transfers, 100);
    EXPECT_GT(moves, 300);
    EXPECT_GT(restores, 100);
    // The graph has noticed nothing of it.
    for (const char* effect : {"mode ", "Stop", "Run", "Pause", "video off", "SetChannel"})
        EXPECT_FALSE(Saw(effect)) << effect;
    device.shell.Restore();
}

TEST_F(PipStory, ThePictureFollowsTheSmallWindow) {
    const std::vector<std::uint32_t> red(64, 0xFF0000);
    device.shell.Video().Present(8, 8, red, 1.0);
    peer->PipRect() = {100, 100, 420, 340};
    ASSERT_TRUE(device.shell.Minimize());
    Idle();
    const auto at = [this](int x, int y) { return device.shell.Screen()[y * kScreenWidth + x] & 0xFFFFFF; };
    EXPECT_EQ(at(260, 200), 0xFF0000u);
    EXPECT_NE(at(600, 200), 0xFF0000u);
    device.shell.MoveSmall({440, 100, 760, 340});
    Idle();
    EXPECT_EQ(at(600, 200), 0xFF0000u);
    EXPECT_NE(at(260, 200), 0xFF0000u);
    device.shell.Restore();
    Idle();
    EXPECT_EQ(at(400, 200), 0xFF0000u);
    device.shell.Video().Clear();
}

TEST_F(PipStory, ARadioLosesItsBackgroundWhileSmall) {
    Tune(kMusic);
    OnAir();
    EXPECT_TRUE(Element(kElementAudioBG).IsVisible());
    ASSERT_TRUE(device.shell.Minimize());
    EXPECT_FALSE(Element(kElementAudioBG).IsVisible());
    for (const UINT id : {kElementScan, kElementList, kElementSetting, kElementRecord})
        EXPECT_FALSE(Element(id).IsVisible()) << id;
    EXPECT_TRUE(Element(kElementToggleSmall).IsVisible());
    device.shell.Restore();
    EXPECT_TRUE(Element(kElementAudioBG).IsVisible());
    EXPECT_FALSE(Element(kElementToggleSmall).IsVisible());
    EXPECT_TRUE(Element(kElementToggleFull).IsVisible());
}

TEST_F(PipStory, NothingIsSelectedSoNothingBecomesSmall) {
    peer->CurChannel() = -1;
    EXPECT_FALSE(device.shell.Minimize());
    EXPECT_FALSE(device.shell.Document().IsMinimized());
    peer->CurChannel() = kNews;
}

// Going small asks for television, coming back for anything but radio: a file shows one face small and the other one full.
TEST_F(PipStory, FacesFollowTwoDifferentTests) {
    const auto faceOf = [this](UINT id, LONG left, LONG top) {
        device.shell.Video().visible = false; // the picture under the buttons is not what is compared
        InvalidateRect(view->GetSafeHwnd(), nullptr, FALSE);
        Idle();
        const std::uint32_t* screen = device.shell.Screen();
        const RECT& rect = Element(id).GetRect();
        std::vector<std::uint32_t> pixels;
        for (LONG y = rect.top; y < rect.bottom; ++y)
            pixels.insert(pixels.end(), screen + (top + y) * kScreenWidth + left + rect.left,
                          screen + (top + y) * kScreenWidth + left + rect.right);
        return pixels;
    };
    struct Faces {
        std::vector<std::uint32_t> small, full;
    };
    const auto goThere = [&] {
        peer->PipRect() = {100, 100, 420, 340};
        EXPECT_TRUE(device.shell.Minimize());
        view->EnableToggle(1);
        Faces faces{faceOf(kElementToggleSmall, 100, 100), {}};
        device.shell.Restore();
        faces.full = faceOf(kElementToggleFull, 0, 0);
        return faces;
    };
    const Faces television = goThere();
    peer->PlayDMBFile(WTEXT("\\SDMMC Card\\DMB\\a.dmb"));
    Idle();
    ASSERT_EQ(peer->CurrentType(), kSessionFile);
    const Faces file = goThere();
    Tune(kMusic);
    const Faces radio = goThere();
    EXPECT_EQ(file.small, radio.small);
    EXPECT_NE(file.small, television.small);
    EXPECT_EQ(file.full, television.full);
    EXPECT_NE(file.full, radio.full);
}
