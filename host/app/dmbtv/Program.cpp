#include "host/app/dmbtv/Program.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include "host/app/dmbtv/ScreenPort.h"
#include "host/app/dmbtv/Script.h"
#include "host/app/dmbtv/ScriptRunner.h"
#include "host/ce/Ce.h"
#include "host/dshow/ClassTable.h"
#include "host/filters/Register.h"
#include "host/filters/WavTap.h"
#include "host/headend/Demo.h"
#include "host/medmb/Tuner.h"
#include "host/shell/Shell.h"

namespace dmbtv {

namespace {

int Fail(int status, const std::string& reason) {
    std::fprintf(stderr, "dmbtv: %s\n", reason.c_str());
    return status;
}

// The programs, the module and the skin lie together: bin/, lib/, skin/.
std::filesystem::path InstalledBase() {
    return std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path();
}

shell::Language LanguageOf(const Options& options) {
    if (options.language == "en")
        return shell::Language::English;
    if (options.language == "ko")
        return shell::Language::Korean;
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(variable);
        if (value != nullptr && *value != '\0')
            return std::string(value).compare(0, 2, "ko") == 0 ? shell::Language::Korean : shell::Language::English;
    }
    return shell::Language::English;
}

// The broadcast to receive; nothing, with `reason`, when it cannot be had.
std::unique_ptr<medmb::SourceProvider> OpenSource(const Options& options, std::string& reason) {
    if (!options.command.empty())
        return medmb::MakeSourceProvider(medmb::CommandSource(options.command));
    std::string source = options.source;
    try {
        if (source.empty()) {
            source = headend::EnsureDemo(CacheFolder() / "demo").string();
        }
    } catch (const std::exception& error) {
        reason = std::string("the demo broadcast cannot be made: ") + error.what();
        return nullptr;
    }
    std::optional<medmb::SourceSpec> spec = medmb::ParseSource(source, reason);
    if (!spec)
        return nullptr;
    spec->loop = true;
    return medmb::MakeSourceProvider(*spec);
}

void Mount(ce::Ce& ce, const Options& options) {
    for (const auto& folder : {options.deviceRoot, options.profile, options.card}) {
        std::error_code ignored; // a folder that cannot be made shows as a card that is out
        std::filesystem::create_directories(folder, ignored);
    }
    ce.files().AddMount({u"\\", options.deviceRoot});
    ce.files().AddMount({u"\\Profile", options.profile, ce::Mount::Writing::OnClose});
    ce.files().AddMount({u"\\SDMMC Card", options.card, ce::Mount::Writing::InPlace, true});
}

std::optional<Script> LoadScript(const std::filesystem::path& file, int& status) {
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        status = Fail(kExitNoInput, "cannot open the script " + file.string());
        return std::nullopt;
    }
    Script script = ReadScript({std::istreambuf_iterator<char>(in), {}});
    if (!script.error.empty()) {
        status = Fail(kExitUsage, file.string() + ": " + script.error);
        return std::nullopt;
    }
    return script;
}

int Play(shell::Shell& shell, const Options& options, const Script& script, OnAirNotice& onAir) {
    if (const std::string reason = shell.LoadModule(InstalledBase() / "lib/libveldmb.so"); !reason.empty())
        return Fail(kExitFailed, reason);
    const CVelPlayerView* view = shell.OpenView("CVelDMBView");
    if (view == nullptr)
        return Fail(kExitFailed, "the module's view cannot be opened");
    onAir.Join(view->GetSafeHwnd());
    shell.RunUntilIdle();
    int status = kExitDone;
    if (const std::string failure = RunScript(shell, script); !failure.empty())
        status = Fail(kExitFailed, options.script.string() + ": " + failure);
    shell.RunUntilIdle();
    if (!options.screenshot.empty() && !shell.Screenshot(options.screenshot))
        status = Fail(kExitFailed, "cannot write " + options.screenshot.string());
    onAir.Join(nullptr);
    shell.CloseView();
    shell.RunUntilIdle();
    return status;
}

} // namespace

int Run(const Options& options) {
    int status = kExitDone;
    std::optional<Script> script = Script{};
    if (!options.script.empty() && !(script = LoadScript(options.script, status)))
        return status;
    std::string reason;
    std::unique_ptr<medmb::SourceProvider> source = OpenSource(options, reason);
    if (source == nullptr)
        return Fail(kExitNoInput, reason);

    ce::RealClock clock;
    ce::Ce ce(clock);
    Mount(ce, options);
    dshow::ClassTable classes(clock);
    ScreenPort screen;
    OnAirNotice onAir;
    std::unique_ptr<filters::WavTap> wav;
    if (!options.audioOut.empty()) {
        wav = std::make_unique<filters::WavTap>(options.audioOut);
        if (!wav->Ok())
            return Fail(kExitFailed, "cannot write " + options.audioOut.string());
    }
    filters::Register(classes, clock, {nullptr, wav.get(), &screen, &onAir});
    medmb::Tuner tuner(clock, medmb::Broadcast::Instance(), std::move(source),
                       [](const std::string& line) { std::fprintf(stderr, "tuner: %s\n", line.c_str()); });
    medmb::Tuner::Install(&tuner);
    shell::Setup setup;
    setup.skinFolder = InstalledBase() / "skin";
    setup.language = LanguageOf(options);
    setup.debugMode = options.debugMode;
    try {
        shell::Shell shell(ce, setup);
        screen.Join(&shell);
        status = Play(shell, options, *script, onAir);
        screen.Join(nullptr);
    } catch (const shell::SkinError& error) {
        status = Fail(kExitUsage, error.what());
    }
    medmb::Tuner::Install(nullptr);
    return status;
}

} // namespace dmbtv
