// dmbtv demo: makes the built-in demo broadcast, unless it is there, and tells where.
#include <cstdio>
#include <exception>

#include <CLI/CLI.hpp>

#include "host/app/dmbtv/Folders.h"
#include "host/app/dmbtv/commands/Command.h"
#include "host/headend/Demo.h"

namespace dmbtv {

namespace {

int MakeDemo() {
    try {
        const auto folder = headend::EnsureDemo(CacheFolder() / "demo", [](double share, const std::string& what) {
            char percent[8];
            std::snprintf(percent, sizeof percent, "%3.0f %%", share * 100);
            Log(LogLevel::Info, std::string("demo broadcast ") + percent + "  " + what);
        });
        std::puts(folder.c_str());
        return kExitDone;
    } catch (const std::exception& error) {
        return Fail(kExitFailed, std::string("the demo broadcast cannot be made: ") + error.what());
    }
}

} // namespace

void AddDemo(CLI::App& app, Request& request) {
    CLI::App* command = app.add_subcommand("demo", "make the demo broadcast now, and tell its folder");
    command->fallthrough();
    command->footer(kExitStatusHelp);
    command->callback([&request] { request.task = MakeDemo; });
}

} // namespace dmbtv
