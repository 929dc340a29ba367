// dmbtv record: tunes to a television service and records it for some seconds, by the record key and under its rules.
#include <chrono>
#include <cstdio>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include <CLI/CLI.hpp>

#include "graph/RecordName.h"
#include "host/app/dmbtv/Interrupts.h"
#include "host/app/dmbtv/QuitPort.h"
#include "host/app/dmbtv/ScriptRunner.h"
#include "host/app/dmbtv/Session.h"
#include "host/app/dmbtv/ViewLook.h"
#include "host/app/dmbtv/commands/Channels.h"
#include "host/app/dmbtv/commands/Command.h"
#include "host/ce/Text.h"
#include "view/DMBViewIds.h"

namespace dmbtv {

namespace {

struct Wish {
    std::string service;
    int seconds = 0;
    std::filesystem::path out;
};

constexpr int kLook = 50; // ms between two looks at the view
constexpr int kTuneLimit = 20000;
constexpr int kRecordLimit = 5000;

// A step that did not come about; carries an ExitStatus.
class NotDone : public std::runtime_error {
public:
    NotDone(int exitStatus, const std::string& reason) : std::runtime_error(reason), status(exitStatus) {}
    const int status;
};

class Recorder {
public:
    Recorder(Session& sessionToUse, const Options& optionsToUse, const Wish& wishToFulfil)
        : session(sessionToUse), options(optionsToUse), wish(wishToFulfil), shell(session.Shell()),
          view(static_cast<CVelDMBView&>(session.OpenView())) {}

    // The recording on the host; throws NotDone.
    std::filesystem::path Run() {
        Tune();
        LONG& setting = DMBViewPeer::RecordTime(view);
        const LONG settingBefore = setting;
        setting = SettingFor(wish.seconds, settingBefore);
        const std::set<std::string> filesBefore = Files();
        try {
            Record();
        } catch (...) {
            setting = settingBefore;
            throw;
        }
        setting = settingBefore;
        for (const std::string& name : Files()) {
            if (filesBefore.count(name) == 0)
                return Deliver(options.card / "DMB" / name);
        }
        throw NotDone(kExitFailed, "no recording was made");
    }

private:
    // The shortest limit that lets so many seconds through, not below what the user has chosen.
    static LONG SettingFor(int seconds, LONG chosen) {
        LONG setting = chosen;
        while (setting < 4 && RecordLimit(static_cast<unsigned>(setting)) <= seconds)
            ++setting;
        return setting;
    }

    // Lets messages be handled until the condition holds; false when it does not within the limit or the user leaves.
    template <class Condition> bool WaitFor(int milliseconds, const Condition& holds) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
        while (!holds()) {
            if (session.IsQuitting() || std::chrono::steady_clock::now() >= end)
                return false;
            shell.Wait(kLook);
        }
        return true;
    }

    std::optional<KnownChannel> Find() {
        for (const KnownChannel& known : ChannelsOf(view)) {
            if (known.label == wish.service)
                return known;
        }
        return std::nullopt;
    }

    KnownChannel Choose() {
        std::optional<KnownChannel> found = Find();
        if (!found && ChannelsOf(view).empty()) {
            Log(LogLevel::Info, "there is no channel list yet: scanning");
            PostMessageW(view.GetSafeHwnd(), WM_COMMAND, kCmdScan, 0);
            shell.RunUntilIdle();
            found = Find();
            if (!found && ChannelsOf(view).empty() && !session.IsQuitting())
                throw NotDone(kExitNoSync, "no broadcast was found");
        }
        if (!found)
            throw NotDone(kExitNoService, "no service is called '" + wish.service + "'; dmbtv list shows those known");
        if (found->record.kind != kKindDMB)
            throw NotDone(kExitNoService,
                          "'" + wish.service + "' is no television service; only those can be recorded");
        return *found;
    }

    void Tune() {
        const KnownChannel known = Choose();
        PostMessageW(view.GetSafeHwnd(), WM_DMB_CHANGECHANNEL, static_cast<WPARAM>(known.position), 0);
        shell.RunUntilIdle();
        const bool onAir = WaitFor(kTuneLimit, [&] {
            return DMBViewPeer::CurrentChannel(view) == known.position && view.GetPlayMode() == kPlayModePlaying &&
                   shell.Video().FrameCount() > 0;
        });
        if (!onAir && !session.IsQuitting())
            throw NotDone(kExitNoSync, "'" + wish.service + "' gives no picture");
    }

