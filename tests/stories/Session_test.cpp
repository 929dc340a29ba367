// Sessions: creating, running, stopping, switching, holding, leaving.
#include "tests/stories/Story.h"

using namespace stories;
using scripted::Kind;

namespace {
class SessionStory : public Story {};
} // namespace

TEST_F(SessionStory, SavedChannelStartsAtPreload) {
    Open(UsualChannels(), kSport);
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying);
    EXPECT_EQ(peer->CurChannel(), kSport);
    EXPECT_EQ(peer->LastChannel(), kSport);
    EXPECT_EQ(peer->LastDMBChannel(), kSport);
    EXPECT_TRUE(
        InOrder({"tuner.Open", "post view 1124 2 0", "preloaded", "tuner.SetChannel 207008000 8 12 0", "mode 4"}));
    EXPECT_TRUE(HasTimer(eSIGNAL_TIMER));
}

TEST_F(SessionStory, GraphThatCannotBeCreatedLeavesTheViewWithoutOne) {
    device.classes.Remove(CLSID_FilterGraph);
    Open();
    EXPECT_EQ(peer->Graph(), nullptr);
    EXPECT_EQ(peer->FilterControl(), nullptr);
    EXPECT_EQ(scripted::Tuner().streamsAlive, 0); // preload skips the tuner
    EXPECT_TRUE(Saw("preloaded"));
    EXPECT_EQ(peer->RunDMB(), E_FAIL);
    EXPECT_EQ(peer->StopDMB(), E_FAIL);
    EXPECT_EQ(peer->StopDAB(), E_FAIL);
    EXPECT_EQ(peer->RunDAB(), S_OK);
    EXPECT_EQ(device.shell.BoxRecords().size(), 0u);
}

TEST_F(SessionStory, KeptGraphIsNotMadeAgain) {
    Open();
    IGraphBuilder* graph = peer->Graph();
    EXPECT_EQ(view->CreateGraphBuilder(), 1);
    EXPECT_EQ(peer->Graph(), graph);
    EXPECT_EQ(view->ReleaseGraphBuilder(), 1);
    EXPECT_EQ(peer->Graph(), nullptr);
    EXPECT_EQ(peer->FilterControl(), nullptr);
    EXPECT_EQ(view->CreateGraphBuilder(), 1);
    EXPECT_NE(peer->FilterControl(), nullptr);
}

TEST_F(SessionStory, TelevisionShowsItsPictureAndPollsTheSignalEveryThreeSeconds) {
    Open();
    Forget();
    Tune(kNews);
    EXPECT_TRUE(InOrder({"mode 4", "post view 1029 1573912 0"})); // 0x180418
    EXPECT_TRUE(Saw("video on"));
    Forget();
    Wait(2999);
    EXPECT_EQ(Count("tuner.GetSNR"), 0);
    Wait(1);
    EXPECT_EQ(Count("tuner.GetSNR"), 1);
    Wait(9000);
    EXPECT_EQ(Count("tuner.GetSNR"), 4);
    EXPECT_EQ(Count("tuner.GetRSSI"), 0);
}

TEST_F(SessionStory, RadioHasNoVideoWindowAndPollsTwiceASecond) {
    Open();
    Tune(kMusic);
    EXPECT_EQ(peer->VideoWindow(), nullptr);
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying);
    Forget();
    Wait(2000);
    EXPECT_EQ(Count("tuner.GetSNR"), 4);
}

TEST_F(SessionStory, RunAppliesTheAspectRatioOnlyWhenItDiffers) {
    Open();
    view->SetRatioOnOff(1);
    Forget();
    Tune(kNews);
    EXPECT_EQ(Count("aspect 1"), 1);
    Forget();
    Tune(kSport);
    EXPECT_EQ(Count("aspect"), 0);
}

// Edge case: stop in play mode 2 returns 0 without touching the graph.
TEST_F(SessionStory, StopDMBWhenStoppedTouchesNothing) {
    Open();
    Tune(kNews);
    view->SetPlayMode(kPlayModeStopped); // the graph runs on, so that a stop would be seen
    Forget();
    EXPECT_EQ(peer->StopDMB(), S_OK);
    EXPECT_EQ(Count("parser.Stop"), 0);
    EXPECT_EQ(Count("mode"), 0);
    view->SetPlayMode(kPlayModePlaying);
    EXPECT_EQ(peer->StopDMB(), S_OK);
    EXPECT_EQ(Count("parser.Stop"), 1);
    EXPECT_EQ(view->GetPlayMode(), kPlayModeStopped);
}

// Edge case: stop while a file plays changes no play mode but takes the view off the air.
TEST_F(SessionStory, StopWhileAFilePlaysOnlyLeavesTheAir) {
    Open();
    peer->PlayDMBFile(WTEXT("\\SDMMC Card\\DMB\\a.dmb"));
    ASSERT_EQ(peer->CurrentType(), kSessionFile);
    peer->OnAirFlag() = 1;
    EXPECT_EQ(view->Stop(), 1);
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying);
    EXPECT_EQ(peer->OnAirFlag(), 0);
}

