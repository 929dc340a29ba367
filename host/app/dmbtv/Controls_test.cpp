// The whole viewer but its window: what keys and touches do, and what the window is shown.
#include "tests/app/ViewerFixture.h"

#include <thread>

namespace dmbtv {

namespace {

class ControlsTest : public ViewerTest {};

} // namespace

// Edge case: a first start without a channel list
TEST_F(ControlsTest, TheFirstStartScansAndPlaysTheFirstTelevisionService) {
    Open();
    EXPECT_EQ(Play("expect type 0\nexpect mode 4\nexpect title \"[CH8] FIRST TV\""), kExitDone);
    EXPECT_EQ(fs::file_size(options.profile / "DMBChannel.lst"), 3u * 32);
}

// Edge case: a first start without any television service
TEST_F(ControlsTest, TheFirstStartOnRadioAlonePlaysTheRadio) {
    headend::Description radio = headend::ParseDescription(kBroadcast, "test broadcast", {});
    fs::remove(base / "air" / "8A.eti");
    fs::remove(base / "air" / "12B.eti");
    radio.ensembles.erase(radio.ensembles.begin() + 1);
    radio.ensembles[0].services.erase(radio.ensembles[0].services.begin());
    headend::WriteBroadcast(headend::MakeBroadcast(radio), base / "air");
    Open();
    EXPECT_EQ(Play("expect type 1\nexpect title \"[CH8] RADIO\""), kExitDone);
}

// Edge case: a first start where nothing is on air
TEST_F(ControlsTest, TheFirstStartWithoutABroadcastSaysSoAndDoesNotScanAgain) {
    fs::remove(base / "air" / "8A.eti");
    fs::remove(base / "air" / "12B.eti");
    Open();
    EXPECT_EQ(Play("expect box 1001\nexpect type -1"), kExitDone);
    controls.reset();
    session.reset();
    Open();
    EXPECT_EQ(Play("expect text 43 \"No channels. Please run a channel scan.\"\nexpect box -1"), kExitDone);
}

// Edge case: input during a scan
TEST_F(ControlsTest, InputDuringAScanIsDiscardedAndFramesKeepComing) {
    OpenPlaying();
    std::size_t framesOfScan = 0;
    frames.SetListener([&] {
        if (session->IsScanning()) {
            ++framesOfScan;
            inputs.Push({Input::Kind::Key, {}, Action::Mute, 0});
        }
    });
    session->System().loop().Send(View().GetSafeHwnd(), WM_COMMAND, kCmdScan);
    frames.SetListener({});
    session->Shell().RunUntilIdle();
    EXPECT_GE(framesOfScan, 21u) << "each step of the progress bar is shown";
    EXPECT_FALSE(state.muted);
    Press(Action::Mute);
    session->Shell().RunUntilIdle();
    EXPECT_TRUE(state.muted) << "input after the scan counts again";
}

// Edge case: the window is closed during a scan
TEST_F(ControlsTest, LeavingDuringAScanKeepsListAndSettings) {
    OpenPlaying();
    const std::string list = ReadWhole(options.profile / "DMBChannel.lst");
    const std::string settings = ReadWhole(options.profile / "DMB.dat");
    frames.SetListener([&] {
        if (session->IsScanning() && !session->IsQuitting())
            session->RequestQuit();
    });
    session->System().loop().Send(View().GetSafeHwnd(), WM_COMMAND, kCmdScan);
    frames.SetListener({});
    EXPECT_TRUE(session->IsQuitting());
    EXPECT_EQ(session->Shell().ModalDepth(), 0);
    EXPECT_TRUE(session->CloseView());
    controls.reset();
    session.reset();
    EXPECT_EQ(ReadWhole(options.profile / "DMBChannel.lst"), list);
    EXPECT_EQ(ReadWhole(options.profile / "DMB.dat"), settings);
}

// Edge case: the window is closed during a message box
TEST_F(ControlsTest, LeavingDuringAMessageBoxCancelsItAndClosesTheRecording) {
    OpenPlaying();
    Press(Action::Record);
    ASSERT_TRUE(Until([this] { return Mode() == kPlayModeRecording && RecordedBytes() > 0; }));
    session->Shell().SetIdleInput({}); // nobody answers
    std::thread user;
    session->Shell().DuringModal([&] { user = std::thread([this] { session->RequestQuit(); }); });
    session->System().loop().Send(View().GetSafeHwnd(), WM_COMMAND,
                                  kCmdExit); // asks whether the recording shall be stopped
    user.join();
    const auto& boxes = session->Shell().BoxRecords();
    const auto asked = std::find_if(boxes.begin(), boxes.end(),
                                    [](const shell::BoxRecord& box) { return box.textId == kTextStopRecording; });
    ASSERT_NE(asked, boxes.end());
    EXPECT_EQ(asked->answer, kAnswerCancel);
    EXPECT_TRUE(session->CloseView());
    controls.reset();
    session.reset();
    EXPECT_GT(RecordedBytes(), 0u);
    EXPECT_EQ(RecordedBytes() % 188, 0u);
}

// Edge case: the settings cannot be written
TEST_F(ControlsTest, AProfileThatCannotBeWrittenStillPlays) {
    std::ofstream(base / "plain") << "a file where a folder should be";
    options.profile = base / "plain";
    Open();
    EXPECT_EQ(Play("expect mode 4"), kExitDone);
}

TEST_F(ControlsTest, DigitsChooseAmongTheServicesOfTheKindThatPlays) {
    OpenPlaying();
    Press(Action::Digit2);
    EXPECT_TRUE(Until([this] { return Title() == u"[CH12] SECOND TV" && Mode() == kPlayModePlaying; }));
    Press(Action::Digit9); // there is no ninth
    session->Shell().RunUntilIdle();
    EXPECT_EQ(Title(), u"[CH12] SECOND TV");
}

TEST_F(ControlsTest, PauseHoldsThePictureAndTakesItUpAgain) {
    OpenPlaying();
    Press(Action::Pause);
    session->Shell().RunUntilIdle();
    EXPECT_EQ(Mode(), kPlayModePaused);
    Press(Action::Pause);
    session->Shell().RunUntilIdle();
    EXPECT_EQ(Mode(), kPlayModePlaying);
}

TEST_F(ControlsTest, TheVolumeGoesInStepsAndShowsASign) {
    OpenPlaying();
    Press(Action::VolumeDown);
    Press(Action::VolumeDown);
    session->Shell().RunUntilIdle();
    EXPECT_EQ(state.volume, 90);
    const auto shown = frames.Take().frame;
    EXPECT_TRUE(Until([&] { return frames.Take().frame->pixels != shown->pixels; })) << "the sign goes by itself";
    Press(Action::Mute);
    Press(Action::VolumeUp); // louder is no longer silent
    session->Shell().RunUntilIdle();
    EXPECT_FALSE(state.muted);
    EXPECT_EQ(state.volume, 95);
}

TEST_F(ControlsTest, TheScreenIsDrawnAsFinelyAsTheWindowWants) {
    OpenPlaying();
    session->Shell().View()->ShowControls(0, 1);
    session->Shell().RunUntilIdle();
    const auto before = frames.Take().frame;
    EXPECT_EQ(before->scale, 1);
    inputs.WantScale(2);
    session->Shell().RunUntilIdle();
    const auto fine = frames.Take().frame;
    EXPECT_EQ(fine->scale, 2);
    ASSERT_EQ(fine->pixels.size(), std::size_t{1600} * 960);
    EXPECT_EQ(fine->pixels[std::size_t{940} * 1600 + 800], 0u) << "the picture shows through";
    EXPECT_EQ(fine->videoPlace, before->videoPlace);
    inputs.WantScale(1);
    session->Shell().RunUntilIdle();
    EXPECT_EQ(frames.Take().frame->pixels, before->pixels);
}

// Edge case: the window becomes larger during a scan
TEST_F(ControlsTest, AWindowThatGrowsDuringAScanIsNotForgotten) {
    OpenPlaying();
    frames.SetListener([&] {
        if (session->IsScanning() && inputs.WantedScale() == 1)
            inputs.WantScale(2);
    });
    session->System().loop().Send(View().GetSafeHwnd(), WM_COMMAND, kCmdScan);
    frames.SetListener({});
    session->Shell().RunUntilIdle();
    EXPECT_EQ(frames.Take().frame->scale, 2);
}

TEST_F(ControlsTest, ATouchBringsTheHiddenControlsBackAndTheyLeaveThePictureFree) {
    OpenPlaying();
    CVelPlayerView& view = *session->Shell().View();
    view.ShowControls(0, 1);
    session->Shell().RunUntilIdle();
    const auto hidden = frames.Take().frame;
    EXPECT_EQ(hidden->pixels[470u * 800 + 400], 0u) << "the picture shows through";
    EXPECT_TRUE(hidden->keepAwake);
    inputs.Push({Input::Kind::TouchDown, {400, 240}, Action::None, 0});
    inputs.Push({Input::Kind::TouchUp, {400, 240}, Action::None, 0});
    EXPECT_TRUE(Until([&view] { return view.IsToolVisibled() != 0; }));
    session->Shell().RunUntilIdle();
    EXPECT_NE(frames.Take().frame->pixels[470u * 800 + 400], 0u);
}

TEST_F(ControlsTest, KeysOpenDialogsAlsoWhenTheControlsAreHidden) {
    OpenPlaying();
    session->Shell().View()->ShowControls(0, 1);
    bool opened = false;
    session->Shell().DuringModal([&] { opened = frames.Take().frame->askedFor; });
    Press(Action::List);
    session->Shell().RunUntilIdle();
    EXPECT_TRUE(opened);
    EXPECT_FALSE(frames.Take().frame->askedFor);
}

} // namespace dmbtv
