// What the screen costs by its scale: painting the view anew, and putting the windows together as a desktop window gets them.
#include <benchmark/benchmark.h>

#include <filesystem>

#include "host/ce/Ce.h"
#include "host/ce/TemporaryFolder.h"
#include "host/dshow/ClassTable.h"
#include "host/shell/Shell.h"
#include "view/DMBView.h"

namespace {

// The product's skin with the module's view in front, without a broadcast.
class Screen {
public:
    explicit Screen(int scale) {
        for (const char* part : {"root", "profile", "card"})
            std::filesystem::create_directory(folder / part);
        system.files().AddMount({u"\\", folder / "root"});
        system.files().AddMount({u"\\Profile", folder / "profile", ce::Mount::Writing::OnClose});
        system.files().AddMount({u"\\SDMMC Card", folder / "card", ce::Mount::Writing::InPlace, true});
        shell::Setup setup;
        setup.skinFolder = std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path() / "skin";
        shell = std::make_unique<shell::Shell>(system, setup);
        shell->SetScale(scale);
        shell->OpenView(CVelDMBView::classCVelDMBView);
        shell->RunUntilIdle();
    }
    ~Screen() { shell->CloseView(); }
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

private:
    ce::TemporaryFolder folder;
    ce::ManualClock clock;
    ce::Ce system{clock};
    dshow::ClassTable classes{clock};

public:
    std::unique_ptr<shell::Shell> shell;
};

void Paint(benchmark::State& state) {
    const Screen screen(static_cast<int>(state.range(0)));
    bool korean = false;
    for ([[maybe_unused]] auto _ : state) {
        korean = !korean; // invalidates every window
        screen.shell->SetLanguage(korean ? shell::Language::Korean : shell::Language::English);
        screen.shell->RunUntilIdle();
    }
}

void Compose(benchmark::State& state) {
    const Screen screen(static_cast<int>(state.range(0)));
    screen.shell->Video().visible = true; // the picture shows through
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(screen.shell->ComposeLayers());
}

} // namespace

BENCHMARK(Paint)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(Compose)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
