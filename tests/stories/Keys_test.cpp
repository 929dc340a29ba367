// Keys and touches.
#include "tests/stories/Story.h"

using namespace stories;
using scripted::Kind;

namespace {
class KeyStory : public Story {
protected:
    void SetUp() override { Open(); }
};
} // namespace

// Edge case: Page Up with a repeat count of 2 does not step but still reaches the shell.
TEST_F(KeyStory, RepeatedChannelKeyOnlyReachesTheShell) {
    Tune(kNews);
    Forget();
    device.shell.Key(kKeyChannelDown, 2);
    Idle();
    EXPECT_EQ(peer->PendingChannel(), -1);
    EXPECT_TRUE(Saw("host key 33"));
}

TEST_F(KeyStory, ChannelKeysStepAndReachTheShell) {
    Tune(kNews);
    Forget();
    device.shell.Key(kKeyChannelUp);
    Idle();
    EXPECT_EQ(peer->PendingChannel(), kSport);
    EXPECT_TRUE(Saw("host key 34"));
    device.shell.Key(kKeyChannelDown);
    Idle();
    EXPECT_EQ(peer->PendingChannel(), kNews);
    KillTimer(view->GetSafeHwnd(), eCHANGE_TIMER);
}

// Edge case: key 195 without a box is swallowed.
TEST_F(KeyStory, OkKeyWithoutABoxIsSwallowed) {
    Forget();
    device.shell.Key(kKeyOk);
    Idle();
    EXPECT_FALSE(Saw("host key"));
}

// Edge case: any key during a scan is swallowed.
TEST_F(KeyStory, KeysDuringAScanAreSwallowed) {
    peer->Scanning() = 1;
    Forget();
    for (const UINT key : {27u, 33u, 34u, 180u, 193u, 195u, 65u})
        Send(WM_KEYUP, key, 1);
    EXPECT_FALSE(Saw("host key"));
    EXPECT_FALSE(HasTimer(eSCAN_TIMER));
    peer->Scanning() = 0;
}

TEST_F(KeyStory, EscapeWithoutABoxReachesTheShell) {
    Forget();
    device.shell.Key(kKeyEscape);
    Idle();
    EXPECT_TRUE(Saw("host key 27"));
}

TEST_F(KeyStory, EscapeClosesTheQuestionOfAChannelChange) {
    Tune(kNews);
    Command(kCmdRecord);
    device.shell.DuringModal([this] { device.shell.Key(kKeyEscape); });
    Tune(kSport);
    EXPECT_EQ(view->GetPlayMode(), kPlayModeRecording); // Cancel: the recording goes on
    EXPECT_EQ(peer->MsgBoxUp(), 0);
    EXPECT_EQ(peer->CurChannel(), kNews);
}

TEST_F(KeyStory, OkKeyConfirmsTheQuestionOfAChannelChange) {
    Tune(kNews);
    Command(kCmdRecord);
    device.shell.DuringModal([this] { device.shell.Key(kKeyOk); });
    Tune(kSport);
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying);
    EXPECT_EQ(peer->CurChannel(), kSport);
}

TEST_F(KeyStory, ScanKeyStartsTheScanATenthOfASecondLater) {
    Forget();
    device.shell.Key(kKeyScan);
    Idle();
    EXPECT_TRUE(HasTimer(eSCAN_TIMER));
    EXPECT_TRUE(Saw("host key 180"));
    Wait(99);
    EXPECT_FALSE(Saw("post view command 20"));
    Wait(1);
    EXPECT_TRUE(Saw("post view command 20"));
    EXPECT_FALSE(HasTimer(eSCAN_TIMER));
}

TEST_F(KeyStory, ScanKeyWhileSmallComesBackToFullSizeFirst) {
    Tune(kNews);
    ASSERT_TRUE(device.shell.Minimize());
    Forget();
    device.shell.Key(kKeyScan);
    Idle();
    EXPECT_TRUE(Saw("post main command 17"));
    EXPECT_FALSE(device.shell.Document().IsMinimized());
    Wait(100);
    EXPECT_TRUE(HasTimer(eSCAN_TIMER));
    EXPECT_FALSE(HasTimer(eSCANPREP_TIMER));
    Wait(100);
    EXPECT_TRUE(Saw("post view command 20"));
}

TEST_F(KeyStory, RecordKeyPostsOnlyForTelevisionThatPlays) {
    Tune(kMusic);
    Forget();
    device.shell.Key(kKeyRecord);
    Idle();
    EXPECT_FALSE(Saw("command 23"));
    EXPECT_TRUE(Saw("host key 193"));
    Tune(kNews);
    Forget();
    device.shell.Key(kKeyRecord);
    Idle();
    EXPECT_TRUE(Saw("post view command 23"));
    EXPECT_EQ(view->GetPlayMode(), kPlayModeRecording);
}

TEST_F(KeyStory, OtherKeysReachTheShell) {
    Forget();
    device.shell.Key(65);
    Idle();
    EXPECT_TRUE(Saw("host key 65"));
}

TEST_F(KeyStory, TouchesAreTheSkins) {
    Tune(kNews);
    Forget();
    const RECT& next = Element(kElementChannelUp).GetRect();
    device.shell.Click((next.left + next.right) / 2, (next.top + next.bottom) / 2);
    Idle();
    EXPECT_TRUE(InOrder({"post view 513", "post view command 25", "post view 1126 1000 1"})); // WM_LBUTTONDOWN
    EXPECT_EQ(peer->PendingChannel(), kSport);
    KillTimer(view->GetSafeHwnd(), eCHANGE_TIMER);
}
