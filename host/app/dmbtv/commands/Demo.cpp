// dmbtv demo: makes the built-in demo broadcast, unless it is there, and tells where.
#include <cstdio>

#include <CLI/CLI.hpp>

#include "host/app/dmbtv/Interrupts.h"
#include "host/app/dmbtv/QuitPort.h"
#include "host/app/dmbtv/Session.h"
#include "host/app/dmbtv/commands/Command.h"

namespace dmbtv {

namespace {

int MakeDemo() {
    QuitPort quit;
    const Interrupts interrupts([&quit] { quit.Request(); });
    try {
        const auto folder = DemoFolder(
            [](double share, const std::string& what) {
                char percent[8];
                std::snprintf(percent, sizeof percent, "%3.0f %%", share * 100);
                Log(LogLevel::Info, std::string("demo broadcast ") + percent + "  " + what);
            },
            quit.Token());
        std::puts(folder.c_str());
        return kExitDone;
    } catch (const StartFailure& failure) {
        return Fail(failure.status == kExitInterrupted ? kExitInterrupted : kExitFailed, failure.what());
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
