// Events: the graph's and the timers'.
#include <cstring>

#include "dataservice/PadInfo.h"
#include "tests/stories/Story.h"

using namespace stories;
using scripted::Kind;

namespace {
class EventStory : public Story {
protected:
    void SetUp() override { Open(); }
    void TearDown() override {
        // The counter is the module's and outlives the view.
        if (view != nullptr && peer->ChannelCount() > 0) {
            Tune(kNews);
            Report(Kind::Parser, IDMB_EVENT_SIGNAL);
        }
        Story::TearDown();
    }
};
} // namespace

// Edge case: five reports show nothing, the sixth shows the text; a signal event in between restarts the count.
TEST_F(EventStory, SixthNoSignalReportShowsTheText) {
    Tune(kNews);
    Report(Kind::VideoRenderer, EC_VIDEOFRAMEREADY); // hides the text of the change, enables the toggle
    Forget();
    for (int i = 0; i < 5; ++i)
        Report(Kind::Parser, IDMB_EVENT_NO_SIGNAL);
    EXPECT_EQ(peer->NoSignal(), 0);
    EXPECT_EQ(Info(), WString());
    EXPECT_TRUE(view->IsToggleEnabled());
    EXPECT_EQ(Count("post view 1029"), 0);
    Report(Kind::Parser, IDMB_EVENT_SIGNAL);
    for (int i = 0; i < 5; ++i)
        Report(Kind::Parser, IDMB_EVENT_NO_SIGNAL);
    EXPECT_EQ(peer->NoSignal(), 0);
    Forget();
    Report(Kind::Parser, IDMB_EVENT_NO_SIGNAL);
    EXPECT_EQ(peer->NoSignal(), 1);
    EXPECT_EQ(Info(), TextOf(kTextNoSignal));
    EXPECT_TRUE(Saw("post view 1029 0 0"));
    EXPECT_FALSE(view->IsToggleEnabled());
    Forget();
    Report(Kind::Parser, IDMB_EVENT_NO_SIGNAL); // nothing more
    EXPECT_EQ(Count("post view 1029"), 0);

    Report(Kind::Parser, IDMB_EVENT_SIGNAL);
    EXPECT_EQ(peer->NoSignal(), 0);
    EXPECT_EQ(Info(), WString());
    EXPECT_TRUE(view->IsToggleEnabled());
    EXPECT_TRUE(Saw("post view 1029 1573912 0"));
}

TEST_F(EventStory, CountOfReportsIsTheModulesNotTheViews) {
    Tune(kNews);
    for (int i = 0; i < 5; ++i)
        Report(Kind::Parser, IDMB_EVENT_NO_SIGNAL);
    Close();
    Open();
    Tune(kNews);
    Report(Kind::Parser, IDMB_EVENT_NO_SIGNAL); // the sixth
    EXPECT_EQ(peer->NoSignal(), 1);
    EXPECT_EQ(Info(), TextOf(kTextNoSignal));
}

// Edge case: minimised, the short text.
TEST_F(EventStory, SixthReportWhileSmallShowsTheShortText) {
    Tune(kNews);
    ASSERT_TRUE(device.shell.Minimize());
    for (int i = 0; i < 6; ++i)
        Report(Kind::Parser, IDMB_EVENT_NO_SIGNAL);
    EXPECT_EQ(Info(), TextOf(kTextNoSignalShort));
    device.shell.Restore();
}

TEST_F(EventStory, SignalEventInARadioOnlyResetsTheCount) {
    Tune(kMusic);
    for (int i = 0; i < 6; ++i)
        Report(Kind::DABSource, IDMB_EVENT_NO_SIGNAL);
    EXPECT_EQ(peer->NoSignal(), 1);
    Forget();
    Report(Kind::DABSource, IDMB_EVENT_SIGNAL);
    EXPECT_EQ(peer->NoSignal(), 1);
    EXPECT_EQ(Count("post"), 1); // the graph's own notice
}

TEST_F(EventStory, FirstPictureHidesTheInformationAndEnablesTheToggle) {
    Tune(kNews);
    view->EnableToggle(0);
    ASSERT_NE(Info(), WString());
    Report(Kind::VideoRenderer, EC_VIDEOFRAMEREADY);
    EXPECT_EQ(Info(), WString());
    EXPECT_TRUE(view->IsToggleEnabled());
    EXPECT_EQ(Element(kElementRecord).GetState(), kButtonNormal);
}

