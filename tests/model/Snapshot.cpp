#include "tests/model/Snapshot.h"

namespace model {

const char* const Number::kNames[kCount] = {
    "open",        "clock",        "mode",          "current",      "last",        "pending",     "last television",
    "last radio",  "count",        "file",          "retries",      "on air",      "no signal",   "signal wait",
    "change busy", "box up",       "scanning",      "toggle guard", "dirty",       "record time", "ratio",
    "snr debug",   "slide ready",  "found blocks",  "current type", "last type",   "graph",       "controller",
    "control",     "event",        "video",         "tuner",        "timers",      "filters",     "minimized",
    "tools shown", "toggle on",    "picture shown", "keeps aspect", "info shown",  "info top",    "info right",
    "label left",  "label bottom", "26 left",       "10 state",     "10 level",    "9 shown",     "42 shown",
    "2 shown",     "49 shown",     "50 shown",      "26 shown",     "20-27 shown", "20 state",    "21 state",
    "22 state",    "23 state",     "24 state",      "25 state",     "27 state",    "23 face",     "24 face",
    "26 face",     "27 face",      "modal depth"};

namespace {

void Compare(std::vector<std::string>& lines, const char* name, const std::string& wanted, const std::string& got) {
    if (wanted != got)
        lines.push_back(std::string(name) + ": wanted \"" + wanted + "\", got \"" + got + "\"");
}

std::string Joined(const std::vector<std::string>& texts) {
    std::string joined;
    for (const std::string& text : texts)
        joined += text + "|";
    return joined;
}

} // namespace

std::vector<std::string> Differences(const Snapshot& wanted, const Snapshot& got) {
    std::vector<std::string> lines;
    for (int i = 0; i < Number::kCount; ++i) {
        const auto index = static_cast<std::size_t>(i);
        if (wanted.numbers[index] != got.numbers[index])
            lines.push_back(std::string(Number::kNames[i]) + ": wanted " + std::to_string(wanted.numbers[index]) +
                            ", got " + std::to_string(got.numbers[index]));
    }
    Compare(lines, "info", wanted.info, got.info);
    Compare(lines, "title", wanted.title, got.title);
    Compare(lines, "antenna text", wanted.antenna, got.antenna);
    Compare(lines, "debug text", wanted.debug, got.debug);
    Compare(lines, "scan text", wanted.scan, got.scan);
    Compare(lines, "labels", Joined(wanted.labels), Joined(got.labels));
    Compare(lines, "mask", wanted.mask, got.mask);
    return lines;
}

} // namespace model
