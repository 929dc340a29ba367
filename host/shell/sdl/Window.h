// The desktop window: presents finished frames and collects input. It knows nothing of what they mean.
//
// Owner and thread: the program's main thread makes it, runs it and destroys it; other threads reach it only through Frames and
// Inputs. Drawing uses the graphics card where there is one, and the processor otherwise.
#pragma once

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

#include "host/shell/sdl/Exchange.h"
#include "host/shell/sdl/KeyMap.h"

namespace shell::sdl {

// There is no display, or no window can be had on it.
class WindowError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

class Window {
public:
    // Throws WindowError. `frames` and `inputs` outlive it.
    Window(const std::string& title, bool fullScreen, KeyMap keys, Frames& frames, Inputs& inputs);
    ~Window();
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    // Presents and collects until the frames end. `onClose` is called once, when the user closes the window; it is hidden by then.
    void Run(const std::function<void()>& onClose);

    [[nodiscard]] bool IsFullScreen() const;
    // "opengl", "software" and the like.
    [[nodiscard]] std::string RendererName() const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl;
};

} // namespace shell::sdl