TEST_F(SessionStory, FailedRadioStopChangesNothingElse) {
    Open();
    Tune(kMusic);
    OnAir();
    Label("hello");
    peer->SlideReady() = 1;
    stage[Kind::DABSource].stop = E_FAIL;
    EXPECT_TRUE(FAILED(peer->StopDAB()));
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying);
    EXPECT_EQ(peer->Labels().size(), 1u);
    EXPECT_EQ(peer->SlideReady(), 1);
    EXPECT_TRUE(Element(kElementAudioBG).IsVisible());
    peer->SlideReady() = 0;
    stage[Kind::DABSource].stop = S_OK;
    stage.Last(Kind::DABSource)->Stop();
}

TEST_F(SessionStory, RadioStopForgetsTextsAndSlideAndHidesTheBackground) {
    Open();
    Tune(kMusic);
    OnAir();
    Label("hello");
    peer->SlideReady() = 1;
    EXPECT_TRUE(Element(kElementAudioBG).IsVisible());
    view->Stop();
    EXPECT_TRUE(peer->Labels().empty());
    EXPECT_EQ(peer->SlideReady(), 0);
    EXPECT_FALSE(Element(kElementAudioBG).IsVisible());
    EXPECT_EQ(view->GetPlayMode(), kPlayModeStopped);
    EXPECT_EQ(peer->OnAirFlag(), 0);
}

TEST_F(SessionStory, WaitingRadioKeepsItsBackground) {
    Open();
    Tune(kMusic);
    OnAir();
    peer->SignalWait() = 1;
    view->Stop();
    EXPECT_TRUE(Element(kElementAudioBG).IsVisible());
    EXPECT_EQ(view->GetPlayMode(), kPlayModeStopped);
    peer->SignalWait() = 0;
}

TEST_F(SessionStory, ClosingTelevisionWaitsBeforeItsFiltersGo) {
    Open();
    Tune(kNews);
    Forget();
    const ce::Millis before = device.clock.Now();
    view->ReleaseInterface(0);
    EXPECT_EQ(device.clock.Now() - before, 250);
    EXPECT_EQ(peer->LastChannel(), -1);
    EXPECT_EQ(stage.Alive(), 0);
    EXPECT_FALSE(HasTimer(eSIGNAL_TIMER));
    EXPECT_TRUE(InOrder({"mode 2", "post view 1029 0 0"}));
    EXPECT_EQ(Element(kElementAntenna).GetState(), kButtonDisabled);
}

TEST_F(SessionStory, ClosingRadioDoesNotWait) {
    Open();
    Tune(kMusic);
    OnAir();
    const ce::Millis before = device.clock.Now();
    view->ReleaseInterface(0);
    EXPECT_EQ(device.clock.Now(), before);
    EXPECT_EQ(stage.Alive(), 0);
    EXPECT_FALSE(Element(kElementAudioBG).IsVisible());
}

TEST_F(SessionStory, TimeResetBuildsTheSessionAnew) {
    Open();
    Tune(kNews);
    peer->NoSignal() = 1;
    Forget();
    Report(Kind::Parser, IDMB_EVENT_TIME_RESET);
    EXPECT_TRUE(InOrder({"mode 2", "mode 4"}));
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying);
    EXPECT_EQ(peer->LastChannel(), kNews);
    EXPECT_EQ(peer->LastDMBChannel(), kNews);
    EXPECT_EQ(peer->NoSignal(), 0);
    EXPECT_EQ(Count("tuner.SetChannel"), 0); // the tuner stays where it is
}

TEST_F(SessionStory, TimeResetWhenStoppedDoesNothing) {
    Open();
    Tune(kNews);
    view->Stop();
    Forget();
    Report(Kind::Parser, IDMB_EVENT_TIME_RESET);
    EXPECT_EQ(view->GetPlayMode(), kPlayModeStopped);
    EXPECT_EQ(Count("mode"), 0);
}

TEST_F(SessionStory, TimeResetOfARadioRebuildsTheRadio) {
    Open();
    Tune(kMusic);
    Report(Kind::DABSource, IDMB_EVENT_TIME_RESET);
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying);
    EXPECT_EQ(peer->LastDABChannel(), kMusic);
    EXPECT_EQ(peer->LastChannel(), kMusic);
}

TEST_F(SessionStory, FailedTimeResetStillNamesTheChannel) {
    Open();
    Tune(kNews);
    stage[Kind::Parser].create = E_FAIL;
    Report(Kind::Parser, IDMB_EVENT_TIME_RESET);
    EXPECT_EQ(peer->LastChannel(), kNews);
    EXPECT_EQ(view->GetPlayMode(), kPlayModeStopped);
    stage[Kind::Parser].create = S_OK;
    peer->LastChannel() = -1; // nothing was built, so there is nothing to close
}

TEST_F(SessionStory, OnAirShowsTheBackgroundOfARadioOnly) {
    Open();
    Tune(kNews);
    OnAir();
    EXPECT_EQ(peer->OnAirFlag(), 0);
    Tune(kMusic);
    OnAir();
    EXPECT_EQ(peer->OnAirFlag(), 1);
    EXPECT_TRUE(Element(kElementAudioBG).IsVisible());
    EXPECT_EQ(Info(), WString());
}

