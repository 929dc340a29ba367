// For tests with programs: a named pipe through which a program says that it runs, and whose end tells that nobody is left.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

namespace medmb::test {

class TestPipe {
public:
    explicit TestPipe(const std::string& name)
        : path(std::filesystem::temp_directory_path() / (name + "-" + std::to_string(getpid()))) {
        std::filesystem::remove(path);
        mkfifo(path.c_str(), 0600);
        descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    }
    TestPipe(const TestPipe&) = delete;
    TestPipe& operator=(const TestPipe&) = delete;
    ~TestPipe() {
        close(descriptor);
        std::filesystem::remove(path);
    }

    [[nodiscard]] std::string Name() const { return path.string(); }
    // Somebody has written; what it was is forgotten.
    [[nodiscard]] bool Heard() const {
        char bytes[64];
        return WaitFor(POLLIN) && read(descriptor, bytes, sizeof bytes) > 0;
    }
    // Nobody holds the other end any more.
    [[nodiscard]] bool Abandoned() const { return WaitFor(POLLHUP); }

private:
    [[nodiscard]] bool WaitFor(short event) const {
        constexpr int kLimitMs = 20000;
        pollfd wait{descriptor, static_cast<short>(event & POLLIN), 0};
        return poll(&wait, 1, kLimitMs) == 1 && (wait.revents & event) != 0;
    }

    std::filesystem::path path;
    int descriptor = -1;
};

} // namespace medmb::test
