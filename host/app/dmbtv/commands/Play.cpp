// dmbtv play FILE: one recording from its beginning to its end, as if it had been picked in the list.
#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>

#include <CLI/CLI.hpp>

#include "graph/RecordName.h"
#include "host/app/dmbtv/Interrupts.h"
#include "host/app/dmbtv/Player.h"
#include "host/app/dmbtv/QuitPort.h"
#include "host/app/dmbtv/ScriptRunner.h"
#include "host/app/dmbtv/Session.h"
#include "host/app/dmbtv/commands/Command.h"
#include "host/ce/Text.h"
#include "platform/velshell/VelFileDialog.h"
#include "view/DMBViewIds.h"
#include "view/ProfileRecord.h"

namespace dmbtv {

namespace {

constexpr UINT kFileTabButton = 62;
constexpr UINT kDownKey = 40, kReturnKey = 13, kEscapeKey = 27;

// Opens the list and takes the file in it, by the keys that a user has.
void PickInList(shell::Shell& shell, const CVelPlayerView& view, const WString& name) {
    shell.DuringModal([&shell] { shell.Press(kFileTabButton); });
    shell.DuringModal([&shell, &name] {
        const auto* list = static_cast<const CVelFileDialog*>(CVelDialog::FromHandle(GView::GetFrontWindow()));
        const auto& lines = list->GetFileLines();
        const auto found = std::find(lines.begin(), lines.end(), name);
        for (auto line = lines.begin(); found != lines.end() && line <= found; ++line)
            shell.Key(kDownKey);
        shell.Key(found != lines.end() ? kReturnKey : kEscapeKey);
    });
    PostMessageW(view.GetSafeHwnd(), WM_COMMAND, kCmdList, 0);
    shell.RunUntilIdle();
}

int PlayOn(Session& session, const std::filesystem::path& file) {
    shell::Shell& shell = session.Shell();
    const WString name = ce::FromUtf8(file.filename().string());
    const WString folder = WString(kCardFolder) + kRecordFolder;
    // For this run the folder of the file is the folder of recordings.
    session.System().files().AddMount({folder.substr(0, folder.size() - 1), file.parent_path()});
    CVelPlayerView& view = session.OpenView();
    if (view.AllowFileList((folder + name).c_str()) == 0)
        return Fail(kExitNoInput, file.string() + " is neither .dmb nor .ts");
    if (!ce::SplitDevicePath(folder + name))
        return Fail(kExitNoInput, "the device has no such file names: " + file.filename().string());
    shell.RunUntilIdle();
    PickInList(shell, view, name);
    (void)session.System().loop().RunUntil(
        [&] { return session.IsQuitting() || view.GetPlayMode() == kPlayModeStopped; });
    const bool seen = shell.Video().FrameCount() > 0;
    session.CloseView();
    shell.RunUntilIdle();
    return seen || session.IsQuitting() ? int{kExitDone} : Fail(kExitFailed, file.string() + " holds no picture");
}

// The user's settings without the channel list: no channel is looked for while a file plays.
class SettingsOnly {
public:
    explicit SettingsOnly(const std::filesystem::path& profile) {
        std::string pattern = (std::filesystem::temp_directory_path() / "dmbtv-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr)
            throw StartFailure(kExitFailed, "no room for temporary files");
        folder = pattern;
        for (const std::string& name : {ce::ToUtf8(kProfileFileName), std::string("window")}) {
            std::error_code ignored; // settings that cannot be read are the usual ones
            std::filesystem::copy_file(profile / name, folder / name, ignored);
        }
    }
    ~SettingsOnly() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    SettingsOnly(const SettingsOnly&) = delete;
    SettingsOnly& operator=(const SettingsOnly&) = delete;

    std::filesystem::path folder;
};

int PlayHeadless(const Options& options, const std::filesystem::path& file) {
    QuitPort quit;
    const Interrupts interrupts([&quit] { quit.Request(); });
    Session session(options, {nullptr, nullptr, {}, quit.Token()});
    const QuitPort::Joined joined(quit, session);
    CancelUnanswered(session.Shell());
    const int status = PlayOn(session, file);
    return interrupts.Came() ? int{kExitInterrupted} : status;
}

int PlayFile(Options options, const std::filesystem::path& named, bool inWindow) {
    std::error_code error;
    const std::filesystem::path file = std::filesystem::canonical(named, error);
    if (error)
        return Fail(kExitNoInput, "cannot open " + named.string() + ": " + error.message());
    if (!std::filesystem::is_regular_file(file))
        return Fail(kExitNoInput, named.string() + " is no file");
    try {
        const SettingsOnly settings(options.profile);
        options.profile = settings.folder;
        options.noBroadcast = true;
        return inWindow ? PlayInWindow(options, [&file](Session& session) { return PlayOn(session, file); })
                        : PlayHeadless(options, file);
    } catch (const StartFailure& failure) {
        return Fail(failure.status, failure.what());
    }
}

} // namespace

void AddPlay(CLI::App& app, Request& request) {
    CLI::App* command = app.add_subcommand("play", "play a recording or a transport stream to its end");
    command->fallthrough();
    command->footer(kExitStatusHelp);
    auto file = std::make_shared<std::filesystem::path>();
    command->add_option("FILE", *file, "a .dmb, .ts or .tsp file")->required();
    auto inWindow = std::make_shared<bool>(false);
    command->add_flag("--window", *inWindow, "in a window, which closes at the end");
    command->callback([&request, file, inWindow] {
        request.task = [&request, file, inWindow] { return PlayFile(request.options, *file, *inWindow); };
    });
}

} // namespace dmbtv