TEST_F(SessionStory, PauseNeedsPlayMode4) {
    Open();
    Tune(kNews);
    for (const int mode : {kPlayModeStopped, kPlayModePaused, kPlayModeRecording}) {
        view->SetPlayMode(mode); // the graph runs, so that a pause would be seen
        Forget();
        view->Pause();
        EXPECT_EQ(Count("parser.Pause"), 0) << mode;
        EXPECT_EQ(view->GetPlayMode(), mode);
    }
    view->SetPlayMode(kPlayModePlaying);
    view->Pause();
    EXPECT_EQ(Count("parser.Pause"), 1);
    EXPECT_EQ(view->GetPlayMode(), kPlayModePaused);
}

TEST_F(SessionStory, HoldingPausesAndKeepsThePictureAndReturningRuns) {
    Open();
    Tune(kNews);
    Forget();
    view->HoldForBackView(1);
    EXPECT_EQ(view->GetPlayMode(), kPlayModePaused);
    EXPECT_TRUE(InOrder({"mode 5", "HoldVideo"}));
    Forget();
    view->HoldForBackView(0);
    EXPECT_TRUE(InOrder({"ResumeVideo", "mode 4"}));
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying);
}

TEST_F(SessionStory, ViewThatIsNotInFrontKeepsItsPictureHidden) {
    Open();
    Tune(kNews);
    ASSERT_TRUE(device.shell.ShowHome());
    EXPECT_EQ(view->GetPlayMode(), kPlayModePaused);
    Forget();
    peer->RunDMB();
    EXPECT_TRUE(
        InOrder({"mode 4", "post view 1029 1573912 0", "picture.put_AutoShow(false)", "picture.put_Visible(false)"}));
    ASSERT_TRUE(device.shell.ShowView());
    Forget();
    peer->RunDMB();
    EXPECT_EQ(Count("picture.put_"), 0);
}

// Edge case: holding a radio session, which has no video window, does nothing.
TEST_F(SessionStory, HoldingARadioDoesNothing) {
    Open();
    Tune(kMusic);
    view->HoldForBackView(1);
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying);
    view->HoldForBackView(0);
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying);
}

// Kept as it is: returning from the background during a recording runs television as if it only played.
TEST_F(SessionStory, ReturningFromTheBackgroundDuringARecordingGoesToPlayMode4) {
    Open();
    Tune(kNews);
    Command(kCmdRecord);
    ASSERT_EQ(view->GetPlayMode(), kPlayModeRecording);
    view->HoldForBackView(0);
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying);
    KillTimer(view->GetSafeHwnd(), eRECORD_TIMER);
}

TEST_F(SessionStory, ExitClosesTheView) {
    Open();
    Tune(kNews);
    Command(kCmdExit);
    EXPECT_EQ(device.shell.View(), nullptr);
    view = nullptr;
    peer.reset();
    EXPECT_EQ(stage.Alive(), 0);
    EXPECT_EQ(device.shell.Leaks(), std::vector<std::string>{});
}

// Edge case: exit while recording, answered Cancel: the recording runs on.
TEST_F(SessionStory, ExitWhileRecordingAnsweredCancelGoesOnRecording) {
    Open();
    Tune(kNews);
    Command(kCmdRecord);
    device.shell.Answer(kTextStopRecording, false);
    Command(kCmdExit);
    EXPECT_NE(device.shell.View(), nullptr);
    EXPECT_EQ(view->GetPlayMode(), kPlayModeRecording);
}

TEST_F(SessionStory, EscapeInTheQuestionOfTheExitGoesOnRecording) {
    Open();
    Tune(kNews);
    Command(kCmdRecord);
    device.shell.DuringModal([this] { device.shell.Key(kKeyEscape); });
    Forget();
    Command(kCmdExit);
    EXPECT_TRUE(Saw("answer 1011 2"));
    EXPECT_FALSE(Saw("unanswered"));
    ASSERT_NE(device.shell.View(), nullptr);
    EXPECT_EQ(view->GetPlayMode(), kPlayModeRecording);
}

// Edge case: answered OK it stops the recording and closes the view.
TEST_F(SessionStory, ExitWhileRecordingAnsweredOkStopsAndCloses) {
    Open();
    Tune(kNews);
    Command(kCmdRecord);
    device.shell.Answer(kTextStopRecording, true);
    Forget();
    Command(kCmdExit);
    EXPECT_EQ(device.shell.View(), nullptr);
    EXPECT_TRUE(InOrder({"StopCapture", "mode 4", "close"}));
    view = nullptr;
    peer.reset();
}

TEST_F(SessionStory, DestroyStopsARunningRecording) {
    Open();
    Tune(kNews);
    Command(kCmdRecord);
    Forget();
    Close();
    EXPECT_TRUE(InOrder({"StopCapture", "tuner.Close", "stream.Close"}));
}
