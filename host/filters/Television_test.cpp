// The television graph as a whole: the module's controller, the real graph, the real filters; a clock that the test moves.
#include "tests/filters/FilterWorld.h"
#include "tests/filters/TestService.h"
#include "tests/support/OuterData.h"

#include "host/filters/Demultiplexer.h"
#include "host/filters/PictureDecoder.h"
#include "host/filters/SoundDecoder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>

using namespace filters;
using namespace filters_test;

namespace {

constexpr ce::Millis kTick = 20;

class Television : public ::testing::Test {
protected:
    void SetUp() override { objects_ = dshow::LiveObjects(); }
    void TearDown() override {
        CloseSession();
        EXPECT_EQ(dshow::LiveObjects(), objects_);
        EXPECT_EQ(world.system.files().OpenCount(), 0u);
    }

    void CloseSession() {
        if (session) {
            EXPECT_EQ(session->Close(world.screen), S_OK);
            session.reset();
        }
        world.screen.Forget();
    }
    void OpenLive() {
        session = std::make_unique<Session>();
        ASSERT_EQ(session->controller->InitDMBFilters(nullptr, 0), S_OK);
        session->FollowSound(world.screen);
    }
    void OpenFile(const WCHAR* path) {
        session = std::make_unique<Session>();
        ASSERT_EQ(session->controller->InitDMBFilters(path, 1), S_OK);
        session->FollowSound(world.screen);
    }
    void Store(const char* name, const Bytes& bytes) {
        std::ofstream(world.folder.path() / "card" / name, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    Bytes Load(const char* name) {
        std::ifstream file(world.folder.path() / "card" / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    void Publish() {
        medmb::ServiceDescription service;
        service.kind = medmb::ServiceKind::Television;
        generation_ = world.broadcast.Publish(service);
    }
    void Put(ByteSpan packets, bool discontinuity = false) {
        medmb::BroadcastItem item;
        item.bytes.assign(packets.begin(), packets.end());
        item.discontinuity = discontinuity;
        world.broadcast.Put(generation_, std::move(item));
        world.clock.Settle();
    }
    // Sends a service at its own pace, from one of its seconds to another.
    void Send(const Bytes& packets, double perSecond, double from, double to) {
        const std::size_t count = packets.size() / 188;
        for (double second = from; second < to - 1e-9; second += kTick / 1000.0) {
            const auto first = std::min(count, static_cast<std::size_t>(second * perSecond));
            const auto last = std::min(count, static_cast<std::size_t>((second + kTick / 1000.0) * perSecond));
            if (last > first)
                Put(ByteSpan(packets).subspan(first * 188, (last - first) * 188));
            world.clock.Sleep(kTick);
        }
    }
    void Pass(ce::Millis milliseconds) {
        for (; milliseconds > 0; milliseconds -= kTick)
            world.clock.Sleep(std::min(kTick, milliseconds));
    }
    // Every picture against what was heard when it was shown; the first of a run comes early on purpose.
    void ExpectLipSync(std::size_t atLeast, bool fromStart = true) {
        std::size_t compared = 0;
        Ticks last = -1;
        for (const ShownPicture& shown : world.screen.Shown()) {
            const bool again = shown.picture->time == last;
            last = shown.picture->time;
            if (!shown.heard || (fromStart && compared == 0 && !again))
                continue;
            ++compared;
            ASSERT_LE(std::abs(*shown.heard - shown.picture->time), 40 * kTicksPerMs) << compared;
        }
        EXPECT_GE(compared, atLeast);
    }

    World<ce::ManualClock> world;
    std::unique_ptr<Session> session;
    std::uint32_t generation_ = 0;

private:
    LONG objects_ = 0;
};

const Service& TestTv() {
    static const Service service = MakeService({});
    return service;
}

} // namespace

TEST_F(Television, PlaysAFileToItsEnd) {
    Store("a.dmb", TestTv().packets);
    OpenFile(u"\\SDMMC Card\\a.dmb");
    EXPECT_GE(session->control->Run(), 0);
    Pass(3000);
    auto events = session->TakeEvents();
    EXPECT_EQ(events[EC_VIDEOFRAMEREADY], 1);
    EXPECT_EQ(events[EC_COMPLETE], 0);
    Pass(3000);
    EXPECT_EQ(session->TakeEvents()[EC_COMPLETE], 1);
    ExpectLipSync(50);
    // Every picture was seen, the first one twice.
    EXPECT_EQ(static_cast<int>(world.screen.Shown().size()), TestTv().pictures + 1);
}

TEST_F(Television, SoundComesOutAsItWasDecoded) {
    DMB_OUTER_DATA(stream, "dmb-ts/bsac_annexb.dmb");
    DMB_OUTER_DATA(reference, "dmb-ts/bsac.ref.wav");
    std::ifstream file(stream, std::ios::binary);
    Store("a.dmb", {std::istreambuf_iterator<char>(file), {}});
    OpenFile(u"\\SDMMC Card\\a.dmb");
    (void)session->control->Run();
    Pass(6000);
    std::ifstream wav(reference, std::ios::binary);
    const Bytes bytes{std::istreambuf_iterator<char>(wav), {}};
    const auto samples = world.tap.Samples();
    // The first thousand samples of the stream are nearly silent, so the tone tells where it lies.
    std::vector<std::int16_t> wanted;
    for (std::size_t at = 44; at + 1 < bytes.size() && wanted.size() < 180 * 2048; at += 2)
        wanted.push_back(static_cast<std::int16_t>(bytes[at] | bytes[at + 1] << 8));
    std::size_t best = 0;
    for (std::size_t start = 0; start < 20000 && best == 0; start += 2) {
        int off = 0;
        for (std::size_t i = 4096; i < 8192 && off <= 2; ++i)
            off = std::max(off, std::abs(samples[start + i] - wanted[i]));
        if (off <= 2)
            best = start + 1;
    }
    ASSERT_GT(best, 0u);
    for (std::size_t i = 600; i < wanted.size(); ++i)
        ASSERT_LE(std::abs(samples[best - 1 + i] - wanted[i]), 2) << i;
}

TEST_F(Television, AFileThatCannotBeOpenedCompletesAtOnce) {
    OpenFile(u"\\SDMMC Card\\none.dmb");
    EXPECT_GE(session->control->Run(), 0);
    Pass(100);
    EXPECT_EQ(session->TakeEvents()[EC_COMPLETE], 1);
}

TEST_F(Television, AFileOfNoiseCompletes) {
    Store("a.dmb", Bytes(50000, 0x55));
    OpenFile(u"\\SDMMC Card\\a.dmb");
    (void)session->control->Run();
    Pass(100);
    EXPECT_EQ(session->TakeEvents()[EC_COMPLETE], 1);
}

TEST_F(Television, AFileOfSoundAloneOrPicturesAloneCompletes) {
    Store("sound.dmb", MakeService({.seconds = 2, .withPictures = false}).packets);
    OpenFile(u"\\SDMMC Card\\sound.dmb");
    (void)session->control->Run();
    Pass(4000);
    EXPECT_EQ(session->TakeEvents()[EC_COMPLETE], 1);
}

TEST_F(Television, SeeksInMilliseconds) {
    Store("a.dmb", MakeService({.seconds = 8}).packets);
    OpenFile(u"\\SDMMC Card\\a.dmb");
    (void)session->control->Run();
    Pass(1000);
    ULONGLONG now = 0;
    LONGLONG whole = 0;
    ASSERT_EQ(session->controller->GetFilePos(&now, &whole), S_OK);
    EXPECT_NEAR(static_cast<double>(whole), 8500, 300);
    // The clock of the stream runs 0.7 s before the sound of the same moment.
    EXPECT_NEAR(static_cast<double>(now), 1700, 300);
    world.screen.Forget();
    ASSERT_EQ(session->controller->SetFilePos(5000), S_OK);
    Pass(500);
    ASSERT_EQ(session->controller->GetFilePos(&now, &whole), S_OK);
    EXPECT_NEAR(static_cast<double>(now), 5500, 300);
    ExpectLipSync(4);
    const auto shown = world.screen.Shown();
    ASSERT_FALSE(shown.empty());
    // Not one picture of before the moment.
    EXPECT_GE(shown.front().picture->time, (5000 - 50) * kTicksPerMs);
    ASSERT_EQ(session->controller->SetFilePos(1000), S_OK);
    Pass(500);
    ASSERT_EQ(session->controller->GetFilePos(&now, &whole), S_OK);
    EXPECT_NEAR(static_cast<double>(now), 1500, 300);
}

TEST_F(Television, AFileGoesOnAfterAStop) {
    Store("a.dmb", MakeService({.seconds = 6}).packets);
    OpenFile(u"\\SDMMC Card\\a.dmb");
    (void)session->control->Run();
    Pass(3000);
    ULONGLONG before = 0;
    LONGLONG whole = 0;
    (void)session->controller->GetFilePos(&before, &whole);
    (void)session->control->Stop();
    Pass(2000);
    (void)session->control->Run();
    Pass(100);
    ULONGLONG after = 0;
    (void)session->controller->GetFilePos(&after, &whole);
    EXPECT_NEAR(static_cast<double>(after), static_cast<double>(before) + 100, 200);
}

TEST_F(Television, PausingStopsTheClock) {
    Store("a.dmb", TestTv().packets);
    OpenFile(u"\\SDMMC Card\\a.dmb");
    (void)session->control->Run();
    Pass(1000);
    (void)session->control->Pause();
    Ticks before = 0;
    Ticks after = 0;
    ASSERT_EQ(session->master->StreamTime(&before), ClockState::kRunning);
    const std::size_t shown = world.screen.Shown().size();
    Pass(1000);
    ASSERT_EQ(session->master->StreamTime(&after), ClockState::kRunning);
    EXPECT_LE(after - before, 10 * kTicksPerMs);
    EXPECT_EQ(world.screen.Shown().size(), shown);
    (void)session->control->Run();
    Pass(5000);
    EXPECT_EQ(session->TakeEvents()[EC_COMPLETE], 1);
    ExpectLipSync(50);
}

TEST_F(Television, LivePlaysAfterTheFirstRandomAccess) {
    OpenLive();
    Publish();
    (void)session->control->Run();
    Send(TestTv().packets, TestTv().packetsPerSecond, 0, 1.1);
    ASSERT_FALSE(world.screen.Shown().empty()) << "one random access interval and 100 ms";
    Send(TestTv().packets, TestTv().packetsPerSecond, 1.1, 4.5);
    Pass(400);
    ExpectLipSync(30);
    const auto events = session->TakeEvents();
    EXPECT_TRUE(events.contains(EC_VIDEOFRAMEREADY));
    EXPECT_FALSE(events.contains(IDMB_EVENT_NO_SIGNAL));
    EXPECT_FALSE(events.contains(IDMB_EVENT_TIME_RESET));
    EXPECT_EQ(world.status.States(), (std::vector{ReceptionState::kWaiting, ReceptionState::kPlaying}));
}

TEST_F(Television, NoSignalEveryHalfSecondAndItsReturn) {
    OpenLive();
    Publish();
    (void)session->control->Run();
    Pass(480);
    EXPECT_FALSE(session->TakeEvents().contains(IDMB_EVENT_NO_SIGNAL));
    Pass(2040);
    EXPECT_EQ(session->TakeEvents()[IDMB_EVENT_NO_SIGNAL], 5);
    Send(TestTv().packets, TestTv().packetsPerSecond, 0, 0.2);
    auto events = session->TakeEvents();
    EXPECT_EQ(events[IDMB_EVENT_SIGNAL], 1);
    EXPECT_EQ(events[IDMB_EVENT_NO_SIGNAL], 0);
    Pass(600);
    EXPECT_EQ(session->TakeEvents()[IDMB_EVENT_NO_SIGNAL], 1);
}

TEST_F(Television, AFileReportsNoSignalNever) {
    Store("a.dmb", TestTv().packets);
    OpenFile(u"\\SDMMC Card\\a.dmb");
    (void)session->control->Run();
    Pass(8000);
    EXPECT_FALSE(session->TakeEvents().contains(IDMB_EVENT_NO_SIGNAL));
}

TEST_F(Television, LipSyncHoldsAfterALoss) {
    const Service service = MakeService({.seconds = 8});
    const Bytes lossy = LosePackets(service.packets, 0.05, 3, 0.2, 0.5);
    OpenLive();
    Publish();
    (void)session->control->Run();
    const double perSecond = service.packetsPerSecond;
    // Lost packets leave their time: the rest is sent where it was.
    std::size_t at = 0;
    for (std::size_t i = 0; i < service.Count(); i += 4) {
        Bytes some;
        for (std::size_t k = i; k < std::min(service.Count(), i + 4); ++k) {
            const ByteSpan packet = ByteSpan(service.packets).subspan(k * 188, 188);
            if (at < lossy.size() && std::ranges::equal(packet, ByteSpan(lossy).subspan(at, 188))) {
                some.insert(some.end(), packet.begin(), packet.end());
                at += 188;
            }
        }
        if (!some.empty())
            Put(some);
        const auto due = static_cast<ce::Millis>(static_cast<double>(i + 4) / perSecond * 1000);
        if (due > world.clock.Now())
            world.clock.Sleep(due - world.clock.Now());
    }
    Pass(500);
    EXPECT_EQ(at, lossy.size());
    ExpectLipSync(40);
    EXPECT_FALSE(session->TakeEvents().contains(IDMB_EVENT_TIME_RESET));
}

// A looping programme of twenty seconds, whose clock starts over each time, as the demo's does.
TEST_F(Television, LipSyncHoldsForTenMinutes) {
    const Service service = MakeService({.seconds = 20, .width = 64, .height = 48});
    OpenLive();
    Publish();
    (void)session->control->Run();
    std::size_t compared = 0;
    for (int round = 0; round < 30; ++round) {
        Send(service.packets, service.packetsPerSecond, 0, 20.5);
        ExpectLipSync(200, round == 0);
        compared += world.screen.Shown().size();
        world.screen.Forget();
    }
    EXPECT_GT(compared, 8000u);
    const auto events = session->TakeEvents();
    EXPECT_FALSE(events.contains(IDMB_EVENT_TIME_RESET));
    EXPECT_FALSE(events.contains(IDMB_EVENT_NO_SIGNAL));
}

TEST_F(Television, ScrambledShowsAState) {
    ServiceWish wish;
    wish.mux.scrambledFrom = 0;
    wish.mux.scrambledTo = 90000 * 10;
    const Service service = MakeService(wish);
    OpenLive();
    Publish();
    (void)session->control->Run();
    Send(service.packets, service.packetsPerSecond, 0, 2);
    EXPECT_TRUE(world.screen.Shown().empty());
    ASSERT_FALSE(world.status.States().empty());
    EXPECT_EQ(world.status.States().back(), ReceptionState::kScrambled);
}

TEST_F(Television, HeldPictureStaysAndComesBackAtARandomAccess) {
    OpenLive();
    Publish();
    (void)session->control->Run();
    Send(TestTv().packets, TestTv().packetsPerSecond, 0, 2);
    const auto hold = session->Of<IVideoHoldControl>(kVideoRendererName, IID_IVideoHoldControl);
    ASSERT_TRUE(hold);
    (void)session->control->Pause();
    EXPECT_EQ(hold->HoldVideo(), S_OK);
    const std::size_t shown = world.screen.Shown().size();
    Send(TestTv().packets, TestTv().packetsPerSecond, 2, 2.6);
    EXPECT_EQ(world.screen.Shown().size(), shown);
    EXPECT_EQ(hold->ResumeVideo(), S_OK);
    (void)session->control->Run();
    Send(TestTv().packets, TestTv().packetsPerSecond, 2.6, 4.5);
    const auto all = world.screen.Shown();
    ASSERT_GT(all.size(), shown);
    // Pictures of the time before, still waiting when the pause came, are not shown any more.
    EXPECT_GE(all[shown].picture->time, static_cast<Ticks>(2.6 * 90000));
}

TEST_F(Television, ACaptureBeginsWithTablesAndPlaysAtOnce) {
    const Service service = MakeService({.seconds = 6});
    OpenLive();
    Publish();
    EXPECT_LT(session->controller->StartDMBCapture(), 0) << "no name, not running";
    (void)session->control->Run();
    Send(service.packets, service.packetsPerSecond, 0, 1.5);
    ASSERT_EQ(session->controller->SetDMBCaputerFileName(u"\\SDMMC Card\\c.dmb"), S_OK);
    ASSERT_EQ(session->controller->StartDMBCapture(), S_OK);
    EXPECT_LT(session->controller->StartDMBCapture(), 0) << "one at a time";
    Send(service.packets, service.packetsPerSecond, 1.5, 5);
    ASSERT_EQ(session->controller->StopDMBCapture(), S_OK);
    EXPECT_EQ(session->controller->StopDMBCapture(), S_FALSE);
    ExpectLipSync(30);

    const Bytes capture = Load("c.dmb");
    ASSERT_GT(capture.size(), 100000u);
    EXPECT_EQ(capture.size() % 188, 0u);
    // Every table, then the picture's first packet; the continuity of each PID never breaks.
    std::map<int, int> counters;
    for (std::size_t at = 0; at < capture.size(); at += 188) {
        const auto packet = wire::TsPacket::Parse(ByteSpan(capture).subspan(at, 188));
        ASSERT_TRUE(packet);
        if (!packet->hasPayload || packet->header.pid == wire::kNullPid)
            continue;
        const auto known = counters.find(packet->header.pid);
        if (known != counters.end()) {
            ASSERT_EQ((known->second + 1) & 15, packet->header.continuity) << packet->header.pid << " at " << at / 188;
        }
        counters[packet->header.pid] = packet->header.continuity;
    }
    CloseSession();
    OpenFile(u"\\SDMMC Card\\c.dmb");
    (void)session->control->Run();
    Pass(60);
    EXPECT_FALSE(world.screen.Shown().empty()) << "the first picture is there at once";
    Pass(6000);
    EXPECT_EQ(session->TakeEvents()[EC_COMPLETE], 1);
    ExpectLipSync(30);
}

TEST_F(Television, AFullCardEndsTheCaptureAndLeavesAPlayableFile) {
    const Service service = MakeService({.seconds = 6});
    OpenLive();
    Publish();
    (void)session->control->Run();
    Send(service.packets, service.packetsPerSecond, 0, 0.5);
    ASSERT_EQ(session->controller->SetDMBCaputerFileName(u"\\SDMMC Card\\c.dmb"), S_OK);
    ASSERT_EQ(session->controller->StartDMBCapture(), S_OK);
    ce::FileFaults faults;
    faults.diskFullAfter = 60000;
    world.system.files().SetFaults(faults);
    Send(service.packets, service.packetsPerSecond, 0.5, 5);
    EXPECT_EQ(world.status.Failures(), std::vector{static_cast<HRESULT>(0x80070070u)});
    EXPECT_EQ(session->controller->StopDMBCapture(), static_cast<HRESULT>(0x80070070u));
    ExpectLipSync(30); // the programme went on
    EXPECT_EQ(Load("c.dmb").size(), 60000u);
    world.system.files().SetFaults({});
    CloseSession();
    OpenFile(u"\\SDMMC Card\\c.dmb");
    (void)session->control->Run();
    Pass(3000);
    EXPECT_EQ(session->TakeEvents()[EC_COMPLETE], 1);
    EXPECT_GT(world.screen.Shown().size(), 10u);
}

TEST_F(Television, ARemovedCardEndsTheCapture) {
    OpenLive();
    Publish();
    (void)session->control->Run();
    Send(TestTv().packets, TestTv().packetsPerSecond, 0, 0.5);
    ASSERT_EQ(session->controller->SetDMBCaputerFileName(u"\\SDMMC Card\\c.dmb"), S_OK);
    ASSERT_EQ(session->controller->StartDMBCapture(), S_OK);
    Send(TestTv().packets, TestTv().packetsPerSecond, 0.5, 2);
    ce::FileFaults faults;
    faults.cardAbsent = true;
    world.system.files().SetFaults(faults);
    Send(TestTv().packets, TestTv().packetsPerSecond, 2, 4);
    EXPECT_LT(session->controller->StopDMBCapture(), 0);
    EXPECT_EQ(world.status.Failures().size(), 1u);
    world.system.files().SetFaults({});
}

TEST_F(Television, AnotherSoundIsReportedAndAdopted) {
    Store("a.dmb", MakeService({.seconds = 6, .changeAt = 3}).packets);
    OpenFile(u"\\SDMMC Card\\a.dmb");
    (void)session->control->Run();
    std::map<LONG, int> events;
    ce::Millis waited = 0;
    for (; !events.contains(IDMB_EVENT_AUDIO_CHANGE) && waited < 8000; waited += kTick) {
        Pass(kTick);
        events = session->TakeEvents();
    }
    ASSERT_TRUE(events.contains(IDMB_EVENT_AUDIO_CHANGE));
    EXPECT_NEAR(static_cast<double>(waited), 3000, 800);
    (void)session->control->Stop();
    EXPECT_EQ(session->controller->HandleAudioChange(), S_OK);
    const auto parser = session->Of<IDMBStreamControl>(kParserName, IID_IDMBStreamControl);
    DMBAudioInfo* info = nullptr;
    ASSERT_EQ(parser->GetParam(kParamAudioInfo, &info), S_OK);
    EXPECT_EQ(info->value0, 24000);
    EXPECT_EQ(info->value1, 1);
    (void)session->control->Run();
    Pass(6000);
    events = session->TakeEvents();
    EXPECT_EQ(events[EC_COMPLETE], 1);
    EXPECT_EQ(events[IDMB_EVENT_AUDIO_CHANGE], 0);
    const auto samples = world.tap.Samples();
    // There is sound again in the last second that was played.
    EXPECT_TRUE(
        std::any_of(samples.end() - 96000 * 5, samples.end(), [](std::int16_t s) { return std::abs(s) > 1000; }));
}

// The transmitter's clock jumps again and again: nothing to follow.
TEST_F(Television, AClockThatNeverRestsAsksForANewGraph) {
    OpenLive();
    Publish();
    (void)session->control->Run();
    for (int i = 0; i < 8; ++i)
        Send(TestTv().packets, TestTv().packetsPerSecond, 0, 0.5);
    EXPECT_GE(session->TakeEvents()[IDMB_EVENT_TIME_RESET], 1);
}

// Another service of another generation: the old one's packets never come.
TEST_F(Television, AReaderNeverSeesAnotherService) {
    OpenLive();
    Publish();
    (void)session->control->Run();
    Send(TestTv().packets, TestTv().packetsPerSecond, 0, 2);
    Publish();
    world.clock.Settle();
    const std::size_t shown = world.screen.Shown().size();
    Send(TestTv().packets, TestTv().packetsPerSecond, 0, 3);
    // What was queued plays out, and then nothing.
    EXPECT_LE(world.screen.Shown().size(), shown + 20);
    EXPECT_GE(session->TakeEvents()[IDMB_EVENT_NO_SIGNAL], 4);
}

TEST_F(Television, VolumeAndMute) {
    Store("a.dmb", TestTv().packets);
    OpenFile(u"\\SDMMC Card\\a.dmb");
    const auto audio = dshow::QueryFor<IBasicAudio>(session->graph.Get(), IID_IBasicAudio);
    ASSERT_TRUE(audio);
    EXPECT_EQ(audio->put_Volume(-10000), S_OK);
    EXPECT_EQ(audio->put_Volume(1), E_INVALIDARG);
    (void)session->control->Run();
    Pass(1500);
    const auto silent = world.tap.Samples();
    EXPECT_TRUE(std::ranges::all_of(silent, [](std::int16_t s) { return s == 0; }));
    EXPECT_EQ(audio->put_Volume(0), S_OK);
    Pass(1500);
    const auto loud = world.tap.Samples();
    EXPECT_TRUE(std::any_of(loud.end() - 48000, loud.end(), [](std::int16_t s) { return std::abs(s) > 2000; }));
}

TEST_F(Television, TheWindowPlacesThePicture) {
    OpenFile(u"\\SDMMC Card\\none.dmb");
    const auto window = dshow::QueryFor<IVideoWindow>(session->graph.Get(), IID_IVideoWindow);
    ASSERT_TRUE(window);
    EXPECT_EQ(window->SetWindowPosition(10, 20, 300, 200), S_OK);
    EXPECT_EQ(world.screen.place.right, 310);
    EXPECT_EQ(window->put_Visible(OAFALSE), S_OK);
    EXPECT_FALSE(world.screen.isVisible);
}

TEST_F(Television, LiveSourceCannotCue) {
    OpenLive();
    (void)session->control->Pause();
    dshow::ComPtr<IBaseFilter> parser;
    ASSERT_EQ(session->graph->FindFilterByName(kParserName, parser.Out()), S_OK);
    FILTER_STATE state = State_Stopped;
    EXPECT_EQ(parser->GetState(0, &state), VFW_S_CANT_CUE);
    EXPECT_EQ(state, State_Paused);
}

// --- in real time

TEST(TelevisionRealTime, StopReturnsFromAnyState) {
    World<ce::RealClock> world;
    const Service service = MakeService({});
    std::ofstream(world.folder.path() / "card" / "a.dmb", std::ios::binary)
        .write(reinterpret_cast<const char*>(service.packets.data()),
               static_cast<std::streamsize>(service.packets.size()));
    medmb::ServiceDescription description;
    description.kind = medmb::ServiceKind::Television;
    const std::uint32_t generation = world.broadcast.Publish(description);
    for (int round = 0; round < 12; ++round) {
        Session session;
        const bool live = round % 2 != 0;
        ASSERT_EQ(session.controller->InitDMBFilters(live ? nullptr : u"\\SDMMC Card\\a.dmb", live ? 0 : 1), S_OK);
        if (live) {
            medmb::BroadcastItem item;
            item.bytes = service.packets;
            world.broadcast.Put(generation, item);
        }
        (void)session.control->Run();
        if (round >= 4) // the queues are full by now
            world.clock.Sleep(60);
        if (round >= 8)
            (void)session.control->Pause();
        const ce::Millis before = world.clock.Now();
        (void)session.control->Stop();
        EXPECT_LE(world.clock.Now() - before, 100) << round;
        EXPECT_EQ(session.controller->CloseDMBFilters(), S_OK);
    }
}
