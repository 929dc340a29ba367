// The radio graph, the record of programme-associated data, and the parser's audio format.
#include "tests/graph/ControllerWorld.h"

namespace {

using ControllerDAB = ControllerTest;

TEST_F(ControllerDAB, BuildsThreeFiltersInOrderWithoutLogging) {
    EXPECT_EQ(control.InitDABFilters(), 0);
    const Lines expected = {
        "dab.Create",
        "dab.JoinFilterGraph(MES DAB Source Filter)",
        "mp3.Create",
        "mp3.JoinFilterGraph(MP3 Decoder Filter)",
        "audio.Create",
        "audio.JoinFilterGraph(Audio Renderer)",
        "dab.FindPin(1)",
        "mp3.FindPin(In)",
        "mp3.In.ReceiveConnection",
        "dab.1.Connect",
        "mp3.FindPin(Out)",
        "audio.FindPin(Audio Input pin (rendered))",
        "audio.Audio Input pin (rendered).ReceiveConnection",
        "mp3.Out.Connect",
    };
    EXPECT_EQ(Calls(), expected);
    EXPECT_TRUE(world.TakeDebugLines().empty());
    EXPECT_EQ(control.CloseDABFilters(), 0);
    EXPECT_EQ(world.stage.Alive(), 0);
    EXPECT_TRUE(world.TakeDebugLines().empty());
}

TEST_F(ControllerDAB, WithoutAGraphInitAndCloseFail) {
    CDMBFilterControl lost(nullptr);
    EXPECT_EQ(lost.InitDABFilters(), E_FAIL);
    EXPECT_EQ(lost.CloseDABFilters(), E_FAIL);
    EXPECT_TRUE(Calls().empty());
    EXPECT_TRUE(world.TakeDebugLines().empty());
}

TEST_F(ControllerDAB, CloseRemovesInOnePassWithoutDisconnectingFirst) {
    ASSERT_EQ(control.InitDABFilters(), 0);
    world.stage.log.Clear();
    EXPECT_EQ(control.CloseDABFilters(), 0);
    const std::string audioPin = "audio.Audio Input pin (rendered).Disconnect";
    // It is the graph that frees the links, the peer first, while it removes each filter.
    EXPECT_EQ(Calls("Disconnect"), (Lines{"mp3.In.Disconnect", "dab.1.Disconnect", audioPin, "mp3.Out.Disconnect"}));
    EXPECT_EQ(Calls(".End"), (Lines{"dab.End", "mp3.End", "audio.End"}));
    EXPECT_EQ(world.SleptMs(), 0);
}

// Edge case: a radio close with one of its three filters missing still succeeds.
TEST_F(ControllerDAB, CloseDABFiltersWithOneOfTheThreeFiltersMissingStillReturns0AndLogsTheFailure) {
    for (const Kind missing : kDABKinds) {
        ASSERT_EQ(control.InitDABFilters(), 0);
        IBaseFilter* filter = std::exchange(peer.Field(missing), nullptr);
        ASSERT_EQ(DeleteFilter(graph.Get(), filter), 0);
        EXPECT_EQ(control.CloseDABFilters(), 0);
        EXPECT_EQ(world.TakeDebugLines(), Lines{"[DMB|FILTER] Error : DeleteFilter !pGraphBuilder || !pFilter\r\n"});
        EXPECT_EQ(world.stage.Alive(), 0);
    }
}

TEST_F(ControllerDAB, CloseDABFiltersWithAFilterThatLeftTheGraphStillReturns0) {
    ASSERT_EQ(control.InitDABFilters(), 0);
    ASSERT_EQ(graph->RemoveFilter(peer.Field(Kind::MP3Decoder)), 0);
    EXPECT_EQ(control.CloseDABFilters(), 0);
    EXPECT_EQ(world.TakeDebugLines(), Lines{"[DMB|FILTER] Error : DeleteFilter RemoveFilter\r\n"});
    EXPECT_EQ(world.stage.Alive(), 1);
    EXPECT_EQ(Last(Kind::MP3Decoder)->References(), 1u);
    Drop(Kind::MP3Decoder);
}

TEST_F(ControllerDAB, CloseDABFiltersDoesNotRetryAFilterThatIsHeld) {
    ASSERT_EQ(control.InitDABFilters(), 0);
    auto held = dshow::ComPtr<IBaseFilter>::Share(Last(Kind::DABSource));
    EXPECT_EQ(control.CloseDABFilters(), 0);
    EXPECT_EQ(world.SleptMs(), 0);
    EXPECT_EQ(world.TakeDebugLines(), Lines{"[DMB|FILTER] Error : DeleteFilter Release\r\n"});
    EXPECT_EQ(RefCount(held.Get()), 1u);
}

TEST_F(ControllerDAB, AFailedCreateOrAddOrPinLookupReturnsE_FAILAndLeavesTheFiltersInTheGraph) {
    world.stage[Kind::AudioRenderer].create = E_OUTOFMEMORY;
    EXPECT_EQ(control.InitDABFilters(), E_FAIL);
    EXPECT_TRUE(InGraph(Kind::DABSource));
    EXPECT_TRUE(InGraph(Kind::MP3Decoder));
    EXPECT_EQ(peer.Field(Kind::AudioRenderer), nullptr);
    EXPECT_EQ(control.CloseDABFilters(), 0); // frees the two, logs the missing one
    EXPECT_EQ(world.stage.Alive(), 0);
    world.stage[Kind::AudioRenderer].create = S_OK;

    world.stage[Kind::MP3Decoder].join = E_UNEXPECTED;
    EXPECT_EQ(control.InitDABFilters(), E_FAIL);
    EXPECT_FALSE(InGraph(Kind::MP3Decoder));
    Drop(Kind::MP3Decoder);
    EXPECT_EQ(control.CloseDABFilters(), 0);
    EXPECT_EQ(world.stage.Alive(), 0);
    world.stage[Kind::MP3Decoder].join = S_OK;

    world.stage[Kind::DABSource].unknownPins = {kDABSourcePin};
    EXPECT_EQ(control.InitDABFilters(), E_FAIL);
    EXPECT_TRUE(InGraph(Kind::AudioRenderer));
    EXPECT_TRUE(Calls("ReceiveConnection").empty());
    EXPECT_EQ(control.CloseDABFilters(), 0);
}

TEST_F(ControllerDAB, AnUnknownDownstreamPinLeavesOneReferenceOnTheUpstreamFilter) {
    world.stage[Kind::AudioRenderer].unknownPins = {kAudioRendererPin};
    EXPECT_EQ(control.InitDABFilters(), E_FAIL);
    (void)world.TakeDebugLines();
    EXPECT_EQ(control.CloseDABFilters(), 0);
    EXPECT_EQ(world.TakeDebugLines(), Lines{"[DMB|FILTER] Error : DeleteFilter Release\r\n"});
    EXPECT_EQ(world.stage.Alive(), 1);
    EXPECT_EQ(Last(Kind::MP3Decoder)->References(), 1u);
    Last(Kind::MP3Decoder)->Release();
}

TEST_F(ControllerDAB, ACloseAfterAFailedInitNeverFreesTwice) {
    ASSERT_EQ(control.InitDABFilters(), 0);
    ASSERT_EQ(control.CloseDABFilters(), 0);
    world.stage[Kind::DABSource].create = E_OUTOFMEMORY;
    EXPECT_EQ(control.InitDABFilters(), E_FAIL);
    for (const Kind kind : kDABKinds)
        EXPECT_EQ(peer.Field(kind), nullptr);
    EXPECT_EQ(control.CloseDABFilters(), 0);
}

TEST_F(ControllerDAB, LoadingOneGraphKeepsTheFieldsOfTheOther) {
    ASSERT_EQ(control.InitDMBFilters(nullptr, 0), 0);
    ASSERT_EQ(control.CloseDMBFilters(), 0);
    IBaseFilter* stale = peer.Field(Kind::Parser);
    ASSERT_EQ(control.InitDABFilters(), 0);
    EXPECT_EQ(peer.Field(Kind::Parser), stale);
    EXPECT_EQ(control.CloseDABFilters(), 0);
}

// --- programme-associated data --------------------------------------------------------------------------------------

TEST_F(ControllerDAB, GetPadInfoPassesThePointerOn) {
    static PadInfo record{};
    world.stage[Kind::DABSource].padInfo = &record;
    ASSERT_EQ(control.InitDABFilters(), 0);
    PadInfo* got = nullptr;
    EXPECT_EQ(control.GetPadInfo(&got), 0);
    EXPECT_EQ(got, &record);
    EXPECT_EQ(Last(Kind::DABSource)->References(), 3u); // field, graph, link: the interface was given back
    EXPECT_EQ(control.CloseDABFilters(), 0);
}

TEST_F(ControllerDAB, GetPadInfoMayGiveANullRecord) {
    ASSERT_EQ(control.InitDABFilters(), 0);
    auto* got = reinterpret_cast<PadInfo*>(1);
    EXPECT_EQ(control.GetPadInfo(&got), 0);
    EXPECT_EQ(got, nullptr);
    EXPECT_EQ(control.CloseDABFilters(), 0);
}

TEST_F(ControllerDAB, GetPadInfoReturnsTheFiltersCodeOrE_FAILWithoutTheInterface) {
    ASSERT_EQ(control.InitDABFilters(), 0);
    PadInfo* got = nullptr;
    world.stage[Kind::DABSource].fetch = E_ABORT;
    EXPECT_EQ(control.GetPadInfo(&got), E_ABORT);
    world.stage[Kind::DABSource].fetch = S_FALSE;
    EXPECT_EQ(control.GetPadInfo(&got), S_FALSE);
    world.stage[Kind::DABSource].noCustom = true;
    EXPECT_EQ(control.GetPadInfo(&got), E_FAIL);
    EXPECT_EQ(control.CloseDABFilters(), 0);
    EXPECT_EQ(CDMBFilterControl(graph.Get()).GetPadInfo(&got), E_FAIL); // no source at all
}

// --- audio format ---------------------------------------------------------------------------------------------------

// Edge case: 1 and 2 reach the parser as 2 and 1.
TEST_F(ControllerDAB, SetAudioInfoWithA1AndB2HandsTheParserTheBlock2_1) {
    ASSERT_EQ(control.InitDMBFilters(nullptr, 0), 0);
    EXPECT_EQ(peer.SetAudioInfo(1, 2), 0);
    EXPECT_EQ(Calls("SetParam"), Lines{"parser.SetParam(3, {2, 1})"});
    EXPECT_EQ(Last(Kind::Parser)->References(), 4u);
    EXPECT_EQ(control.CloseDMBFilters(), 0);
}

TEST_F(ControllerDAB, SetAudioInfoIgnoresTheParsersResult) {
    ASSERT_EQ(control.InitDMBFilters(nullptr, 0), 0);
    world.stage[Kind::Parser].setParam = E_INVALIDARG;
    EXPECT_EQ(peer.SetAudioInfo(1, 2), 0);
    EXPECT_EQ(control.CloseDMBFilters(), 0);
}

TEST_F(ControllerDAB, GetAudioInfoReturnsTheParsersPointerAndCode) {
    ASSERT_EQ(control.InitDMBFilters(nullptr, 0), 0);
    DMBAudioInfo* info = nullptr;
    EXPECT_EQ(peer.GetAudioInfo(&info), 0);
    EXPECT_EQ(info, &world.stage[Kind::Parser].audioInfo);
    EXPECT_EQ(Calls("GetParam"), Lines{"parser.GetParam(19)"});
    world.stage[Kind::Parser].getParam = E_ABORT;
    EXPECT_EQ(peer.GetAudioInfo(&info), E_ABORT);
    world.stage[Kind::Parser].noCustom = true;
    EXPECT_EQ(peer.GetAudioInfo(&info), E_FAIL);
    EXPECT_EQ(peer.SetAudioInfo(1, 2), E_FAIL);
    EXPECT_EQ(Last(Kind::Parser)->References(), 4u);
    EXPECT_EQ(control.CloseDMBFilters(), 0);
}

TEST_F(ControllerDAB, AudioInfoWithoutAParserReturnsE_FAIL) {
    DMBAudioInfo* info = nullptr;
    EXPECT_EQ(peer.GetAudioInfo(&info), E_FAIL);
    EXPECT_EQ(peer.SetAudioInfo(1, 2), E_FAIL);
}

// Edge case: 7 and 9 that the parser reports are applied, and all four links made anew.
TEST_F(ControllerDAB, HandleAudioChangeWithAParserThatReports7_9Applies7_9AndReconnectsAllFourDMBLinks) {
    world.stage[Kind::Parser].audioInfo = {7, 9};
    ASSERT_EQ(control.InitDMBFilters(nullptr, 0), 0);
    (void)world.TakeDebugLines();
    world.stage.log.Clear();
    EXPECT_EQ(control.HandleAudioChange(), 0);
    EXPECT_EQ(Calls("Param"), (Lines{"parser.GetParam(19)", "parser.SetParam(3, {7, 9})"}));
    EXPECT_EQ(Calls("ReceiveConnection").size(), 4u);
    EXPECT_EQ(DMBLinks(), 4);
    EXPECT_EQ(world.TakeDebugLines(), Lines{"[DMB|FILTER] ConnectDMBFilters() success\r\n"});
    EXPECT_EQ(control.CloseDMBFilters(), 0);
}

TEST_F(ControllerDAB, HandleAudioChangeDisconnectsAllFourLinksBeforeItAsks) {
    ASSERT_EQ(control.InitDMBFilters(nullptr, 0), 0);
    world.stage.log.Clear();
    ASSERT_EQ(control.HandleAudioChange(), 0);
    const Lines calls = Calls();
    const auto asked = std::ranges::find(calls, "parser.GetParam(19)");
    ASSERT_NE(asked, calls.end());
    const auto isDisconnect = [](const std::string& line) { return line.ends_with(".Disconnect"); };
    EXPECT_EQ(std::count_if(calls.begin(), asked, isDisconnect), 8);
    EXPECT_EQ(std::count_if(asked, calls.end(), isDisconnect), 0);
    EXPECT_EQ(control.CloseDMBFilters(), 0);
}

TEST_F(ControllerDAB, HandleAudioChangeWithoutAudioInfoAppliesNothingAndStillReconnects) {
    ASSERT_EQ(control.InitDMBFilters(nullptr, 0), 0);
    for (int way = 0; way < 3; ++way) {
        world.stage[Kind::Parser].getParam = way == 0 ? E_FAIL : S_OK;
        world.stage[Kind::Parser].noAudioInfo = way == 1;
        world.stage[Kind::Parser].noCustom = way == 2;
        world.stage.log.Clear();
        EXPECT_EQ(control.HandleAudioChange(), 0);
        EXPECT_TRUE(Calls("SetParam").empty());
        EXPECT_EQ(Calls("ReceiveConnection").size(), 4u);
        EXPECT_EQ(DMBLinks(), 4);
    }
    EXPECT_EQ(control.CloseDMBFilters(), 0);
}

TEST_F(ControllerDAB, HandleAudioChangeIgnoresADisconnectThatFails) {
    ASSERT_EQ(control.InitDMBFilters(nullptr, 0), 0);
    world.stage[Kind::BSACDecoder].mutePins = {kInPin}; // the first pair fails, the other three are not reached
    EXPECT_EQ(control.HandleAudioChange(), 0);
    EXPECT_EQ(Calls("SetParam").size(), 1u);
    world.stage[Kind::BSACDecoder].mutePins = {};
    EXPECT_EQ(control.CloseDMBFilters(), 0);
}

TEST_F(ControllerDAB, HandleAudioChangeReturnsTheResultOfTheConnect) {
    ASSERT_EQ(control.InitDMBFilters(nullptr, 0), 0);
    world.stage[Kind::Parser].unknownPins = {kParserVideoPin};
    EXPECT_EQ(control.HandleAudioChange(), E_FAIL);
    world.stage[Kind::Parser].unknownPins = {};
    EXPECT_EQ(control.CloseDMBFilters(), 0);
}

} // namespace
