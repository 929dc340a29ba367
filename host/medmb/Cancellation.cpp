#include "host/medmb/Cancellation.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>

namespace medmb {

Cancellation::Cancellation(ce::Clock& clockToWaitOn)
    : clock(clockToWaitOn), signal(clockToWaitOn), wakeDescriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

Cancellation::~Cancellation() {
    if (wakeDescriptor >= 0)
        close(wakeDescriptor);
}

void Cancellation::Cancel() {
    cancelled = true;
    const std::uint64_t one = 1;
    while (write(wakeDescriptor, &one, sizeof one) < 0 && errno == EINTR) {
    }
    signal.Raise();
}

bool Cancellation::WaitUntil(Millis moment) {
    while (!cancelled && clock.Now() < moment)
        if (signal.Wait(moment))
            break;
    return !cancelled;
}

bool Cancellation::WaitFor(int descriptor, short events, Millis limit) const {
    const int milliseconds = static_cast<int>(std::clamp<Millis>(limit, 0, std::numeric_limits<int>::max()));
    pollfd wait[2] = {{descriptor, events, 0}, {wakeDescriptor, POLLIN, 0}};
    const int ready = poll(wait, 2, milliseconds);
    return ready > 0 && wait[1].revents == 0 && wait[0].revents != 0;
}

} // namespace medmb
