// A file that starts over, from the transmitter through the tuner to whole pictures and sound: what a viewer meets at the seam.
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <vector>

#include <gtest/gtest.h>

#include "host/filters/Demultiplexer.h"
#include "host/headend/Headend.h"
#include "host/medmb/BlockTable.h"
#include "host/medmb/Tuner.h"

namespace {

namespace fs = std::filesystem;
using filters::Ticks;

class Units final : public filters::DemuxListener {
public:
    void OnStreams(const filters::VideoFormat* /*video*/, const filters::AudioFormat* /*audio*/) override {}
    void OnVideo(filters::AccessUnit unit) override { video.push_back(unit.time); }
    void OnAudio(filters::AccessUnit unit) override { audio.push_back(unit.time); }
    void OnClockLost() override { ++clockLosses; }

    std::vector<Ticks> video;
    std::vector<Ticks> audio;
    int clockLosses = 0;
};

struct Steps {
    Ticks least = 1 << 30;
    Ticks most = 0;
};

Steps StepsOf(const std::vector<Ticks>& times) {
    Steps steps;
    for (std::size_t i = 1; i < times.size(); ++i) {
        steps.least = std::min(steps.least, times[i] - times[i - 1]);
        steps.most = std::max(steps.most, times[i] - times[i - 1]);
    }
    return steps;
}

TEST(Loop, NothingIsLostAtTheSeamAndTheClocksGoOn) {
    constexpr medmb::Millis kTurn = 6000;
    constexpr int kTurns = 3;
    constexpr medmb::Millis kPlayed = kTurns * kTurn - 500; // tuning in has taken some frames beforehand
    const auto description = headend::ParseDescription(R"({"seconds": 6, "ensembles": [{"block": "8A", "id": "0xE1B0",
        "label": {"text": "LOOP"}, "services": [{"kind": "television", "id": "0xF1E00401", "label": {"text": "TV"},
        "subChannel": 1, "bitRate": 272, "video": {"width": 160, "height": 120, "framesPerSecond": 15},
        "sound": {"melody": "joy", "bitRate": 48}}]}]})",
                                                       "loop", {});
    const fs::path folder = fs::temp_directory_path() / ("dmb-loop-" + std::to_string(getpid()));
    headend::WriteBroadcast(headend::MakeBroadcast(description), folder);
    std::string error;
    auto spec = medmb::ParseSource(folder.string(), error);
    ASSERT_TRUE(spec) << error;
    spec->loop = true;

    ce::ManualClock clock;
    medmb::Broadcast broadcast;
    medmb::Tuner tuner(clock, broadcast, medmb::MakeSourceProvider(*spec));
    ASSERT_TRUE(tuner.SetChannel(medmb::BlockFrequency(*medmb::RowFromText("8A")), 8, 0xF1E00401));
    medmb::BroadcastReader reader = broadcast.Attach();
    Units units;
    filters::Demultiplexer demux(units);
    std::uint64_t lastTime = 0;
    for (medmb::Millis played = 0; played < kPlayed; played += 500) {
        clock.Sleep(500);
        clock.Settle();
        medmb::BroadcastItem item;
        while (reader.TryRead(item) == medmb::ReadResult::Item) {
            EXPECT_FALSE(item.discontinuity);
            EXPECT_GE(item.time, lastTime);
            lastTime = item.time;
            for (std::size_t at = 0; at < item.bytes.size(); at += 188)
                demux.Push(filters::ByteSpan(item.bytes).subspan(at, 188));
        }
    }
    tuner.StopService();
    fs::remove_all(folder);

    EXPECT_EQ(demux.Counters().damagedPackets, 0u);
    EXPECT_EQ(demux.Counters().gaps, 0u);
    EXPECT_EQ(demux.Counters().clockJumps, static_cast<std::uint64_t>(kTurns - 1));
    EXPECT_EQ(units.clockLosses, 0);
    // Pictures follow each other over the seam as everywhere; of sound as many units as fit before it, and it stays in its place.
    constexpr Ticks kMs = filters::kTicksPerMs;
    constexpr Ticks kPicture = filters::kTicksPerSecond / 15;
    const Steps video = StepsOf(units.video);
    EXPECT_GE(video.least, kPicture - 2 * kMs);
    EXPECT_LE(video.most, kPicture + 2 * kMs);
    const Steps audio = StepsOf(units.audio);
    EXPECT_GE(audio.least, 20 * kMs);
    EXPECT_LE(audio.most, 2 * 22 * kMs);
    const double seconds = static_cast<double>(units.audio.back() - units.audio.front()) / filters::kTicksPerSecond;
    EXPECT_NEAR(seconds, kPlayed / 1000.0, 0.5);
    EXPECT_GE(units.video.size(), static_cast<std::size_t>(kTurns * 90 - 30));
    RecordProperty("longest_picture_step_ms", static_cast<int>(video.most / kMs));
    RecordProperty("longest_sound_step_ms", static_cast<int>(audio.most / kMs));
    RecordProperty("shortest_sound_step_ms", static_cast<int>(audio.least / kMs));
}

} // namespace
