#include "host/shell/core/EffectLog.h"

#include "platform/wince.h"

#include <cstdlib>

namespace shell {

namespace {

// Numbers that the shell's messages carry are small; anything larger is an address.
std::string ParameterText(LONG_PTR value) {
    constexpr LONG_PTR kLargestNumber = 0xFFFFFFFF;
    return std::llabs(value) > kLargestNumber ? "*" : std::to_string(value);
}

} // namespace

void EffectLog::Note(std::string line) {
    const std::lock_guard lock(mutex);
    Append(std::move(line));
}

void EffectLog::Append(std::string line) {
    constexpr std::size_t kMostLines = 10000;
    if (lines.size() == kMostLines) {
        lines.pop_front();
    }
    lines.push_back(std::move(line));
}

void EffectLog::NotePosted(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    const std::lock_guard lock(mutex);
    const auto name = names.find(window);
    std::string line = "post " + (name == names.end() ? "?" : name->second) + " ";
    if (message == WM_COMMAND) {
        line += "command " + std::to_string(wParam & 0xFFFF);
    } else {
        line +=
            std::to_string(message) + " " + ParameterText(static_cast<LONG_PTR>(wParam)) + " " + ParameterText(lParam);
    }
    Append(std::move(line));
}

void EffectLog::ForgetWindow(HWND window) {
    const std::lock_guard lock(mutex);
    names.erase(window);
}

void EffectLog::NameWindow(HWND window, std::string name) {
    const std::lock_guard lock(mutex);
    names[window] = std::move(name);
}

std::vector<std::string> EffectLog::Lines() const {
    const std::lock_guard lock(mutex);
    return {lines.begin(), lines.end()};
}

void EffectLog::Clear() {
    const std::lock_guard lock(mutex);
    lines.clear();
}

} // namespace shell
