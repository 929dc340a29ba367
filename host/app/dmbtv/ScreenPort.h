// Joins the filters' picture and status ports to the shell.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <span>

#include "host/filters/Outputs.h"
#include "host/shell/Shell.h"

namespace dmbtv {

// To whoever watches the card: a recording ended by itself, the first parameter is the reason (HRESULT); the file that plays cannot
// be read any further.
inline constexpr UINT kCaptureEndedMessage = WM_USER + 310;
inline constexpr UINT kFileLostMessage = WM_USER + 311;

class ScreenPort final : public filters::VideoPort {
public:
    using PictureSink = std::function<void(std::shared_ptr<const filters::Picture>)>;

    // The shell comes after the filters' registration and goes before them: null until then and after. `pictures`, when there is
    // one, gets every picture as it is.
    void Join(shell::Shell* shell, PictureSink pictures);

    void Show(const std::shared_ptr<const filters::Picture>& picture) override;
    void Clear() override;
    // The shell's plane follows the view's window by itself.
    void Place(const RECT& rectangle, bool visible) override;

private:
    std::mutex mutex; // guards what follows
    shell::Shell* joined = nullptr;
    PictureSink sink;
};

// Tells the view when a service begins to play: labels and slides are taken from then on, also from a radio that starts with a good
// signal.
class OnAirNotice final : public filters::StatusPort {
public:
    void Join(HWND view) { window.store(view); }
    // Gets the two messages above.
    void JoinCardWatch(HWND listener) { cardWatch.store(listener); }

    void OnReception(filters::ReceptionState state) override;
    // The newest state. Any thread.
    [[nodiscard]] filters::ReceptionState Last() const { return last.load(); }
    void OnCaptureFailed(HRESULT reason) override;
    void OnFileLost() override;

private:
    std::atomic<HWND> window = nullptr;
    std::atomic<HWND> cardWatch = nullptr;
    std::atomic<bool> onAir = false;
    std::atomic<filters::ReceptionState> last = filters::ReceptionState::kIdle;
};

// The picture as rows of 0x00RRGGBB, by ITU-R BT.601 with studio range. `pixels` has room for all of it.
void ToRgb(const filters::Picture& picture, std::span<std::uint32_t> pixels);

} // namespace dmbtv