    [[nodiscard]] bool IsRecording() const { return view.GetPlayMode() == kPlayModeRecording; }

    void Record() {
        const std::size_t boxesBefore = shell.BoxRecords().size();
        shell.Key(kKeyRecord);
        if (!WaitFor(kRecordLimit, [&] { return IsRecording() || shell.BoxRecords().size() > boxesBefore; }) ||
            !IsRecording())
            Refuse();
        const bool early = WaitFor(wish.seconds * 1000, [&] { return !IsRecording(); });
        if (IsRecording()) {
            shell.Key(kKeyRecord);
            shell.RunUntilIdle();
        }
        if (early)
            Refuse();
    }

    // Why the view does not record, as its last box says.
    [[noreturn]] void Refuse() {
        const auto& boxes = shell.BoxRecords();
        const int text = boxes.empty() ? 0 : int{boxes.back().textId};
        if (text == kTextNoSpace)
            throw NotDone(kExitDiskFull, "not enough space in " + options.card.string());
        if (text == kTextCardError)
            throw NotDone(kExitFailed, "cannot write to " + options.card.string());
        throw NotDone(kExitFailed, "the recording ended early");
    }

    std::set<std::string> Files() {
        std::set<std::string> names;
        const WString folder = WString(kCardFolder) + kRecordFolder;
        if (const auto entries = session.System().files().List(folder.c_str())) {
            for (const ce::FolderEntry& entry : *entries)
                names.insert(ce::ToUtf8(entry.name));
        }
        return names;
    }

    // Where the user wants it; the card's copy goes only once the other is complete.
    [[nodiscard]] std::filesystem::path Deliver(const std::filesystem::path& file) const {
        if (wish.out.empty())
            return file;
        std::error_code error;
        std::filesystem::rename(file, wish.out, error);
        if (!error)
            return wish.out;
        std::filesystem::copy_file(file, wish.out, std::filesystem::copy_options::overwrite_existing, error);
        if (error)
            throw NotDone(error == std::errc::no_space_on_device ? kExitDiskFull : kExitFailed,
                          "cannot write " + wish.out.string() + " (" + error.message() + "); the recording is " +
                              file.string());
        std::filesystem::remove(file, error);
        return wish.out;
    }

    Session& session;
    const Options& options;
    const Wish& wish;
    shell::Shell& shell;
    CVelDMBView& view;
};

int Record(const Options& options, const Wish& wish) {
    try {
        QuitPort quit;
        const Interrupts interrupts([&quit] { quit.Request(); });
        Session session(options, {nullptr, nullptr, {}, quit.Token()});
        const QuitPort::Joined joined(quit, session);
        CancelUnanswered(session.Shell());
        int status = kExitDone;
        try {
            const std::filesystem::path file = Recorder(session, options, wish).Run();
            std::puts(file.c_str());
        } catch (const NotDone& failure) {
            if (!interrupts.Came())
                status = Fail(failure.status, failure.what());
        }
        session.CloseView();
        session.Shell().RunUntilIdle();
        return interrupts.Came() ? int{kExitInterrupted} : status;
    } catch (const StartFailure& failure) {
        return Fail(failure.status, failure.what());
    }
}

} // namespace

void AddRecord(CLI::App& app, Request& request) {
    CLI::App* command = app.add_subcommand("record", "record a television service and print the name of the file");
    command->fallthrough();
    command->footer(kExitStatusHelp);
    AddSourceOptions(*command, request.options);
    auto wish = std::make_shared<Wish>();
    command->add_option("-l,--service", wish->service, "label of the service, as dmbtv list shows it")->required();
    command->add_option("-t,--seconds", wish->seconds, "how long, 1 to 3599")->required()->check(CLI::Range(1, 3599));
    command->add_option("-o,--out", wish->out,
                        "file to write; without it a name of its own in the folder DMB of the card");
    command->callback([&request, wish] { request.task = [&request, wish] { return Record(request.options, *wish); }; });
}

} // namespace dmbtv
