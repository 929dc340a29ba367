#include "host/medmb/Inputs.h"

#include <fcntl.h>
#include <netdb.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <thread>

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

Descriptor OpenRegularFile(const std::string& path, std::string& reason) {
    // A named pipe without a writer would be waited for otherwise.
    Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat info {};
    if (!file.Valid() || fstat(file.Get(), &info) != 0) {
        reason = path + ": " + std::strerror(errno);
        return {};
    }
    if (!S_ISREG(info.st_mode)) {
        reason = path + ": not a regular file";
        return {};
    }
    return file;
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
            anyData = true;
            count = static_cast<std::size_t>(got);
            return ReadStatus::Data;
        }
        if (!loop || !anyData)
            return ReadStatus::End;
        restarted = true;
        if (offset == 0) {
            LookAgain();
            return ReadStatus::Waiting;
        }
        offset = 0;
    }
}

void FileInput::LookAgain() {
    if (path.empty())
        return;
    if (Descriptor now = OpenRegularFile(path, reason); now.Valid())
        descriptor = std::move(now);
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

namespace {

using Addresses = std::shared_ptr<addrinfo>;

// Nothing, and a reason, when there is none.
Addresses LookUp(const std::string& host, const std::string& port, int flags, std::string& reason) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = flags;
    addrinfo* found = nullptr;
    if (const int error = getaddrinfo(host.c_str(), port.c_str(), &hints, &found); error != 0) {
        reason = gai_strerror(error);
        return nullptr;
    }
    return {found, freeaddrinfo};
}

// Names are looked up on a thread of their own, which is left to itself when it takes too long: the system's way to do so can take
// half a minute, and nothing ends it.
Addresses Resolve(const std::string& host, const std::string& port, const Cancellation& cancellation, Millis limit,
                  std::string& reason) {
    if (Addresses plain = LookUp(host, port, AI_NUMERICHOST, reason))
        return plain;
    struct Answer {
        Descriptor done{eventfd(0, EFD_CLOEXEC)};
        Addresses addresses;
        std::string reason;
    };
    const auto answer = std::make_shared<Answer>();
    std::thread([answer, host, port] {
        answer->addresses = LookUp(host, port, 0, answer->reason);
        const std::uint64_t one = 1;
        (void)!write(answer->done.Get(), &one, sizeof one);
    }).detach();
    if (!cancellation.WaitFor(answer->done.Get(), POLLIN, limit)) {
        reason = "the name is not resolved in time";
        return nullptr;
    }
    std::uint64_t ignored = 0;
    (void)!read(answer->done.Get(), &ignored, sizeof ignored);
    reason = answer->reason;
    return answer->addresses;
}

} // namespace

bool TcpInput::Connect() {
    constexpr Millis kConnectLimit = 1000;
    const auto addresses = Resolve(host, port, cancellation, kConnectLimit, reason);
    for (const addrinfo* address = addresses.get(); address != nullptr; address = address->ai_next) {
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
        if (cancellation.Cancelled())
            break;
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
