#include "host/app/dmbtv/QuitPort.h"

#include "host/app/dmbtv/Session.h"

namespace dmbtv {

void QuitPort::Request() {
    const std::lock_guard lock(mutex);
    source.request_stop();
    if (session != nullptr)
        session->RequestQuit();
}

void QuitPort::Join(Session* joined) {
    const std::lock_guard lock(mutex);
    session = joined;
    if (session != nullptr && source.stop_requested())
        session->RequestQuit();
}

} // namespace dmbtv
