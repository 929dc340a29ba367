// Capture and position: the five bridges to the parser.
#include "tests/graph/ControllerWorld.h"

namespace {

class ControllerCapture : public ControllerTest {
protected:
    void SetUp() override {
        ASSERT_EQ(control.InitDMBFilters(nullptr, 0), 0);
        (void)world.TakeDebugLines();
        world.stage.log.Clear();
    }
    void TearDown() override {
        EXPECT_EQ(Last(Kind::Parser)->References(), 4u); // every interface was given back
        EXPECT_EQ(control.CloseDMBFilters(), 0);
        ControllerTest::TearDown();
    }
    scripted::Script& parser() { return world.stage[Kind::Parser]; }
};

using ControllerWithoutParser = ControllerTest;

// Edge case: without a television graph everything fails silently.
TEST_F(ControllerWithoutParser, WithNoDMBGraphBuiltEveryOperationReturnsE_FAILAndLogsNothing) {
    ULONGLONG first = 0;
    LONGLONG second = 0;
    EXPECT_EQ(control.SetDMBCaputerFileName(WTEXT("a.dmb")), E_FAIL);
    EXPECT_EQ(control.StartDMBCapture(), E_FAIL);
    EXPECT_EQ(control.StopDMBCapture(), E_FAIL);
    EXPECT_EQ(control.GetFilePos(&first, &second), E_FAIL);
    EXPECT_EQ(control.SetFilePos(1), E_FAIL);
    EXPECT_TRUE(world.TakeDebugLines().empty());
}

TEST_F(ControllerCapture, WithoutTheInterfaceEveryOperationReturnsE_FAILAndLogsNothing) {
    parser().noCustom = true;
    ULONGLONG first = 0;
    LONGLONG second = 0;
    EXPECT_EQ(control.SetDMBCaputerFileName(WTEXT("a.dmb")), E_FAIL);
    EXPECT_EQ(control.StartDMBCapture(), E_FAIL);
    EXPECT_EQ(control.StopDMBCapture(), E_FAIL);
    EXPECT_EQ(control.GetFilePos(&first, &second), E_FAIL);
    EXPECT_EQ(control.SetFilePos(1), E_FAIL);
    EXPECT_TRUE(world.TakeDebugLines().empty());
}

TEST_F(ControllerCapture, SetDMBCaputerFileNameLogsPathAndResult) {
    EXPECT_EQ(control.SetDMBCaputerFileName(WTEXT("\\SDMMC Card\\DMB\\KBS_1.dmb")), 0);
    EXPECT_EQ(Calls(), Lines{"parser.SetCaptureFileName(\\SDMMC Card\\DMB\\KBS_1.dmb)"});
    EXPECT_EQ(world.TakeDebugLines(), Lines{"[DMB|FILTER] SetDMBCaputerFileName(\\SDMMC Card\\DMB\\KBS_1.dmb) 0\r\n"});
    parser().captureName = E_FAIL;
    EXPECT_EQ(control.SetDMBCaputerFileName(nullptr), E_FAIL);
    EXPECT_EQ(world.TakeDebugLines(), Lines{"[DMB|FILTER] SetDMBCaputerFileName((null)) -2147467259\r\n"});
}

TEST_F(ControllerCapture, StartDMBCaptureLogsResultAndTheConstant0) {
    EXPECT_EQ(control.StartDMBCapture(), 0);
    EXPECT_EQ(world.TakeDebugLines(), Lines{"[DMB|FILTER] StartDMBCapture() 0/0\r\n"});
    EXPECT_EQ(control.StopDMBCapture(), 0);
    parser().startCapture = S_FALSE;
    EXPECT_EQ(control.StartDMBCapture(), S_FALSE);
    EXPECT_EQ(world.TakeDebugLines(), Lines{"[DMB|FILTER] StartDMBCapture() 1/0\r\n"});
}

TEST_F(ControllerCapture, StartCaptureDuringACaptureFails) {
    EXPECT_EQ(control.StartDMBCapture(), 0);
    EXPECT_EQ(control.StartDMBCapture(), E_UNEXPECTED);
    EXPECT_EQ(world.TakeDebugLines().back(), "[DMB|FILTER] StartDMBCapture() -2147418113/0\r\n");
    EXPECT_EQ(control.StopDMBCapture(), 0);
    EXPECT_EQ(control.StartDMBCapture(), 0);
}

// Edge case: a stop without a capture returns the parser's answer.
TEST_F(ControllerCapture, StopDMBCaptureWhenNoCaptureRunsReturnsWhateverTheParserReturns) {
    for (const HRESULT result : {S_OK, S_FALSE, E_UNEXPECTED}) {
        parser().stopCapture = result;
        EXPECT_EQ(control.StopDMBCapture(), result);
    }
    EXPECT_EQ(Calls("StopCapture").size(), 3u);
    EXPECT_TRUE(world.TakeDebugLines().empty());
}

TEST_F(ControllerCapture, GetFilePosPassesBothPointersThrough) {
    parser().position1 = 0xFEDCBA9876543210u;
    parser().position2 = -5;
    ULONGLONG first = 0;
    LONGLONG second = 0;
    EXPECT_EQ(control.GetFilePos(&first, &second), 0);
    EXPECT_EQ(first, 0xFEDCBA9876543210u);
    EXPECT_EQ(second, -5);
    parser().getPosition = E_ABORT;
    EXPECT_EQ(control.GetFilePos(nullptr, nullptr), E_ABORT); // the parser's business, not ours
    EXPECT_TRUE(world.TakeDebugLines().empty());
}

// Edge case: a position beyond 32 bits is told low word first.
TEST_F(ControllerCapture, SetFilePosWithThePosition4294967298LogsALineWhoseFirstFieldShows2AndWhoseSecondShows1) {
    parser().setPosition = static_cast<HRESULT>(0x80070057u); // not shown
    EXPECT_EQ(control.SetFilePos(4294967298), static_cast<HRESULT>(0x80070057u));
    EXPECT_EQ(Calls(), Lines{"parser.SetPosition(4294967298) = 80070057"});
    EXPECT_EQ(world.TakeDebugLines(), Lines{"[DMB|FILTER] SetFilePos(2) 1\r\n"});
}

TEST_F(ControllerCapture, SetFilePosShowsANegativePositionAsTwoSignedWords) {
    EXPECT_EQ(control.SetFilePos(-2), 0);
    EXPECT_EQ(world.TakeDebugLines(), Lines{"[DMB|FILTER] SetFilePos(-2) -1\r\n"});
}

} // namespace
