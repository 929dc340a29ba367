// The demo broadcast through the whole receiver below the view: files, tuner, graph, filters. Its television has a lamp that lights
// while a beep sounds, every five seconds, so picture and sound can be compared as a viewer does.
#include "tests/filters/TelevisionWorld.h"
#include "tests/support/Places.h"

#include "host/headend/Demo.h"
#include "host/medmb/BlockTable.h"
#include "host/medmb/Tuner.h"
#include "host/wire/EtiFrame.h"

#include <cmath>
#include <filesystem>
#include <numbers>
#include <random>

using namespace filters;
using namespace filters_test;

#if defined(__SANITIZE_THREAD__)
// The demo is drawn by several threads in libraries that are not instrumented, so their locks are not seen.
extern "C" __attribute__((visibility("default"))) const char*
__tsan_default_suppressions() { // NOLINT: the sanitizer's name
    return "race:libcairo.so\nrace:libpango\nrace:libglib-2.0.so\nrace:libharfbuzz.so\nrace:libfontconfig.so\n"
           "race:libfreetype.so\nrace:libpixman-1.so\n";
}
#endif

namespace {

// Sanitizers look for other faults than drift, and are slow.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kMinutes = 1;
#else
constexpr int kMinutes = 10;
#endif
constexpr std::size_t kFrameBytes = wire::kEtiFrameBytes;

struct DemoService {
    const char* block;
    std::uint32_t id;
};
constexpr DemoService kDemoTelevision[] = {{"8A", 0xE1C10101}, {"8B", 0xE1D10101}, {"12B", 0xE1E10101}};

// Made once for a build.
const std::filesystem::path& DemoFolder() {
    static const std::filesystem::path folder =
        headend::EnsureDemo(std::filesystem::path(testing_support::BinaryDir()) / "demo-for-tests");
    return folder;
}

Bytes DemoFrames(const DemoService& service) {
    std::ifstream file(DemoFolder() / (std::string(service.block) + ".eti"), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// Brightness of the lamp under the clock.
int Lamp(const Picture& picture) {
    const double unit = picture.height / 240.0;
    const int x = picture.width - static_cast<int>(20 * unit);
    const int y = static_cast<int>(40 * unit);
    int sum = 0;
    for (int row = y - 1; row <= y + 1; ++row)
        for (int column = x - 1; column <= x + 1; ++column)
            sum += picture.i420[static_cast<std::size_t>(row * picture.width + column)];
    return sum / 9;
}

// How loud 1 kHz is in so many frames.
double BeepIn(std::span<const std::int16_t> frames) {
    double real = 0;
    double imaginary = 0;
    const std::size_t count = frames.size() / 2;
    for (std::size_t i = 0; i < count; ++i) {
        const double angle = 2 * std::numbers::pi * 1000 * static_cast<double>(i) / kDeviceRate;
        real += frames[2 * i] * std::cos(angle);
        imaginary += frames[2 * i] * std::sin(angle);
    }
    return 2 * std::hypot(real, imaginary) / static_cast<double>(count);
}

} // namespace

class Demo : public Television {
protected:
    void TearDown() override {
        CloseSession();
        tuner_.reset();
        Television::TearDown();
    }
    // As the program does: tune, build, run.
    void Watch(const DemoService& service, const std::filesystem::path& folder) {
        std::string error;
        auto spec = medmb::ParseSource(folder.string(), error);
        ASSERT_TRUE(spec) << error;
        spec->loop = true;
        tuner_ = std::make_unique<medmb::Tuner>(world.clock, world.broadcast, medmb::MakeSourceProvider(*spec));
        ASSERT_TRUE(tuner_->SetChannel(medmb::BlockFrequency(*medmb::RowFromText(service.block)), 8, service.id));
        OpenLive();
        ASSERT_GE(session->control->Run(), 0);
    }
    void LeaveTuner() { tuner_.reset(); }
    // Another version of a service's frames, in a folder of its own.
    std::filesystem::path StoreFrames(const DemoService& service, ByteSpan frames) {
        const std::filesystem::path folder = world.folder.path() / "air";
        std::filesystem::create_directory(folder);
        std::ofstream(folder / (std::string(service.block) + ".eti"), std::ios::binary)
            .write(reinterpret_cast<const char*>(frames.data()), static_cast<std::streamsize>(frames.size()));
        return folder;
    }
    // Watches on, in stretches that memory can hold; adds to what was measured before.
    void WatchFor(int seconds, bool fromStart = false) {
        for (; seconds > 0; seconds -= 10) {
            world.screen.Forget();
            world.tap.Forget();
            Pass(std::min(seconds, 10) * 1000);
            const Skew skew = MeasureLipSync(std::exchange(fromStart, false));
            measured_.compared += skew.compared;
            measured_.largest = std::max(measured_.largest, skew.largest);
            CompareLampWithBeep();
        }
    }
    void ExpectMeasured(std::size_t pictures, std::size_t lamps) {
        EXPECT_GE(measured_.compared, pictures);
        EXPECT_LE(measured_.largest, kLargestSkew);
        EXPECT_GE(lamps_, lamps);
        EXPECT_LE(largestLampSkew_, 40);
        std::printf(
            "           %zu pictures, largest skew %.1f ms; %zu lamps, largest distance from the beep %.0f ms\n",
            measured_.compared, static_cast<double>(measured_.largest) / kTicksPerMs, lamps_, largestLampSkew_);
    }

private:
    // Each lighting up of the lamp against the beep nearest to it. Music has tones of 1 kHz, too, but none that begins and ends so.
    void CompareLampWithBeep() {
        constexpr int kWindow = 5; // ms
        constexpr std::size_t kStep = kWindow * kDeviceRate / 1000 * kDeviceChannels;
        constexpr int kBeep = 100 / kWindow;
        constexpr int kAround = 30 / kWindow;
        constexpr int kReach = 600 / kWindow;
        const std::vector<std::int16_t> samples = world.tap.Samples();
        std::vector<double> sums{0}; // of loudness, window by window
        for (std::size_t at = 0; at + kStep <= samples.size(); at += kStep)
            sums.push_back(sums.back() + BeepIn(std::span(samples).subspan(at, kStep)));
        const auto mean = [&](int from, int count) {
            return (sums[static_cast<std::size_t>(from + count)] - sums[static_cast<std::size_t>(from)]) / count;
        };
        const int windows = static_cast<int>(sums.size()) - 1;
        const auto shown = world.screen.Shown();
        for (std::size_t i = 1; i < shown.size(); ++i) {
            const int there = static_cast<int>(shown[i].at - world.tap.Since()) / kWindow;
            const bool lights = Lamp(*shown[i].picture) > 180 && Lamp(*shown[i - 1].picture) < 120;
            if (!lights || there < kReach + kAround || there + kReach + kBeep + kAround > windows)
                continue;
            double best = 0;
            double distance = 0;
            for (int at = there - kReach; at <= there + kReach; ++at) {
                const double score = 2 * mean(at, kBeep) - mean(at - kAround, kAround) - mean(at + kBeep, kAround);
                if (score > best) {
                    best = score;
                    distance = std::abs(static_cast<double>(world.tap.Since() + at * kWindow - shown[i].at));
                }
            }
            if (best < 6000)
                continue; // the beep was lost
            ++lamps_;
            largestLampSkew_ = std::max(largestLampSkew_, distance);
        }
    }

    std::unique_ptr<medmb::Tuner> tuner_;
    Skew measured_;
    std::size_t lamps_ = 0;
    double largestLampSkew_ = 0; // ms
};

TEST_F(Demo, LipSyncHoldsForTenMinutes) {
    Watch(kDemoTelevision[0], DemoFolder());
    WatchFor(60 * kMinutes, true);
    ExpectMeasured(1700 * kMinutes, 10 * kMinutes);
    const auto events = session->TakeEvents();
    EXPECT_FALSE(events.contains(IDMB_EVENT_TIME_RESET));
    EXPECT_FALSE(events.contains(IDMB_EVENT_NO_SIGNAL));
    EXPECT_FALSE(events.contains(IDMB_EVENT_AUDIO_CHANGE));
    EXPECT_EQ(world.status.States(), (std::vector{ReceptionState::kWaiting, ReceptionState::kPlaying}));
}

TEST_F(Demo, LipSyncHoldsOnTheOtherServices) {
    for (const DemoService& service : {kDemoTelevision[1], kDemoTelevision[2]}) {
        Watch(service, DemoFolder());
        WatchFor(70, true); // over the end of the file
        CloseSession();
        LeaveTuner();
    }
    ExpectMeasured(3800, 20);
}

// Bursts that the outer code cannot mend, in one frame of eight, from second 10 to 40 of each minute.
TEST_F(Demo, LipSyncHoldsAfterALoss) {
    Bytes frames = DemoFrames(kDemoTelevision[0]);
    std::minstd_rand random(7);
    const auto frameOf = [](double seconds) {
        return static_cast<std::size_t>(seconds * 1000 / wire::kEtiFrameMilliseconds);
    };
    for (std::size_t frame = frameOf(10); frame < frameOf(40); ++frame) {
        if (random() % 8 == 0) {
            for (std::size_t at = 600; at < 1000; ++at)
                frames[frame * kFrameBytes + at] = static_cast<std::uint8_t>(random());
        }
    }
    Watch(kDemoTelevision[0], StoreFrames(kDemoTelevision[0], frames));
    WatchFor(120, true);
    ExpectMeasured(1500, 10);
    EXPECT_FALSE(session->TakeEvents().contains(IDMB_EVENT_TIME_RESET));
}

TEST_F(Demo, LipSyncHoldsDuringACaptureAndInIt) {
    Watch(kDemoTelevision[0], DemoFolder());
    WatchFor(20, true);
    ASSERT_EQ(session->controller->SetDMBCaputerFileName(u"\\SDMMC Card\\demo.dmb"), S_OK);
    ASSERT_EQ(session->controller->StartDMBCapture(), S_OK);
    WatchFor(60); // over the end of the file
    ASSERT_EQ(session->controller->StopDMBCapture(), S_OK);
    WatchFor(20);
    ExpectMeasured(2700, 15);
    CloseSession();
    LeaveTuner();

    OpenFile(u"\\SDMMC Card\\demo.dmb");
    (void)session->control->Run();
    Pass(60);
    EXPECT_FALSE(world.screen.Shown().empty()) << "a recording plays at once";
    WatchFor(20, true);
    ULONGLONG now = 0;
    LONGLONG whole = 0;
    for (const LONGLONG target : {45000, 5000, 30000, 12345}) {
        world.screen.Forget();
        ASSERT_EQ(session->controller->SetFilePos(target), S_OK);
        Pass(300);
        ASSERT_EQ(session->controller->GetFilePos(&now, &whole), S_OK);
        EXPECT_NEAR(static_cast<double>(now), static_cast<double>(target) + 300, 300);
        WatchFor(10);
    }
    ExpectMeasured(4000, 22);
}

// Whoever tunes in between two random access points waits for the next one, and hardly longer.
TEST_F(Demo, TheFirstPictureComesWithTheFirstRandomAccess) {
    constexpr ce::Millis kInterval = 1000;
    ce::Millis longest = 0;
    for (const DemoService& service : kDemoTelevision) {
        const Bytes frames = DemoFrames(service);
        for (std::size_t phase = 0; phase < 8; ++phase) {
            const std::size_t first = 300 + phase * 5; // in steps of 120 ms
            world.screen.Forget();
            Watch(service, StoreFrames(service, ByteSpan(frames).subspan(first * kFrameBytes, 200 * kFrameBytes)));
            // Counted from the graph's start, before the outer code has given its first packet.
            const ce::Millis begun = world.clock.Now();
            while (world.screen.Shown().empty() && world.clock.Now() < begun + 3000)
                world.clock.Sleep(4);
            ASSERT_FALSE(world.screen.Shown().empty()) << service.block << " " << phase;
            const ce::Millis wait = world.screen.Shown().front().at - begun;
            longest = std::max(longest, wait);
            EXPECT_LE(wait, kInterval + 100) << service.block << " " << phase;
            EXPECT_EQ(session->TakeEvents()[EC_VIDEOFRAMEREADY], 1);
            CloseSession();
            LeaveTuner();
        }
    }
    EXPECT_GT(longest, kInterval / 2) << "some had to wait, or the phases are all alike";
    std::printf("           longest wait %lld ms\n", static_cast<long long>(longest));
}
