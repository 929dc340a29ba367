// Channel selection and stepping.
#include "tests/stories/Story.h"

using namespace stories;
using scripted::Kind;

namespace {
class SelectStory : public Story {
protected:
    void SetUp() override { Open(); }
    [[nodiscard]] LRESULT Change(LONG index, const WCHAR* label = nullptr) {
        const LRESULT result = peer->OnChangeChannel(index, label);
        Idle();
        return result;
    }
};
} // namespace

TEST_F(SelectStory, ChangeDoesItsStepsInOrder) {
    Tune(kNews);
    Forget();
    const ce::Millis before = device.clock.Now();
    EXPECT_EQ(Change(kMusic), S_OK);
    EXPECT_EQ(device.clock.Now() - before, 250 + 100 + 100);
    EXPECT_TRUE(InOrder({"mode 2", "post view command 96", "stream.Close", "tuner.SetChannel 205280000 0 21 0",
                         "post view 1125 0 *", "mode 4", "post view 1127 0 0"}));
    EXPECT_EQ(peer->LastDABChannel(), kMusic);
    EXPECT_EQ(device.ReadProfile().substr(2, 2), std::string("\x01\0", 2)); // saved
}

TEST_F(SelectStory, LabelAndTextOfATunedChannelAreShown) {
    Tune(kNews);
    EXPECT_EQ(Info(), WTEXT("NEWS ") + TextOf(kTextTuned));
    EXPECT_EQ(WString(device.shell.Title()), WTEXT("[CH12] NEWS"));
}

TEST_F(SelectStory, IndexMinusOneWithoutALabelFails) {
    Forget();
    EXPECT_EQ(Change(-1), E_FAIL);
    EXPECT_EQ(Count("post"), 0);
}

TEST_F(SelectStory, LabelSelectsItsFirstRecord) {
    EXPECT_EQ(Change(-1, WTEXT("SPORT")), S_OK);
    EXPECT_EQ(peer->CurChannel(), kSport);
}

// Edge case: a label that matches no record fails without touching the tuner.
TEST_F(SelectStory, UnknownLabelTouchesNoTuner) {
    Forget();
    EXPECT_EQ(Change(-1, WTEXT("sport")), E_FAIL); // letters count
    EXPECT_EQ(Count("tuner."), 0);
    EXPECT_TRUE(InOrder({"post view 1125 0 *", "post view 1127 0 0"}));
}

TEST_F(SelectStory, IndexBeyondTheListShowsThatThereIsNoSuchChannel) {
    Forget();
    EXPECT_EQ(Change(99), E_FAIL);
    EXPECT_EQ(Info(), TextOf(kTextNoChannel));
    EXPECT_EQ(Count("post"), 0);
    EXPECT_EQ(peer->CurChannel(), -1);
}

// Edge case: the channel that already plays is refused and the title restored; while stopped it is tuned again.
TEST_F(SelectStory, PlayingChannelIsRefusedAndAStoppedOneTunedAgain) {
    Tune(kNews);
    Forget();
    EXPECT_EQ(Change(kNews), E_FAIL);
    EXPECT_EQ(Count("tuner."), 0);
    EXPECT_TRUE(InOrder({"post view 1125 0 *", "post view 1127 0 0"}));
    view->Stop();
    Forget();
    EXPECT_EQ(Change(kNews), S_OK);
    EXPECT_EQ(Count("tuner.SetChannel"), 1);
}

// Edge case: a radio whose graph cannot be built still counts as a success, and the last channel follows it.
TEST_F(SelectStory, RadioWithoutAGraphCountsAsASuccess) {
    stage[Kind::DABSource].create = E_FAIL;
    EXPECT_EQ(Change(kMusic), S_OK);
    EXPECT_EQ(peer->LastChannel(), kMusic);
    EXPECT_EQ(peer->LastDABChannel(), -1);
    EXPECT_FALSE(HasTimer(eSTART_TIMER));
    stage[Kind::DABSource].create = S_OK;
    peer->LastChannel() = -1;
}

