// A script: lines that press, wait, look and expect. The tests' way to drive the real program, and the tour's.
//
//   wait MS | press ELEMENT | key CODE | click X Y | answer ID ok|cancel | pick TAB LINE | shot FILE.png
//   dialog ELEMENT INNER FILE.png
//   expect mode N | expect type N | expect text ELEMENT "..." | expect title "..." | expect box ID | quit
//
// Blank lines do nothing. Lines that begin with # do nothing either; they are what the transcript tells. A text may contain \" and \\.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace dmbtv {

enum class Verb {
    Wait,
    Press,
    Key,
    Click,
    Answer,
    Pick,
    Shot,
    Dialog, // opens a dialog by its button, presses an element in it unless that is -1, takes a picture and cancels
    ExpectMode,
    ExpectType,
    ExpectText,
    ExpectTitle,
    ExpectBox,
    Remark,
    Quit
};

struct ScriptLine {
    Verb verb;
    int first = 0;    // milliseconds, element, code, x, id, tab, number
    int second = 0;   // y, line (from 0), 1 for ok, inner element
    std::string text; // file or expected text, UTF-8
    int line = 0;     // in the file
    std::string source;
};

struct Script {
    std::vector<ScriptLine> lines;
    std::string error; // line and reason when it cannot be read; then `lines` means nothing
};

[[nodiscard]] Script ReadScript(const std::string& content);

} // namespace dmbtv
