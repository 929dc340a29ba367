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
