// dmbtv [SOURCE]: television and radio, in a window or without one.
#include <optional>

#include <CLI/CLI.hpp>

#include "host/app/dmbtv/Interrupts.h"
#include "host/app/dmbtv/Player.h"
#include "host/app/dmbtv/QuitPort.h"
#include "host/app/dmbtv/ScriptRunner.h"
#include "host/app/dmbtv/commands/Command.h"

namespace dmbtv {

namespace {

int PlayHeadless(const Options& options, const std::optional<Script>& script) {
    QuitPort quit;
    const Interrupts interrupts([&quit] { quit.Request(); });
    Session session(options, {nullptr, nullptr, {}, quit.Token()});
    const QuitPort::Joined joined(quit, session);
    CancelUnanswered(session.Shell());
    const int status = Play(session, options, script);
    return interrupts.Came() ? int{kExitInterrupted} : status;
}

int Watch(const Options& options) {
    try {
        std::optional<Script> script;
        if (!options.script.empty())
            script = LoadScript(options.script);
        return options.headless
                   ? PlayHeadless(options, script)
                   : PlayInWindow(options, [&](Session& session) { return Play(session, options, script); });
    } catch (const StartFailure& failure) {
        return Fail(failure.status, failure.what());
    }
}

} // namespace

void AddWatch(CLI::App& app, Request& request) {
    Options& options = request.options;
    AddSourceOptions(app, options);
    CLI::Option* headless = app.add_flag("--headless", options.headless, "no window");
    app.add_option("--scale", options.scale,
                   "draw the screen with so many pixels for one, for screenshots; a window finds out by itself")
        ->check(CLI::Range(1, 2))
        ->needs(headless);
    app.add_flag("--full-screen", options.fullScreen, "begin with the whole screen");
    app.add_flag("--once", options.once, "files end at their end; without it they start over");
    app.add_option("--script", options.script, "file of lines to carry out, then leave");
    app.add_option("--transcript", options.transcript, "text file that tells what the script did and saw");
    app.add_option("--audio-out", options.audioOut, "WAV file of what is heard");
    app.add_option("--screenshot", options.screenshot, "PNG of the screen, written when the program leaves");
    app.add_option("--keys", options.keys, "key map; without it the file 'keys' beside the settings");
    AddCommonOptions(app, options);
    request.task = [&options] { return Watch(options); };
}

} // namespace dmbtv
