// What the window's thread and the shell's hand each other: finished frames and pictures one way, input the other. Neither ever waits
// for the other: a newer frame takes an older one's place, and input waits in a queue.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "host/shell/sdl/Action.h"
#include "host/shell/sdl/Placement.h"

namespace shell::sdl {

// The screen without its moving picture, and what the window should know beside it. Never changed once handed over.
struct Frame {
    std::vector<std::uint32_t> pixels; // kScreenWidth x kScreenHeight, 0xAARRGGBB, colours not multiplied with alpha
    int scale = 1;                     // so many times wider and higher than that
    std::string title;                 // UTF-8
    bool video = false;                // the moving picture shows through the transparent pixels
    Box videoPlace;                    // on the screen
    bool keepAspect = true;            // of the moving picture
    bool keepAwake = false;            // a picture moves: no screen saver, no pointer
    bool askedFor = false;             // a dialog or box is open
};

// One moving picture, 4:2:0, as its decoder left it.
struct Picture {
    std::shared_ptr<const void> owner; // of the planes
    int width = 0, height = 0;
    double aspect = 4.0 / 3; // width to height as it should be seen
    const std::uint8_t* luma = nullptr;
    const std::uint8_t* blue = nullptr; // chrominance planes: half the size, rounded up
    const std::uint8_t* red = nullptr;
};

class Frames {
public:
    // Any thread.
    void Show(std::shared_ptr<const Frame> frame);
    // No picture: null.
    void Show(std::shared_ptr<const Picture> picture);
    // The shell's thread has come to its end; nothing follows.
    void End();

    struct News {
        std::shared_ptr<const Frame> frame; // the newest, null before the first
        std::shared_ptr<const Picture> picture;
        bool ended = false;
    };
    [[nodiscard]] News Take() const;
    // Called after each change, by the thread that made it.
    void SetListener(std::function<void()> listener);

private:
    void Tell();

    mutable std::mutex mutex; // guards what follows
    News news;
    std::function<void()> listener;
};

struct Input {
    enum class Kind : std::uint8_t { TouchDown, TouchMove, TouchUp, Wheel, Key };
    Kind kind = Kind::Key;
    Point place;                  // of a touch or the wheel, on the screen
    Action action = Action::None; // of a key
    int notches = 0;              // of the wheel; positive is away from the user
};

class Inputs {
public:
    // Any thread.
    void Push(const Input& input);
    // All that waits, oldest first.
    [[nodiscard]] std::deque<Input> Take();
    // How finely the window would like the screen drawn from now on, see ScaleFor. No input: it is never thrown away with others.
    void WantScale(int scale);
    [[nodiscard]] int WantedScale() const;
    // Called after the first input that comes to an empty queue and after each wish, by the thread that brought it.
    void SetListener(std::function<void()> listener);

private:
    mutable std::mutex mutex; // guards what follows
    std::deque<Input> waiting;
    int wantedScale = 1;
    std::function<void()> listener;
};

} // namespace shell::sdl
