#include "host/medmb/Inputs.h"

#include <fcntl.h>
#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace medmb {

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
    if (this != &other) {
        Close();
        value = other.Release();
    }
    return *this;
}

int Descriptor::Release() {
    return std::exchange(value, -1);
}

void Descriptor::Close() {
    if (value >= 0)
        close(value);
    value = -1;
}

ReadStatus FileInput::Read(std::span<std::uint8_t> room, std::size_t& count, Millis /*limit*/) {
    for (;;) {
        const ssize_t got = pread(descriptor.Get(), room.data(), room.size(), offset);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0) {
            reason = std::strerror(errno);
            return ReadStatus::Failed;
        }
        if (got > 0) {
            offset += got;
            count = static_cast<std::size_t>(got);
            return ReadStatus::Data;
        }
        if (!loop || offset == 0)
            return ReadStatus::End;
        offset = 0;
        restarted = true;
    }
}

ReadStatus StreamInput::Read(std::span<std::uint8_t> room, std::size_t& count, Millis limit) {
    if (cancellation.Cancelled())
        return ReadStatus::Cancelled;
    if (writerGone) {
        // Ended for now: poll would report that at once, again and again.
        (void)cancellation.WaitFor(-1, 0, std::min<Millis>(limit, 50));
    } else if (!cancellation.WaitFor(descriptor, POLLIN, limit)) {
        return cancellation.Cancelled() ? ReadStatus::Cancelled : ReadStatus::Waiting;
    }
    const ssize_t got = read(descriptor, room.data(), room.size());
    if (got > 0) {
        restarted = restarted || (writerGone && anyData);
        writerGone = false;
        anyData = true;
        count = static_cast<std::size_t>(got);
        return ReadStatus::Data;
    }
    if (got < 0 && (errno == EAGAIN || errno == EINTR))
        return ReadStatus::Waiting;
    if (got < 0) {
        reason = std::strerror(errno);
        return ReadStatus::Failed;
    }
    if (!follow)
        return ReadStatus::End;
    writerGone = true;
    return ReadStatus::Waiting;
}

Millis BackOff::Next() {
    const Millis now = wait;
    wait = std::min(kLongest, wait * 2);
    return now;
}

bool TcpInput::Connect() {
    constexpr Millis kConnectLimit = 1000;
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (const int error = getaddrinfo(host.c_str(), port.c_str(), &hints, &found); error != 0) {
        reason = gai_strerror(error);
        return false;
    }
    const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> addresses(found, freeaddrinfo);
    for (const addrinfo* address = found; address != nullptr; address = address->ai_next) {
        Descriptor candidate(
            ::socket(address->ai_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, address->ai_protocol));
        if (!candidate.Valid())
            continue;
        int error = connect(candidate.Get(), address->ai_addr, address->ai_addrlen) == 0 ? 0 : errno;
        if (error == EINPROGRESS) {
            error = ETIMEDOUT;
            socklen_t size = sizeof error;
            if (cancellation.WaitFor(candidate.Get(), POLLOUT, kConnectLimit))
                getsockopt(candidate.Get(), SOL_SOCKET, SO_ERROR, &error, &size);
        }
        if (error == 0) {
            socket = std::move(candidate);
            return true;
        }
        reason = std::strerror(error);
    }
    return false;
}

ReadStatus TcpInput::Read(std::span<std::uint8_t> room, std::size_t& count, Millis limit) {
    if (cancellation.Cancelled())
        return ReadStatus::Cancelled;
    if (!socket.Valid()) {
        const Millis now = cancellation.Clock().Now();
        if (now < retryAt) {
            (void)cancellation.WaitFor(-1, 0, std::min(limit, retryAt - now));
            return ReadStatus::Waiting;
        }
        if (!Connect()) {
            retryAt = cancellation.Clock().Now() + backOff.Next();
            return ReadStatus::Waiting;
        }
        restarted = true;
    }
    if (!cancellation.WaitFor(socket.Get(), POLLIN, limit))
        return cancellation.Cancelled() ? ReadStatus::Cancelled : ReadStatus::Waiting;
    const ssize_t got = recv(socket.Get(), room.data(), room.size(), 0);
    if (got > 0) {
        backOff.Reset();
        count = static_cast<std::size_t>(got);
        return ReadStatus::Data;
    }
    if (got < 0 && (errno == EAGAIN || errno == EINTR))
        return ReadStatus::Waiting;
    reason = got == 0 ? "the other side closed the connection" : std::strerror(errno);
    if (!reconnect)
        return got == 0 ? ReadStatus::End : ReadStatus::Failed;
    socket.Close();
    retryAt = cancellation.Clock().Now() + backOff.Next();
    return ReadStatus::Waiting;
}

} // namespace medmb
