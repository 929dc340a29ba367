// What happened, as text lines that a story can compare: posted messages, boxes, titles, pictures on and off. The latest lines
// are kept, some ten thousand.
//
// Thread: any; messages are posted from streaming threads too.
#pragma once

#include "platform/types.h"

#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace shell {

class EffectLog {
public:
    void Note(std::string line);
    // "post <window> <message> <wParam> <lParam>"; commands read "post view command 23". A parameter that is an address
    // reads "*".
    void NotePosted(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    // Messages to this window are logged under this name from now on.
    void NameWindow(HWND window, std::string name);
    void ForgetWindow(HWND window);

    [[nodiscard]] std::vector<std::string> Lines() const;
    void Clear();

private:
    void Append(std::string line);

    mutable std::mutex mutex; // guards what follows
    std::deque<std::string> lines;
    std::map<HWND, std::string> names;
};

} // namespace shell
