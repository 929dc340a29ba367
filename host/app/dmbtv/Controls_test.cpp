// The whole viewer but its window, on a broadcast made for the purpose: what keys and touches do, what the window is shown, and what
// becomes of it all when something is taken away. Waits are for events, each with a limit.
#include "host/app/dmbtv/Controls.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <thread>

#include <gtest/gtest.h>

#include "host/app/dmbtv/ExitStatus.h"
#include "host/app/dmbtv/Player.h"
#include "host/app/dmbtv/ScriptRunner.h"
#include "host/app/dmbtv/ViewLook.h"
#include "host/headend/Headend.h"
#include "view/DMBViewIds.h"

namespace dmbtv {

using shell::sdl::Action;
using shell::sdl::Input;

namespace {

namespace fs = std::filesystem;

constexpr const char* kBroadcast = R"({"seconds": 6, "ensembles": [
  {"block": "8A", "id": "0xE1C1", "label": {"text": "ONE"}, "services": [
    {"kind": "television", "id": "0xE1C10101", "subChannel": 1, "bitRate": 256, "label": {"text": "FIRST TV"},
     "video": {"scene": "bars", "width": 160, "height": 120, "framesPerSecond": 15}, "sound": {"melody": "tone:440"}},
    {"kind": "radio", "id": "0xE1C2", "subChannel": 2, "bitRate": 128, "label": {"text": "RADIO"},
     "sound": {"melody": "tone:440"}}]},
  {"block": "12B", "id": "0xE1E1", "label": {"text": "TWO"}, "services": [
    {"kind": "television", "id": "0xE1E10101", "subChannel": 1, "bitRate": 256, "label": {"text": "SECOND TV"},
     "video": {"scene": "bars", "width": 160, "height": 120, "framesPerSecond": 15}, "sound": {"melody": "tone:660"}}]}]})";

const headend::Broadcast& TestBroadcast() {
    static const headend::Broadcast made =
        headend::MakeBroadcast(headend::ParseDescription(kBroadcast, "test broadcast", {}));
    return made;
}

std::string ReadWhole(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

class ControlsTest : public ::testing::Test {
protected:
    ControlsTest() {
        std::string pattern = (fs::temp_directory_path() / "dmbtv-test-XXXXXX").string();
        base = mkdtemp(pattern.data());
        headend::WriteBroadcast(TestBroadcast(), base / "air");
        options.source = (base / "air").string();
        options.profile = base / "profile";
        options.card = base / "card";
        options.deviceRoot = base / "device";
        options.language = "en";
        SetLogLevel(LogLevel::Error);
    }
    ~ControlsTest() override {
        controls.reset();
        session.reset();
        std::error_code ignored;
        fs::remove_all(base, ignored);
    }

    void Open() {
        session.emplace(options, SessionPorts{});
        controls.emplace(*session, frames, inputs, state);
        CancelUnanswered(session->Shell());
    }
    // With a list and the first service playing.
    void OpenPlaying() {
        Open();
        ASSERT_EQ(Play("expect mode 4"), kExitDone);
        controls.reset();
        session.reset();
        Open();
        session->OpenView();
        ASSERT_TRUE(Until([this] {
            return Mode() == kPlayModePlaying && session->Shell().Video().FrameCount() > 0 &&
                   frames.Take().frame->video;
        }));
    }

    int Play(const std::string& script) {
        const Script read = ReadScript(script);
        EXPECT_EQ(read.error, "");
        return dmbtv::Play(*session, options, read);
    }

    // Lets the shell work until the condition holds; false when it does not come about.
    bool Until(const std::function<bool()>& condition, ce::Millis limit = 20000) {
        ce::MessageLoop& loop = session->System().loop();
        bool over = false;
        const HWND alarm = loop.AddWindow([&over](HWND, UINT, WPARAM, LPARAM) -> LRESULT {
            over = true;
            return 0;
        });
        loop.StartTimer(alarm, 1, static_cast<UINT>(limit));
        const HWND look = loop.AddWindow([](HWND, UINT, WPARAM, LPARAM) -> LRESULT { return 0; });
        loop.StartTimer(look, 1, 10);
        (void)loop.RunUntil([&] { return over || condition(); });
        loop.RemoveWindow(alarm);
        loop.RemoveWindow(look);
        return condition();
    }

    void Press(Action action) { inputs.Push({Input::Kind::Key, {}, action, 0}); }
    int Mode() { return session->Shell().View()->GetPlayMode(); }
    std::u16string Title() { return session->Shell().Title(); }
    const CVelDMBView& View() { return static_cast<const CVelDMBView&>(*session->Shell().View()); }

    // Size of the first recording.
    [[nodiscard]] std::uintmax_t RecordedBytes() const {
        std::error_code error;
        const fs::directory_iterator recordings(options.card / "DMB", error);
        return recordings == fs::directory_iterator() ? 0 : fs::file_size(recordings->path());
    }

    fs::path base;
    Options options;
    WindowState state;
    shell::sdl::Frames frames;
    shell::sdl::Inputs inputs;
    std::optional<Session> session;
    std::optional<Controls> controls;
};

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

// Edge case: the source is removed and comes back
TEST_F(ControlsTest, ASourceThatGoesIsTriedAgainUntilItComesBack) {
    OpenPlaying();
    fs::rename(base / "air" / "12B.eti", base / "away.eti");
    Press(Action::Digit2);
    ASSERT_TRUE(Until([this] { return Mode() == kPlayModeStopped; }));
    const GButton* info = session->Shell().Element(kElementInfo);
    EXPECT_TRUE(info->IsVisible());
    fs::rename(base / "away.eti", base / "air" / "12B.eti");
    EXPECT_TRUE(Until([this] { return Mode() == kPlayModePlaying; }));
    EXPECT_EQ(Title(), u"[CH12] SECOND TV");
}

// Edge case: the file that plays is cut to nothing and restored
TEST_F(ControlsTest, AFileCutToNothingIsNoSignalAndPlaysAgainWhenItIsChosenAgain) {
    OpenPlaying();
    const std::string whole = ReadWhole(base / "air" / "8A.eti");
    fs::resize_file(base / "air" / "8A.eti", 0);
    const auto noSignal = [this] {
        const GButton* info = session->Shell().Element(kElementInfo);
        return info->IsVisible() && std::u16string(info->GetText()) == u"The signal is too weak to receive.";
    };
    EXPECT_TRUE(Until(noSignal));
    std::ofstream(base / "air" / "8A.eti", std::ios::binary) << whole;
    Press(Action::Digit2);
    EXPECT_TRUE(Until([this] { return Title() == u"[CH12] SECOND TV" && Mode() == kPlayModePlaying; }));
    Press(Action::Digit1);
    EXPECT_TRUE(Until([&] { return Title() == u"[CH8] FIRST TV" && Mode() == kPlayModePlaying && !noSignal(); }));
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