TEST_F(EventStory, FirstPictureInSignalDebugLeavesTheToggleAlone) {
    Tune(kNews);
    view->SetSNRDebug(1);
    Report(Kind::VideoRenderer, EC_VIDEOFRAMEREADY);
    EXPECT_FALSE(view->IsToggleEnabled());
    view->SetSNRDebug(0);
}

TEST_F(EventStory, EndOfStreamFromBothRenderersStops) {
    Tune(kNews);
    Report(Kind::AudioRenderer, EC_COMPLETE);
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying);
    Report(Kind::VideoRenderer, EC_COMPLETE);
    EXPECT_EQ(view->GetPlayMode(), kPlayModeStopped);
}

TEST_F(EventStory, AudioChangeStopsAdaptsAndRuns) {
    Tune(kNews);
    stage[Kind::Parser].audioInfo = {7, 9};
    Forget();
    Report(Kind::Parser, IDMB_EVENT_AUDIO_CHANGE);
    EXPECT_TRUE(InOrder({"mode 2", "parser.GetParam", "parser.SetParam", "mode 4"}));
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying);
}

// Found by the random walk: the event waits in the graph while a scan, posted before its notice, closes the session.
TEST_F(EventStory, AudioChangeWhoseSessionWasClosedMeanwhileAdaptsNothing) {
    Tune(kNews);
    BYTE mask[kChannelTableRows] = {};
    view->SetScanFrequency(mask);
    Forget();
    PostMessageW(view->GetSafeHwnd(), WM_COMMAND, kCmdScan, 0);
    Report(Kind::Parser, IDMB_EVENT_AUDIO_CHANGE);
    EXPECT_EQ(stage.Alive(), 0);
    EXPECT_EQ(Count("parser.GetParam"), 0);
    EXPECT_TRUE(InOrder({"parser.End", "mode 2", "mode 4"})); // run again all the same
}

TEST_F(EventStory, UnknownEventsAreReadAndIgnored) {
    Tune(kNews);
    Report(Kind::Parser, 0x7777);
    Report(Kind::Parser, EC_USERABORT);
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying);
}

TEST_F(EventStory, NoticeWithoutAGraphIsHarmless) {
    Send(WM_DMB_MEDIANOTIFY);
    view->ReleaseGraphBuilder();
    view->CVelPlayerView::ReleaseInterface(0);
    Send(WM_DMB_MEDIANOTIFY);
    EXPECT_EQ(peer->Event(), nullptr);
}

// Edge cases: the same label twice in a row is stored once; a fifth distinct one pushes out the oldest.
TEST_F(EventStory, LabelsAreKeptOnceAndFourAtMost) {
    Tune(kMusic);
    OnAir();
    Label("one");
    Label("one");
    EXPECT_EQ(peer->Labels().size(), 1u);
    for (const char* text : {"two", "three", "four", "five"})
        Label(text);
    ASSERT_EQ(peer->Labels().size(), 4u);
    EXPECT_EQ(peer->Labels().front(), WTEXT("two"));
    EXPECT_EQ(peer->Labels().back(), WTEXT("five"));
}

TEST_F(EventStory, LabelsAreTakenOnlyOnAirAndPlaying) {
    Tune(kMusic);
    Label("early");
    EXPECT_TRUE(peer->Labels().empty());
    OnAir();
    view->SetPlayMode(kPlayModePaused);
    Label("paused");
    EXPECT_TRUE(peer->Labels().empty());
    view->SetPlayMode(kPlayModePlaying);
}

TEST_F(EventStory, LabelsInCodePage949AndUcs2) {
    Tune(kMusic);
    OnAir();
    Label("\xB0\xA1\xB3\xAA"); // 가나
    EXPECT_EQ(peer->Labels().back(), WTEXT("가나"));
    Label(std::string("\xD5\x5C\xAE\x00\x00\x41\x77", 7), PadInfo::kCharsetUcs2);
    EXPECT_EQ(peer->Labels().back(), WTEXT("한글A"));
    Label("");
    EXPECT_EQ(peer->Labels().size(), 2u);
}

TEST_F(EventStory, LabelOfImpossibleLengthIsBounded) {
    Tune(kMusic);
    OnAir();
    std::memset(pad->dlsText, 'x', sizeof pad->dlsText);
    pad->dlsLength = 0x7FFFFFFF;
    Report(Kind::DABSource, IDMB_EVENT_PAD);
    ASSERT_EQ(peer->Labels().size(), 1u);
    EXPECT_EQ(peer->Labels()[0].size(), PadInfo::kLabelBytes);
    pad->dlsLength = -5;
    Report(Kind::DABSource, IDMB_EVENT_PAD);
    EXPECT_EQ(peer->Labels().size(), 1u);
}

