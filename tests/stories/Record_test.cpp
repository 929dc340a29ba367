// Recording and playing recordings.
#include <algorithm>

#include "tests/stories/Story.h"

using namespace stories;
using scripted::Kind;

namespace {
class RecordStory : public Story {
protected:
    void SetUp() override {
        Open();
        Tune(kNews);
        Forget();
    }
};
} // namespace

TEST_F(RecordStory, RecordingStartsWithNameFolderAndBox) {
    device.clock.SetWall(1173269109); // 2007-03-07 21:05:09 in Korea
    Command(kCmdRecord);
    EXPECT_EQ(view->GetPlayMode(), kPlayModeRecording);
    EXPECT_TRUE(std::filesystem::is_directory(device.Card() / "DMB"));
    EXPECT_TRUE(Saw("NEWS_070307210509.dmb"));
    EXPECT_TRUE(InOrder({"SetCaptureFileName", "StartCapture", "mode 8", "post view 1031 1013 2"}));
    EXPECT_TRUE(HasTimer(eRECORD_TIMER));
    EXPECT_EQ(FaceOf(kElementRecord), 1);
}

TEST_F(RecordStory, PressingAgainStopsWithABox) {
    Report(Kind::VideoRenderer, EC_VIDEOFRAMEREADY); // else the button is not available yet
    Command(kCmdRecord);
    Forget();
    Command(kCmdRecord);
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying);
    EXPECT_TRUE(InOrder({"StopCapture", "mode 4", "post view 1031 1009 2"}));
    EXPECT_FALSE(HasTimer(eRECORD_TIMER));
    EXPECT_EQ(FaceOf(kElementRecord), 0);
}

// Edge case: exactly 51118080 bytes are enough for five minutes, one byte less is refused.
TEST_F(RecordStory, ExactlyEnoughSpaceIsEnough) {
    device.ce.files().SetFaults({.freeBytes = 51118079});
    Command(kCmdRecord);
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying);
    EXPECT_TRUE(Saw("post view 1031 1010 3"));
    device.ce.files().SetFaults({.freeBytes = 51118080});
    Command(kCmdRecord);
    EXPECT_EQ(view->GetPlayMode(), kPlayModeRecording);
}

TEST_F(RecordStory, CardThatIsOutShowsTheMainWindowsBox) {
    device.ce.files().SetFaults({.cardAbsent = true});
    Command(kCmdRecord);
    EXPECT_TRUE(Saw("post main 1031 5 3"));
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying);
    EXPECT_FALSE(HasTimer(eRECORD_TIMER));
}

TEST_F(RecordStory, UnknownFreeSpaceShowsTheMainWindowsBox) {
    device.ce.files().SetFaults({.refuseFreeSpace = true});
    Command(kCmdRecord);
    EXPECT_TRUE(Saw("post main 1031 5 3"));
}

TEST_F(RecordStory, FolderThatCannotBeMadeShowsABox) {
    device.ce.files().SetFaults({.refuseCreate = true});
    Command(kCmdRecord);
    EXPECT_TRUE(Saw("post view 1031 1010 3"));
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying);
}

TEST_F(RecordStory, ParserThatRefusesShowsTheMainWindowsBox) {
    stage[Kind::Parser].captureName = E_FAIL;
    Command(kCmdRecord);
    EXPECT_TRUE(Saw("post main 1031 5 3"));
    stage[Kind::Parser].captureName = S_OK;
    stage[Kind::Parser].startCapture = E_FAIL;
    Forget();
    Command(kCmdRecord);
    EXPECT_TRUE(Saw("post main 1031 5 3"));
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying);
}

// Edge case: with a setting of 0 the recording ends after 300 seconds, not earlier.
TEST_F(RecordStory, LimitEndsTheRecordingAfterItsSeconds) {
    Command(kCmdRecord);
    Wait(299 * 1000);
    EXPECT_EQ(view->GetPlayMode(), kPlayModeRecording);
    Forget();
    Wait(1000);
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying);
    EXPECT_TRUE(InOrder({"post view command 23", "StopCapture", "post view 1031 1009 2"}));
}

// Edge case: a change of the setting during a recording counts at the next tick.
TEST_F(RecordStory, ChangedLimitCountsAtTheNextTick) {
    view->SetRecordTime(4);
    Command(kCmdRecord);
    Wait(400 * 1000);
    EXPECT_EQ(view->GetPlayMode(), kPlayModeRecording);
    view->SetRecordTime(0);
    Wait(1000);
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying);
}

