#include "host/app/dmbtv/Interrupts.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <stdexcept>

namespace dmbtv {

namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};
constexpr char kInterrupted = 'i', kOver = 'o';

// A handler may do little more than write to a pipe, and finds it nowhere else.
volatile sig_atomic_t handlerPipe = -1;

void Handle(int) {
    const char word = kInterrupted;
    (void)!write(handlerPipe, &word, 1);
}

void SetHandlers(void (*handler)(int), int flags) {
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    sigemptyset(&action.sa_mask);
    for (const int number : kSignals)
        sigaction(number, &action, nullptr);
}

} // namespace

Interrupts::Interrupts(std::function<void()> onInterrupt) {
    if (pipe2(pipeEnds, O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe for signals");
    handlerPipe = pipeEnds[1];
    watcher = std::thread([this, call = std::move(onInterrupt)] {
        char word = kOver;
        while (read(pipeEnds[0], &word, 1) < 0) {
        }
        if (word != kInterrupted)
            return;
        came = true;
        call();
    });
    SetHandlers(Handle, SA_RESTART | static_cast<int>(SA_RESETHAND));
}

Interrupts::~Interrupts() {
    SetHandlers(SIG_DFL, 0);
    const char word = kOver;
    (void)!write(pipeEnds[1], &word, 1);
    watcher.join();
    handlerPipe = -1;
    close(pipeEnds[0]);
    close(pipeEnds[1]);
}

} // namespace dmbtv