TEST_F(SelectStory, TelevisionWithoutAGraphIsTriedAgainATenthOfASecondLater) {
    stage[Kind::VideoDecoder].create = E_FAIL;
    Forget();
    EXPECT_EQ(Change(kNews), E_FAIL);
    EXPECT_TRUE(HasTimer(eSTART_TIMER));
    EXPECT_EQ(peer->CurChannel(), kNews);
    EXPECT_EQ(peer->LastChannel(), -1);
    stage[Kind::VideoDecoder].create = S_OK;
    Wait(100);
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying);
    EXPECT_EQ(peer->CurChannel(), kNews);
    EXPECT_FALSE(HasTimer(eSTART_TIMER));
    EXPECT_EQ(peer->StartRetries(), 0); // cleared by the good change
    CloseLeaking({Kind::Parser, Kind::BSACDecoder, Kind::AudioRenderer});
}

TEST_F(SelectStory, TunerThatRefusesShowsNoSignalAndIsTriedEveryFiveSeconds) {
    scripted::Tuner().tunes = [](int, int, int) { return false; };
    EXPECT_EQ(Change(kNews), E_FAIL);
    EXPECT_EQ(Info(), TextOf(kTextNoSignal));
    Forget();
    Wait(4999);
    EXPECT_EQ(Count("tuner.SetChannel"), 0);
    Wait(1);
    EXPECT_EQ(Count("tuner.SetChannel"), 1);
    EXPECT_EQ(peer->StartRetries(), 1);
    EXPECT_EQ(peer->CurChannel(), kNews);
    Wait(5400);
    EXPECT_EQ(peer->StartRetries(), 2);
    scripted::Tuner().tunes = nullptr;
    Wait(5400);
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying);
}

TEST_F(SelectStory, WithoutATunerControlTuningFails) {
    delete peer->LiveControl();
    peer->LiveControl() = nullptr;
    EXPECT_EQ(Change(kNews), E_FAIL);
    EXPECT_TRUE(HasTimer(eSTART_TIMER));
    Forget();
    Send(WM_TIMER, eSIGNAL_TIMER);
    EXPECT_EQ(Count("tuner."), 0);
    KillTimer(view->GetSafeHwnd(), eSTART_TIMER);
}

TEST_F(SelectStory, RetryTimerWithoutAChannelOnlyKeepsFiring) {
    peer->CurChannel() = -1;
    Forget();
    Send(WM_TIMER, eSTART_TIMER);
    EXPECT_EQ(Count("post"), 0);
}

TEST_F(SelectStory, KindThreeIsTunedAndSavedWithoutASession) {
    peer->List().AppendRecord(harness::Channel(211280000, "DATA", 9, 3));
    Tune(kNews);
    EXPECT_EQ(Change(5), S_OK);
    EXPECT_EQ(peer->LastChannel(), -1); // as the close before it left it
    EXPECT_EQ(view->GetPlayMode(), kPlayModeStopped);
    EXPECT_EQ(stage.Alive(), 0);
    EXPECT_EQ(device.ReadProfile()[2], 5);
}

TEST_F(SelectStory, OtherKindsStartNoGraphAndStillCount) {
    peer->List().AppendRecord(harness::Channel(211280000, "ODD", 9, 7));
    EXPECT_EQ(Change(5), S_OK);
    EXPECT_EQ(peer->LastChannel(), 5);
    EXPECT_EQ(stage.Alive(), 0);
    EXPECT_TRUE(Saw("tuner.SetChannel 211280000 8 9 0"));
}

TEST_F(SelectStory, RecordingIsAskedAboutAndCancelAbandonsTheChange) {
    Tune(kNews);
    Command(kCmdRecord);
    device.shell.Answer(kTextStopRecording, false);
    Forget();
    EXPECT_EQ(Change(kSport), E_FAIL);
    EXPECT_EQ(view->GetPlayMode(), kPlayModeRecording);
    EXPECT_EQ(Count("StopCapture"), 0);
    EXPECT_TRUE(InOrder({"box", "post view 1125 0 *", "post view 1127 0 0"}));
}

