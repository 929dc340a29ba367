#include "host/app/dmbtv/Session.h"

#include <cstdlib>
#include <string>
#include <utility>

#include "host/app/dmbtv/ExitStatus.h"
#include "host/app/dmbtv/Folders.h"
#include "host/app/dmbtv/ViewLook.h"
#include "host/ce/Text.h"
#include "host/filters/Recording.h"
#include "host/filters/Register.h"
#include "view/DMBViewIds.h"

namespace dmbtv {

namespace {

constexpr const char* kViewClass = "CVelDMBView";
constexpr const WCHAR* kProfileMount = WTEXT("\\Profile");

// The broadcast to receive.
std::unique_ptr<medmb::SourceProvider> OpenSource(const Options& options, const std::stop_token& stop) {
    if (options.noBroadcast)
        return medmb::MakeSourceProvider({});
    if (!options.command.empty())
        return medmb::MakeSourceProvider(medmb::CommandSource(options.command, options.gain));
    std::string source = options.source;
    if (source.empty())
        source = DemoFolder({}, stop).string();
    std::string reason;
    std::optional<medmb::SourceSpec> spec = medmb::ParseSource(source, reason);
    if (!spec)
        throw StartFailure(kExitNoInput, reason);
    spec->loop = !options.once;
    return medmb::MakeSourceProvider(*spec);
}

// What there is beside the program's folder: the first name, else the second.
std::filesystem::path FirstOf(const char* built, const char* installed) {
    const std::filesystem::path base = std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path();
    std::error_code error;
    return std::filesystem::exists(base / built, error) ? base / built : base / installed;
}

} // namespace

std::filesystem::path DemoFolder(const headend::Progress& progress, const std::stop_token& stop) {
    try {
        const auto tell = [&progress](double share, const std::string& what) {
            if (share == 0)
                Log(LogLevel::Info, "making the demo broadcast");
            else
                Log(LogLevel::Debug, "demo broadcast: " + what);
            if (progress)
                progress(share, what);
        };
        return headend::EnsureDemo(CacheFolder() / "demo", tell, stop);
    } catch (const headend::Interrupted&) {
        throw StartFailure(kExitInterrupted,
                           "making the demo broadcast was interrupted; the next start makes it from the beginning");
    } catch (const std::exception& error) {
        throw StartFailure(kExitNoInput, std::string("the demo broadcast cannot be made: ") + error.what());
    }
}

std::filesystem::path ModuleFile() {
    return FirstOf("lib/libveldmb.so", "lib/dmbview/libveldmb.so");
}

std::filesystem::path SkinFolder() {
    return FirstOf("skin", "share/dmbview/skin");
}

shell::Language LanguageOf(const Options& options) {
    if (!options.language.empty())
        return options.language == "ko" ? shell::Language::Korean : shell::Language::English;
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(variable);
        if (value != nullptr && *value != '\0')
            return std::string(value).compare(0, 2, "ko") == 0 ? shell::Language::Korean : shell::Language::English;
    }
    return shell::Language::English;
}

Session::Session(const Options& options, SessionPorts outside) : ports(std::move(outside)) {
    std::unique_ptr<medmb::SourceProvider> source = OpenSource(options, ports.stop);
    Mount(options);
    ce.debug().SetSink([](WStringView text) {
        std::string line = ce::ToUtf8(text);
        line.erase(line.find_last_not_of("\r\n") + 1);
        Log(LogLevel::Debug, line);
    });
    if (!options.audioOut.empty()) {
        wav = std::make_unique<filters::WavTap>(options.audioOut);
        if (!wav->Ok())
            throw StartFailure(kExitFailed, "cannot write " + options.audioOut.string());
    }
    filters::SoundTap* tap = wav ? wav.get() : ports.tap;
    filters::Register(classes, clock, {ports.sound, tap, &screen, &onAir});
    tuner = std::make_unique<medmb::Tuner>(clock, medmb::Broadcast::Instance(), std::move(source),
                                           [](const std::string& line) { Log(LogLevel::Info, "tuner: " + line); });
    medmb::Tuner::Install(tuner.get());
    shell::Setup setup;
    setup.skinFolder = SkinFolder();
    setup.language = LanguageOf(options);
    setup.debugMode = options.debugMode;
    try {
        shell = std::make_unique<shell::Shell>(ce, setup);
    } catch (const shell::SkinError& error) {
        medmb::Tuner::Install(nullptr);
        throw StartFailure(kExitUsage, error.what());
    }
    shell->SetScale(options.scale);
    shell->SetScreenListener([this] { OnScreen(); });
    shell->SetQuitListener([this] { RequestQuit(); });
    shell->SetViewListener(
        [this](const CVelPlayerView* view) { onAir.Join(view != nullptr ? view->GetSafeHwnd() : nullptr); });
    shell->SetReasonSource([this] { return WhyNoPicture(Look()); });
    shell->SetPlayingTimeSource(filters::PlayingSeconds);
    screen.Join(shell.get(), ports.picture);
    card = std::make_unique<CardWatch>(ce, onAir, [this] { return shell->View(); });
}

