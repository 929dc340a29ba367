#include "host/ce/Ce.h"

#include <atomic>
#include <cassert>

namespace ce {

namespace {
std::atomic<Ce*> current{nullptr};
}

Ce::Ce(Clock& clock) : clock_(clock), loop_(clock) {
    [[maybe_unused]] Ce* const before = current.exchange(this);
    assert(before == nullptr && "one system at a time");
}

Ce::~Ce() {
    current = nullptr;
}

Ce* Ce::Current() {
    return current;
}

void Ce::BeginClosing() {
    clock_.BeginClosing();
    loop_.WakeUp();
}

} // namespace ce
