// How long the viewer takes, on the demo broadcast, in real time and without a window:
//   zapping   from the commit of a channel change to the first picture, or the first sound of a radio service
//   scan      the button's scan over all 21 blocks
//   start     from nothing to the first picture of the saved channel
//
//   bench_zapping [ROUNDS]      each service is tuned so many times, in an order that visits every pair of kinds
//
// The commit is the moment at which the view handles the change; the second that stepping waits for a further press comes before
// it. Exit status 1 when a bound is exceeded: television the fixed waits, one random-access interval and 150 ms; radio the fixed
// waits and 150 ms; scan the fixed pauses and 1 s; start 2 s.
#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <string>
#include <vector>

#include "host/app/dmbtv/ScriptRunner.h"
#include "host/app/dmbtv/Session.h"
#include "host/app/dmbtv/ViewLook.h"
#include "host/ce/Text.h"
#include "view/DMBViewIds.h"

namespace {

using namespace dmbtv;
using Clock = std::chrono::steady_clock;

constexpr int kLimit = 15000; // ms until something is given up
constexpr int kLoudness = 64; // sample value above which it is no longer silence

int MillisSince(Clock::time_point begin) {
    return static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin).count());
}

// Remembers when the first picture and the first sound after Arm came.
class Watch final : public filters::SoundTap {
public:
    void Arm() {
        const std::lock_guard lock(mutex);
        begin = Clock::now();
        picture = sound = -1;
    }
    void OnPicture() {
        const std::lock_guard lock(mutex);
        if (picture < 0)
            picture = MillisSince(begin);
    }
    void OnSound(std::span<const std::int16_t> frames) override {
        const bool loud = std::any_of(frames.begin(), frames.end(),
                                      [](std::int16_t sample) { return sample > kLoudness || sample < -kLoudness; });
        const std::lock_guard lock(mutex);
        if (sound < 0 && loud)
            sound = MillisSince(begin);
    }
    [[nodiscard]] int Picture() const {
        const std::lock_guard lock(mutex);
        return picture;
    }
    [[nodiscard]] int Sound() const {
        const std::lock_guard lock(mutex);
        return sound;
    }

private:
    mutable std::mutex mutex; // guards what follows
    Clock::time_point begin = Clock::now();
    int picture = -1;
    int sound = -1;
};

struct Series {
    std::vector<int> times;
    void Add(int time) { times.push_back(time); }
    [[nodiscard]] int Median() const {
        std::vector<int> sorted = times;
        std::sort(sorted.begin(), sorted.end());
        return sorted.empty() ? -1 : sorted[sorted.size() / 2];
    }
    [[nodiscard]] int Worst() const { return times.empty() ? -1 : *std::max_element(times.begin(), times.end()); }
};

bool failed = false;

void Tell(const std::string& what, const Series& series, int bound) {
    const bool good = !series.times.empty() && series.Worst() <= bound;
    failed = failed || !good;
    std::printf("| %s | %zu | %d | %d | %d | %s |\n", what.c_str(), series.times.size(), series.Median(),
                series.Worst(), bound, good ? "yes" : "NO");
    std::fflush(stdout);
}

// Lets the shell work until the condition holds.
template <class Condition> bool Until(Session& session, const Condition& holds) {
    const Clock::time_point begin = Clock::now();
    while (!holds() && MillisSince(begin) < kLimit)
        session.Shell().Wait(5);
    return holds();
}

struct Place {
    Options options;
    std::filesystem::path base;
    Place() {
        std::string pattern = (std::filesystem::temp_directory_path() / "dmbtv-bench-XXXXXX").string();
        base = mkdtemp(pattern.data());
        options.profile = base / "profile";
        options.card = base / "card";
        options.deviceRoot = base / "device";
        options.language = "en";
        (void)Complete(options);
        SetLogLevel(LogLevel::Error);
    }
    ~Place() { std::filesystem::remove_all(base); }
};

SessionPorts PortsOf(Watch& watch) {
    return {nullptr,
            &watch,
            [&watch](const auto& picture) {
                if (picture != nullptr)
                    watch.OnPicture();
            },
            {}};
}

