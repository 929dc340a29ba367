// The controller with the one filter that is not the chip's: the system's audio renderer. On Windows only.
#include "tests/graph/ControllerWorld.h"

namespace {

class SystemRenderer : public ControllerTest {
protected:
    void SetUp() override { world.UseSystemRenderer(); }
    // What the renderer's input is connected to, counted.
    dshow::ComPtr<IPin> Peer() {
        dshow::ComPtr<IPin> pin;
        dshow::ComPtr<IPin> peerPin;
        EXPECT_EQ(peer.Field(Kind::AudioRenderer)->FindPin(kAudioRendererPin, pin.Out()), 0);
        if (pin)
            (void)pin->ConnectedTo(peerPin.Out());
        return peerPin;
    }
};

TEST_F(SystemRenderer, HasThePinOfThatIdAndJoinsTheTelevisionGraph) {
    ASSERT_EQ(control.InitDMBFilters(nullptr, 0), 0);
    EXPECT_EQ(world.stage.Alive(), 4);
    EXPECT_TRUE(Peer());
    EXPECT_EQ(control.CloseDMBFilters(), 0);
    EXPECT_EQ(world.SleptMs(), 0);
    EXPECT_EQ(world.stage.Alive(), 0);
}

TEST_F(SystemRenderer, JoinsTheRadioGraph) {
    ASSERT_EQ(control.InitDABFilters(), 0);
    EXPECT_TRUE(Peer());
    EXPECT_EQ(control.CloseDABFilters(), 0);
    EXPECT_TRUE(world.TakeDebugLines().empty()); // every filter ended with its last reference
}

TEST_F(SystemRenderer, WaitsForItsFirstSampleSoThatRunAnswersS_FALSE) {
    const auto media = From<IMediaControl>(IID_IMediaControl);
    ASSERT_EQ(control.InitDABFilters(), 0);
    EXPECT_EQ(media->Run(), S_FALSE);
    EXPECT_GE(media->Stop(), 0);
    EXPECT_EQ(control.CloseDABFilters(), 0);
    EXPECT_TRUE(world.TakeDebugLines().empty());
}

} // namespace
