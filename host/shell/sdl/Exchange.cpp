#include "host/shell/sdl/Exchange.h"

#include <utility>

namespace shell::sdl {

// The listener is called with the lock held: once it has been taken away, no call of it is under way.
void Frames::Tell() {
    if (listener) {
        listener();
    }
}

void Frames::Show(std::shared_ptr<const Frame> frame) {
    const std::lock_guard lock(mutex);
    news.frame = std::move(frame);
    Tell();
}

void Frames::Show(std::shared_ptr<const Picture> picture) {
    const std::lock_guard lock(mutex);
    news.picture = std::move(picture);
    Tell();
}

void Frames::End() {
    const std::lock_guard lock(mutex);
    news.ended = true;
    Tell();
}

Frames::News Frames::Take() const {
    const std::lock_guard lock(mutex);
    return news;
}

void Frames::SetListener(std::function<void()> newListener) {
    const std::lock_guard lock(mutex);
    listener = std::move(newListener);
}

void Inputs::Push(const Input& input) {
    const std::lock_guard lock(mutex);
    // A finger that moves is where it was seen last.
    if (input.kind == Input::Kind::TouchMove && !waiting.empty() && waiting.back().kind == Input::Kind::TouchMove) {
        waiting.back() = input;
        return;
    }
    waiting.push_back(input);
    if (waiting.size() == 1 && listener) {
        listener();
    }
}

std::deque<Input> Inputs::Take() {
    const std::lock_guard lock(mutex);
    return std::exchange(waiting, {});
}

void Inputs::WantScale(int scale) {
    const std::lock_guard lock(mutex);
    wantedScale = scale;
    if (listener) {
        listener();
    }
}

int Inputs::WantedScale() const {
    const std::lock_guard lock(mutex);
    return wantedScale;
}

void Inputs::SetListener(std::function<void()> newListener) {
    const std::lock_guard lock(mutex);
    listener = std::move(newListener);
}

} // namespace shell::sdl
