// From the transmitter's files to picture, sound, text and recording, through everything that a viewer has but its window.
#include <filesystem>

#include <gtest/gtest.h>

#include "host/ce/Text.h"
#include "host/headend/Demo.h"
#include "tests/endtoend/Probe.h"
#include "tests/endtoend/Receiver.h"
#include "view/DMBViewIds.h"

using namespace endtoend;

namespace {

constexpr double kVisible = 10; // contrast above which there is something in the picture
constexpr int kColours = 50;    // on the screen, where the picture lies

class EndToEnd : public ::testing::Test {
public:
    // The stages, in their order.
    void Scan();
    void ChangeByList();
    void StepToTheNext();
    void RadioWithALabel();
    void TelevisionLosesItsSignal();
    void RadioLosesItsSignal();
    void RecordFiveSeconds();

protected:
    // Picture and sound play now: looks at two seconds of both.
    void ExpectTelevision() {
        receiver.eye.Forget();
        receiver.ear.Forget();
        receiver.Wait(2000);
        EXPECT_GT(receiver.eye.Seen(), 10);
        EXPECT_GT(receiver.eye.Moved(), 5);
        EXPECT_GT(receiver.eye.Contrast(), kVisible);
        EXPECT_GT(receiver.PicturePixels(), kColours);
        EXPECT_GT(receiver.ear.Loudness(), kHeard);
    }
    void ExpectSound() {
        receiver.ear.Forget();
        receiver.Wait(1000);
        EXPECT_GT(receiver.ear.Loudness(), kHeard);
    }
    // The first picture has hidden what the tuned channel showed.
    [[nodiscard]] bool Plays() {
        return receiver.view->GetPlayMode() == kPlayModePlaying && receiver.Info().empty() && receiver.eye.Seen() > 0;
    }
    [[nodiscard]] std::string Text(WORD id) const { return ce::ToUtf8(receiver.view->GetMessageW(id)); }

