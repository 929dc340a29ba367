// Recordings of what is on the air.
#include "tests/filters/TelevisionWorld.h"

#include "host/wire/TsPacket.h"

using namespace filters;
using namespace filters_test;

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

TEST_F(Television, ACardRemovedWhileAFilePlaysIsToldOnceAndWhatWasReadIsPlayed) {
    Store("c.dmb", MakeService({.seconds = 30}).packets);
    OpenFile(u"\\SDMMC Card\\c.dmb");
    (void)session->control->Run();
    Pass(1000);
    EXPECT_EQ(world.status.FilesLost(), 0);
    ce::FileFaults faults;
    faults.cardAbsent = true;
    world.system.files().SetFaults(faults);
    Pass(15000);
    EXPECT_EQ(session->TakeEvents()[EC_COMPLETE], 1) << "long before the file's end";
    EXPECT_GT(world.screen.Shown().size(), 20u);
    EXPECT_EQ(world.status.FilesLost(), 1);
    world.system.files().SetFaults({});
}

TEST_F(Television, TheEndOfAFileIsNoLoss) {
    Store("c.dmb", MakeService({.seconds = 2}).packets);
    OpenFile(u"\\SDMMC Card\\c.dmb");
    (void)session->control->Run();
    Pass(6000);
    EXPECT_EQ(session->TakeEvents()[EC_COMPLETE], 1);
    EXPECT_EQ(world.status.FilesLost(), 0);
}

TEST_F(Television, ACaptureOntoACardThatIsOutFailsAndTheProgrammeGoesOn) {
    OpenLive();
    Publish();
    (void)session->control->Run();
    Send(TestTv().packets, TestTv().packetsPerSecond, 0, 1);
    ce::FileFaults faults;
    faults.cardAbsent = true;
    world.system.files().SetFaults(faults);
    ASSERT_EQ(session->controller->SetDMBCaputerFileName(u"\\SDMMC Card\\c.dmb"), S_OK);
    EXPECT_EQ(session->controller->StartDMBCapture(), E_FAIL);
    EXPECT_EQ(session->controller->StopDMBCapture(), S_FALSE);
    world.system.files().SetFaults({});
    Send(TestTv().packets, TestTv().packetsPerSecond, 1, 3);
    ExpectLipSync(20);
    EXPECT_EQ(session->controller->StartDMBCapture(), S_OK) << "the card is back";
    EXPECT_EQ(session->controller->StopDMBCapture(), S_OK);
}