Session::~Session() {
    screen.Join(nullptr, {});
    onAir.Join(nullptr);
    card.reset();
    shell->SetScreenListener({});
    shell.reset(); // the view goes with it, and with the view its filters
    medmb::Tuner::Install(nullptr);
}

void Session::Mount(const Options& options) {
    for (const auto& folder : {options.deviceRoot, options.profile, options.card}) {
        std::error_code error; // a folder that cannot be made shows as a card that is out
        std::filesystem::create_directories(folder, error);
        if (error)
            Log(LogLevel::Warn, "cannot make the folder " + folder.string() + ": " + error.message());
    }
    ce.files().AddMount({u"\\", options.deviceRoot});
    ce.files().AddMount({kProfileMount, options.profile, ce::Mount::Writing::OnClose});
    ce.files().AddMount({u"\\SDMMC Card", options.card, ce::Mount::Writing::InPlace, true});
}

CVelPlayerView& Session::OpenView() {
    if (const std::string reason = shell->LoadModule(ModuleFile()); !reason.empty())
        throw StartFailure(kExitFailed, reason);
    CVelPlayerView* view = shell->OpenView(kViewClass);
    if (view == nullptr)
        throw StartFailure(kExitFailed, "the module's view cannot be opened");
    return *view;
}

bool Session::CloseView() {
    return shell->CloseView();
}

ReceptionLook Session::Look() {
    ReceptionLook look;
    if (const CVelPlayerView* open = shell->View(); open != nullptr) {
        const auto& view = static_cast<const CVelDMBView&>(*open);
        look.session = DMBViewPeer::CurrentType(view);
        look.playMode = view.GetPlayMode();
        look.noSignal = DMBViewPeer::HasNoSignal(view);
        look.scanning = DMBViewPeer::IsScanning(view);
    }
    look.reception = onAir.Last();
    look.tuning = tuner->LastTuning();
    if (look.session == kSessionDAB && look.noSignal && look.playMode == kPlayModeStopped &&
        look.tuning == medmb::BlockState::Ok) {
        const medmb::Broadcast& broadcast = medmb::Broadcast::Instance();
        look.reception = stoppedRadio.Look(broadcast.Signal(), broadcast.Counters(), clock.Now());
    }
    return look;
}

void Session::OnScreen() {
    const CVelPlayerView* view = shell->View();
    scanning = view != nullptr && DMBViewPeer::IsScanning(static_cast<const CVelDMBView&>(*view));
    if (scanning && quitting)
        ProtectLists();
    if (screenListener)
        screenListener();
}

// The module cannot be told to give up a scan: it would store the half of it that it has.
void Session::ProtectLists() {
    ce.files().SetFaults({.only = kProfileMount, .refuseOpen = true, .refuseCreate = true});
}

void Session::RequestQuit() {
    quitting = true; // before the look at `scanning`: whichever of the two threads comes second sees the other's word
    if (scanning)
        ProtectLists();
    tuner->BeginClosing();
    ce.BeginClosing();
}

} // namespace dmbtv