TEST_F(SelectStory, ConnectionThatFailsIsTriedAgain) {
    Tune(kNews);
    device.classes.Remove(CLSID_FilterGraph);
    EXPECT_EQ(Change(kSport), E_FAIL);
    EXPECT_TRUE(HasTimer(eSTART_TIMER));
    EXPECT_EQ(Count("tuner.SetChannel 207008000"), 0);
    KillTimer(view->GetSafeHwnd(), eSTART_TIMER);
}

TEST_F(SelectStory, ChannelThatIsStillSelectedIsRefusedWhileAFilePlays) {
    Tune(kNews);
    peer->PlayDMBFile(WTEXT("\\SDMMC Card\\DMB\\a.dmb"));
    EXPECT_EQ(Change(kNews), E_FAIL); // kept as it is
    EXPECT_EQ(peer->FileIndex(), 0);
    EXPECT_EQ(Change(kSport), S_OK); // another one switches back to live
    EXPECT_EQ(peer->FileIndex(), -1);
    peer->PlayDMBFile(WTEXT("\\SDMMC Card\\DMB\\a.dmb"));
    Report(Kind::AudioRenderer, EC_COMPLETE);
    Report(Kind::VideoRenderer, EC_COMPLETE);
    EXPECT_EQ(Change(kSport), S_OK); // the same one after the file has ended
}

// ---- Stepping ----------------------------------------------------------------------------------------------------------

// Edge case: five records, -1 from the first is the last, +1 from the last is the first.
TEST_F(SelectStory, StepsWrapAtBothEnds) {
    peer->List().RemoveAllRecords();
    for (const char* label : {"A", "B", "C", "D", "E"})
        peer->List().AppendRecord(harness::Channel(205280000, label, 1, kKindDMB));
    peer->CurChannel() = 0;
    EXPECT_EQ(peer->ChangeChUpDown(1000, -1), S_OK);
    EXPECT_EQ(peer->PendingChannel(), 4);
    EXPECT_EQ(peer->ChangeChUpDown(1000, +1), S_OK);
    EXPECT_EQ(peer->PendingChannel(), 0);
    KillTimer(view->GetSafeHwnd(), eCHANGE_TIMER);
}

// Edge case: television, radio, television: +1 skips the radio.
TEST_F(SelectStory, StepSkipsTheOtherKind) {
    Tune(kNews);
    Command(kCmdChannelUp);
    EXPECT_EQ(peer->PendingChannel(), kSport);
    EXPECT_EQ(Info(), WTEXT("SPORT ") + TextOf(kTextStepWaits));
    EXPECT_EQ(WString(device.shell.Title()), WTEXT("[CH12] SPORT"));
    KillTimer(view->GetSafeHwnd(), eCHANGE_TIMER);
}

// Edge case: three steps within a second tune once, the third choice, one second after the last press.
TEST_F(SelectStory, QuickStepsTuneOnlyTheLastChoice) {
    for (const char* label : {"MORE", "LAST"})
        peer->List().AppendRecord(harness::Channel(205280000, label, 1, kKindDMB));
    peer->ChannelCount() = 7;
    Tune(kNews);
    Forget();
    for (int i = 0; i < 3; ++i) {
        Command(kCmdChannelUp);
        Wait(300);
    }
    EXPECT_EQ(Count("tuner.SetChannel"), 0);
    Wait(699);
    EXPECT_EQ(Count("tuner.SetChannel"), 0);
    Wait(1);
    EXPECT_EQ(Count("tuner.SetChannel"), 1);
    EXPECT_EQ(peer->CurChannel(), 5);
    EXPECT_EQ(peer->PendingChannel(), -1);
}

