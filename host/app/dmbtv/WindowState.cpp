#include "host/app/dmbtv/WindowState.h"

#include <algorithm>
#include <sstream>

namespace dmbtv {

WindowState ReadWindowState(const std::string& content) {
    WindowState state;
    std::istringstream in(content);
    std::string name;
    for (int value = 0; in >> name >> value;) {
        if (name == "volume")
            state.volume = std::clamp(value, 0, 100);
        else if (name == "muted")
            state.muted = value != 0;
        else if (name == "full-screen")
            state.fullScreen = value != 0;
    }
    return state;
}

std::string WriteWindowState(const WindowState& state) {
    return "volume " + std::to_string(state.volume) + "\nmuted " + (state.muted ? "1" : "0") + "\nfull-screen " +
           (state.fullScreen ? "1" : "0") + "\n";
}

} // namespace dmbtv
