// The tuner as the module sees it, on files and on programs.
#include "host/medmb/Tuner.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>
#include <string>
#include <unistd.h>

#include <gtest/gtest.h>

#include "host/medmb/BlockTable.h"
#include "host/medmb/TestEnsemble.h"
#include "host/wire/LabelText.h"
#include "platform/medmblib.h"
#include "tests/support/Places.h"

namespace medmb {
namespace {

using namespace test;
namespace fs = std::filesystem;

const fs::path kData = fs::path(testing_support::SourceDir()) / "tests/data/broadcast";

SourceSpec Folder(const fs::path& path, bool loop = false) {
    std::string error;
    SourceSpec spec = ParseSource(path.string(), error).value_or(SourceSpec{});
    spec.loop = loop;
    return spec;
}

// A tuner on a clock that the test moves, installed for the MEDMBLIB classes.
struct Bench {
    ce::ManualClock clock;
    Broadcast broadcast;
    std::vector<std::string> log;
    Tuner tuner;

    explicit Bench(SourceSpec spec)
        : tuner(clock, broadcast, MakeSourceProvider(std::move(spec)),
                [this](const std::string& line) { log.push_back(line); }) {
        Tuner::Install(&tuner);
    }
};

int Row(const char* block) {
    return BlockFrequency(*RowFromText(block));
}

TEST(Tuner, ChannelsOfAFolder) {
    Bench bench(Folder(kData));
    CDMBLiveControl control;
    ASSERT_TRUE(control.Open());
    _tag_DMB_CHANNEL_INFO info{};
    ASSERT_TRUE(control.GetChannel(183008000, &info));
    EXPECT_EQ(info.nFrequency, 183008000u);
    const char* labels[] = {"SINUS KANAL VOLL", "KURZ", nullptr, "LSF Halfte O\xA9\xAC"};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(info.service[i].nServiceID, 0xE201u + static_cast<unsigned>(i));
        EXPECT_EQ(info.service[i].nServiceType, 0);
        if (labels[i] == nullptr)
            continue;
        EXPECT_EQ(std::string(info.service[i].szLabel, strnlen(info.service[i].szLabel, 16)), labels[i]);
    }
    EXPECT_EQ(wire::FromCodePage949(std::string(info.service[2].szLabel, 15)), "한국방송 라디오");
    EXPECT_EQ(info.service[4].szLabel[0], 0);
    ASSERT_TRUE(control.GetChannel(205280000, &info));
    EXPECT_EQ(info.service[0].nServiceType, 8);
    EXPECT_EQ(info.service[0].nServiceID, 0xF1E00401u);
    EXPECT_EQ(std::string(info.service[1].szLabel, 16), "TV TWO SIXTEEN16");
    EXPECT_EQ(bench.clock.Now(), 0);
}

TEST(Tuner, ABlockWithoutASourceFailsAtOnceAndLeavesTheRecord) {
    Bench bench(Folder(kData));
    CDMBLiveControl control;
    ASSERT_TRUE(control.Open());
    _tag_DMB_CHANNEL_INFO info;
    std::memset(&info, 0x5A, sizeof info);
    EXPECT_FALSE(control.GetChannel(175280000, &info));
    EXPECT_FALSE(control.GetChannel(100, &info));
    EXPECT_EQ(info.service[3].nServiceID, 0x5A5A5A5Au);
    const auto reports = bench.tuner.Reports();
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports[1].state, BlockState::NoSource);
    EXPECT_EQ(reports[1].frequency, 175280000);
}

TEST(Tuner, NothingWorksWithoutATunerOrBeforeOpen) {
    Tuner::Install(nullptr);
    CDMBLiveControl control;
    EXPECT_FALSE(control.Open());
    _tag_DMB_CHANNEL_INFO info{};
    EXPECT_FALSE(control.GetChannel(183008000, &info));
    EXPECT_FALSE(CDMBLiveStream().Close());
    Bench bench(Folder(kData));
    EXPECT_FALSE(control.GetChannel(183008000, &info));
    float snr = -1;
    EXPECT_FALSE(control.GetSNR(&snr));
    EXPECT_TRUE(control.Open());
    EXPECT_TRUE(control.GetSNR(&snr));
    EXPECT_EQ(snr, 0.0F);
}

// Plays for so long and collects what arrives.
std::vector<BroadcastItem> Play(Bench& bench, BroadcastReader& reader, Millis time) {
    bench.clock.Sleep(time);
    bench.clock.Settle();
    std::vector<BroadcastItem> items;
    BroadcastItem item;
    while (reader.TryRead(item) == ReadResult::Item)
        items.push_back(item);
    return items;
}

