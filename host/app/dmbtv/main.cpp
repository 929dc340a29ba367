// dmbtv: the viewer.
#include <malloc.h>

#include <csignal>
#include <exception>

#include <CLI/CLI.hpp>

#include "host/app/Version.h"
#include "host/app/dmbtv/commands/Command.h"

int main(int argc, char** argv) {
    using namespace dmbtv;
    // The pictures of skin and screen are large and few: each in pages of its own goes back to the system when it is given back.
    // Threads share one heap: none of them allocates enough to be worth one.
    (void)mallopt(M_MMAP_THRESHOLD, 128 * 1024);
    (void)mallopt(M_ARENA_MAX, 1);
    std::signal(SIGPIPE, SIG_IGN); // a reader that goes away is an error of writing, no end of the program
    CLI::App app{"DMB television and DAB radio viewer", "dmbtv"};
    app.set_version_flag("--version", std::string("dmbtv ") + app::kVersion);
    app.footer(kExitStatusHelp);
    Request request;
    AddWatch(app, request);
    AddScan(app, request);
    AddList(app, request);
    AddRecord(app, request);
    AddPlay(app, request);
    AddDemo(app, request);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        // Help and version are no errors; everything else is wrong usage, whatever number the library gives it.
        return app.exit(error) == 0 ? kExitDone : kExitUsage;
    }
    if (const std::string reason = Complete(request.options); !reason.empty())
        return Fail(kExitUsage, reason);
    SetLogLevel(*LogLevelOf(request.options.logLevel));
    try {
        return request.task();
    } catch (const std::exception& error) {
        return Fail(kExitFailed, error.what());
    }
}
