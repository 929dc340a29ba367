// dmbprobe: look at any stage of the receiver without a window.
#include <exception>
#include <iostream>

#include "host/app/Version.h"
#include "host/app/dmbprobe/Commands.h"

int main(int argc, char** argv) {
    CLI::App app{"Looks at the stages of the receiver, one sub-command each.", "dmbprobe"};
    app.set_version_flag("--version", std::string("dmbprobe ") + app::kVersion);
    app.require_subcommand(1);
    int status = dmbprobe::kDone;
    dmbprobe::AddInfo(app, status);
    dmbprobe::AddFic(app, status);
    dmbprobe::AddTs(app, status);
    dmbprobe::AddPad(app, status);
    dmbprobe::AddAudio(app, status);
    dmbprobe::AddBsac(app, status);
    dmbprobe::AddPlay(app, status);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        // Help and version are no errors; everything else is wrong usage, whatever number the library gives
        // it.
        return app.exit(error) == 0 ? dmbprobe::kDone : dmbprobe::kUsage;
    } catch (const std::exception& error) {
        std::cerr << "dmbprobe: " << error.what() << '\n';
        return dmbprobe::kFailed;
    }
    return status;
}
