#include "host/medmb/BlockScan.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include <gtest/gtest.h>

#include "host/medmb/TestEnsemble.h"
#include "host/wire/LabelText.h"

namespace medmb {
namespace {

using namespace test;
using wire::ByteVector;

struct Scan {
    ce::ManualClock clock;
    Cancellation cancellation{clock};
    BlockReport report;
    Millis took = 0;

    Scan(const std::function<ScriptedSource::Step(int)>& script, bool isFile = false) {
        ScriptedSource source(clock, script, isFile);
        report = ScanBlock(source, cancellation);
        took = clock.Now();
    }
};

std::function<ScriptedSource::Step(int)> Frames(TestEnsemble ensemble) {
    return [ensemble](int i) { return ScriptedSource::Step{ensemble.Frame(i)}; };
}

TEST(BlockScan, StopsAsSoonAsEverythingIsKnown) {
    const Scan scan(Frames(TwoServices()));
    EXPECT_EQ(scan.report.state, BlockState::Ok);
    ASSERT_EQ(scan.report.ensemble.services.size(), 2u);
    EXPECT_LE(scan.took, 700);
}

TEST(BlockScan, NoSynchronisationEndsAfterThreeSeconds) {
    const Scan scan([](int) { return ScriptedSource::Step{{}, 24}; });
    EXPECT_EQ(scan.report.state, BlockState::NoSync);
    EXPECT_FALSE(scan.report.reason.empty());
    EXPECT_GE(scan.took, 3000);
    EXPECT_LE(scan.took, 3100);
}

TEST(BlockScan, AHungSourceEndsAfterThreeSecondsToo) {
    const Scan scan([](int) { return ScriptedSource::Step{{}, 1000000}; });
    EXPECT_EQ(scan.report.state, BlockState::NoSync);
    EXPECT_LE(scan.took, 3100);
}

// Bytes that never end and hold no frame, a few every ten milliseconds; or a file of them, that starts over.
class Junk final : public ByteInput {
public:
    Junk(ce::Clock& clockToMove, bool asFile) : clock(clockToMove), file(asFile) {}
    ReadStatus Read(std::span<std::uint8_t> room, std::size_t& count, Millis /*limit*/) override {
        if (!file)
            clock.Sleep(10);
        std::fill(room.begin(), room.end(), std::uint8_t{0xA5});
        count = std::min<std::size_t>(room.size(), 5000);
        restarted = file && ++reads % 4 == 0;
        return ReadStatus::Data;
    }
    bool TakeRestart() override { return std::exchange(restarted, false); }

private:
    ce::Clock& clock;
    bool file;
    int reads = 0;
    bool restarted = false;
};

TEST(BlockScan, JunkThatFlowsForEverEndsAfterThreeSecondsToo) {
    ce::ManualClock clock;
    Cancellation cancellation(clock);
    ByteFrameSource source(std::make_unique<Junk>(clock, false), false);
    EXPECT_EQ(ScanBlock(source, cancellation).state, BlockState::NoSync);
    EXPECT_GE(clock.Now(), 3000);
    EXPECT_LE(clock.Now(), 3100);
}

TEST(BlockScan, AFileOfJunkDoesNotGoRoundForEver) {
    ce::ManualClock clock;
    ByteFrameSource source(std::make_unique<Junk>(clock, true), true);
    int turns = 0;
    while (source.Next(100) == ReadStatus::Waiting)
        ASSERT_LT(++turns, 10);
    EXPECT_EQ(source.Next(100), ReadStatus::End);
}

TEST(BlockScan, NoReadableFicEndsASecondAndAHalfAfterTheFirstFrame) {
    TestEnsemble ensemble = TwoServices();
    ensemble.damagedFibs = true;
    const Scan scan([&](int i) {
        return i == 0 ? ScriptedSource::Step{{}, 2000} : ScriptedSource::Step{ensemble.Frame(i)};
    });
    EXPECT_EQ(scan.report.state, BlockState::NoServices);
    EXPECT_GE(scan.took, 3500);
    EXPECT_LE(scan.took, 3600);
}

TEST(BlockScan, LabelsAreWaitedForFiveSecondsAtMost) {
    TestEnsemble ensemble = TwoServices();
    ensemble.labels.erase(0xE201);
    const Scan scan(Frames(ensemble));
    EXPECT_EQ(scan.report.state, BlockState::Ok);
    EXPECT_GE(scan.took, 5000);
    EXPECT_LE(scan.took, 5100);
    _tag_DMB_CHANNEL_INFO info;
    FillChannelInfo(scan.report, info);
    // The one without a label is left out: an empty label would end the list.
    EXPECT_EQ(std::string(info.service[0].szLabel), "TELEVISION");
    EXPECT_EQ(info.service[1].szLabel[0], 0);
}

TEST(BlockScan, ALateLabelIsStillFound) {
    TestEnsemble ensemble = TwoServices();
    ensemble.firstLabelFrame = 180; // 4.3 s
    const Scan scan(Frames(ensemble));
    EXPECT_EQ(scan.report.state, BlockState::Ok);
    EXPECT_TRUE(scan.report.ensemble.services[0].label);
    ensemble.firstLabelFrame = 700; // 16 s
    EXPECT_EQ(Scan(Frames(ensemble)).report.state, BlockState::NoServices);
}

TEST(BlockScan, OnFilesTimeIsCountedInFramesAndNothingWaits) {
    TestEnsemble ensemble = TwoServices();
    ensemble.labels.erase(0xE201);
    const Scan scan(Frames(ensemble), true);
    EXPECT_EQ(scan.report.state, BlockState::Ok);
    EXPECT_EQ(scan.took, 0);
    const Scan empty([](int) { return ScriptedSource::Step{{}, 24}; }, true);
    EXPECT_EQ(empty.report.state, BlockState::NoSync);
    EXPECT_EQ(empty.took, 0);
}

TEST(BlockScan, CancellingEndsItAtOnce) {
    ce::ManualClock clock;
    Cancellation cancellation(clock);
    ScriptedSource source(clock, [&](int i) {
        if (i == 3)
            cancellation.Cancel();
        return ScriptedSource::Step{{}, 24};
    });
    EXPECT_EQ(ScanBlock(source, cancellation).state, BlockState::Cancelled);
    EXPECT_LE(clock.Now(), 200);
}

TEST(BlockScan, TheRecordHoldsLabelsTypesAndIdentifiers) {
    TestEnsemble ensemble = TwoServices();
    ensemble.radio.push_back(OneComponent(0xE2FF, wire::Transport::StreamAudio, wire::kAudioTypeDabPlus, 3));
    ensemble.labels[0xE2FF] = "DAB+";
    Scan scan(Frames(ensemble));
    scan.report.frequency = 183008000;
    _tag_DMB_CHANNEL_INFO info;
    std::memset(&info, 0x5A, sizeof info);
    FillChannelInfo(scan.report, info);
    EXPECT_EQ(info.nFrequency, 183008000u);
    EXPECT_EQ(std::string(info.service[0].szLabel), "RADIO");
    EXPECT_EQ(info.service[0].nServiceType, 0);
    EXPECT_EQ(info.service[0].nServiceID, 0xE201u);
    EXPECT_EQ(std::string(info.service[1].szLabel), "DAB+");
    EXPECT_EQ(info.service[1].nServiceType, 63);
    EXPECT_EQ(std::string(info.service[2].szLabel), "TELEVISION");
    EXPECT_EQ(info.service[2].nServiceType, 8);
    EXPECT_EQ(info.service[2].nServiceID, 0xF1E00401u);
    for (int i = 3; i < DMB_MAX_SERVICES; ++i)
        EXPECT_EQ(info.service[i].szLabel[0], 0) << i;
}

TEST(BlockScan, LabelsAreCutAtSixteenBytesWithoutSplittingACharacter) {
    BlockReport report;
    Service service;
    const std::string text = "A한국방송라디오일"; // 17 bytes in code page 949
    service.label = LabelBytes{wire::kCharsetUtf8, ByteVector(text.begin(), text.end())};
    report.ensemble.services = {service};
    _tag_DMB_CHANNEL_INFO info;
    FillChannelInfo(report, info);
    const std::string label(info.service[0].szLabel, DMB_LABEL_BYTES);
    EXPECT_EQ(label, wire::ToCodePage949("A한국방송라디오") + '\0');
}

TEST(BlockScan, MoreServicesThanTheRecordHolds) {
    BlockReport report;
    for (int i = 0; i < 25; ++i) {
        Service service;
        service.id = static_cast<std::uint32_t>(i);
        service.label = LabelBytes{0, ByteVector(16, static_cast<std::uint8_t>('A' + i))};
        report.ensemble.services.push_back(service);
    }
    _tag_DMB_CHANNEL_INFO info;
    FillChannelInfo(report, info);
    EXPECT_EQ(info.service[17].szLabel[15], 'R');
}

} // namespace
} // namespace medmb
