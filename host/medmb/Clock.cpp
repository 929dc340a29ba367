#include "host/medmb/Clock.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>

namespace medmb {

Cancellation::Cancellation() : descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

Cancellation::~Cancellation() {
    if (descriptor >= 0)
        close(descriptor);
}

void Cancellation::Cancel() {
    cancelled = true;
    const std::uint64_t one = 1;
    while (write(descriptor, &one, sizeof one) < 0 && errno == EINTR) {
    }
}

void Cancellation::Rearm() {
    std::uint64_t count = 0;
    while (read(descriptor, &count, sizeof count) < 0 && errno == EINTR) {
    }
    cancelled = false;
}

Time SteadyClock::Now() const {
    return std::chrono::duration_cast<Time>(std::chrono::steady_clock::now().time_since_epoch());
}

bool SteadyClock::WaitUntil(Time moment, const Cancellation& cancellation) {
    for (;;) {
        if (cancellation.Cancelled())
            return false;
        const Time left = moment - Now();
        if (left.count() <= 0)
            return true;
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
        const timespec limit{static_cast<time_t>(seconds.count()), static_cast<long>((left - seconds).count())};
        pollfd wait{cancellation.Descriptor(), POLLIN, 0};
        (void)ppoll(&wait, 1, &limit, nullptr);
    }
}

} // namespace medmb
