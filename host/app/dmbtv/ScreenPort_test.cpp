#include "host/app/dmbtv/ScreenPort.h"

#include "host/ce/Ce.h"
#include "view/DMBViewIds.h"

#include <gtest/gtest.h>

using namespace dmbtv;
using filters::ReceptionState;

namespace {

// A window that counts what it is told.
struct Window {
    Window() {
        handle = system.loop().AddWindow([this](HWND, UINT message, WPARAM, LPARAM) {
            notices += message == WM_DMB_ONAIR ? 1 : 0;
            return LRESULT{0};
        });
    }
    ~Window() { system.loop().RemoveWindow(handle); }
    int Notices() {
        system.loop().RunUntilIdle();
        return notices;
    }
    ce::ManualClock clock;
    ce::Ce system{clock};
    HWND handle = nullptr;
    int notices = 0;
};

} // namespace

TEST(OnAirNotice, ComesOnceWhenAServiceBeginsToPlay) {
    Window window;
    OnAirNotice notice;
    notice.Join(window.handle);
    notice.OnReception(ReceptionState::kWaiting);
    EXPECT_EQ(window.Notices(), 0);
    notice.OnReception(ReceptionState::kPlaying);
    EXPECT_EQ(window.Notices(), 1);
    notice.OnReception(ReceptionState::kWeak);
    notice.OnReception(ReceptionState::kPlaying);
    EXPECT_EQ(window.Notices(), 1) << "it never stopped playing";
    notice.OnReception(ReceptionState::kIdle);
    notice.OnReception(ReceptionState::kWeak);
    EXPECT_EQ(window.Notices(), 2) << "a weak beginning is one, too";
}

TEST(OnAirNotice, WithoutAViewNothingIsTold) {
    Window window;
    OnAirNotice notice;
    notice.OnReception(ReceptionState::kPlaying);
    notice.Join(window.handle);
    notice.OnReception(ReceptionState::kIdle);
    EXPECT_EQ(window.Notices(), 0);
}

TEST(ScreenPort, PicturesBecomeColours) {
    filters::Picture picture;
    picture.width = 2;
    picture.height = 2;
    picture.i420 = {16, 235, 81, 16, 128, 128}; // black, white, the brightness of red, black; no colour
    std::vector<std::uint32_t> pixels(4);
    ToRgb(picture, pixels);
    EXPECT_EQ(pixels, (std::vector<std::uint32_t>{0x000000, 0xFFFFFF, 0x4C4C4C, 0x000000}));
    picture.i420 = {81, 81, 81, 81, 90, 240};
    ToRgb(picture, pixels);
    EXPECT_EQ(pixels[0] >> 16, 0xFFu);
    EXPECT_LE(pixels[0] & 0xFFFF, 0x0101u);
    picture.i420.pop_back();
    pixels.assign(4, 7);
    ToRgb(picture, pixels);
    EXPECT_EQ(pixels[0], 0u) << "too few bytes are no picture: black";
}
