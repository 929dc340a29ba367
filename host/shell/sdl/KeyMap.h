// Which key means what: the built-in map (docs/keys.md) and the user's own on top of it.
//
// A key map is a text file: one line `KEY = ACTION` each, blank lines and lines that begin with # aside. KEY is a key's name as the
// window library has it ("Page Up", "F11", "AudioMute", "+"), ACTION a name of Action.h; `none` takes the built-in meaning away.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "host/shell/sdl/Action.h"

namespace shell::sdl {

using KeyCode = std::int32_t; // SDL_Keycode

class KeyMap {
public:
    // The built-in map.
    KeyMap();

    // Puts the lines of a key map over what is known. Empty, or the first line that makes no sense and why; then nothing has changed.
    [[nodiscard]] std::string Read(const std::string& content);

    // None for a key without meaning.
    [[nodiscard]] Action Find(KeyCode key) const;

    struct Entry {
        const char* key;
        Action action;
    };
    // As in the documentation, in its order.
    [[nodiscard]] static const std::vector<Entry>& BuiltIn();

private:
    std::map<KeyCode, Action> keys;
};

} // namespace shell::sdl
