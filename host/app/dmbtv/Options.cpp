#include "host/app/dmbtv/Options.h"

#include <CLI/CLI.hpp>

#include "host/app/dmbtv/Folders.h"

namespace dmbtv {

void AddSourceOptions(CLI::App& app, Options& options) {
    app.add_option(
        "SOURCE", options.source,
        "directory of <Hz>.eti or <block>.eti files, one ETI file, a pipe, HOST:PORT, or - for standard input; "
        "none: the built-in demo");
    app.add_option("--command", options.command,
                   "command line of a demodulator that writes ETI, with {hz} {khz} {mhz} {block} {row} {gain}");
    app.add_option("-g,--gain", options.gain, "what {gain} stands for");
}

void AddCommonOptions(CLI::App& app, Options& options) {
    app.add_option("--device-root", options.deviceRoot, "folder that stands for the device's root");
    app.add_option("--card", options.card, "folder that stands for the memory card; recordings go to its folder DMB");
    app.add_option("--profile", options.profile, "folder of the settings and the channel list");
    app.add_option("--lang", options.language, "language of texts: ko or en")->check(CLI::IsMember({"ko", "en"}));
    app.add_option("--log-level", options.logLevel, "what is said on the error output: error, warn, info or debug")
        ->check(CLI::IsMember({"error", "warn", "info", "debug"}));
    app.add_flag("--debug-mode", options.debugMode, "offer the debug dialog");
}

std::string Complete(Options& options) {
    if (!options.source.empty() && !options.command.empty())
        return "give a SOURCE or a --command, not both";
    if (options.profile.empty())
        options.profile = ConfigFolder();
    if (options.card.empty())
        options.card = VideoFolder();
    if (options.deviceRoot.empty())
        options.deviceRoot = CacheFolder() / "device";
    if (options.keys.empty())
        options.keys = options.profile / "keys";
    return {};
}

} // namespace dmbtv
