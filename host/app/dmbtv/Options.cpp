#include "host/app/dmbtv/Options.h"

#include <cstdlib>
#include <fstream>

#include <CLI/CLI.hpp>

#include "host/app/Version.h"

namespace dmbtv {

namespace {

std::filesystem::path Home() {
    const char* home = std::getenv("HOME");
    return home != nullptr && *home != '\0' ? home : "/";
}

// The folder that a variable names, or one below the home folder.
std::filesystem::path UserFolder(const char* variable, const char* below) {
    const char* value = std::getenv(variable);
    return value != nullptr && *value == '/' ? std::filesystem::path(value) : Home() / below;
}

// XDG_VIDEOS_DIR as the desktop's own file tells it.
std::filesystem::path VideoFolder() {
    std::ifstream file(UserFolder("XDG_CONFIG_HOME", ".config") / "user-dirs.dirs");
    for (std::string line; std::getline(file, line);) {
        const std::string key = "XDG_VIDEOS_DIR=\"";
        if (line.compare(0, key.size(), key) != 0)
            continue;
        std::string value = line.substr(key.size(), line.rfind('"') - key.size());
        if (value.compare(0, 5, "$HOME") == 0)
            value = Home().string() + value.substr(5);
        if (!value.empty() && value.front() == '/')
            return value;
    }
    return Home() / "Videos";
}

} // namespace

std::filesystem::path CacheFolder() {
    return UserFolder("XDG_CACHE_HOME", ".cache") / "dmbview";
}

void FillFolders(Options& options) {
    if (options.profile.empty())
        options.profile = UserFolder("XDG_CONFIG_HOME", ".config") / "dmbview";
    if (options.card.empty())
        options.card = VideoFolder();
    if (options.deviceRoot.empty())
        options.deviceRoot = CacheFolder() / "device";
}

std::optional<Options> ReadOptions(int argc, char** argv, int& exitStatus) {
    Options options;
    CLI::App app{"DMB television and DAB radio viewer", "dmbtv"};
    app.set_version_flag("--version", std::string("dmbtv ") + app::kVersion);
    app.add_option(
        "SOURCE", options.source,
        "directory of <Hz>.eti or <block>.eti files, one ETI file, or - for standard input; none: the built-in demo");
    app.add_option("--command", options.command,
                   "command line of a demodulator that writes ETI, with {hz} {khz} {mhz} {block} {row} {gain}");
    app.add_flag("--headless", options.headless, "no window");
    app.add_option("--script", options.script, "file of lines to carry out, then leave");
    app.add_option("--device-root", options.deviceRoot, "folder that stands for the device's root");
    app.add_option("--card", options.card, "folder that stands for the memory card");
    app.add_option("--profile", options.profile, "folder of the settings and the channel list");
    app.add_option("--lang", options.language, "language of texts")->check(CLI::IsMember({"ko", "en"}));
    app.add_flag("--debug-mode", options.debugMode, "offer the debug dialog");
    app.add_option("--audio-out", options.audioOut, "WAV file of what is heard");
    app.add_option("--screenshot", options.screenshot, "PNG of the screen, written when the program leaves");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        exitStatus = app.exit(error) == 0 ? kExitDone : kExitUsage;
        return std::nullopt;
    }
    if (!options.source.empty() && !options.command.empty()) {
        std::fputs("dmbtv: give a SOURCE or a --command, not both\n", stderr);
        exitStatus = kExitUsage;
        return std::nullopt;
    }
    FillFolders(options);
    return options;
}

} // namespace dmbtv