TEST(Tuner, TelevisionArrivesAtThePaceOfItsFrames) {
    Bench bench(Folder(kData));
    CDMBLiveControl control;
    ASSERT_TRUE(control.Open());
    ASSERT_TRUE(control.SetChannel(Row("12A"), 8, static_cast<int>(0xF1E00401), 0));
    EXPECT_EQ(bench.broadcast.Service().kind, ServiceKind::Television);
    BroadcastReader reader = bench.broadcast.Attach();
    (void)Play(bench, reader, 240);
    std::size_t bytes = 0;
    for (const BroadcastItem& item : Play(bench, reader, 240)) {
        EXPECT_EQ(item.kind, ItemKind::Packets);
        EXPECT_FALSE(item.discontinuity);
        EXPECT_EQ(item.bytes.size() % 188, 0u);
        bytes += item.bytes.size();
    }
    // Ten frames of 544 kbit/s.
    EXPECT_EQ(bytes, 80u * 188u);
    float snr = 0;
    EXPECT_TRUE(control.GetSNR(&snr));
    EXPECT_FLOAT_EQ(snr, 30.0F);
    EXPECT_EQ(bench.broadcast.Signal(), SignalState::Good);
    _tag_DMB_RSSI_PARAM rssi{};
    EXPECT_TRUE(control.GetRSSI(&rssi));
    EXPECT_LT(rssi.fRSSI, 0.0F);
    EXPECT_EQ(rssi.nValue, 0);
    CDMBLiveStream stream;
    EXPECT_TRUE(stream.Close());
    BroadcastItem item;
    EXPECT_EQ(reader.TryRead(item), ReadResult::End);
    EXPECT_TRUE(control.GetSNR(&snr));
    EXPECT_EQ(snr, 0.0F);
}

TEST(Tuner, TheFirstFramesOfAFileComeAtOnceAndThenOneAfterAnother) {
    Bench bench(Folder(kData));
    ASSERT_TRUE(bench.tuner.SetChannel(Row("8B"), 0, 0xE202));
    BroadcastReader reader = bench.broadcast.Attach();
    const auto frames = [&](Millis time) {
        const auto items = Play(bench, reader, time);
        return std::count_if(items.begin(), items.end(), [](const auto& i) { return i.kind == ItemKind::Audio; });
    };
    EXPECT_EQ(frames(1), 4);
    EXPECT_EQ(frames(240), 10);
    EXPECT_EQ(frames(240), 10);
}

TEST(Tuner, RadioArrivesWithItsTexts) {
    Bench bench(Folder(kData));
    ASSERT_TRUE(bench.tuner.SetChannel(Row("8B"), 0, 0xE202));
    BroadcastReader reader = bench.broadcast.Attach();
    int audio = 0;
    std::vector<std::string> texts;
    for (const BroadcastItem& item : Play(bench, reader, 2400)) {
        audio += item.kind == ItemKind::Audio ? 1 : 0;
        EXPECT_FALSE(item.damaged);
        if (item.kind == ItemKind::Text) {
            texts.push_back(item.text->utf8);
            EXPECT_EQ(item.text->charset, 15);
            EXPECT_EQ(wire::DecodeText(item.text->ucs2, wire::kCharsetUcs2), item.text->utf8);
        }
    }
    EXPECT_NEAR(audio, 100 + 3, 2); // the first come at once
    EXPECT_EQ(texts, std::vector<std::string>{"UTF-8: Zażółć gęślą jaźń — Ελλάδα — Москва"});
}

TEST(Tuner, AFileEndsOrStartsOver) {
    Bench once(Folder(kData));
    ASSERT_TRUE(once.tuner.SetChannel(Row("12A"), 8, 0xF1E00401));
    once.clock.Sleep(5000);
    once.clock.Settle();
    EXPECT_EQ(once.broadcast.Signal(), SignalState::Ended);
    EXPECT_EQ(once.tuner.SignalToNoise(), 0.0F);

    Bench looped(Folder(kData, true));
    ASSERT_TRUE(looped.tuner.SetChannel(Row("12A"), 8, 0xF1E00401));
    BroadcastReader reader = looped.broadcast.Attach();
    std::uint64_t last = 0;
    std::size_t packets = 0;
    std::size_t marked = 0;
    for (const BroadcastItem& item : Play(looped, reader, 5000)) {
        EXPECT_GE(item.time, last);
        last = item.time;
        EXPECT_FALSE(item.discontinuity);
        packets += item.bytes.size() / 188;
        for (std::size_t at = 0; at < item.bytes.size(); at += 188)
            marked += (item.bytes[at + 1] & 0x80) != 0 ? 1 : 0;
    }
    EXPECT_GT(last, 4500u);
    EXPECT_GT(packets, 1600u); // 40 frames of 24 ms a turn, eight packets each
    // This file's end does not fit to its beginning: what lies in the interleaver at the seam is lost, and no more.
    EXPECT_LE(marked, 5 * 11u);
    EXPECT_GE(marked, 1u);
    EXPECT_EQ(looped.broadcast.Signal(), SignalState::Good);
}