// Found by the random walk: the label waits in the graph while a scan closes its session, and an audio change runs the graph again.
TEST_F(EventStory, LabelWhoseSessionWasClosedMeanwhileIsNotRead) {
    Tune(kMusic);
    OnAir();
    BYTE mask[kChannelTableRows] = {};
    view->SetScanFrequency(mask);
    Forget();
    PostMessageW(view->GetSafeHwnd(), WM_COMMAND, kCmdScan, 0);
    stage.Last(Kind::DABSource)->Report(IDMB_EVENT_AUDIO_CHANGE);
    Report(Kind::DABSource, IDMB_EVENT_PAD);
    EXPECT_EQ(stage.Alive(), 0);
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying); // of a graph without filters
    EXPECT_EQ(Count("FetchPadInfo"), 0);
    EXPECT_TRUE(peer->Labels().empty());
}

TEST_F(EventStory, MissingPadRecordIsNoLabel) {
    Tune(kMusic);
    OnAir();
    stage[Kind::DABSource].padInfo = nullptr;
    Report(Kind::DABSource, IDMB_EVENT_PAD);
    stage[Kind::DABSource].fetch = E_FAIL;
    Report(Kind::DABSource, IDMB_EVENT_PAD);
    EXPECT_TRUE(peer->Labels().empty());
    stage[Kind::DABSource].fetch = S_OK;
}

// Edge case: a slide event with an area of no width, or before the air, decodes nothing.
TEST_F(EventStory, SlideEventNeedsAnAreaAndAir) {
    Tune(kMusic);
    Forget();
    Report(Kind::DABSource, IDMB_EVENT_MOT);
    EXPECT_FALSE(Saw("command 97"));
    OnAir();
    const RECT area = peer->SlideRect();
    peer->SlideRect().right = peer->SlideRect().left;
    Report(Kind::DABSource, IDMB_EVENT_MOT);
    EXPECT_FALSE(Saw("command 97"));
    peer->SlideRect() = area;
    Report(Kind::DABSource, IDMB_EVENT_MOT);
    EXPECT_TRUE(Saw("post view command 97"));
}

// ---- Timers and texts --------------------------------------------------------------------------------------------------

// Edge case: an unknown timer id reaches the shell.
TEST_F(EventStory, UnknownTimerReachesTheShell) {
    Forget();
    Send(WM_TIMER, 999);
    EXPECT_TRUE(Saw("host timer 999"));
}

TEST_F(EventStory, UpdateInfoShowsATextOrANumberedOne) {
    Send(WM_DMB_UPDATEINFO, 0, reinterpret_cast<LPARAM>(WTEXT("hello")));
    EXPECT_EQ(Info(), WTEXT("hello"));
    Send(WM_DMB_UPDATEINFO, kTextNoSignal);
    EXPECT_EQ(Info(), TextOf(kTextNoSignal));
    Send(WM_DMB_UPDATEINFO, 0x10000 | kTextNoChannel); // only the low 16 bits count
    EXPECT_EQ(Info(), TextOf(kTextNoChannel));
}

TEST_F(EventStory, EveryRowOfTheMessageMapIsInOrder) {
    const GMessageMap& map = CVelDMBView::messageMap;
    const UINT rows[][3] = {{WM_CREATE, 0, 0},      {WM_COMMAND, 18, 18},
                            {WM_COMMAND, 20, 20},   {WM_COMMAND, 21, 21},
                            {WM_COMMAND, 22, 22},   {WM_COMMAND, 23, 23},
                            {WM_COMMAND, 96, 96},   {WM_TIMER, 0, 0},
                            {WM_LBUTTONDOWN, 0, 0}, {WM_COMMAND, 64954, 64954},
                            {WM_KEYUP, 0, 0},       {WM_COMMAND, 97, 97},
                            {0x467, 0, 0},          {0x401, 0, 0},
                            {0x464, 0, 0},          {0x465, 0, 0},
                            {0x402, 0, 0},          {0x466, 0, 0},
                            {WM_COMMAND, 24, 25},   {WM_COMMAND, 26, 27}};
    ASSERT_EQ(map.count, std::size(rows));
    for (UINT i = 0; i < map.count; ++i) {
        EXPECT_EQ(map.entries[i].message, rows[i][0]) << i;
        EXPECT_EQ(map.entries[i].firstId, rows[i][1]) << i;
        EXPECT_EQ(map.entries[i].lastId, rows[i][2]) << i;
    }
    EXPECT_EQ(map.base, &CVelPlayerView::messageMap);
}
