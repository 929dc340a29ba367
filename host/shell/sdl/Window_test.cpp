// The window on the window library's own display without a screen.
#include "host/shell/sdl/Window.h"

#include <SDL.h>
#include <cstdlib>
#include <gtest/gtest.h>
#include <thread>

namespace shell::sdl {

namespace {

constexpr std::uint32_t kRed = 0xFFFF0000, kClear = 0x00000000, kHalfWhite = 0x80FFFFFF, kOpaqueBlack = 0xFF000000;

std::shared_ptr<Frame> FrameOf(std::uint32_t pixel) {
    auto frame = std::make_shared<Frame>();
    frame->pixels.assign(static_cast<std::size_t>(kScreenWidth) * kScreenHeight, pixel);
    frame->title = "title";
    return frame;
}

// Grey pictures: any chrominance of 128.
std::shared_ptr<const Picture> GreyPicture(int width, int height, std::uint8_t luma) {
    auto bytes = std::make_shared<std::vector<std::uint8_t>>();
    const std::size_t chroma = static_cast<std::size_t>((width + 1) / 2) * static_cast<std::size_t>((height + 1) / 2);
    bytes->assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), luma);
    bytes->insert(bytes->end(), 2 * chroma, 128);
    auto picture = std::make_shared<Picture>();
    picture->width = width;
    picture->height = height;
    picture->aspect = static_cast<double>(width) / height;
    picture->luma = bytes->data();
    picture->blue = picture->luma + static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    picture->red = picture->blue + chroma;
    picture->owner = bytes;
    return picture;
}

class WindowTest : public ::testing::Test {
protected:
    WindowTest() { setenv("SDL_VIDEODRIVER", "dummy", 1); }

    void Open() { window.emplace("test", false, KeyMap(), frames, inputs); }

    // Runs the window until everything that waits has been handled.
    void Settle() {
        frames.End();
        window->Run([this] { ++closed; });
        SDL_PumpEvents();
    }

    static SDL_Window* Handle() {
        SDL_Window* handle = nullptr;
        for (Uint32 id = 1; handle == nullptr && id < 100; ++id) {
            handle = SDL_GetWindowFromID(id);
        }
        return handle;
    }

    static std::uint32_t PixelAt(int x, int y) {
        std::uint32_t pixel = 0;
        const SDL_Rect place = {x, y, 1, 1};
        SDL_RenderReadPixels(SDL_GetRenderer(Handle()), &place, SDL_PIXELFORMAT_ARGB8888, &pixel, 4);
        return pixel;
    }

    static void PushKey(SDL_Keycode key, bool repeated = false) {
        SDL_Event event = {};
        event.type = SDL_KEYDOWN;
        event.key.keysym.sym = key;
        event.key.repeat = repeated ? 1 : 0;
        SDL_PushEvent(&event);
    }

    static void PushButton(Uint32 type, int x, int y) {
        SDL_Event event = {};
        event.type = type;
        event.button.button = SDL_BUTTON_LEFT;
        event.button.x = x;
        event.button.y = y;
        SDL_PushEvent(&event);
    }

    Frames frames;
    Inputs inputs;
    std::optional<Window> window;
    int closed = 0;
};

} // namespace

TEST_F(WindowTest, WithoutADisplayItSaysSo) {
    setenv("SDL_VIDEODRIVER", "no-such-display", 1);
    EXPECT_THROW(Open(), WindowError);
}

TEST_F(WindowTest, APointerPressIsATouchOnTheScreenWhereverTheWindowIsScaledTo) {
    Open();
    SDL_SetWindowSize(Handle(), 1600, 960);
    PushButton(SDL_MOUSEBUTTONDOWN, 200, 100);
    PushButton(SDL_MOUSEBUTTONUP, 1580, 940);
    Settle();
    const auto got = inputs.Take();
    ASSERT_EQ(got.size(), 2u);
    EXPECT_EQ(got[0].kind, Input::Kind::TouchDown);
    EXPECT_EQ(got[0].place, (Point{100, 50}));
    EXPECT_EQ(got[1].kind, Input::Kind::TouchUp);
    EXPECT_EQ(got[1].place, (Point{790, 470}));
}

TEST_F(WindowTest, KeysBecomeActionsAndHeldOnesOnlyWhereThatHelps) {
    Open();
    PushKey(SDLK_PAGEDOWN);
    PushKey(SDLK_PAGEDOWN, true);
    PushKey(SDLK_VOLUMEUP);
    PushKey(SDLK_VOLUMEUP, true);
    PushKey(SDLK_F5);
    Settle();
    const auto got = inputs.Take();
    ASSERT_EQ(got.size(), 3u);
    EXPECT_EQ(got[0].action, Action::Next);
    EXPECT_EQ(got[1].action, Action::VolumeUp);
    EXPECT_EQ(got[2].action, Action::VolumeUp);
}

