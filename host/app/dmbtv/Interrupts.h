// SIGINT, SIGTERM and SIGHUP as an orderly end: one call on a thread of its own, where anything may be done.
#pragma once

#include <atomic>
#include <functional>
#include <thread>

namespace dmbtv {

class Interrupts {
public:
    // Calls `onInterrupt` for the first signal; a second one ends the process as if nobody listened. One object at a time.
    explicit Interrupts(std::function<void()> onInterrupt);
    ~Interrupts();
    Interrupts(const Interrupts&) = delete;
    Interrupts& operator=(const Interrupts&) = delete;

    [[nodiscard]] bool Came() const { return came.load(); }

private:
    std::atomic<bool> came = false;
    int pipeEnds[2] = {-1, -1};
    std::thread watcher;
};

} // namespace dmbtv
