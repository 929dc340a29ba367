// What the window remembers from one start to the next: a small text file beside the settings.
#pragma once

#include <filesystem>
#include <string>

namespace dmbtv {

inline constexpr const char* kWindowTitle = "DMB View";

struct WindowState {
    int volume = 100; // per cent
    bool muted = false;
    bool fullScreen = false;
    bool operator==(const WindowState&) const = default;
};

// What the text says; what it does not say, or says wrongly, is as at the first start.
[[nodiscard]] WindowState ReadWindowState(const std::string& content);
[[nodiscard]] std::string WriteWindowState(const WindowState& state);

} // namespace dmbtv
