// In real time: a graph stops at once, whatever it is doing.
#include "tests/filters/TelevisionWorld.h"

using namespace filters;
using namespace filters_test;

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
