// The rendering filters, each behind a scripted upstream pin and in front of ports that remember.
#include "tests/filters/SingleFilter.h"

#include "host/filters/AudioRenderer.h"
#include "host/filters/VideoRenderer.h"

#include <algorithm>
#include <tuple>

using namespace filters_test;

TEST(AudioRenderer, CompletesWhenTheLastSoundWasHeard) {
    World<ce::ManualClock> world;
    const auto graph = std::make_unique<Session>();
    const auto source = Make<ScriptedSource<SoundBlock>>(kPcm);
    const auto filter = Make<AudioRenderer>(world.clock, Outputs{nullptr, &world.tap, nullptr, nullptr});
    ASSERT_EQ(graph->graph->AddFilter(filter.Get(), kAudioRendererName), S_OK);
    const auto in = PinOf(*filter.Get(), kAudioRendererPin);
    Join(*source->pin, *in.Get());
    (void)graph->control->Run();
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(source->pin->Deliver(Block(i * 1920)), S_OK);
    source->pin->DeliverEnd();
    world.clock.Sleep(300);
    EXPECT_EQ(graph->TakeEvents()[EC_COMPLETE], 0);
    world.clock.Sleep(300);
    EXPECT_EQ(graph->TakeEvents()[EC_COMPLETE], 1);
    EXPECT_EQ(world.tap.Samples()[10000], 1000);
    (void)graph->control->Stop();
    EXPECT_EQ(source->pin->Deliver(Block(0)), S_FALSE) << "stopped";
    Part(*source->pin, *in.Get());
    (void)graph->graph->RemoveFilter(filter.Get());
}

// A card of its own thread, a portion of 10 ms at a time.
TEST(AudioRenderer, PlaysThroughADevice) {
    class Card final : public SoundDevice {
    public:
        explicit Card(ce::Clock& clock) : clock_(clock), wake_(clock) {}
        bool Start(SoundSource& source) override {
            ++starts;
            quit_ = false;
            thread_ = clock_.StartWorker([this, &source] {
                std::vector<std::int16_t> portion(960);
                for (ce::Millis next = clock_.Now(); !quit_; next += 10) {
                    source.Pull(portion);
                    played += portion.size();
                    (void)wake_.Wait(next + 10);
                }
            });
            return true;
        }
        void Stop() override {
            ++stops;
            quit_ = true;
            wake_.Raise();
            thread_.join();
        }
        [[nodiscard]] int LatencyMs() const override { return 40; }
        std::atomic<int> starts{0};
        std::atomic<int> stops{0};
        std::atomic<std::size_t> played{0};

    private:
        ce::Clock& clock_;
        ce::Signal wake_;
        std::thread thread_;
        std::atomic<bool> quit_{false};
    };
    World<ce::ManualClock> world;
    Card card(world.clock);
    const auto source = Make<ScriptedSource<SoundBlock>>(kPcm);
    const auto filter = Make<AudioRenderer>(world.clock, Outputs{&card, &world.tap, nullptr, nullptr});
    const auto in = PinOf(*filter.Get(), kAudioRendererPin);
    Join(*source->pin, *in.Get());
    for (int round = 1; round <= 2; ++round) {
        (void)filter->Pause();
        (void)filter->Run(0);
        for (int i = 0; i < 40; ++i)
            EXPECT_EQ(source->pin->Deliver(Block(i * 1920)), S_OK);
        world.clock.Sleep(600);
        Ticks now = 0;
        ASSERT_EQ(filter->Sound().StreamTime(now), ClockState::kRunning);
        EXPECT_NEAR(static_cast<double>(now) / kTicksPerMs, 600 - 40, 12)
            << "what is heard is what was pulled 40 ms ago";
        (void)filter->Stop();
        EXPECT_EQ(card.starts, round);
        EXPECT_EQ(card.stops, round);
    }
    EXPECT_EQ(card.played, world.tap.Samples().size());
    Part(*source->pin, *in.Get());
}

TEST(AudioRenderer, KeepsTimeWhenThereIsNoDevice) {
    struct NoCard final : SoundDevice {
        bool Start(SoundSource&) override { return false; }
        void Stop() override { ADD_FAILURE() << "it never started"; }
        [[nodiscard]] int LatencyMs() const override { return 500; }
    } card;
    World<ce::ManualClock> world;
    const auto source = Make<ScriptedSource<SoundBlock>>(kPcm);
    const auto filter = Make<AudioRenderer>(world.clock, Outputs{&card, &world.tap, nullptr, nullptr});
    const auto in = PinOf(*filter.Get(), kAudioRendererPin);
    Join(*source->pin, *in.Get());
    (void)filter->Pause();
    (void)filter->Run(0);
    for (int i = 0; i < 40; ++i)
        EXPECT_EQ(source->pin->Deliver(Block(i * 1920)), S_OK);
    world.clock.Sleep(500);
    Ticks now = 0;
    ASSERT_EQ(filter->Sound().StreamTime(now), ClockState::kRunning);
    EXPECT_NEAR(static_cast<double>(now) / kTicksPerMs, 500, 12);
    (void)filter->Stop();
    Part(*source->pin, *in.Get());
}

