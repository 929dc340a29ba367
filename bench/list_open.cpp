// How long the channel list takes from the command to its picture on the screen, by the number of services.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "host/ce/Ce.h"
#include "host/ce/TemporaryFolder.h"
#include "host/dshow/ClassTable.h"
#include "host/shell/Shell.h"
#include "tuner/ChannelRecord.h"
#include "tuner/ChannelTable.h"
#include "view/DMBView.h"
#include "view/DMBViewIds.h"

namespace {

constexpr UINT kEscape = 27;

void WriteChannels(const std::filesystem::path& file, int count) {
    std::ofstream out(file, std::ios::binary);
    for (int i = 0; i < count; ++i) {
        ChannelRecord record{};
        record.frequency = ChannelTable[static_cast<std::size_t>(i) % kChannelTableRows].frequency;
        record.serviceId = static_cast<DWORD>(i + 1);
        record.kind = i % 2 == 0 ? kKindDMB : kKindDAB;
        // "방송" in the device's code page and a number.
        const std::string label = "\xB9\xE6\xBC\xDB " + std::to_string(i);
        std::memcpy(record.label, label.data(), label.size());
        const ChannelRecordImage image = EncodeChannelRecord(record);
        out.write(reinterpret_cast<const char*>(image.data()), static_cast<std::streamsize>(image.size()));
    }
}

void OpenList(benchmark::State& state) {
    const ce::TemporaryFolder folder;
    for (const char* part : {"root", "profile", "card"})
        std::filesystem::create_directory(folder / part);
    WriteChannels(folder / "profile/DMBChannel.lst", static_cast<int>(state.range(0)));
    ce::ManualClock clock;
    ce::Ce system(clock);
    system.files().AddMount({u"\\", folder / "root"});
    system.files().AddMount({u"\\Profile", folder / "profile", ce::Mount::Writing::OnClose});
    system.files().AddMount({u"\\SDMMC Card", folder / "card", ce::Mount::Writing::InPlace, true});
    dshow::ClassTable classes(clock);
    shell::Setup setup;
    setup.skinFolder = std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path() / "skin";
    shell::Shell shell(system, setup);
    const CVelPlayerView* view = shell.OpenView(CVelDMBView::classCVelDMBView);
    if (view == nullptr) {
        state.SkipWithError("the view cannot be opened");
        return;
    }
    shell.RunUntilIdle();
    using Moment = std::chrono::steady_clock::time_point;
    double worst = 0;
    for (auto _ : state) {
        Moment shown;
        shell.DuringModal([&] {
            benchmark::DoNotOptimize(shell.Screen());
            shown = std::chrono::steady_clock::now();
            shell.Key(kEscape);
        });
        const Moment begin = std::chrono::steady_clock::now();
        PostMessageW(view->GetSafeHwnd(), WM_COMMAND, kCmdList, 0);
        shell.RunUntilIdle();
        const double seconds = std::chrono::duration<double>(shown - begin).count();
        state.SetIterationTime(seconds);
        worst = std::max(worst, seconds);
    }
    state.counters["worst_ms"] = worst * 1000;
    shell.CloseView();
    shell.RunUntilIdle();
}

BENCHMARK(OpenList)->Arg(20)->Arg(500)->Arg(5000)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
