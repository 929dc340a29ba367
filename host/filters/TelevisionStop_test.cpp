// In real time: a graph stops within 100 ms, whatever it is doing.
#include "tests/filters/TelevisionWorld.h"

#include "host/headend/LayerTwoEncoder.h"

using namespace filters;
using namespace filters_test;

namespace {

constexpr ce::Millis kStopLimit = 100;
constexpr const WCHAR* kFile = u"\\SDMMC Card\\a.dmb";

class StopsAtOnce : public ::testing::Test {
protected:
    void SetUp() override {
        std::ofstream(world.folder.path() / "card" / "a.dmb", std::ios::binary)
            .write(reinterpret_cast<const char*>(TestTv().packets.data()),
                   static_cast<std::streamsize>(TestTv().packets.size()));
    }
    void Open(bool live, medmb::ServiceKind kind = medmb::ServiceKind::Television) {
        session = std::make_unique<Session>();
        if (live) {
            medmb::ServiceDescription description;
            description.kind = kind;
            generation = world.broadcast.Publish(description);
        }
        if (kind == medmb::ServiceKind::Radio)
            ASSERT_EQ(session->controller->InitDABFilters(), S_OK);
        else
            ASSERT_EQ(session->controller->InitDMBFilters(live ? nullptr : kFile, live ? 0 : 1), S_OK);
        radio = kind == medmb::ServiceKind::Radio;
    }
    void Put(const Bytes& bytes, medmb::ItemKind kind = medmb::ItemKind::Packets) {
        medmb::BroadcastItem item;
        item.kind = kind;
        item.bytes = bytes;
        world.broadcast.Put(generation, std::move(item));
    }
    void Run() { ASSERT_GE(session->control->Run(), 0); }
    void ExpectStop(const char* state) {
        const ce::Millis before = world.clock.Now();
        EXPECT_GE(session->control->Stop(), 0);
        EXPECT_LE(world.clock.Now() - before, kStopLimit) << state;
        EXPECT_EQ(radio ? session->controller->CloseDABFilters() : session->controller->CloseDMBFilters(), S_OK)
            << state;
        session.reset();
    }

    World<ce::RealClock> world;
    std::unique_ptr<Session> session;
    std::uint32_t generation = 0;
    bool radio = false;
};

} // namespace

TEST_F(StopsAtOnce, AFile) {
    Open(false);
    ExpectStop("never run");
    Open(false);
    ASSERT_GE(session->control->Pause(), 0);
    ExpectStop("paused, never run");
    Open(false);
    Run();
    ExpectStop("just run");
    Open(false);
    Run();
    world.clock.Sleep(60);
    ExpectStop("its queues are full");
    Open(false);
    Run();
    world.clock.Sleep(60);
    (void)session->control->Pause();
    ExpectStop("its queues are full, paused");
    Open(false);
    Run();
    world.clock.Sleep(60);
    (void)session->controller->SetFilePos(3000);
    ExpectStop("seeking");
    Open(false);
    Run();
    (void)session->controller->SetFilePos(4400);
    for (ce::Millis end = world.clock.Now() + 5000; session->TakeEvents()[EC_COMPLETE] == 0 && world.clock.Now() < end;)
        world.clock.Sleep(20);
    ExpectStop("at its end");
    std::filesystem::remove(world.folder.path() / "card" / "a.dmb");
    Open(false);
    Run();
    ExpectStop("not there");
}

TEST_F(StopsAtOnce, AFileThatWaitsForAnotherSound) {
    const Service service = MakeService({.seconds = 3, .changeAt = 1});
    ce::WriteContent(world.folder.path() / "card" / "a.dmb",
                     std::string(service.packets.begin(), service.packets.end()));
    Open(false);
    Run();
    for (ce::Millis end = world.clock.Now() + 5000;
         session->TakeEvents()[IDMB_EVENT_AUDIO_CHANGE] == 0 && world.clock.Now() < end;)
        world.clock.Sleep(20);
    ExpectStop("waits for another sound");
}

TEST_F(StopsAtOnce, TheAir) {
    Open(true);
    Run();
    ExpectStop("nothing has come");
    Open(true);
    Put(TestTv().packets);
    Run();
    ExpectStop("just run");
    Open(true);
    Put(TestTv().packets);
    Run();
    world.clock.Sleep(60);
    ExpectStop("its queues are full");
    Open(true);
    Put(TestTv().packets);
    Run();
    world.clock.Sleep(60);
    (void)session->control->Pause();
    Put(TestTv().packets);
    ExpectStop("paused");
    Open(true);
    Run();
    world.clock.Sleep(600);
    ExpectStop("no signal");
    Open(true);
    Put(TestTv().packets);
    Run();
    world.broadcast.End();
    ExpectStop("the service has ended");
}

TEST_F(StopsAtOnce, ACapture) {
    Open(true);
    Put(TestTv().packets);
    Run();
    ASSERT_EQ(session->controller->SetDMBCaputerFileName(u"\\SDMMC Card\\c.dmb"), S_OK);
    ASSERT_EQ(session->controller->StartDMBCapture(), S_OK);
    Put(TestTv().packets);
    world.clock.Sleep(20);
    ExpectStop("capturing");
}

TEST_F(StopsAtOnce, Radio) {
    const auto frames =
        headend::EncodeLayerTwo({.sampleRate = 48000, .channels = 2, .kbps = 192}, std::vector<float>(96000 * 4));
    for (const bool plays : {false, true}) {
        for (const bool pause : {false, true}) {
            Open(true, medmb::ServiceKind::Radio);
            Run();
            if (plays) {
                for (const auto& frame : frames)
                    Put(frame, medmb::ItemKind::Audio);
                world.clock.Sleep(40);
            }
            if (pause)
                (void)session->control->Pause();
            ExpectStop(plays ? "plays" : "waits");
        }
    }
}
