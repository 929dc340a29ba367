// The signal indicator, and radio that loses its signal.
#include "host/shell/skin/Element.h"
#include "tests/stories/Story.h"

using namespace stories;

namespace {
class SignalStory : public Story {
protected:
    void SetUp() override { Open(); }
    void Reading(float snr, int milliseconds = 500) {
        scripted::Tuner().snr = snr;
        Wait(milliseconds);
    }
    // Which of its pictures the symbol shows, -1 none.
    [[nodiscard]] int Level() const {
        const auto& antenna = static_cast<const shell::Element&>(Element(kElementAntenna));
        for (int level = 0; level < 7; ++level)
            if (antenna.State().background != nullptr &&
                antenna.State().background == antenna.GetImageSet()->GetImage(level))
                return level;
        return -1;
    }
};
} // namespace

// Edge case: a reading of 7 stops the radio and arms nothing, 6 arms, ten seconds later the notice; 9 restarts at any point and
// announces the service when it comes after the notice.
TEST_F(SignalStory, WeakRadioStopsThenWaitsThenShowsTheNoticeAndReturns) {
    Tune(kMusic);
    OnAir();
    Reading(7.9F);
    EXPECT_EQ(view->GetPlayMode(), kPlayModeStopped);
    EXPECT_EQ(peer->SignalWait(), 1);
    EXPECT_FALSE(HasTimer(eNOSIGNAL_TIMER));
    Reading(6.0F);
    EXPECT_TRUE(HasTimer(eNOSIGNAL_TIMER));
    Wait(9999);
    EXPECT_EQ(peer->NoSignal(), 0);
    Wait(1);
    EXPECT_EQ(peer->NoSignal(), 1);
    EXPECT_EQ(Info(), TextOf(kTextNoSignal));
    Forget();
    Reading(9.0F);
    EXPECT_TRUE(InOrder({"post view 1026 0 0", "mode 4"}));
    EXPECT_EQ(peer->NoSignal(), 0);
    EXPECT_EQ(peer->SignalWait(), 0);
    EXPECT_EQ(peer->OnAirFlag(), 1);
    EXPECT_EQ(Info(), WString());
}

TEST_F(SignalStory, RadioThatReturnsBeforeTheNoticeIsNotAnnounced) {
    Tune(kMusic);
    OnAir();
    Reading(5);
    ASSERT_TRUE(HasTimer(eNOSIGNAL_TIMER));
    Forget();
    Reading(20);
    EXPECT_FALSE(Saw("post view 1026"));
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying);
    EXPECT_EQ(peer->OnAirFlag(), 1);
    EXPECT_FALSE(HasTimer(eNOSIGNAL_TIMER));
}

// Edge case: exactly 8 is weak.
TEST_F(SignalStory, EightIsWeakForARadio) {
    Tune(kMusic);
    Reading(8);
    EXPECT_EQ(peer->SignalWait(), 1);
}

TEST_F(SignalStory, FractionsAreCutTowardsZero) {
    Tune(kMusic);
    Reading(8.99F);
    EXPECT_EQ(peer->SignalWait(), 1);
}

TEST_F(SignalStory, TelevisionOnlyMovesTheSymbol) {
    Tune(kNews);
    Reading(2, 3000);
    EXPECT_EQ(view->GetPlayMode(), kPlayModePlaying);
    EXPECT_FALSE(HasTimer(eNOSIGNAL_TIMER));
    EXPECT_EQ(Element(kElementAntenna).GetState(), kButtonNormal);
}

TEST_F(SignalStory, GoodReadingInTheNormalStatePostsNothing) {
    Tune(kMusic);
    Forget();
    Reading(30);
    EXPECT_EQ(Count("post"), 0);
    EXPECT_EQ(peer->OnAirFlag(), 0);
}

// Edge case: a reading of -1 greys the symbol, and the next one draws even the level drawn before.
TEST_F(SignalStory, NegativeReadingGreysTheSymbol) {
    view->UpdateAntena(20);
    EXPECT_EQ(Element(kElementAntenna).GetState(), kButtonNormal);
    view->UpdateAntena(-1);
    EXPECT_EQ(Element(kElementAntenna).GetState(), kButtonDisabled);
    view->UpdateAntena(20);
    EXPECT_EQ(Element(kElementAntenna).GetState(), kButtonNormal);
}

// Edge case: in debug mode the averaging does not advance.
TEST_F(SignalStory, DebugModeShowsFiguresAndStoresNoSample) {
    Tune(kNews);
    view->SetSNRDebug(1);
    EXPECT_FALSE(view->IsToggleEnabled());
    scripted::Tuner().rssi = {-61.239F, 7};
    Forget();
    Reading(18.7F, 3000);
    EXPECT_EQ(WString(Element(kElementAntenna).GetText()), WTEXT("18"));
    EXPECT_EQ(Element(kElementAntenna).GetState(), kButtonPressed);
    EXPECT_TRUE(Element(kElementDebugText).IsVisible());
    EXPECT_EQ(WString(Element(kElementDebugText).GetText()), WTEXT("RSSI: -61.24, 7"));
    EXPECT_TRUE(InOrder({"tuner.GetRSSI", "tuner.GetSNR"}));
    view->SetSNRDebug(0);
    EXPECT_EQ(WString(Element(kElementAntenna).GetText()), WString());
    EXPECT_EQ(Element(kElementAntenna).GetState(), kButtonNormal);
    EXPECT_FALSE(Element(kElementDebugText).IsVisible());
    EXPECT_TRUE(view->IsToggleEnabled());
}

// Edge case: leaving debug mode resumes the average where it was.
TEST_F(SignalStory, AverageGoesOnWhereDebugModeInterruptedIt) {
    Tune(kNews);
    Reading(30, 3000);
    EXPECT_EQ(Level(), 6);
    view->SetSNRDebug(1);
    Reading(0, 3000);
    view->SetSNRDebug(0);
    Reading(10, 3000);
    EXPECT_EQ(Level(), 5) << "of 30 and 10; with the 0 it would be 2";
}

TEST_F(SignalStory, LeavingDebugModeInARadioKeepsTheToggleOff) {
    Tune(kMusic);
    view->SetSNRDebug(1);
    view->SetSNRDebug(0);
    EXPECT_FALSE(view->IsToggleEnabled());
}

TEST_F(SignalStory, ChannelChangeClearsBothLossFlags) {
    Tune(kMusic);
    Reading(5);
    ASSERT_EQ(peer->SignalWait(), 1);
    Tune(kJazz);
    EXPECT_EQ(peer->SignalWait(), 0);
    EXPECT_EQ(peer->NoSignal(), 0);
}
