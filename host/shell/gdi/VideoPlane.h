// The moving picture under the skin: the latest frame, where it lies, and whether it shows.
//
// Frames come from the video renderer's thread; everything else belongs to the shell's thread.
#pragma once

#include "host/shell/gdi/Surface.h"

#include <functional>
#include <mutex>
#include <span>

namespace shell {

class DMB_HOST_API VideoPlane {
public:
    // A new frame: rows of 32-bit pixels (0x00RRGGBB), without gaps. `aspect` is width to height of the picture as it should
    // be seen. Any thread.
    void Present(int width, int height, std::span<const std::uint32_t> pixels, double aspect);
    // The same for pixels that are only made when somebody looks: `fill` is called at most once, on the thread that paints, with
    // room for all of them (zeros at first).
    void PresentLater(int width, int height, double aspect, std::function<void(std::span<std::uint32_t>)> fill);
    // Forgets the frame: the plane is black. Any thread.
    void Clear();
    // Called after every Present and Clear, on the thread that called it.
    void SetListener(std::function<void()> listener);

    // Number of frames presented so far.
    [[nodiscard]] std::uint64_t FrameCount() const;

    bool visible = false;
    bool keepAspect = true;

    // Draws the frame into the rectangle, black around it.
    void Paint(Surface& target, const RECT& rect) const;

private:
    void MakeFrame(int width, int height, double aspect);

    mutable std::mutex mutex; // guards what follows
    std::unique_ptr<Surface> frame;
    mutable std::function<void(std::span<std::uint32_t>)> pending; // fills `frame` when it is wanted
    double frameAspect = 4.0 / 3;
    std::uint64_t frames = 0;
    std::function<void()> listener;
};

} // namespace shell
