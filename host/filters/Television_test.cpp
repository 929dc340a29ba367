// A recording from its beginning to its end.
#include "tests/filters/TelevisionWorld.h"
#include "tests/support/OuterData.h"

using namespace filters;
using namespace filters_test;

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
    EXPECT_EQ(world.status.States().back(), ReceptionState::kNoFile);
    ULONGLONG now = 1;
    LONGLONG whole = 1;
    EXPECT_EQ(session->controller->GetFilePos(&now, &whole), S_OK);
    EXPECT_EQ(whole, 0);
    EXPECT_LT(session->controller->SetFilePos(0), 0);
}

TEST_F(Television, AFileOfNoiseCompletes) {
    Store("a.dmb", Bytes(50000, 0x55));
    OpenFile(u"\\SDMMC Card\\a.dmb");
    (void)session->control->Run();
    Pass(100);
    EXPECT_EQ(session->TakeEvents()[EC_COMPLETE], 1);
    EXPECT_EQ(world.status.States().back(), ReceptionState::kNoFile);
}

TEST_F(Television, AFileOfSoundAloneCompletes) {
    Store("sound.dmb", MakeService({.seconds = 2, .withPictures = false}).packets);
    OpenFile(u"\\SDMMC Card\\sound.dmb");
    (void)session->control->Run();
    Pass(4000);
    EXPECT_EQ(session->TakeEvents()[EC_COMPLETE], 1);
}

// As another receiver may have left it: with the outer code's parity, cut anywhere, in front of its first tables.
TEST_F(Television, PlaysAndSeeksInAFileOf204BytesThatStartsAnywhere) {
    const Service service = MakeService({.seconds = 8});
    Bytes file;
    for (std::size_t at = 0; at < service.packets.size(); at += 188) {
        const auto packet = service.packets.begin() + static_cast<std::ptrdiff_t>(at);
        file.insert(file.end(), packet, packet + 188);
        for (int i = 0; i < 16; ++i) // any bytes: nobody reads the parity here
            file.push_back(static_cast<std::uint8_t>(at / 188 * 7 + static_cast<std::size_t>(i) * 31));
    }
    file.erase(file.begin(), file.begin() + 204 * 30 + 77);
    Store("a.tsp", file);
    OpenFile(u"\\SDMMC Card\\a.tsp");
    (void)session->control->Run();
    Pass(2000);
    ExpectLipSync(15);
    world.screen.Forget();
    ASSERT_EQ(session->controller->SetFilePos(5000), S_OK);
    Pass(1000);
    ExpectLipSync(10);
    ULONGLONG now = 0;
    LONGLONG whole = 0;
    ASSERT_EQ(session->controller->GetFilePos(&now, &whole), S_OK);
    EXPECT_NEAR(static_cast<double>(now), 6000, 300);
    Pass(5000);
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

// These belong to the air alone.
TEST_F(Television, AFileReportsNeitherSignalNorClock) {
    Bytes restless;
    for (int i = 0; i < 8; ++i) {
        const auto begin = TestTv().packets.begin();
        restless.insert(restless.end(), begin,
                        begin + static_cast<std::ptrdiff_t>(TestTv().packetsPerSecond / 2) * 188);
    }
    Store("a.dmb", restless);
    OpenFile(u"\\SDMMC Card\\a.dmb");
    (void)session->control->Run();
    Pass(12000);
    auto events = session->TakeEvents();
    EXPECT_EQ(events[EC_COMPLETE], 1);
    EXPECT_EQ(events[IDMB_EVENT_NO_SIGNAL] + events[IDMB_EVENT_SIGNAL] + events[IDMB_EVENT_TIME_RESET], 0);
}

TEST_F(Television, AScrambledFileSaysSo) {
    ServiceWish wish;
    wish.mux.scrambledTo = 90000 * 10;
    Store("a.dmb", MakeService(wish).packets);
    OpenFile(u"\\SDMMC Card\\a.dmb");
    (void)session->control->Run();
    Pass(1000);
    EXPECT_EQ(world.status.States().back(), ReceptionState::kScrambled);
    EXPECT_TRUE(world.screen.Shown().empty());
    EXPECT_EQ(session->TakeEvents()[EC_COMPLETE], 1);
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
