// Television as it arrives.
#include "tests/filters/TelevisionWorld.h"

using namespace filters;
using namespace filters_test;

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

TEST_F(Television, ScrambledShowsAState) {
    ServiceWish wish;
    wish.seconds = 6;
    wish.mux.scrambledFrom = 0;
    wish.mux.scrambledTo = 90000 * 2;
    const Service service = MakeService(wish);
    OpenLive();
    Publish();
    (void)session->control->Run();
    Send(service.packets, service.packetsPerSecond, 0, 1.9);
    EXPECT_TRUE(world.screen.Shown().empty());
    EXPECT_EQ(world.status.States(), (std::vector{ReceptionState::kWaiting, ReceptionState::kScrambled}));
    Send(service.packets, service.packetsPerSecond, 1.9, 4.5);
    EXPECT_FALSE(world.screen.Shown().empty());
    EXPECT_EQ(world.status.States().back(), ReceptionState::kPlaying);
    const auto events = session->TakeEvents();
    EXPECT_FALSE(events.contains(IDMB_EVENT_NO_SIGNAL)) << "scrambled packets are a signal";
    EXPECT_FALSE(events.contains(IDMB_EVENT_TIME_RESET));
}

TEST_F(Television, EveryReasonForNoPictureIsTold) {
    using enum ReceptionState;
    OpenLive();
    (void)session->control->Run();
    Pass(600);
    EXPECT_EQ(world.status.States(), (std::vector{kWaiting, kNoService}));
    CloseSession();

    Publish();
    OpenLive();
    (void)session->control->Run();
    Pass(600);
    EXPECT_EQ(world.status.States().back(), kNoSource);
    medmb::StageCounters counters;
    counters.bytesSkipped = 5000;
    world.broadcast.SetCounters(generation_, counters);
    Pass(600);
    EXPECT_EQ(world.status.States().back(), kNoSync);
    world.broadcast.SetSignal(generation_, medmb::SignalState::Good);
    Pass(600);
    EXPECT_EQ(world.status.States().back(), kNoSignal);
    world.broadcast.Describe(generation_, "", true);
    Pass(600);
    EXPECT_EQ(world.status.States().back(), kScrambled);
    Send(TestTv().packets, TestTv().packetsPerSecond, 0, 1);
    EXPECT_EQ(world.status.States().back(), kPlaying);
    world.broadcast.SetSignal(generation_, medmb::SignalState::Weak);
    Send(TestTv().packets, TestTv().packetsPerSecond, 1, 1.5);
    EXPECT_EQ(world.status.States().back(), kWeak);
    (void)session->control->Stop();
    EXPECT_EQ(world.status.States().back(), kIdle);
}

// The view stops the graph, has the parser adopt what it announces, joins the pins anew, and runs on.
TEST_F(Television, AnotherSoundOnAirIsReportedAndAdopted) {
    const Service service = MakeService({.seconds = 8, .changeAt = 3});
    OpenLive();
    Publish();
    (void)session->control->Run();
    Send(service.packets, service.packetsPerSecond, 0, 2.5);
    EXPECT_FALSE(session->TakeEvents().contains(IDMB_EVENT_AUDIO_CHANGE));
    Send(service.packets, service.packetsPerSecond, 2.5, 4);
    EXPECT_EQ(session->TakeEvents()[IDMB_EVENT_AUDIO_CHANGE], 1) << "once, although the tables repeat it";
    const auto parser = session->Of<IDMBStreamControl>(kParserName, IID_IDMBStreamControl);
    DMBAudioInfo* info = nullptr;
    ASSERT_EQ(parser->GetParam(kParamAudioInfo, &info), S_OK);
    EXPECT_EQ(info->value0, 24000);
    EXPECT_EQ(info->value1, 1);
    (void)session->control->Stop();
    EXPECT_EQ(session->controller->HandleAudioChange(), S_OK);
    world.tap.Forget();
    world.screen.Forget();
    (void)session->control->Run();
    Send(service.packets, service.packetsPerSecond, 4, 8);
    EXPECT_FALSE(session->TakeEvents().contains(IDMB_EVENT_AUDIO_CHANGE));
    ExpectLipSync(20);
    const auto samples = world.tap.Samples();
    EXPECT_TRUE(std::any_of(samples.end() - 96000, samples.end(), [](std::int16_t s) { return std::abs(s) > 1000; }));
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

TEST_F(Television, LiveSourceCannotCue) {
    OpenLive();
    (void)session->control->Pause();
    dshow::ComPtr<IBaseFilter> parser;
    ASSERT_EQ(session->graph->FindFilterByName(kParserName, parser.Out()), S_OK);
    FILTER_STATE state = State_Stopped;
    EXPECT_EQ(parser->GetState(0, &state), VFW_S_CANT_CUE);
    EXPECT_EQ(state, State_Paused);
}