// Edge case: the record command does nothing for a radio or a file.
TEST_F(RecordStory, RecordCommandIsForLiveTelevision) {
    Tune(kMusic);
    Command(kCmdRecord);
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying);
    peer->PlayDMBFile(WTEXT("\\SDMMC Card\\DMB\\a.dmb"));
    Command(kCmdRecord);
    EXPECT_EQ(Count("StartCapture"), 0);
}

// Found by the random walk: while a retried change asks whether to stop the recording, the stream's clock starts over and the
// session is closed; the answer then stops a recording whose filters are gone.
TEST_F(RecordStory, AnswerToAQuestionOutlivesTheRecordingsGraph) {
    Command(kCmdRecord);
    Send(WM_TIMER, eSTART_TIMER);
    stage.Last(Kind::Parser)->Report(IDMB_EVENT_TIME_RESET);
    device.shell.DuringModal([this] {
        EXPECT_EQ(stage.Alive(), 0);
        Forget();
        device.shell.Key(kKeyOk);
    });
    Idle();
    EXPECT_EQ(Count("StopCapture"), 0);
    EXPECT_EQ(peer->CurChannel(), kNews);
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying);
}

TEST_F(RecordStory, StartRecordingAssumesTheName) {
    EXPECT_EQ(peer->StartRecording(), S_OK);
    EXPECT_EQ(view->GetPlayMode(), kPlayModeRecording);
    EXPECT_FALSE(Saw("SetCaptureFileName"));
}

TEST_F(RecordStory, RecordButtonFollowsTypeAndMode) {
    GButton& button = Element(kElementRecord);
    Report(Kind::VideoRenderer, EC_VIDEOFRAMEREADY);
    EXPECT_EQ(button.GetState(), kButtonNormal);
    Tune(kMusic);
    for (int i = 0; i < 6; ++i)
        Report(Kind::DABSource, IDMB_EVENT_NO_SIGNAL);
    Report(Kind::DABSource, EC_VIDEOFRAMEREADY);
    EXPECT_EQ(button.GetState(), kButtonDisabled);
    Tune(kNews);
    Report(Kind::Parser, IDMB_EVENT_SIGNAL);
    Report(Kind::VideoRenderer, EC_VIDEOFRAMEREADY);
    EXPECT_EQ(button.GetState(), kButtonNormal);
}

TEST_F(RecordStory, PlayingAFileStopsTheBroadcastAndPolls) {
    Forget();
    peer->PlayDMBFile(WTEXT("\\SDMMC Card\\DMB\\a.dmb"));
    Idle();
    EXPECT_TRUE(InOrder({"mode 2", "parser.Load", "mode 4"}));
    EXPECT_EQ(peer->FileIndex(), 0);
    EXPECT_EQ(peer->FileName(), WTEXT("\\SDMMC Card\\DMB\\a.dmb"));
    EXPECT_EQ(peer->CurrentType(), kSessionFile);
    EXPECT_FALSE(HasTimer(eSIGNAL_TIMER));
    EXPECT_EQ(Element(kElementAntenna).GetState(), kButtonDisabled);
    EXPECT_EQ(WString(device.shell.Title()), WString());
}

TEST_F(RecordStory, FileThatCannotBeBuiltLeavesAStoppedBroadcast) {
    stage[Kind::VideoDecoder].create = E_FAIL;
    peer->PlayDMBFile(WTEXT("\\SDMMC Card\\DMB\\a.dmb"));
    EXPECT_EQ(peer->FileIndex(), -1);
    EXPECT_EQ(view->GetPlayMode(), kPlayModeStopped);
    EXPECT_EQ(device.shell.BoxRecords().size(), 0u);
    stage[Kind::VideoDecoder].create = S_OK;
    CloseLeaking({Kind::Parser, Kind::BSACDecoder, Kind::AudioRenderer});
}

TEST_F(RecordStory, ViewPlaysRecordingsAndTransportStreams) {
    EXPECT_EQ(view->AllowFileList(WTEXT("\\SDMMC Card\\a.dmb")), 4);
    EXPECT_EQ(view->AllowFileList(WTEXT("\\SDMMC Card\\a.ts")), 5);
    EXPECT_EQ(view->AllowFileList(WTEXT("\\SDMMC Card\\a.tsp")), 5);
    EXPECT_EQ(view->AllowFileList(WTEXT("\\SDMMC Card\\a.mp3")), 0);
}

