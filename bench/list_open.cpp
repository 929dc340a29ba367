// How long the channel list takes from the command to its picture on the screen, by the number of services, and on its third tab by
// the number of recordings.
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
#include "host/filters/Recording.h"
#include "host/shell/Shell.h"
#include "tests/filters/TestService.h"
#include "tuner/ChannelRecord.h"
#include "tuner/ChannelTable.h"
#include "view/DMBView.h"
#include "view/DMBViewIds.h"

namespace {

constexpr UINT kEscape = 27;
constexpr UINT kTabFilesButton = 62;

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

// Ten seconds of a service.
void WriteRecordings(const std::filesystem::path& folder, int count) {
    const auto service = filters_test::MakeService({.seconds = 10, .withPictures = false}).packets;
    std::filesystem::create_directory(folder);
    for (int i = 0; i < count; ++i) {
        std::ofstream out(folder / ("방송 " + std::to_string(i) + "_261121193000.dmb"), std::ios::binary);
        out.write(reinterpret_cast<const char*>(service.data()), static_cast<std::streamsize>(service.size()));
    }
}

// A device without a tuner, and the view in its shell.
struct Device {
    Device() {
        for (const char* part : {"root", "profile", "card"})
            std::filesystem::create_directory(folder / part);
        system.files().AddMount({u"\\", folder / "root"});
        system.files().AddMount({u"\\Profile", folder / "profile", ce::Mount::Writing::OnClose});
        system.files().AddMount({u"\\SDMMC Card", folder / "card", ce::Mount::Writing::InPlace, true});
    }

    ce::TemporaryFolder folder;
    ce::ManualClock clock;
    ce::Ce system{clock};
    dshow::ClassTable classes{clock};
};

constexpr UINT kNoTab = 0;

// From the command to the picture of the list, or of the tab that is pressed in it.
void MeasureOpening(benchmark::State& state, Device& device, UINT tab) {
    shell::Setup setup;
    setup.skinFolder = std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path() / "skin";
    shell::Shell shell(device.system, setup);
    shell.SetPlayingTimeSource(filters::PlayingSeconds);
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
        if (tab != kNoTab)
            shell.DuringModal([&] {
                benchmark::DoNotOptimize(shell.Screen());
                if (!shell.Press(tab))
                    state.SkipWithError("there is no such tab");
            });
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

void OpenList(benchmark::State& state) {
    Device device;
    WriteChannels(device.folder / "profile/DMBChannel.lst", static_cast<int>(state.range(0)));
    MeasureOpening(state, device, kNoTab);
}

void OpenFiles(benchmark::State& state) {
    Device device;
    WriteRecordings(device.folder / "card/DMB", static_cast<int>(state.range(0)));
    MeasureOpening(state, device, kTabFilesButton);
}

// What a program needs that tells the playing time of all of them.
void MeasureEveryRecording(benchmark::State& state) {
    Device device;
    WriteRecordings(device.folder / "card/DMB", static_cast<int>(state.range(0)));
    const auto entries = device.system.files().List(u"\\SDMMC Card\\DMB").value();
    for (auto _ : state) {
        for (const ce::FolderEntry& entry : entries) {
            const auto seconds = filters::PlayingSeconds((u"\\SDMMC Card\\DMB\\" + entry.name).c_str());
            if (!seconds || *seconds < 9 || *seconds > 11)
                state.SkipWithError("a recording does not tell its time");
        }
    }
}

BENCHMARK(OpenList)->Arg(20)->Arg(500)->Arg(5000)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(OpenFiles)->Arg(20)->Arg(500)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(MeasureEveryRecording)->Arg(500)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
