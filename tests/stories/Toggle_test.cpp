// The button between television and radio.
#include "tests/stories/Story.h"

using namespace stories;

namespace {
class ToggleStory : public Story {};
} // namespace

TEST_F(ToggleStory, ToggleGoesToTheLastChannelOfTheOtherKind) {
    Open();
    Tune(kJazz);
    Tune(kSport);
    Forget();
    Command(kCmdToggleFull);
    EXPECT_EQ(peer->CurChannel(), kJazz);
    EXPECT_TRUE(HasTimer(eTOGGLE_TIMER));
    EXPECT_EQ(peer->ToggleGuard(), 1);
    EXPECT_TRUE(Saw("post view command 96"));
}

// Edge case: a second toggle within 3 seconds is ignored, and so is the exit button.
TEST_F(ToggleStory, GuardRefusesAnotherToggleAndTheExitForThreeSeconds) {
    Open();
    Tune(kNews);
    Command(kCmdToggleFull);
    ASSERT_EQ(peer->CurChannel(), kMusic);
    Command(kCmdToggleSmall);
    EXPECT_EQ(peer->CurChannel(), kMusic);
    Command(kCmdExit);
    EXPECT_NE(device.shell.View(), nullptr);
    Wait(3000);
    EXPECT_EQ(peer->ToggleGuard(), 0);
    Command(kCmdToggleFull);
    EXPECT_EQ(peer->CurChannel(), kNews);
}

// Edge case: without a selection and with a list, the toggle behaves as if radio were current.
TEST_F(ToggleStory, ToggleWithoutASelectionLooksForTelevision) {
    Open({harness::Channel(183008000, "JAZZ", 1, kKindDAB), harness::Channel(205280000, "NEWS", 2, kKindDMB)});
    EXPECT_EQ(peer->ChangeDMBDAB(), 1);
    Idle();
    EXPECT_EQ(peer->CurChannel(), 1);
}

TEST_F(ToggleStory, ToggleWithoutASelectionGoesBackToTheLastTelevision) {
    Open();
    Tune(kSport);
    peer->CurChannel() = -1;
    Forget();
    EXPECT_EQ(peer->ChangeDMBDAB(), 1);
    EXPECT_TRUE(Saw("post view 1124 2 0"));
    Idle();
    EXPECT_EQ(peer->CurChannel(), kSport);
}

TEST_F(ToggleStory, ToggleWithoutChannelsDoesNothing) {
    Open({});
    Forget();
    EXPECT_EQ(peer->ChangeDMBDAB(), 0);
    EXPECT_EQ(Count("post"), 0);
}

// Edge case: while a file plays the toggle posts nothing.
TEST_F(ToggleStory, ToggleWhileAFilePlaysPostsNothing) {
    Open();
    peer->FileIndex() = 0;
    Forget();
    EXPECT_EQ(peer->ChangeDMBDAB(), 0);
    EXPECT_EQ(Count("post"), 0);
    peer->FileIndex() = -1;
}

TEST_F(ToggleStory, ToggleWithoutTheOtherKindShowsABox) {
    Open({harness::Channel(205280000, "NEWS", 1, kKindDMB)});
    Tune(0);
    Forget();
    EXPECT_EQ(peer->ChangeDMBDAB(), 0);
    EXPECT_TRUE(Saw("post view 1031 1014 2"));
    Idle();
    device.WriteChannels({});
    peer->List().RemoveAllRecords();
    peer->List().AppendRecord(harness::Channel(183008000, "JAZZ", 1, kKindDAB));
    peer->LastDMBChannel() = -1;
    Forget();
    EXPECT_EQ(peer->ChangeDMBDAB(), 0);
    EXPECT_TRUE(Saw("post view 1031 1015 2"));
    Idle();
    peer->List().RemoveAllRecords();
    peer->List().AppendRecord(harness::Channel(205280000, "NEWS", 1, kKindDMB));
}

TEST_F(ToggleStory, FaceOfTheToggleFollowsTheKind) {
    Open();
    Tune(kNews);
    EXPECT_EQ(FaceOf(kElementToggleFull), 1);
    Tune(kMusic);
    EXPECT_EQ(FaceOf(kElementToggleFull), 0);
    ASSERT_TRUE(device.shell.Minimize());
    EXPECT_EQ(FaceOf(kElementToggleSmall), 0);
    Tune(kNews);
    EXPECT_EQ(FaceOf(kElementToggleSmall), 1); // the small one, while small
    EXPECT_EQ(FaceOf(kElementToggleFull), 0);
    device.shell.Restore();
}