// Edge case: the file that plays is cut to nothing, or filled with zeros, and restored
TEST(Tuner, AFileThatLosesItsFramesPlaysOnWhenTheyAreBack) {
    const fs::path folder = fs::temp_directory_path() / ("dmb-tuner-cut-" + std::to_string(getpid()));
    const fs::path file = folder / "8B.eti";
    const auto zeros = [&] { std::ofstream(file, std::ios::binary) << std::string(fs::file_size(file), '\0'); };
    const auto cut = [&] { fs::resize_file(file, 0); };
    const auto inPlace = [&] {
        std::ofstream(file, std::ios::binary) << std::ifstream(kData / "8B.eti", std::ios::binary).rdbuf();
    };
    const auto byAnother = [&] {
        fs::copy_file(kData / "8B.eti", folder / "new");
        fs::rename(folder / "new", file);
    };
    const std::vector<std::pair<std::function<void()>, std::function<void()>>> ways = {
        {cut, inPlace}, {cut, byAnother}, {zeros, inPlace}};
    for (const auto& [lose, restore] : ways) {
        fs::create_directories(folder);
        inPlace();
        Bench bench(Folder(folder, true));
        ASSERT_TRUE(bench.tuner.SetChannel(Row("8B"), 0, 0xE202));
        BroadcastReader reader = bench.broadcast.Attach();
        EXPECT_FALSE(Play(bench, reader, 500).empty());
        lose();
        (void)Play(bench, reader, 3000); // what was read already plays to its end
        const StageCounters before = bench.broadcast.Counters();
        EXPECT_TRUE(Play(bench, reader, 1000).empty());
        EXPECT_EQ(bench.broadcast.Signal(), SignalState::Lost);
        const StageCounters after = bench.broadcast.Counters();
        EXPECT_EQ(after.frames, before.frames);
        // Tells bytes that are no broadcast from no bytes at all.
        EXPECT_EQ(after.bytesSkipped > before.bytesSkipped, fs::file_size(file) > 0);
        restore();
        (void)Play(bench, reader, 1000);
        const auto items = Play(bench, reader, 1000);
        EXPECT_GE(std::count_if(items.begin(), items.end(), [](const auto& i) { return i.kind == ItemKind::Audio; }),
                  40);
        EXPECT_EQ(bench.broadcast.Signal(), SignalState::Good);
        fs::remove_all(folder);
    }
}

TEST(Tuner, AServiceOfAnotherTypeOrAnotherBlockIsNotTuned) {
    Bench bench(Folder(kData));
    EXPECT_FALSE(bench.tuner.SetChannel(Row("12A"), 0, 0xF1E00401));
    EXPECT_FALSE(bench.tuner.SetChannel(Row("12A"), 8, 0x1234));
    EXPECT_FALSE(bench.tuner.SetChannel(Row("7A"), 8, 0xF1E00401));
    EXPECT_EQ(bench.broadcast.Service().kind, ServiceKind::None);
    EXPECT_EQ(bench.log.size(), 3u);
}

TEST(Tuner, ClosingEndsScansAndTuningAtOnce) {
    Bench bench(Folder(kData));
    bench.tuner.BeginClosing();
    _tag_DMB_CHANNEL_INFO info{};
    EXPECT_FALSE(bench.tuner.GetChannel(Row("8B"), info));
    EXPECT_FALSE(bench.tuner.SetChannel(Row("8B"), 0, 0xE202));
}

TEST(Tuner, ASecondServiceEndsTheFirst) {
    Bench bench(Folder(kData));
    ASSERT_TRUE(bench.tuner.SetChannel(Row("8B"), 0, 0xE201));
    BroadcastReader first = bench.broadcast.Attach();
    ASSERT_TRUE(bench.tuner.SetChannel(Row("8B"), 0, 0xE202));
    BroadcastItem item;
    EXPECT_EQ(first.TryRead(item), ReadResult::End);
    bench.clock.Sleep(2000);
    bench.clock.Settle();
    EXPECT_EQ(bench.broadcast.Service().label, "KURZ");
}

// What a demodulator says of itself is its own text; the view takes anything below 0 for no reading at all.
TEST(Tuner, ADemodulatorsFigureIsTakenWhenItIsOneAndKeptInItsRange) {
    struct Provider final : SourceProvider {
        Provider(ce::Clock& clockToMove, float decibel) : clock(clockToMove), figure(decibel) {}
        std::unique_ptr<FrameSource> Open(int, Purpose, Cancellation&, std::string&) override {
            auto source = std::make_unique<ScriptedSource>(
                clock, [this](int index) { return ScriptedSource::Step{ensemble.Frame(index)}; }, true);
            source->figure = figure;
            return source;
        }
        ce::Clock& clock;
        float figure;
        TestEnsemble ensemble = TwoServices();
    };
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
    constexpr float kUndamaged = 30; // our own reading of these frames
    for (const auto& [told, taken] : {std::pair{17.5F, 17.5F},
                                      {-3.5F, 0.0F},
                                      {-1e30F, 0.0F},
                                      {250.0F, 99.0F},
                                      {kInfinity, kUndamaged},
                                      {-kInfinity, kUndamaged},
                                      {kNan, kUndamaged}}) {
        ce::ManualClock clock;
        Broadcast broadcast;
        Tuner tuner(clock, broadcast, std::make_unique<Provider>(clock, told));
        ASSERT_TRUE(tuner.SetChannel(183008000, 0, 0xE201));
        EXPECT_EQ(tuner.SignalToNoise(), taken) << told;
        tuner.StopService();
    }
}

} // namespace
} // namespace medmb
