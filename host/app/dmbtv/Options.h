// What the user said on the command line.
#pragma once

#include <filesystem>
#include <string>

#include "host/app/dmbtv/Log.h"

namespace CLI {
class App;
}

namespace dmbtv {

struct Options {
    std::string source;  // empty: the built-in demo
    std::string command; // template of a demodulator's command line
    std::string gain;    // for {gain} in it
    std::filesystem::path script;
    std::filesystem::path transcript; // what the script did
    std::filesystem::path deviceRoot; // host folder of the device's "\"
    std::filesystem::path card;       // host folder of the memory card
    std::filesystem::path profile;    // settings and channel list
    std::filesystem::path keys;       // key map that goes over the built-in one
    std::filesystem::path audioOut;   // WAV file of what is heard
    std::filesystem::path screenshot; // written at the end
    std::string language;             // "ko", "en", or empty: by the locale
    std::string logLevel = "info";
    bool headless = false;
    int scale = 1; // pixels of screenshots for one of 800 x 480, without a window
    bool fullScreen = false;
    bool debugMode = false;
    bool once = false;        // files end at their end instead of starting over
    bool noBroadcast = false; // nothing is received: the command needs no source
};

// SOURCE and how to get it.
void AddSourceOptions(CLI::App& app, Options& options);
// Folders, language, log: what every command takes.
void AddCommonOptions(CLI::App& app, Options& options);

// Checks what the parser cannot and fills in the folders that the user did not name. The reason why it makes no sense, or nothing.
[[nodiscard]] std::string Complete(Options& options);

} // namespace dmbtv
