// The home screen and the view: leaving, being held, coming back.
#include "tests/stories/Story.h"

using namespace stories;
using scripted::Kind;

namespace {
class HomeStory : public Story {
protected:
    static constexpr UINT kTile = 30;
};
} // namespace

TEST_F(HomeStory, ExitShowsHomeAndItsTileBringsTheSavedChannelBack) {
    Open(UsualChannels(), kSport);
    device.shell.Press(kCmdExit);
    Idle();
    ASSERT_EQ(device.shell.View(), nullptr);
    EXPECT_EQ(stage.Alive(), 0);
    EXPECT_EQ(scripted::Tuner().controlsAlive, 0);
    Forget();
    ASSERT_TRUE(device.shell.Press(kTile));
    Idle();
    view = static_cast<CVelDMBView*>(device.shell.View());
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying);
    EXPECT_TRUE(InOrder({"open CVelDMBView", "tuner.Open", "tuner.SetChannel 207008000 8 12 0", "mode 4"}));
}

TEST_F(HomeStory, HeldTelevisionStandsStillAndGoesOn) {
    Open(UsualChannels(), kNews);
    Forget();
    ASSERT_TRUE(device.shell.ShowHome());
    EXPECT_EQ(view->GetPlayMode(), kPlayModePaused);
    EXPECT_TRUE(InOrder({"hold", "mode 5", "HoldVideo"}));
    Forget();
    ASSERT_TRUE(device.shell.ShowView());
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying);
    EXPECT_TRUE(InOrder({"back", "ResumeVideo", "mode 4"}));
    EXPECT_EQ(Count("tuner.SetChannel"), 0);
}

TEST_F(HomeStory, HeldRadioPlaysOn) {
    Open(UsualChannels(), kJazz);
    Forget();
    ASSERT_TRUE(device.shell.ShowHome());
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying);
    EXPECT_FALSE(Saw("HoldVideo"));
    ASSERT_TRUE(device.shell.ShowView());
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying);
}

TEST_F(HomeStory, RecordingGoesOnBehindTheHomeScreen) {
    Open(UsualChannels(), kNews);
    Command(kCmdRecord);
    ASSERT_EQ(view->GetPlayMode(), kPlayModeRecording);
    ASSERT_TRUE(device.shell.ShowHome());
    EXPECT_EQ(view->GetPlayMode(), kPlayModeRecording);
    EXPECT_FALSE(Saw("StopCapture"));
}

TEST_F(HomeStory, NothingComesInFrontOfAScanOrADialog) {
    Open();
    bool shown = true;
    device.shell.DuringModal([&] { shown = device.shell.ShowHome(); });
    Command(kCmdList);
    EXPECT_FALSE(shown);
    constexpr WPARAM kHomeKey = 36;
    scripted::Tuner().onGetChannel = [&](int) { Send(WM_KEYUP, kHomeKey, 1); };
    Command(kCmdScan);
    EXPECT_FALSE(Saw("hold"));
}
