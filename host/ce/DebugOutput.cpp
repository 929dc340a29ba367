#include "host/ce/DebugOutput.h"

#include <utility>

namespace ce {

namespace {
constexpr std::size_t kKept = 1000;
}

void DebugOutput::Write(WStringView text) {
    const std::lock_guard lock(mutex_);
    if (lines_.size() == kKept)
        lines_.pop_front();
    lines_.emplace_back(text);
    if (sink_)
        sink_(text);
}

std::vector<WString> DebugOutput::Lines() const {
    const std::lock_guard lock(mutex_);
    return {lines_.begin(), lines_.end()};
}

void DebugOutput::Clear() {
    const std::lock_guard lock(mutex_);
    lines_.clear();
}

void DebugOutput::SetSink(std::function<void(WStringView)> sink) {
    const std::lock_guard lock(mutex_);
    sink_ = std::move(sink);
}

} // namespace ce