    Receiver receiver{DemoAndLoss()};
};

void EndToEnd::Scan() {
    EXPECT_EQ(receiver.Info(), Text(kTextNoChannel));
    receiver.Command(kCmdScan); // its list is left without a choice
    EXPECT_GE(receiver.peer->ChannelCount(), 8);
    EXPECT_EQ(receiver.view->GetPlayMode(), kPlayModeStopped);
    for (const char* label : {"ORBIT ONE", "JAZZ HARBOUR", "LOSS TV", "LOSS FM"})
        EXPECT_GE(receiver.Position(label), 0) << label;
    EXPECT_EQ(std::filesystem::file_size(receiver.Folder() / "profile/DMBChannel.lst"),
              32U * static_cast<unsigned>(receiver.peer->ChannelCount()));
}

void EndToEnd::ChangeByList() {
    receiver.PickFromList("ORBIT ONE");
    EXPECT_EQ(std::string(ce::ToUtf8(receiver.shell->Title())), "[CH12] ORBIT ONE");
    EXPECT_EQ(receiver.Info(), "ORBIT ONE " + Text(kTextTuned));
    ASSERT_TRUE(receiver.WaitFor([this] { return Plays(); }, 10));
    ExpectTelevision();
}

void EndToEnd::StepToTheNext() {
    const LONG before = receiver.peer->CurChannel();
    receiver.eye.Forget();
    receiver.Command(kCmdChannelUp);
    const LONG chosen = receiver.peer->PendingChannel();
    EXPECT_NE(chosen, before);
    EXPECT_EQ(receiver.peer->CurChannel(), before); // not before the second is over
    ASSERT_TRUE(receiver.WaitFor([&] { return receiver.peer->CurChannel() == chosen; }, 3));
    receiver.eye.Forget();
    ASSERT_TRUE(receiver.WaitFor([this] { return Plays(); }, 10));
    EXPECT_EQ(receiver.peer->CurrentType(), kSessionDMB);
    ExpectTelevision();
}

void EndToEnd::RadioWithALabel() {
    receiver.PickFromList("JAZZ HARBOUR");
    EXPECT_EQ(receiver.peer->CurrentType(), kSessionDAB);
    ASSERT_TRUE(receiver.WaitFor([this] { return !receiver.NewestText().empty(); }, 10));
    EXPECT_EQ(receiver.peer->OnAirFlag(), 1);
    EXPECT_EQ(receiver.Info(), "");
    EXPECT_TRUE(receiver.view->Find(kElementAudioBG)->IsVisible());
    const std::string text = receiver.NewestText();
    EXPECT_NE(headend::DemoDescription().find("\"" + text + "\""), std::string_view::npos) << text;
    ExpectSound();
    EXPECT_FALSE(receiver.shell->Video().visible);
}

void EndToEnd::TelevisionLosesItsSignal() {
    receiver.eye.Forget();
    receiver.Tune("LOSS TV");
    ASSERT_TRUE(receiver.WaitFor([this] { return Plays(); }, 10));
    ExpectTelevision();
    ASSERT_TRUE(receiver.WaitFor([this] { return receiver.peer->NoSignal() != 0; }, 30));
    EXPECT_EQ(receiver.Info(), Text(kTextNoSignal));
    EXPECT_FALSE(receiver.view->IsToggleEnabled());
    EXPECT_EQ(receiver.view->GetPlayMode(), kPlayModePlaying);
    receiver.shell->RunUntilIdle();
    EXPECT_FALSE(receiver.shell->Video().visible);
    ASSERT_TRUE(receiver.WaitFor([this] { return receiver.peer->NoSignal() == 0; }, 30));
    EXPECT_EQ(receiver.Info(), "");
    EXPECT_TRUE(receiver.view->IsToggleEnabled());
    receiver.Wait(3000);
    ExpectTelevision();
}

void EndToEnd::RadioLosesItsSignal() {
    receiver.Tune("LOSS FM");
    ASSERT_TRUE(receiver.WaitFor([this] { return receiver.peer->OnAirFlag() != 0; }, 10));
    ExpectSound();
    ASSERT_TRUE(receiver.WaitFor([this] { return receiver.peer->SignalWait() != 0; }, 40));
    EXPECT_EQ(receiver.view->GetPlayMode(), kPlayModeStopped);
    ASSERT_TRUE(receiver.WaitFor([this] { return receiver.view->GetPlayMode() == kPlayModePlaying; }, 40));
    EXPECT_EQ(receiver.peer->SignalWait(), 0);
    receiver.Wait(2000);
    ExpectSound();
    EXPECT_EQ(receiver.NewestText(), "LOSS FM is here");
}

void EndToEnd::RecordFiveSeconds() {
    receiver.eye.Forget();
    receiver.Tune("ORBIT ONE");
    ASSERT_TRUE(receiver.WaitFor([this] { return Plays(); }, 10));
    receiver.Wait(1000);
    receiver.Command(kCmdRecord);
    ASSERT_EQ(receiver.view->GetPlayMode(), kPlayModeRecording);
    receiver.Wait(5000);
    receiver.Command(kCmdRecord);
    EXPECT_EQ(receiver.view->GetPlayMode(), kPlayModePlaying);
    ExpectTelevision(); // it plays on
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(receiver.Card() / "DMB"))
        files.push_back(entry.path());
    ASSERT_EQ(files.size(), 1U);
    EXPECT_EQ(files[0].filename().string().substr(0, 10), "ORBIT ONE_");
    ExpectPlays(files[0], receiver.Folder(), 60, 3); // some seconds at 30 a second, from the first random access on
}

} // namespace

TEST_F(EndToEnd, FromTheScanToARecording) {
    for (const auto stage :
         {&EndToEnd::Scan, &EndToEnd::ChangeByList, &EndToEnd::StepToTheNext, &EndToEnd::RadioWithALabel,
          &EndToEnd::TelevisionLosesItsSignal, &EndToEnd::RadioLosesItsSignal, &EndToEnd::RecordFiveSeconds}) {
        (this->*stage)();
        if (HasFatalFailure())
            return;
    }
}
