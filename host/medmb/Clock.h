// Time as the tuner sees it, and a way to end every wait.
#pragma once

#include <atomic>
#include <chrono>

namespace medmb {

using Milliseconds = std::chrono::milliseconds;
using Time = std::chrono::nanoseconds; // since some fixed moment

// Ends waits from another thread. Once cancelled it stays so until Rearm.
class Cancellation {
public:
    Cancellation();
    ~Cancellation();
    Cancellation(const Cancellation&) = delete;
    Cancellation& operator=(const Cancellation&) = delete;

    void Cancel();
    void Rearm();
    [[nodiscard]] bool Cancelled() const { return cancelled.load(); }
    // Readable once cancelled: goes into poll() beside the descriptor that is waited for.
    [[nodiscard]] int Descriptor() const { return descriptor; }

private:
    std::atomic<bool> cancelled{false};
    int descriptor = -1;
};

class Clock {
public:
    virtual ~Clock() = default;
    [[nodiscard]] virtual Time Now() const = 0;
    // Waits until the moment has come; false when cancelled before.
    [[nodiscard]] virtual bool WaitUntil(Time moment, const Cancellation& cancellation) = 0;
};

// The machine's monotonic clock.
class SteadyClock final : public Clock {
public:
    [[nodiscard]] Time Now() const override;
    [[nodiscard]] bool WaitUntil(Time moment, const Cancellation& cancellation) override;
};

} // namespace medmb