// Edge case: within 3 s of a successful stepped change a step is refused; after a failed one it is taken at once.
TEST_F(SelectStory, GuardFollowsASuccessfulStepOnly) {
    Tune(kNews);
    Command(kCmdChannelUp);
    Wait(1000);
    ASSERT_EQ(peer->CurChannel(), kSport);
    EXPECT_EQ(peer->ChangeBusy(), 1);
    EXPECT_TRUE(HasTimer(eCHANGEGUARD_TIMER));
    EXPECT_EQ(peer->ChangeChUpDown(1000, 1), E_FAIL);
    Wait(2999);
    EXPECT_EQ(peer->ChangeChUpDown(1000, 1), E_FAIL);
    Wait(1);
    EXPECT_EQ(peer->ChangeBusy(), 0);

    scripted::Tuner().tunes = [](int, int, int) { return false; };
    Command(kCmdChannelUp);
    Wait(1000);
    EXPECT_EQ(peer->ChangeBusy(), 0);
    EXPECT_EQ(peer->ChangeChUpDown(1000, 1), S_OK);
    scripted::Tuner().tunes = nullptr;
    KillTimer(view->GetSafeHwnd(), eCHANGE_TIMER);
    KillTimer(view->GetSafeHwnd(), eSTART_TIMER);
}

TEST_F(SelectStory, StepWithNothingTunedTunesTheFirst) {
    Forget();
    EXPECT_EQ(peer->ChangeChUpDown(1000, -1), S_OK);
    EXPECT_TRUE(Saw("post view 1124 0 0"));
    Idle();
    EXPECT_EQ(peer->CurChannel(), 0);
}

TEST_F(SelectStory, StepWithoutAListIsRefused) {
    peer->ChannelCount() = 0;
    EXPECT_EQ(peer->ChangeChUpDown(1000, 1), E_FAIL);
    peer->ChannelCount() = -1;
    EXPECT_EQ(peer->ChangeChUpDown(1000, 1), E_FAIL);
    peer->ChannelCount() = 5;
}

TEST_F(SelectStory, StepWithoutARecordOfTheKindIsRefused) {
    peer->CurChannel() = 0;
    peer->FileIndex() = 0; // the kind is that of a file, and no record has it
    EXPECT_EQ(peer->ChangeChUpDown(1000, 1), E_FAIL);
    peer->FileIndex() = -1;
    peer->CurChannel() = -1;
}

TEST_F(SelectStory, TheLabelFieldNeverMoves) {
    Tune(kNews);
    const WCHAR* first = nullptr;
    device.shell.ClearLog();
    device.ce.loop().SetPostObserver(nullptr);
    for (int i = 0; i < 2; ++i) {
        LPARAM posted = 0;
        device.ce.loop().SetPostObserver([&](const ce::Message& message) {
            if (message.message == WM_DMB_UPDATEINFO)
                posted = message.lParam;
        });
        (void)peer->ChangeChUpDown(1000, 1);
        device.ce.loop().SetPostObserver(nullptr);
        if (first == nullptr)
            first = reinterpret_cast<const WCHAR*>(posted);
        EXPECT_EQ(reinterpret_cast<const WCHAR*>(posted), first);
    }
    Idle(); // both messages show what the second step wrote
    EXPECT_EQ(Info(), WTEXT("MOVIE ") + TextOf(kTextStepWaits));
    KillTimer(view->GetSafeHwnd(), eCHANGE_TIMER);
}

TEST_F(SelectStory, StepButtonsPostTheirSteps) {
    Tune(kNews);
    Forget();
    Send(WM_COMMAND, kCmdChannelDown);
    EXPECT_TRUE(Saw("post view 1126 1000 -1"));
    Forget();
    Send(WM_COMMAND, kCmdChannelUp);
    EXPECT_TRUE(Saw("post view 1126 1000 1"));
    Idle();
    KillTimer(view->GetSafeHwnd(), eCHANGE_TIMER);
}
