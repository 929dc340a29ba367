// Ends every wait of one piece of work from another thread: waits on the clock and waits on descriptors alike.
#pragma once

#include <atomic>
#include <cstdint>

#include "host/ce/Clock.h"

namespace medmb {

using ce::Millis;

class Cancellation {
public:
    explicit Cancellation(ce::Clock& clockToWaitOn);
    ~Cancellation();
    Cancellation(const Cancellation&) = delete;
    Cancellation& operator=(const Cancellation&) = delete;

    // For good: a cancelled piece of work is not taken up again.
    void Cancel();
    [[nodiscard]] bool Cancelled() const { return cancelled.load(); }

    // Lets time pass until the clock shows `moment`; false when cancelled before.
    [[nodiscard]] bool WaitUntil(Millis moment);
    // Waits until the descriptor is ready for `events` (of poll), for at most `limit` of real time. True when it is.
    [[nodiscard]] bool WaitFor(int descriptor, short events, Millis limit) const;

    [[nodiscard]] ce::Clock& Clock() const { return clock; }

private:
    ce::Clock& clock;
    ce::Signal signal;
    std::atomic<bool> cancelled{false};
    int wakeDescriptor = -1;
};

} // namespace medmb
