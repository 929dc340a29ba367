#include "host/app/dmbtv/ScreenPort.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>

#include "host/app/dmbtv/Log.h"
#include "view/DMBViewIds.h"

namespace dmbtv {

namespace {

// BT.601, studio range, as whole numbers of 1/256.
constexpr int kLuma = 298, kRedV = 409, kGreenU = -100, kGreenV = -208, kBlueU = 516;

std::uint32_t Pixel(int y, int u, int v) {
    const int luma = kLuma * (y - 16) + 128;
    const auto clip = [](int value) { return static_cast<std::uint32_t>(std::clamp(value >> 8, 0, 255)); };
    return clip(luma + kRedV * (v - 128)) << 16 | clip(luma + kGreenU * (u - 128) + kGreenV * (v - 128)) << 8 |
           clip(luma + kBlueU * (u - 128));
}

} // namespace

void ToRgb(const filters::Picture& picture, std::span<std::uint32_t> pixels) {
    const std::size_t width = static_cast<std::size_t>(picture.width);
    const std::size_t height = static_cast<std::size_t>(picture.height);
    if (picture.i420.size() < picture.LumaBytes() + 2 * picture.ChromaBytes() || pixels.size() < width * height) {
        std::fill(pixels.begin(), pixels.end(), 0);
        return;
    }
    const std::size_t chromaWidth = (width + 1) / 2;
    const std::uint8_t* luma = picture.i420.data();
    const std::uint8_t* u = luma + picture.LumaBytes();
    const std::uint8_t* v = u + picture.ChromaBytes();
    for (std::size_t y = 0; y < height; ++y) {
        const std::size_t chroma = y / 2 * chromaWidth;
        for (std::size_t x = 0; x < width; ++x)
            pixels[y * width + x] = Pixel(luma[y * width + x], u[chroma + x / 2], v[chroma + x / 2]);
    }
}

void ScreenPort::Join(shell::Shell* shell, PictureSink pictures) {
    const std::lock_guard lock(mutex);
    joined = shell;
    sink = std::move(pictures);
}

void ScreenPort::Show(const std::shared_ptr<const filters::Picture>& picture) {
    const std::lock_guard lock(mutex);
    if (joined == nullptr || picture == nullptr)
        return;
    // Most pictures go to a window as they are; only one that the shell itself draws is converted.
    joined->Video().PresentLater(picture->width, picture->height, picture->aspect,
                                 [picture](std::span<std::uint32_t> pixels) { ToRgb(*picture, pixels); });
    if (sink)
        sink(picture);
}

void ScreenPort::Clear() {
    const std::lock_guard lock(mutex);
    if (joined != nullptr)
        joined->Video().Clear();
    if (sink)
        sink(nullptr);
}

void ScreenPort::Place(const RECT& /*rectangle*/, bool /*visible*/) {}

void OnAirNotice::OnReception(filters::ReceptionState state) {
    last = state;
    const bool plays = filters::IsPlaying(state);
    const bool begins = !onAir.exchange(plays) && plays;
    const HWND view = window.load();
    if (view != nullptr && begins)
        PostMessageW(view, WM_DMB_ONAIR, 0, 0); // a television view ignores it
}

void OnAirNotice::OnCaptureFailed(HRESULT reason) {
    char code[16];
    std::snprintf(code, sizeof code, "%08X", static_cast<unsigned>(reason));
    Log(LogLevel::Error, std::string("the recording ended by itself (") + code + "); what was written stays playable");
    if (const HWND listener = cardWatch.load())
        PostMessageW(listener, kCaptureEndedMessage, static_cast<WPARAM>(reason), 0);
}

void OnAirNotice::OnFileLost() {
    Log(LogLevel::Error, "the file cannot be read any further");
    if (const HWND listener = cardWatch.load())
        PostMessageW(listener, kFileLostMessage, 0, 0);
}

} // namespace dmbtv
