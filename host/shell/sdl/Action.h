// What a key of a keyboard or a remote control can ask for.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace shell::sdl {

enum class Action : std::uint8_t {
    None, // a key without meaning: takes a built-in one away
    Previous,
    Next,
    Up,
    Down,
    Ok,
    Cancel,
    VolumeUp,
    VolumeDown,
    Mute,
    Pause,
    Record,
    Scan,
    List,
    Settings,
    Source,
    SmallWindow,
    FullScreen,
    Leave,
    Digit0,
    Digit1,
    Digit2,
    Digit3,
    Digit4,
    Digit5,
    Digit6,
    Digit7,
    Digit8,
    Digit9,
};
inline constexpr int kActionCount = static_cast<int>(Action::Digit9) + 1;

// The name in a key map: "next", "volume-up", "1".
[[nodiscard]] std::string_view NameOf(Action action);
[[nodiscard]] std::optional<Action> ActionOf(std::string_view name);
// 0 to 9, or -1.
[[nodiscard]] int DigitOf(Action action);
// Does a key that is held down ask again and again?
[[nodiscard]] bool Repeats(Action action);

} // namespace shell::sdl
