// Picture against sound, by what is heard when a picture is shown.
#include "tests/filters/TelevisionWorld.h"

using namespace filters;
using namespace filters_test;

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