void MeasureScan(Session& session, const CVelDMBView& view, int rounds) {
    constexpr int kPauses = 21 * 20;
    Series series;
    for (int i = 0; i < rounds; ++i) {
        int listOpened = -1;
        const Clock::time_point begin = Clock::now();
        session.Shell().DuringModal([&] { listOpened = MillisSince(begin); });
        session.System().loop().Send(view.GetSafeHwnd(), WM_COMMAND, kCmdScan);
        series.Add(listOpened);
        session.Shell().RunUntilIdle();
    }
    Tell("scan of 21 blocks", series, kPauses + 1000);
}

void MeasureZapping(Session& session, const CVelDMBView& view, Watch& watch, int rounds) {
    constexpr int kSettle = 250, kGraph = 2 * 100, kRandomAccess = 1000, kSlack = 150;
    std::vector<int> positions[2];
    for (const int kind : {kKindDMB, kKindDAB}) {
        for (int place = 0, at = 0; (at = DMBViewPeer::PositionOf(view, kind, place)) >= 0; ++place)
            positions[kind].push_back(at);
    }
    Series television[2], radio[2]; // by the kind that played before
    int before = -1;
    const auto zap = [&](int kind, int position) {
        watch.Arm();
        session.System().loop().Send(view.GetSafeHwnd(), WM_DMB_CHANGECHANNEL, static_cast<WPARAM>(position));
        const auto seen = [&] { return kind == kKindDMB ? watch.Picture() >= 0 : watch.Sound() >= 0; };
        const bool came = Until(session, seen);
        const int time = !came ? kLimit : kind == kKindDMB ? watch.Picture() : watch.Sound();
        if (before >= 0)
            (kind == kKindDMB ? television : radio)[before].Add(time);
        before = kind;
    };
    for (int i = 0; i < rounds; ++i) {
        for (const int position : positions[kKindDMB])
            zap(kKindDMB, position);
        for (const int position : positions[kKindDAB])
            zap(kKindDAB, position);
        for (std::size_t at = 0; at < std::min(positions[0].size(), positions[1].size()); ++at) {
            zap(kKindDMB, positions[kKindDMB][at]);
            zap(kKindDAB, positions[kKindDAB][at]);
        }
    }
    Tell("television after television, to the picture", television[0], kSettle + kGraph + kRandomAccess + kSlack);
    Tell("television after radio, to the picture", television[1], kGraph + kRandomAccess + kSlack);
    Tell("radio after television, to the sound", radio[0], kSettle + kGraph + kSlack);
    Tell("radio after radio, to the sound", radio[1], kGraph + kSlack);
}

void MeasureStart(const Options& options, int rounds) {
    constexpr int kBound = 2000;
    Series series;
    for (int i = 0; i < rounds; ++i) {
        Watch watch;
        watch.Arm();
        Session session(options, PortsOf(watch));
        CancelUnanswered(session.Shell());
        session.OpenView();
        (void)Until(session, [&] { return watch.Picture() >= 0; });
        series.Add(watch.Picture() < 0 ? kLimit : watch.Picture());
        session.CloseView();
    }
    Tell("start to the picture of the saved channel", series, kBound);
}

} // namespace

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 5;
    const Place place;
    std::puts("| what | times | median ms | worst ms | bound ms | kept |\n|---|---|---|---|---|---|");
    {
        Watch watch;
        Session session(place.options, PortsOf(watch));
        CancelUnanswered(session.Shell());
        const auto& view = static_cast<const CVelDMBView&>(session.OpenView());
        MeasureScan(session, view, rounds);
        MeasureZapping(session, view, watch, rounds);
        const int first = DMBViewPeer::PositionOf(view, kKindDMB, 0);
        session.System().loop().Send(view.GetSafeHwnd(), WM_DMB_CHANGECHANNEL, static_cast<WPARAM>(first));
        session.CloseView();
    }
    MeasureStart(place.options, rounds);
    return failed ? 1 : 0;
}
