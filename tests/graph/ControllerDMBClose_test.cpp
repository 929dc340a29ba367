// Taking the controller's television graph apart, and every way in which that may fail.
#include "tests/graph/ControllerWorld.h"

namespace {

using ControllerDMB = ControllerTest;

TEST_F(ControllerDMB, CloseDisconnectsThenRemovesInOrder) {
    ASSERT_EQ(control.InitDMBFilters(nullptr, 0), 0);
    world.stage.log.Clear();
    EXPECT_EQ(control.CloseDMBFilters(), 0);
    const std::string audioPin = "audio.Audio Input pin (rendered).Disconnect";
    const Lines expectedDisconnects = {
        "parser.1.Disconnect",
        "parser.2.Disconnect",
        "bsac.In.Disconnect",
        "bsac.Out.Disconnect",
        audioPin,
        "parser.1.Disconnect = 00000001",
        "parser.2.Disconnect = 00000001",
        "video.In.Disconnect",
        "video.Out.Disconnect",
        "picture.In.Disconnect",
    };
    EXPECT_EQ(Calls("Disconnect"), expectedDisconnects);
    const Lines expectedLeaves = {"parser.JoinFilterGraph(null)", "bsac.JoinFilterGraph(null)",
                                  "audio.JoinFilterGraph(null)", "video.JoinFilterGraph(null)",
                                  "picture.JoinFilterGraph(null)"};
    EXPECT_EQ(Calls("JoinFilterGraph"), expectedLeaves);
    EXPECT_EQ(Calls(".End"), (Lines{"parser.End", "bsac.End", "audio.End", "video.End", "picture.End"}));
    EXPECT_EQ(world.SleptMs(), 0);
    EXPECT_EQ(world.stage.Alive(), 0);
}

TEST_F(ControllerDMB, CloseKeepsTheOldValuesInTheFields) {
    ASSERT_EQ(control.InitDMBFilters(nullptr, 0), 0);
    IBaseFilter* before[5];
    for (int i = 0; i < 5; ++i)
        before[i] = peer.Field(kDMBKinds[i]);
    EXPECT_EQ(control.CloseDMBFilters(), 0);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(peer.Field(kDMBKinds[i]), before[i]);
}

// Edge case: a filter that somebody holds makes the close fail after ten retries; those after it stay.
TEST_F(ControllerDMB, AFilterThatKeepsAReferenceAfterRemovalMakesCloseReturnE_FAILAfter10Retries100msApart) {
    ASSERT_EQ(control.InitDMBFilters(nullptr, 0), 0);
    (void)world.TakeDebugLines();
    auto held = dshow::ComPtr<IBaseFilter>::Share(Last(Kind::AudioRenderer));
    EXPECT_EQ(control.CloseDMBFilters(), E_FAIL);
    EXPECT_EQ(world.SleptMs(), 1000);
    Lines expected = {kFilterLog + "Error : DeleteFilter Release\r\n"};
    for (int retry = 0; retry < 10; ++retry)
        expected.push_back(kFilterLog + "Error : DeleteFilter RemoveFilter\r\n");
    EXPECT_EQ(world.TakeDebugLines(), expected);
    // The two before it are gone, the two after it are still in the graph.
    EXPECT_EQ(world.stage.Alive(), 3);
    EXPECT_FALSE(InGraph(Kind::AudioRenderer));
    EXPECT_TRUE(InGraph(Kind::VideoDecoder));
    EXPECT_TRUE(InGraph(Kind::VideoRenderer));
    EXPECT_EQ(Last(Kind::VideoDecoder)->References(), 2u);
    EXPECT_EQ(RefCount(held.Get()), 1u);
    Drop(Kind::VideoDecoder);
    Drop(Kind::VideoRenderer);
}

TEST_F(ControllerDMB, ADisconnectThatFailsIsTriedElevenTimesAHundredMillisecondsApart) {
    ASSERT_EQ(control.InitDMBFilters(nullptr, 0), 0);
    world.stage[Kind::VideoRenderer].mutePins = {kInPin}; // the last question for a direction fails
    world.stage.log.Clear();
    EXPECT_EQ(control.CloseDMBFilters(), E_FAIL);
    const auto attempts = world.stage.log.Matching("parser.1.Disconnect");
    ASSERT_EQ(attempts.size(), 22u); // twice in each of eleven passes
    for (std::size_t i = 0; i < attempts.size(); ++i)
        EXPECT_EQ(attempts[i].timeMs, static_cast<long>(i / 2) * 100);
    EXPECT_EQ(world.stage.Alive(), 5);
    world.stage[Kind::VideoRenderer].mutePins = {};
    EXPECT_EQ(control.CloseDMBFilters(), 0);
}

TEST_F(ControllerDMB, TheTenthRetryMaySucceed) {
    ASSERT_EQ(control.InitDMBFilters(nullptr, 0), 0);
    world.stage[Kind::VideoRenderer].mutePins = {kInPin};
    world.stage.log.now = [this] {
        if (world.SleptMs() >= 1000)
            world.stage[Kind::VideoRenderer].mutePins = {};
        return world.SleptMs();
    };
    EXPECT_EQ(control.CloseDMBFilters(), 0);
    EXPECT_EQ(world.SleptMs(), 1000);
}

TEST_F(ControllerDMB, ARemovalThatFailsIsRetriedAndLogged) {
    ASSERT_EQ(control.InitDMBFilters(nullptr, 0), 0);
    (void)world.TakeDebugLines();
    // Both ends of the last link refuse to let go, as while running.
    world.stage[Kind::VideoDecoder].stuckPins = {kOutPin};
    world.stage[Kind::VideoRenderer].stuckPins = {kInPin};
    EXPECT_EQ(control.CloseDMBFilters(), E_FAIL);
    const Lines expected(11, kFilterLog + "Error : DeleteFilter RemoveFilter\r\n");
    EXPECT_EQ(world.TakeDebugLines(), expected);
    EXPECT_EQ(world.stage.Alive(), 2);
    EXPECT_TRUE(InGraph(Kind::VideoDecoder));
    world.stage[Kind::VideoDecoder].stuckPins = {};
    world.stage[Kind::VideoRenderer].stuckPins = {};
    EXPECT_EQ(DeleteFilter(graph.Get(), peer.Field(Kind::VideoDecoder)), 0);
    EXPECT_EQ(DeleteFilter(graph.Get(), peer.Field(Kind::VideoRenderer)), 0);
}

TEST_F(ControllerDMB, AfterACloseThatLeftTheRendererTheNextOneGetsANumberedName) {
    ASSERT_EQ(control.InitDMBFilters(nullptr, 0), 0);
    auto held = dshow::ComPtr<IBaseFilter>::Share(Last(Kind::VideoDecoder));
    ASSERT_EQ(control.CloseDMBFilters(), E_FAIL);
    IBaseFilter* old = peer.Field(Kind::VideoRenderer);
    held = {};
    world.stage.log.Clear();
    EXPECT_EQ(control.InitDMBFilters(nullptr, 0), 0);
    EXPECT_EQ(Calls("VIDRenderer"), Lines{"picture.JoinFilterGraph(MES VIDRenderer Filter 0001)"});
    // Looking for the renderer by name still finds the old one.
    EXPECT_EQ(InGraph(Kind::VideoRenderer).Get(), old);
    EXPECT_EQ(control.CloseDMBFilters(), 0);
    EXPECT_EQ(DeleteFilter(graph.Get(), old), 0);
}

// --- life -----------------------------------------------------------------------------------------------------------

TEST_F(ControllerDMB, ReferencesWhileBuiltAreFieldGraphAndLinks) {
    ASSERT_EQ(control.InitDMBFilters(nullptr, 0), 0);
    EXPECT_EQ(Last(Kind::Parser)->References(), 4u);        // two links
    EXPECT_EQ(Last(Kind::BSACDecoder)->References(), 4u);   // two links
    EXPECT_EQ(Last(Kind::VideoDecoder)->References(), 4u);  // two links
    EXPECT_EQ(Last(Kind::AudioRenderer)->References(), 3u); // one link
    EXPECT_EQ(Last(Kind::VideoRenderer)->References(), 3u); // one link
    EXPECT_EQ(control.CloseDMBFilters(), 0);
}

TEST_F(ControllerDMB, ThousandBuildRunStopCloseCyclesLeakNothing) {
    const LONG before = dshow::LiveObjects();
    const auto media = From<IMediaControl>(IID_IMediaControl);
    for (int cycle = 0; cycle < 1000; ++cycle) {
        ASSERT_EQ(control.InitDMBFilters(cycle % 2 != 0 ? WTEXT("a.dmb") : nullptr, cycle % 2), 0);
        ASSERT_EQ(media->Run(), 0);
        ASSERT_EQ(media->Stop(), 0);
        ASSERT_EQ(control.CloseDMBFilters(), 0);
        ASSERT_EQ(control.InitDABFilters(), 0);
        ASSERT_EQ(media->Run(), 0);
        ASSERT_EQ(media->Stop(), 0);
        ASSERT_EQ(control.CloseDABFilters(), 0);
        ASSERT_EQ(world.stage.Alive(), 0);
        world.stage.log.Clear();
        (void)world.TakeDebugLines();
    }
    // The graph may keep its own clock.
    EXPECT_LE(dshow::LiveObjects(), before + 1);
}

TEST_F(ControllerDMB, ReleasingTheGraphWithoutACloseFreesWhatTheFieldsDoNotHold) {
    ASSERT_EQ(control.InitDMBFilters(nullptr, 0), 0);
    graph = {};
    EXPECT_EQ(world.stage.Alive(), 5); // one reference each, in the fields
    for (const Kind kind : kDMBKinds) {
        EXPECT_EQ(Last(kind)->References(), 1u);
        Drop(kind);
    }
}

} // namespace
