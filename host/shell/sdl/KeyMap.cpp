#include "host/shell/sdl/KeyMap.h"

#include <SDL.h>

#include <algorithm>
#include <array>
#include <sstream>

namespace shell::sdl {

namespace {

constexpr std::array<std::string_view, kActionCount> kNames = {"none",
                                                               "previous",
                                                               "next",
                                                               "up",
                                                               "down",
                                                               "ok",
                                                               "cancel",
                                                               "volume-up",
                                                               "volume-down",
                                                               "mute",
                                                               "pause",
                                                               "record",
                                                               "scan",
                                                               "list",
                                                               "settings",
                                                               "source",
                                                               "small-window",
                                                               "full-screen",
                                                               "leave",
                                                               "0",
                                                               "1",
                                                               "2",
                                                               "3",
                                                               "4",
                                                               "5",
                                                               "6",
                                                               "7",
                                                               "8",
                                                               "9"};

std::string_view Trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r";
    const std::size_t begin = text.find_first_not_of(kBlanks);
    return begin == std::string_view::npos ? std::string_view()
                                           : text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

} // namespace

std::string_view NameOf(Action action) {
    return kNames[static_cast<std::size_t>(action)];
}

std::optional<Action> ActionOf(std::string_view name) {
    const auto found = std::find(kNames.begin(), kNames.end(), name);
    if (found == kNames.end()) {
        return std::nullopt;
    }
    return static_cast<Action>(found - kNames.begin());
}

int DigitOf(Action action) {
    return action >= Action::Digit0 ? static_cast<int>(action) - static_cast<int>(Action::Digit0) : -1;
}

bool Repeats(Action action) {
    return action == Action::VolumeUp || action == Action::VolumeDown || action == Action::Up || action == Action::Down;
}

const std::vector<KeyMap::Entry>& KeyMap::BuiltIn() {
    static const std::vector<Entry> kBuiltIn = {
        {"PageUp", Action::Previous},
        {"PageDown", Action::Next},
        {"-", Action::Previous},
        {"Keypad -", Action::Previous},
        {"+", Action::Next},
        {"=", Action::Next},
        {"Keypad +", Action::Next},
        {"AudioPrev", Action::Previous},
        {"AudioNext", Action::Next},
        {"Up", Action::Up},
        {"Down", Action::Down},
        {"Left", Action::VolumeDown},
        {"Right", Action::VolumeUp},
        {"VolumeDown", Action::VolumeDown},
        {"VolumeUp", Action::VolumeUp},
        {"M", Action::Mute},
        {"Mute", Action::Mute},
        {"AudioMute", Action::Mute},
        {"Return", Action::Ok},
        {"Keypad Enter", Action::Ok},
        {"Select", Action::Ok},
        {"Escape", Action::Cancel},
        {"AC Back", Action::Cancel},
        {"Space", Action::Pause},
        {"AudioPlay", Action::Pause},
        {"AudioStop", Action::Pause},
        {"R", Action::Record},
        {"S", Action::Scan},
        {"L", Action::List},
        {"O", Action::Settings},
        {"Menu", Action::Settings},
        {"T", Action::Source},
        {"MediaSelect", Action::Source},
        {"P", Action::SmallWindow},
        {"F", Action::FullScreen},
        {"F11", Action::FullScreen},
        {"Q", Action::Leave},
        {"1", Action::Digit1},
        {"2", Action::Digit2},
        {"3", Action::Digit3},
        {"4", Action::Digit4},
        {"5", Action::Digit5},
        {"6", Action::Digit6},
        {"7", Action::Digit7},
        {"8", Action::Digit8},
        {"9", Action::Digit9},
        {"0", Action::Digit0},
        {"Keypad 1", Action::Digit1},
        {"Keypad 2", Action::Digit2},
        {"Keypad 3", Action::Digit3},
        {"Keypad 4", Action::Digit4},
        {"Keypad 5", Action::Digit5},
        {"Keypad 6", Action::Digit6},
        {"Keypad 7", Action::Digit7},
        {"Keypad 8", Action::Digit8},
        {"Keypad 9", Action::Digit9},
        {"Keypad 0", Action::Digit0},
    };
    return kBuiltIn;
}

KeyMap::KeyMap() {
    for (const Entry& entry : BuiltIn()) {
        keys[SDL_GetKeyFromName(entry.key)] = entry.action;
    }
}

std::string KeyMap::Read(const std::string& content) {
    std::map<KeyCode, Action> read = keys;
    std::istringstream in(content);
    int number = 0;
    for (std::string whole; std::getline(in, whole);) {
        ++number;
        const std::string_view line = Trimmed(whole);
        if (line.empty() || line.front() == '#') {
            continue;
        }
        // The last sign divides: "= = next" is about the key "=".
        const std::size_t divide = line.rfind('=');
        const std::string where = "line " + std::to_string(number) + ": ";
        if (divide == std::string_view::npos) {
            return where + "expected KEY = ACTION";
        }
        const std::string name(Trimmed(line.substr(0, divide)));
        const std::string_view action = Trimmed(line.substr(divide + 1));
        const KeyCode key = SDL_GetKeyFromName(name.c_str());
        if (key == SDLK_UNKNOWN) {
            return where + "no key is called '" + name + "'";
        }
        const std::optional<Action> meaning = ActionOf(action);
        if (!meaning) {
            return where + "no action is called '" + std::string(action) + "'";
        }
        read[key] = *meaning;
    }
    keys = std::move(read);
    return {};
}

Action KeyMap::Find(KeyCode key) const {
    const auto found = keys.find(key);
    return found == keys.end() ? Action::None : found->second;
}

} // namespace shell::sdl