TEST_F(WindowTest, TheWholeScreenComesAndGoesByKey) {
    Open();
    EXPECT_FALSE(window->IsFullScreen());
    PushKey(SDLK_f);
    Settle();
    EXPECT_TRUE(window->IsFullScreen());
    PushKey(SDLK_ESCAPE); // nothing is open that it could close
    Settle();
    EXPECT_FALSE(window->IsFullScreen());
    EXPECT_TRUE(inputs.Take().empty());
}

TEST_F(WindowTest, EscapeBelongsToADialogFirst) {
    Open();
    auto frame = FrameOf(kRed);
    frame->askedFor = true;
    frames.Show(std::shared_ptr<const Frame>(frame));
    PushKey(SDLK_f);
    PushKey(SDLK_ESCAPE);
    Settle();
    EXPECT_TRUE(window->IsFullScreen());
    ASSERT_EQ(inputs.Take().size(), 1u);
}

TEST_F(WindowTest, ClosingHidesTheWindowAtOnceAndIsToldOnce) {
    Open();
    SDL_Event event = {};
    event.type = SDL_QUIT;
    SDL_PushEvent(&event);
    SDL_PushEvent(&event);
    Settle();
    EXPECT_EQ(closed, 1);
    EXPECT_NE(SDL_GetWindowFlags(Handle()) & SDL_WINDOW_HIDDEN, 0u);
}

TEST_F(WindowTest, RunsUntilTheFramesEndWhicheverThreadEndsThem) {
    Open();
    std::thread shellThread([this] {
        frames.Show(std::shared_ptr<const Frame>(FrameOf(kRed)));
        frames.End();
    });
    window->Run([this] { ++closed; });
    shellThread.join();
    EXPECT_EQ(closed, 0);
}

TEST_F(WindowTest, ShowsTheScreenAndThePictureUnderIt) {
    Open();
    auto frame = FrameOf(kClear);
    std::fill_n(frame->pixels.begin(), 100 * kScreenWidth, kRed);
    std::fill_n(frame->pixels.begin() + 300 * kScreenWidth, kScreenWidth, kHalfWhite);
    frame->video = true;
    frame->videoPlace = {0, 0, kScreenWidth, kScreenHeight};
    frame->keepAspect = true;
    frames.Show(std::shared_ptr<const Frame>(frame));
    frames.Show(GreyPicture(64, 48, 126)); // the middle of the studio range
    Settle();
    EXPECT_EQ(PixelAt(400, 50) & 0xFFFFFF, kRed & 0xFFFFFF);
    const std::uint32_t grey = PixelAt(400, 200) & 0xFF;
    EXPECT_NEAR(static_cast<double>(grey), 128, 4);
    EXPECT_EQ(PixelAt(20, 200) & 0xFFFFFF, 0u) << "beside a 4:3 picture it is black";
    EXPECT_NEAR(static_cast<double>(PixelAt(400, 300) & 0xFF), (128 + 255) / 2.0, 5);
}

TEST_F(WindowTest, ALargeWindowWantsAFinerScreenAndShowsEachOfItsPixels) {
    Open();
    SDL_SetWindowSize(Handle(), 1600, 960);
    auto coarse = FrameOf(kRed);
    frames.Show(std::shared_ptr<const Frame>(coarse));
    int told = 0;
    inputs.SetListener([&told] { ++told; });
    Settle();
    inputs.SetListener({});
    EXPECT_EQ(told, 1);
    EXPECT_EQ(inputs.WantedScale(), 2);
    EXPECT_TRUE(inputs.Take().empty()) << "a wish is no input";
    EXPECT_EQ(PixelAt(1599, 959) & 0xFFFFFF, kRed & 0xFFFFFF) << "until then the old picture is enlarged";

    auto fine = std::make_shared<Frame>();
    fine->scale = 2;
    fine->pixels.assign(std::size_t{1600} * 960, kOpaqueBlack);
    fine->pixels[std::size_t{101} * 1600 + 333] = kRed;
    frames.Show(std::shared_ptr<const Frame>(fine));
    Settle();
    EXPECT_EQ(PixelAt(333, 101) & 0xFFFFFF, kRed & 0xFFFFFF);
    EXPECT_EQ(PixelAt(332, 101) & 0xFFFFFF, 0u);
    EXPECT_EQ(PixelAt(334, 101) & 0xFFFFFF, 0u);
    EXPECT_EQ(PixelAt(333, 100) & 0xFFFFFF, 0u);

    SDL_SetWindowSize(Handle(), 800, 480);
    Settle();
    EXPECT_EQ(inputs.WantedScale(), 1);
}

TEST_F(WindowTest, TheScreenSaverSleepsOnlyWhileAPictureMoves) {
    Open();
    auto playing = FrameOf(kRed);
    playing->keepAwake = true;
    frames.Show(std::shared_ptr<const Frame>(playing));
    Settle();
    EXPECT_EQ(SDL_IsScreenSaverEnabled(), SDL_FALSE);
    frames.Show(std::shared_ptr<const Frame>(FrameOf(kRed)));
    Settle();
    EXPECT_EQ(SDL_IsScreenSaverEnabled(), SDL_TRUE);
}

} // namespace shell::sdl
