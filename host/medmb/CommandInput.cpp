#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "host/medmb/Inputs.h"

extern char** environ;

namespace medmb {

namespace {

// How long a program may take to end by itself, and then to be gone after it was ended.
constexpr int kAskedMs = 60;
constexpr int kEndedMs = 40;
// A program that complains without end shall not keep us from its data.
constexpr int kErrorPortions = 16;

// Collects the child; false when it has not ended within the time.
bool Collect(pid_t pid, const Descriptor& handle, int milliseconds) {
    pollfd ended{handle.Get(), POLLIN, 0};
    while (poll(&ended, 1, milliseconds) < 0 && errno == EINTR) {
    }
    return waitpid(pid, nullptr, WNOHANG) == pid;
}

bool MakePipe(Descriptor& readEnd, Descriptor& writeEnd) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        return false;
    readEnd = Descriptor(ends[0]);
    writeEnd = Descriptor(ends[1]);
    fcntl(ends[0], F_SETFL, O_NONBLOCK);
    return true;
}

} // namespace

bool ChildProcess::Start(const std::vector<std::string>& arguments, std::string& reason) {
    Stop();
    Descriptor outputWrite;
    Descriptor errorWrite;
    if (arguments.empty() || !MakePipe(output, outputWrite) || !MakePipe(errors, errorWrite)) {
        reason = arguments.empty() ? "no command" : std::strerror(errno);
        return false;
    }
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_init(&actions);
    posix_spawnattr_init(&attributes);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, outputWrite.Get(), STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errorWrite.Get(), STDERR_FILENO);
    // Its own group, so that helpers of the demodulator end with it, and the signals as a shell would hand them on.
    sigset_t none;
    sigset_t all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    posix_spawnattr_setpgroup(&attributes, 0);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &all);

    std::vector<char*> argv;
    for (const std::string& argument : arguments)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    pid_t child = -1;
    const int error = posix_spawnp(&child, argv[0], &actions, &attributes, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    if (error != 0) {
        reason = "cannot start " + arguments[0] + ": " + std::strerror(error);
        output.Close();
        errors.Close();
        return false;
    }
    pid = child;
    return true;
}

void ChildProcess::Stop() {
    output.Close();
    errors.Close();
    if (pid <= 0)
        return;
    // Without a handle (an old system) the waits last their whole time.
    const Descriptor handle(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
    kill(-pid, SIGTERM);
    kill(-pid, SIGCONT); // one that was stopped could not even end
    const bool gone = Collect(pid, handle, kAskedMs);
    // Whatever of the group is left, also when its leader is gone already.
    kill(-pid, SIGKILL);
    if (!gone && !Collect(pid, handle, kEndedMs))
        std::thread([child = pid] { waitpid(child, nullptr, 0); }).detach();
    pid = -1;
}

std::string ChildProcess::CollectExit() {
    int status = 0;
    const bool ended = pid > 0 && waitpid(pid, &status, WNOHANG) == pid;
    if (!ended) {
        Stop();
        return "the program closed its output";
    }
    kill(-pid, SIGKILL);
    pid = -1;
    output.Close();
    errors.Close();
    if (WIFSIGNALED(status))
        return "the program was ended by signal " + std::to_string(WTERMSIG(status));
    return "the program ended with status " + std::to_string(WEXITSTATUS(status));
}

bool CommandInput::Start() {
    lastData = cancellation.Clock().Now();
    return child.Start(arguments, reason);
}

// Ends the child; a supervised one is begun again later.
ReadStatus CommandInput::Fail(const std::string& why) {
    reason = lastErrorLine.empty() ? why : why + " (" + lastErrorLine + ")";
    child.Stop();
    if (!supervise)
        return ReadStatus::End;
    retryAt = cancellation.Clock().Now() + backOff.Next();
    return ReadStatus::Waiting;
}

ReadStatus CommandInput::Read(std::span<std::uint8_t> room, std::size_t& count, Millis limit) {
    if (cancellation.Cancelled())
        return ReadStatus::Cancelled;
    const Millis now = cancellation.Clock().Now();
    if (!child.Running()) {
        if (!supervise)
            return ReadStatus::End;
        if (now < retryAt) {
            (void)cancellation.WaitFor(-1, 0, std::min(limit, retryAt - now));
            return ReadStatus::Waiting;
        }
        if (!Start())
            return Fail(reason);
        restarted = true;
    }
    ReadErrors();
    if (!cancellation.WaitFor(child.Output(), POLLIN, limit)) {
        if (cancellation.Cancelled())
            return ReadStatus::Cancelled;
        if (cancellation.Clock().Now() - lastData >= kSilenceLimit)
            return Fail("the program hangs: no data for five seconds");
        return ReadStatus::Waiting;
    }
    const ssize_t got = read(child.Output(), room.data(), room.size());
    if (got > 0) {
        lastData = cancellation.Clock().Now();
        backOff.Reset();
        count = static_cast<std::size_t>(got);
        return ReadStatus::Data;
    }
    if (got < 0 && (errno == EAGAIN || errno == EINTR))
        return ReadStatus::Waiting;
    ReadErrors();
    return Fail(child.CollectExit());
}

void CommandInput::ReadErrors() {
    std::array<char, 4096> text;
    constexpr std::size_t kLongestLine = 1000;
    for (int portion = 0; portion < kErrorPortions; ++portion) {
        const ssize_t got = read(child.Errors(), text.data(), text.size());
        if (got <= 0)
            return;
        for (ssize_t i = 0; i < got; ++i) {
            const char c = text[static_cast<std::size_t>(i)];
            // Progress displays rewrite one line with a carriage return.
            if (c != '\n' && c != '\r') {
                errorLine.push_back(c);
                if (errorLine.size() < kLongestLine)
                    continue;
            }
            TakeErrorLine(errorLine);
            errorLine.clear();
        }
    }
}

void CommandInput::TakeErrorLine(const std::string& line) {
    if (line.find_first_not_of(" \t") == std::string::npos)
        return;
    lastErrorLine = line;
    if (snrMarker.empty())
        return;
    const std::size_t at = line.find(snrMarker);
    if (at == std::string::npos)
        return;
    std::size_t number = at + snrMarker.size();
    while (number < line.size() && std::strchr(" \t:=", line[number]) != nullptr)
        ++number;
    char* end = nullptr;
    const float value = std::strtof(line.c_str() + number, &end);
    if (end != line.c_str() + number)
        snr = value;
}

} // namespace medmb
