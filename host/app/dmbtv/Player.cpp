#include "host/app/dmbtv/Player.h"

#include <fstream>
#include <iterator>

#include "host/app/dmbtv/ExitStatus.h"
#include "host/app/dmbtv/ScriptRunner.h"
#include "host/app/dmbtv/ViewLook.h"
#include "view/DMBViewIds.h"

namespace dmbtv {

namespace {

// The first scan of a new user: its list is answered with its first line, television before radio.
void ScanForTheFirstTime(Session& session, const CVelDMBView& view) {
    constexpr UINT kRadioTab = 61, kFirstRow = 40, kListOk = 3;
    shell::Shell& shell = session.Shell();
    ModalPlan plan(shell);
    plan.Add([&] {
        if (DMBViewPeer::PositionOf(view, kKindDMB, 0) < 0)
            shell.Press(kRadioTab);
    });
    plan.Add([&] { shell.Press(kFirstRow); });
    plan.Add([&] { shell.Press(kListOk); });
    Log(LogLevel::Info, "no channel list yet: looking for services");
    session.System().loop().Send(view.GetSafeHwnd(), WM_COMMAND, kCmdScan);
    if (session.IsQuitting())
        Log(LogLevel::Warn, "looking for services was interrupted");
    else
        Log(LogLevel::Info, std::to_string(DMBViewPeer::ChannelCount(view)) + " services found");
}

} // namespace

Script LoadScript(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in)
        throw StartFailure(kExitNoInput, "cannot open the script " + file.string());
    Script script = ReadScript({std::istreambuf_iterator<char>(in), {}});
    if (!script.error.empty())
        throw StartFailure(kExitUsage, file.string() + ": " + script.error);
    return script;
}

int Play(Session& session, const Options& options, const std::optional<Script>& script) {
    const auto& view = static_cast<const CVelDMBView&>(session.OpenView());
    shell::Shell& shell = session.Shell();
    if (!DMBViewPeer::HasListFile(view))
        ScanForTheFirstTime(session, view);
    int status = kExitDone;
    if (script) {
        shell.RunUntilIdle();
        std::ofstream transcript;
        std::function<void(const std::string&)> tell;
        if (!options.transcript.empty()) {
            transcript.open(options.transcript, std::ios::binary);
            tell = [&transcript](const std::string& line) { transcript << line << std::endl; };
        }
        if (const std::string failure = RunScript(shell, *script, tell); !failure.empty() && !session.IsQuitting())
            status = Fail(kExitFailed, options.script.string() + ": " + failure);
        shell.RunUntilIdle();
        if (!options.transcript.empty() && !transcript)
            status = Fail(kExitFailed, "cannot write " + options.transcript.string());
    } else {
        (void)session.System().loop().RunUntil([&session] { return session.IsQuitting(); });
    }
    if (!options.screenshot.empty() && !shell.Screenshot(options.screenshot))
        status = Fail(kExitFailed, "cannot write " + options.screenshot.string());
    session.CloseView();
    shell.RunUntilIdle();
    return status;
}

} // namespace dmbtv
