// The three operations on a graph, and the slots of the vendor's interfaces.
#include "tests/graph/ControllerWorld.h"

namespace {

class FilterOps : public ControllerTest {
protected:
    // A filter of the kind in the graph, with the one reference that a field would hold.
    IBaseFilter* Add(Kind kind) {
        dshow::ComPtr<IBaseFilter> filter;
        EXPECT_EQ(world.stage.Create(kind, IID_IBaseFilter, filter.OutVoid()), 0);
        EXPECT_EQ(graph->AddFilter(filter.Get(), scripted::InfoOf(kind).friendlyName), 0);
        return filter.Detach();
    }
    ULONG Count(Kind kind) { return Last(kind)->References(); }

    IBaseFilter* parser = Add(Kind::Parser);
    IBaseFilter* decoder = Add(Kind::VideoDecoder);

    void TearDown() override {
        graph = {};
        for (IBaseFilter* filter : {parser, decoder})
            if (filter != nullptr)
                filter->Release();
        ControllerTest::TearDown();
    }
};

// --- connecting -----------------------------------------------------------------------------------------------------

TEST_F(FilterOps, ConnectJoinsTwoPinsAndReleasesBoth) {
    EXPECT_EQ(ConnectFilterPins(graph.Get(), parser, kParserVideoPin, decoder, kInPin), 0);
    EXPECT_TRUE(IsLinked(Kind::VideoDecoder, kInPin));
    EXPECT_EQ(Count(Kind::Parser), 3u); // field, graph, link
    EXPECT_EQ(Count(Kind::VideoDecoder), 3u);
}

TEST_F(FilterOps, ConnectWithAnUnknownUpstreamPinLeaksNothing) {
    for (const bool leavesPointer : {false, true}) {
        world.stage[Kind::Parser].leavesOutPointer = leavesPointer;
        world.stage[Kind::Parser].unknownPins = {kParserVideoPin};
        EXPECT_EQ(ConnectFilterPins(graph.Get(), parser, kParserVideoPin, decoder, kInPin), E_FAIL);
        EXPECT_TRUE(Calls("video.FindPin").empty());
        EXPECT_EQ(Count(Kind::Parser), 2u);
    }
}

TEST_F(FilterOps, ConnectWithAnUnknownDownstreamPinKeepsTheUpstreamPinSoThatDeleteFilterReturns1) {
    world.stage[Kind::VideoDecoder].unknownPins = {kInPin};
    world.stage[Kind::VideoDecoder].leavesOutPointer = true;
    EXPECT_EQ(ConnectFilterPins(graph.Get(), parser, kParserVideoPin, decoder, kInPin), E_FAIL);
    EXPECT_EQ(Count(Kind::Parser), 3u);
    EXPECT_EQ(Count(Kind::VideoDecoder), 2u);
    EXPECT_EQ(DeleteFilter(graph.Get(), parser), 1);
    EXPECT_EQ(world.TakeDebugLines(), Lines{"[DMB|FILTER] Error : DeleteFilter Release\r\n"});
    EXPECT_EQ(Count(Kind::Parser), 1u); // the leaked pin; TearDown gives it back
}

TEST_F(FilterOps, PinIdsAreCaseSensitive) {
    EXPECT_EQ(ConnectFilterPins(graph.Get(), parser, kParserVideoPin, decoder, WTEXT("in")), E_FAIL);
    parser->Release(); // the kept pin
}

TEST_F(FilterOps, ConnectWithAPinThatIsNotReturnedConnectsNothingAndReleasesTheOther) {
    world.stage[Kind::VideoDecoder].lostPins = {kInPin};
    EXPECT_EQ(ConnectFilterPins(graph.Get(), parser, kParserVideoPin, decoder, kInPin), 0);
    world.stage[Kind::VideoDecoder].lostPins = {};
    world.stage[Kind::Parser].lostPins = {kParserVideoPin};
    EXPECT_EQ(ConnectFilterPins(graph.Get(), parser, kParserVideoPin, decoder, kInPin), 0);
    EXPECT_FALSE(IsLinked(Kind::VideoDecoder, kInPin));
    EXPECT_EQ(Count(Kind::Parser), 2u);
    EXPECT_EQ(Count(Kind::VideoDecoder), 2u);
}

TEST_F(FilterOps, ConnectOfAConnectedInputReleasesThePeerAndConnectsNothing) {
    ASSERT_EQ(ConnectFilterPins(graph.Get(), parser, kParserVideoPin, decoder, kInPin), 0);
    world.stage.log.Clear();
    EXPECT_EQ(ConnectFilterPins(graph.Get(), parser, kParserAudioPin, decoder, kInPin), 0);
    EXPECT_TRUE(Calls(".Connect").empty());
    EXPECT_EQ(Count(Kind::Parser), 3u);
    EXPECT_EQ(Count(Kind::VideoDecoder), 3u);
}

TEST_F(FilterOps, APeerThatIsNotNamedCountsAsNotConnected) {
    world.stage[Kind::VideoDecoder].namelessPeers = true;
    EXPECT_EQ(ConnectFilterPins(graph.Get(), parser, kParserVideoPin, decoder, kInPin), 0);
    world.stage[Kind::VideoDecoder].namelessPeers = false;
    EXPECT_TRUE(IsLinked(Kind::VideoDecoder, kInPin));
}

TEST_F(FilterOps, ConnectAfterAHalfOpenLinkConnectsNothing) {
    ASSERT_EQ(ConnectFilterPins(graph.Get(), parser, kParserVideoPin, decoder, kInPin), 0);
    dshow::ComPtr<IPin> out;
    ASSERT_EQ(parser->FindPin(kParserVideoPin, out.Out()), 0);
    ASSERT_EQ(graph->Disconnect(out.Get()), 0); // this end only
    world.stage.log.Clear();
    EXPECT_EQ(ConnectFilterPins(graph.Get(), parser, kParserVideoPin, decoder, kInPin), 0);
    EXPECT_TRUE(Calls("ReceiveConnection").empty());
    EXPECT_FALSE(IsLinked(Kind::Parser, kParserVideoPin));
}

TEST_F(FilterOps, ConnectThatTheGraphRefusesReturns0) {
    EXPECT_EQ(ConnectFilterPins(graph.Get(), parser, kParserAudioPin, decoder, kInPin), 0); // another type
    EXPECT_FALSE(IsLinked(Kind::VideoDecoder, kInPin));
    EXPECT_EQ(Count(Kind::Parser), 2u);
}

TEST_F(FilterOps, ConnectWithoutAGraphOrFilterReturnsE_FAIL) {
    EXPECT_EQ(ConnectFilterPins(nullptr, parser, kParserVideoPin, decoder, kInPin), E_FAIL);
    EXPECT_EQ(ConnectFilterPins(graph.Get(), nullptr, kParserVideoPin, decoder, kInPin), E_FAIL);
    EXPECT_EQ(ConnectFilterPins(graph.Get(), parser, kParserVideoPin, nullptr, kInPin), E_FAIL);
}

// --- disconnecting --------------------------------------------------------------------------------------------------

TEST_F(FilterOps, DisconnectFreesEveryOutputOfTheOneAndEveryInputOfTheOther) {
    IBaseFilter* bsac = Add(Kind::BSACDecoder);
    ASSERT_EQ(ConnectFilterPins(graph.Get(), parser, kParserVideoPin, decoder, kInPin), 0);
    ASSERT_EQ(ConnectFilterPins(graph.Get(), parser, kParserAudioPin, bsac, kInPin), 0);
    EXPECT_EQ(DisconnectFilterPins(graph.Get(), parser, bsac), 0);
    // Also the output to the decoder, which was not meant; the decoder's own end stays.
    EXPECT_FALSE(IsLinked(Kind::Parser, kParserVideoPin));
    EXPECT_FALSE(IsLinked(Kind::Parser, kParserAudioPin));
    EXPECT_FALSE(IsLinked(Kind::BSACDecoder, kInPin));
    EXPECT_TRUE(IsLinked(Kind::VideoDecoder, kInPin));
    EXPECT_EQ(Calls("bsac.Out.Disconnect"), Lines{});
    EXPECT_EQ(DeleteFilter(graph.Get(), bsac), 0);
}

TEST_F(FilterOps, DisconnectWithANullArgumentReturnsE_FAIL) {
    EXPECT_EQ(DisconnectFilterPins(nullptr, parser, decoder), E_FAIL);
    EXPECT_EQ(DisconnectFilterPins(graph.Get(), nullptr, decoder), E_FAIL);
    EXPECT_EQ(DisconnectFilterPins(graph.Get(), parser, nullptr), E_FAIL);
}

TEST_F(FilterOps, DisconnectReturnsE_FAILWhenNeitherFilterHasAPin) {
    world.stage[Kind::Parser].noPins = true;
    world.stage[Kind::VideoDecoder].noPins = true;
    EXPECT_EQ(DisconnectFilterPins(graph.Get(), parser, decoder), E_FAIL);
    world.stage[Kind::VideoDecoder].noPins = false;
    EXPECT_EQ(DisconnectFilterPins(graph.Get(), parser, decoder), 0);
    world.stage[Kind::Parser].noPins = false;
}

TEST_F(FilterOps, DisconnectReturnsTheResultOfTheLastDirectionQuery) {
    world.stage[Kind::Parser].mutePins = {kParserVideoPin};
    EXPECT_EQ(DisconnectFilterPins(graph.Get(), parser, decoder), 0); // not the last
    EXPECT_TRUE(Calls("parser.1.Disconnect").empty());
    world.stage[Kind::VideoDecoder].mutePins = {kOutPin};
    EXPECT_EQ(DisconnectFilterPins(graph.Get(), parser, decoder), E_UNEXPECTED);
}

TEST_F(FilterOps, DisconnectIgnoresTheResultsOfTheDisconnects) {
    world.stage[Kind::Parser].stuckPins = {kParserVideoPin};
    EXPECT_EQ(DisconnectFilterPins(graph.Get(), parser, decoder), 0);
    EXPECT_EQ(Calls("Disconnect").size(), 3u); // "1" fails, "2" and "In" say S_FALSE
    world.stage[Kind::Parser].stuckPins = {};
    EXPECT_EQ(Count(Kind::Parser), 2u);
    EXPECT_EQ(Count(Kind::VideoDecoder), 2u);
}

// --- deleting -------------------------------------------------------------------------------------------------------

// Edge case: no filter: its line is told, and the delete fails.
TEST_F(FilterOps, DeleteFilterWithANullFilterLogsTheLineAndReturnsE_FAIL) {
    EXPECT_EQ(DeleteFilter(graph.Get(), nullptr), E_FAIL);
    EXPECT_EQ(DeleteFilter(nullptr, parser), E_FAIL);
    EXPECT_EQ(world.TakeDebugLines(), Lines(2, "[DMB|FILTER] Error : DeleteFilter !pGraphBuilder || !pFilter\r\n"));
    EXPECT_EQ(Count(Kind::Parser), 2u);
}

TEST_F(FilterOps, DeleteFilterOfAFilterOutsideTheGraphReturnsTheGraphsCodeAndKeepsTheReference) {
    ASSERT_EQ(graph->RemoveFilter(parser), 0);
    EXPECT_LT(DeleteFilter(graph.Get(), parser), 0);
    EXPECT_EQ(world.TakeDebugLines(), Lines{"[DMB|FILTER] Error : DeleteFilter RemoveFilter\r\n"});
    EXPECT_EQ(Count(Kind::Parser), 1u);
}

TEST_F(FilterOps, DeleteFilterReturnsTheCountThatIsLeft) {
    for (int i = 0; i < 3; ++i)
        parser->AddRef();
    EXPECT_EQ(DeleteFilter(graph.Get(), parser), 3);
    for (int i = 0; i < 2; ++i)
        parser->Release();
}

TEST_F(FilterOps, DeleteFilterThatEndsTheFilterReturns0WithoutLogging) {
    EXPECT_EQ(DeleteFilter(graph.Get(), parser), 0);
    parser = nullptr;
    EXPECT_TRUE(world.TakeDebugLines().empty());
    EXPECT_EQ(Last(Kind::Parser), nullptr);
}

// --- slots ----------------------------------------------------------------------------------------------------------

// Calls a method by its place in the table, counted from 1 after the three of IUnknown.
template <class... Arguments> HRESULT CallSlot(void* face, int slot, Arguments... arguments) {
    using Method = HRESULT(STDMETHODCALLTYPE*)(void*, Arguments...);
    void** const table = *static_cast<void***>(face);
    return reinterpret_cast<Method>(table[2 + slot])(face, arguments...);
}

using InterfaceSlots = FilterOps;

TEST_F(InterfaceSlots, IDMBCapture) {
    const auto face = dshow::QueryFor<IDMBCapture>(parser, IID_IDMBCapture);
    world.stage.log.Clear();
    EXPECT_EQ(CallSlot(face.Get(), 1, WTEXT("a")), 0);
    EXPECT_EQ(CallSlot(face.Get(), 2), 0);
    EXPECT_EQ(CallSlot(face.Get(), 3), 0);
    EXPECT_EQ(Calls(), (Lines{"parser.SetCaptureFileName(a)", "parser.StartCapture", "parser.StopCapture"}));
}

TEST_F(InterfaceSlots, IDMBStreamControl) {
    const auto face = dshow::QueryFor<IDMBStreamControl>(parser, IID_IDMBStreamControl);
    DMBAudioInfo block = {1, 2};
    DMBAudioInfo* info = nullptr;
    ULONGLONG first = 0;
    LONGLONG second = 0;
    world.stage.log.Clear();
    EXPECT_EQ(CallSlot(face.Get(), 1, 3, static_cast<void*>(&block)), 0);
    EXPECT_EQ(CallSlot(face.Get(), 2, 19, static_cast<void*>(&info)), 0);
    EXPECT_EQ(CallSlot(face.Get(), 3, &first, &second), 0);
    EXPECT_EQ(CallSlot(face.Get(), 4, LONGLONG{5}), 0);
    EXPECT_EQ(Calls(), (Lines{"parser.SetParam(3, {1, 2})", "parser.GetParam(19)", "parser.GetPosition",
                              "parser.SetPosition(5)"}));
}

TEST_F(InterfaceSlots, IVideoHoldControl) {
    IBaseFilter* renderer = Add(Kind::VideoRenderer);
    auto face = dshow::QueryFor<IVideoHoldControl>(renderer, IID_IVideoHoldControl);
    world.stage.log.Clear();
    for (int slot = 1; slot <= 8; ++slot)
        EXPECT_EQ(CallSlot(face.Get(), slot), E_NOTIMPL);
    EXPECT_EQ(CallSlot(face.Get(), 9), 0);
    EXPECT_EQ(CallSlot(face.Get(), 10), 0);
    EXPECT_EQ(Calls(), (Lines{"picture.ResumeVideo", "picture.HoldVideo"}));
    face = {};
    EXPECT_EQ(DeleteFilter(graph.Get(), renderer), 0);
}

TEST_F(InterfaceSlots, IPadDataSource) {
    IBaseFilter* source = Add(Kind::DABSource);
    auto face = dshow::QueryFor<IPadDataSource>(source, IID_IPadDataSource);
    PadInfo* record = nullptr;
    world.stage.log.Clear();
    EXPECT_EQ(CallSlot(face.Get(), 1), E_NOTIMPL);
    EXPECT_EQ(CallSlot(face.Get(), 2), E_NOTIMPL);
    EXPECT_EQ(CallSlot(face.Get(), 3, &record), 0);
    EXPECT_EQ(Calls(), Lines{"dab.FetchPadInfo"});
    face = {};
    EXPECT_EQ(DeleteFilter(graph.Get(), source), 0);
}

TEST_F(InterfaceSlots, TheSystemsInterfacesHaveTheirSlotsInOrder) {
    // One call near the end of each table that the module walks down.
    LONG state = -1;
    const auto media = From<IMediaControl>(IID_IMediaControl);
    EXPECT_EQ(CallSlot(media.Get(), 4 + 4, LONG{0}, &state), 0); // IDispatch has four, GetState is the fourth
    EXPECT_EQ(state, State_Stopped);
    const auto events = From<IMediaEventEx>(IID_IMediaEventEx);
    LONG flags = -1;
    EXPECT_EQ(CallSlot(events.Get(), 4 + 9, &flags), 0); // GetNotifyFlags
    EXPECT_EQ(flags, 0);
    EXPECT_EQ(CallSlot(events.Get(), 4 + 6, LONG{0xA201}, LONG_PTR{0}, LONG_PTR{0}), 0); // FreeEventParams
    IBaseFilter* renderer = Add(Kind::VideoRenderer);
    const auto window = From<IVideoWindow>(IID_IVideoWindow);
    world.stage.log.Clear();
    EXPECT_EQ(CallSlot(window.Get(), 4 + 7, LONG{0}), 0);  // put_AutoShow
    EXPECT_EQ(CallSlot(window.Get(), 4 + 13, LONG{0}), 0); // put_Visible
    EXPECT_EQ(Calls(), (Lines{"picture.put_AutoShow(false)", "picture.put_Visible(false)"}));
    IPin* pin = nullptr;
    EXPECT_EQ(CallSlot(renderer, 1 + 6 + 2, kInPin, &pin), 0); // IPersist 1, IMediaFilter 6, FindPin is the second
    PIN_DIRECTION direction = PINDIR_OUTPUT;
    EXPECT_EQ(CallSlot(pin, 7, &direction), 0); // QueryDirection
    EXPECT_EQ(direction, PINDIR_INPUT);
    pin->Release();
    EXPECT_EQ(DeleteFilter(graph.Get(), renderer), 0);
}

} // namespace