// Edge case: from 4 GiB of free space on no size is compared.
TEST_F(RecordStory, FourGibibytesAreEnoughForTheLongestLimit) {
    view->SetRecordTime(4);
    device.ce.files().SetFaults({.freeBytes = 0x1'0000'0000ull});
    Command(kCmdRecord);
    EXPECT_EQ(view->GetPlayMode(), kPlayModeRecording);
    Command(kCmdRecord);
    device.ce.files().SetFaults({.freeBytes = 267386879});
    Command(kCmdRecord);
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying) << "one byte less than an hour takes";
}

// Edge case: a recording that begins at midnight of the first of January 2010.
TEST_F(RecordStory, NameAtMidnightOfTheNewYear) {
    device.clock.SetWall(1262271600); // 2010-01-01 00:00:00 in Korea
    Command(kCmdRecord);
    EXPECT_TRUE(Saw("NEWS_100101000000.dmb"));
}

TEST_F(RecordStory, KoreanLabelNamesTheFile) {
    peer->List().RemoveAllRecords();
    peer->List().AppendRecord(harness::Channel(205280000, "\xC7\xD1\xBA\xFB TV", 0x11, kKindDMB));
    device.clock.SetWall(1173269109);
    Command(kCmdRecord);
    const auto& told = device.ce.debug().Lines(); // the controller tells the path
    EXPECT_TRUE(std::any_of(told.begin(), told.end(), [](const WString& line) {
        return line.find(WTEXT("한빛 TV_070307210509.dmb")) != WString::npos;
    }));
}

// Edge case: a channel whose record cannot be fetched has no label; the name begins with an underscore.
TEST_F(RecordStory, NameOfAChannelWithoutARecordBeginsWithAnUnderscore) {
    peer->CurChannel() = 99;
    peer->BeginRecording();
    EXPECT_EQ(view->GetPlayMode(), kPlayModeRecording);
    const auto& told = device.ce.debug().Lines();
    EXPECT_TRUE(std::any_of(told.begin(), told.end(), [](const WString& line) {
        return line.find(WTEXT("\\SDMMC Card\\DMB\\_")) != WString::npos;
    }));
    peer->CurChannel() = kNews;
}

TEST_F(RecordStory, PickingAFileWhileRecordingEndsTheRecordingFirst) {
    Command(kCmdRecord);
    Forget();
    peer->PlayDMBFile(WTEXT("\\SDMMC Card\\DMB\\a.dmb"));
    Idle();
    EXPECT_TRUE(InOrder({"StopCapture", "parser.Load", "mode 4"}));
    EXPECT_EQ(Count("StopCapture"), 1);
    EXPECT_FALSE(HasTimer(eRECORD_TIMER));
    EXPECT_EQ(peer->CurrentType(), kSessionFile);
    EXPECT_EQ(Count("1009"), 0) << "only the record command says that it has ended";
}

TEST_F(RecordStory, ChannelChangeWhileRecordingEndsTheRecording) {
    Command(kCmdRecord);
    Tune(kSport);
    EXPECT_EQ(view->GetPlayMode(), kPlayModeRecording) << "the question was not answered with OK";
    Forget();
    device.shell.Answer(kTextStopRecording, true);
    Tune(kSport);
    EXPECT_EQ(Count("StopCapture"), 1);
    EXPECT_FALSE(HasTimer(eRECORD_TIMER));
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying);
}

TEST_F(RecordStory, FileThatHasEndedLeavesItsPlaceToABroadcast) {
    peer->PlayDMBFile(WTEXT("\\SDMMC Card\\DMB\\a.dmb"));
    Idle();
    Report(Kind::AudioRenderer, EC_COMPLETE);
    Report(Kind::VideoRenderer, EC_COMPLETE);
    EXPECT_EQ(view->GetPlayMode(), kPlayModeStopped);
    EXPECT_EQ(peer->CurrentType(), kSessionFile) << "the list opens on the files still";
    Tune(kNews);
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying);
    EXPECT_EQ(peer->CurrentType(), kSessionDMB);
    EXPECT_TRUE(HasTimer(eSIGNAL_TIMER));
    EXPECT_EQ(WString(device.shell.Title()), WTEXT("[CH12] NEWS"));
}

TEST_F(RecordStory, RecordKeyIsTheButton) {
    device.shell.Key(kKeyRecord);
    Idle();
    EXPECT_EQ(view->GetPlayMode(), kPlayModeRecording);
    device.shell.Key(kKeyRecord);
    Idle();
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying);
}