// Edge case: a sound card that comes later
TEST(AudioRenderer, LooksForADeviceEveryTwoSecondsUntilThereIsOne) {
    struct LateCard final : SoundDevice {
        bool Start(SoundSource& source) override {
            ++starts;
            if (starts < 3)
                return false;
            std::vector<std::int16_t> frames(960);
            source.Pull(frames);
            return true;
        }
        void Stop() override { ++stops; }
        [[nodiscard]] int LatencyMs() const override { return 20; }
        std::atomic<int> starts{0};
        std::atomic<int> stops{0};
    } card;
    World<ce::ManualClock> world;
    const auto source = Make<ScriptedSource<SoundBlock>>(kPcm);
    const auto filter = Make<AudioRenderer>(world.clock, Outputs{&card, &world.tap, nullptr, nullptr});
    const auto in = PinOf(*filter.Get(), kAudioRendererPin);
    Join(*source->pin, *in.Get());
    (void)filter->Pause();
    (void)filter->Run(0);
    world.clock.Sleep(1990);
    EXPECT_EQ(card.starts, 1);
    const std::size_t heard = world.tap.Samples().size();
    EXPECT_NEAR(static_cast<double>(heard), 1990 * 96, 2000) << "time goes on without it";
    world.clock.Sleep(1990);
    EXPECT_EQ(card.starts, 2);
    world.clock.Sleep(100);
    EXPECT_EQ(card.starts, 3);
    EXPECT_EQ(card.stops, 0);
    world.clock.Sleep(300);
    EXPECT_NEAR(static_cast<double>(world.tap.Samples().size()), 4020 * 96, 4000) << "now it has to pull, and does not";
    world.clock.Sleep(300);
    EXPECT_EQ(card.stops, 1) << "so it is gone again";
    (void)filter->Stop();
    EXPECT_EQ(card.stops, 1);
    Part(*source->pin, *in.Get());
}

// A card that stops pulling: time goes on without it.
TEST(AudioRenderer, GoesOnWhenTheDeviceVanishes) {
    struct DeadDevice final : SoundDevice {
        bool Start(SoundSource& source) override {
            std::vector<std::int16_t> frames(960);
            source.Pull(frames);
            return true;
        }
        void Stop() override { stopped = true; }
        [[nodiscard]] int LatencyMs() const override { return 20; }
        std::atomic<bool> stopped{false};
    } device;
    World<ce::ManualClock> world;
    const auto source = Make<ScriptedSource<SoundBlock>>(kPcm);
    const auto filter = Make<AudioRenderer>(world.clock, Outputs{&device, &world.tap, nullptr, nullptr});
    const auto in = PinOf(*filter.Get(), kAudioRendererPin);
    Join(*source->pin, *in.Get());
    (void)filter->Pause();
    (void)filter->Run(0);
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(source->pin->Deliver(Block(i * 1920)), S_OK);
    world.clock.Sleep(400);
    EXPECT_FALSE(device.stopped);
    world.clock.Sleep(600);
    EXPECT_TRUE(device.stopped);
    Ticks now = 0;
    EXPECT_EQ(filter->Sound().StreamTime(now), ClockState::kRunning);
    EXPECT_GT(now, 200 * kTicksPerMs);
    (void)filter->Stop();
    Part(*source->pin, *in.Get());
}

TEST(VideoRenderer, ShowsEachPictureAtItsTimeAndCompletes) {
    World<ce::ManualClock> world;
    const auto graph = std::make_unique<Session>();
    const auto source = Make<ScriptedSource<PictureSample>>(kI420);
    const auto filter = Make<VideoRenderer>(world.clock, Outputs{nullptr, nullptr, &world.screen, nullptr});
    ASSERT_EQ(graph->graph->AddFilter(filter.Get(), kVideoRendererName), S_OK);
    const auto in = PinOf(*filter.Get(), kInPin);
    Join(*source->pin, *in.Get());
    (void)graph->control->Run();
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(source->pin->Deliver(Image(i * 9000)), S_OK);
    source->pin->DeliverEnd();
    world.clock.Sleep(2000);
    const auto shown = world.screen.Shown();
    ASSERT_EQ(shown.size(), 11u); // the first one at once, and again in its place
    for (std::size_t i = 2; i < shown.size(); ++i)
        EXPECT_EQ(shown[i].at - shown[i - 1].at, 100);
    const auto events = graph->TakeEvents();
    EXPECT_EQ(events.at(EC_VIDEOFRAMEREADY), 1);
    EXPECT_EQ(events.at(EC_COMPLETE), 1);
    (void)graph->control->Stop();
    Part(*source->pin, *in.Get());
    (void)graph->graph->RemoveFilter(filter.Get());
}

TEST(VideoRenderer, LeavesOutWhatIsEarlierThanTheSegment) {
    World<ce::ManualClock> world;
    const auto source = Make<ScriptedSource<PictureSample>>(kI420);
    const auto filter = Make<VideoRenderer>(world.clock, Outputs{nullptr, nullptr, &world.screen, nullptr});
    const auto in = PinOf(*filter.Get(), kInPin);
    Join(*source->pin, *in.Get());
    (void)filter->Pause();
    (void)filter->Run(0);
    source->pin->DeliverSegment(45000);
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(source->pin->Deliver(Image(i * 9000)), S_OK);
    world.clock.Sleep(1000);
    EXPECT_EQ(world.screen.Shown().front().picture->time, 45000);
    (void)filter->Stop();
    Part(*source->pin, *in.Get());
}
