// Filters, names, links: what the controller may rely on in any graph. The numbers are those of docs/graph-rules.md.
#include "tests/graph/ControllerWorld.h"

namespace {

using dshow::ComPtr;

class GraphRules : public ControllerTest {
protected:
    ComPtr<IBaseFilter> Make(Kind kind) {
        ComPtr<IBaseFilter> filter;
        EXPECT_EQ(world.stage.Create(kind, IID_IBaseFilter, filter.OutVoid()), 0);
        return filter;
    }
    ComPtr<IBaseFilter> Add(Kind kind, const WCHAR* name) {
        auto filter = Make(kind);
        EXPECT_EQ(graph->AddFilter(filter.Get(), name), 0);
        return filter;
    }
    static ComPtr<IPin> Pin(const ComPtr<IBaseFilter>& filter, const WCHAR* id) {
        ComPtr<IPin> pin;
        EXPECT_EQ(filter->FindPin(id, pin.Out()), 0);
        return pin;
    }
};

// --- creation and interfaces ----------------------------------------------------------------------------------------

TEST_F(GraphRules, R1UnknownClassAndAggregation) {
    static const CLSID unknown = {0x12345678, 0x9ABC, 0x4DEF, {1, 2, 3, 4, 5, 6, 7, 8}};
    void* object = this;
    EXPECT_EQ(CoCreateInstance(unknown, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter, &object),
              static_cast<HRESULT>(0x80040154u));
    EXPECT_EQ(object, nullptr);
    object = this;
    EXPECT_EQ(CoCreateInstance(CLSID_DMBParser, graph.Get(), CLSCTX_INPROC_SERVER, IID_IUnknown, &object),
              CLASS_E_NOAGGREGATION);
    EXPECT_EQ(object, nullptr);
}

TEST_F(GraphRules, R2TheGraphAnswersForAllItsInterfacesWithoutFilters) {
    const IID* const iids[] = {&IID_IGraphBuilder, &IID_IFilterGraph,    &IID_IMediaControl,  &IID_IMediaEvent,
                               &IID_IMediaEventEx, &IID_IMediaEventSink, &IID_IVideoWindow,   &IID_IBasicVideo,
                               &IID_IBasicAudio,   &IID_IMediaSeeking,   &IID_IMediaPosition, &IID_IMediaFilter};
    for (const IID* iid : iids)
        EXPECT_TRUE(From<IUnknown>(*iid)) << std::hex << iid->Data1;
    EXPECT_EQ(static_cast<void*>(From<IMediaEvent>(IID_IMediaEvent).Get()),
              static_cast<void*>(From<IMediaEventEx>(IID_IMediaEventEx).Get()));
    void* object = this;
    EXPECT_EQ(graph->QueryInterface(IID_IDMBCapture, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
}

TEST_F(GraphRules, R3VideoWindowForwardsToTheFirstFilterThatOffersIt) {
    const auto window = From<IVideoWindow>(IID_IVideoWindow);
    ASSERT_TRUE(window);
    EXPECT_EQ(window->put_Visible(0), E_NOINTERFACE);
    auto source = Add(Kind::DABSource, WTEXT("dab"));
    EXPECT_EQ(window->put_Visible(0), E_NOINTERFACE);
    EXPECT_EQ(From<IBasicVideo>(IID_IBasicVideo)->SetDefaultSourcePosition(), E_NOINTERFACE);

    auto renderer = Add(Kind::VideoRenderer, WTEXT("picture"));
    world.stage.log.Clear();
    EXPECT_EQ(window->put_Visible(0), 0);
    EXPECT_EQ(Calls("put_Visible"), Lines{"picture.put_Visible(false)"});
    // Held from the first call until the filter is removed, so that a close still frees it.
    EXPECT_EQ(RefCount(renderer.Get()), 3u);
    EXPECT_EQ(graph->RemoveFilter(renderer.Get()), 0);
    EXPECT_EQ(RefCount(renderer.Get()), 1u);
    EXPECT_EQ(window->put_Visible(0), E_NOINTERFACE);
    EXPECT_EQ(graph->RemoveFilter(source.Get()), 0);
}

TEST_F(GraphRules, R4AllInterfacesShareOneCount) {
    const ULONG alone = RefCount(graph.Get());
    auto media = From<IMediaControl>(IID_IMediaControl);
    auto events = From<IMediaEventEx>(IID_IMediaEventEx);
    const auto window = From<IVideoWindow>(IID_IVideoWindow);
    EXPECT_EQ(RefCount(graph.Get()), alone + 3);
    EXPECT_EQ(RefCount(media.Get()), alone + 3);

    // One interface keeps the graph, and with it the filters, alive after the builder is released.
    auto filter = Add(Kind::Parser, WTEXT("parser"));
    media = {};
    graph = {};
    EXPECT_EQ(RefCount(filter.Get()), 2u);
    LONG code = -1;
    LONG_PTR param1 = 0;
    LONG_PTR param2 = 0;
    EXPECT_EQ(events->GetEvent(&code, &param1, &param2, 0), E_ABORT);
    EXPECT_EQ(Last(Kind::Parser)->Report(0xA201), 0);
    EXPECT_EQ(events->GetEvent(&code, &param1, &param2, 0), 0);
}

TEST_F(GraphRules, R5TheLastReleaseStopsAndLetsEveryFilterGo) {
    auto parser = Add(Kind::Parser, WTEXT("parser"));
    auto decoder = Add(Kind::VideoDecoder, WTEXT("video"));
    ASSERT_EQ(graph->Connect(Pin(parser, WTEXT("1")).Get(), Pin(decoder, WTEXT("In")).Get()), 0);
    ASSERT_EQ(From<IMediaControl>(IID_IMediaControl)->Run(), 0);
    world.stage.log.Clear();
    graph = {};
    EXPECT_EQ(Calls("Stop").size(), 2u);
    EXPECT_EQ(Calls("JoinFilterGraph(null)").size(), 2u);
    EXPECT_EQ(Last(Kind::Parser)->State(), State_Stopped);
    EXPECT_FALSE(IsLinked(Kind::Parser, WTEXT("1")));
    EXPECT_FALSE(IsLinked(Kind::VideoDecoder, WTEXT("In")));
    ComPtr<IReferenceClock> clock;
    EXPECT_EQ(parser->GetSyncSource(clock.Out()), 0);
    EXPECT_FALSE(clock);
    EXPECT_EQ(RefCount(parser.Get()), 1u); // survives in our hands
    EXPECT_EQ(RefCount(decoder.Get()), 1u);
}

// --- adding and removing --------------------------------------------------------------------------------------------

TEST_F(GraphRules, R6AddChoosesTheNameThenJoinsThenCounts) {
    EXPECT_EQ(graph->AddFilter(nullptr, WTEXT("x")), E_POINTER);
    const ULONG before = RefCount(graph.Get());
    auto filter = Add(Kind::Parser, WTEXT("x"));
    EXPECT_EQ(RefCount(filter.Get()), 2u);
    EXPECT_EQ(RefCount(graph.Get()), before); // Join does not count the graph

    world.stage[Kind::VideoDecoder].join = E_ABORT;
    auto refusing = Make(Kind::VideoDecoder);
    EXPECT_EQ(graph->AddFilter(refusing.Get(), WTEXT("y")), E_ABORT);
    EXPECT_EQ(RefCount(refusing.Get()), 1u);
    ComPtr<IBaseFilter> found;
    EXPECT_EQ(graph->FindFilterByName(WTEXT("y"), found.Out()), VFW_E_NOT_FOUND);
}

TEST_F(GraphRules, R7ATakenNameGetsANumber) {
    auto first = Add(Kind::Parser, WTEXT("x"));
    auto second = Make(Kind::Parser);
    EXPECT_EQ(graph->AddFilter(second.Get(), WTEXT("x")), VFW_S_DUPLICATE_NAME);
    auto third = Make(Kind::Parser);
    EXPECT_EQ(graph->AddFilter(third.Get(), WTEXT("x")), VFW_S_DUPLICATE_NAME);
    auto nameless = Make(Kind::Parser);
    EXPECT_EQ(graph->AddFilter(nameless.Get(), nullptr), 0);
    EXPECT_EQ(Calls("JoinFilterGraph"), (Lines{"parser.JoinFilterGraph(x)", "parser.JoinFilterGraph(x 0001)",
                                               "parser.JoinFilterGraph(x 0002)", "parser.JoinFilterGraph(0003)"}));
    ComPtr<IBaseFilter> found;
    EXPECT_EQ(graph->FindFilterByName(WTEXT("x"), found.Out()), 0);
    EXPECT_EQ(found.Get(), first.Get());
    EXPECT_EQ(graph->FindFilterByName(WTEXT("x 0001"), found.Out()), 0);
    EXPECT_EQ(found.Get(), second.Get());
}

TEST_F(GraphRules, R8FindByNameIsExact) {
    auto filter = Add(Kind::Parser, kParserName);
    ComPtr<IBaseFilter> found;
    EXPECT_EQ(graph->FindFilterByName(kParserName, found.Out()), 0);
    EXPECT_EQ(found.Get(), filter.Get());
    EXPECT_EQ(RefCount(filter.Get()), 3u);
    IBaseFilter* none = filter.Get();
    EXPECT_EQ(graph->FindFilterByName(WTEXT("mes dmb parser filter"), &none), VFW_E_NOT_FOUND);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(graph->FindFilterByName(kParserName, nullptr), E_POINTER);
}

TEST_F(GraphRules, R9EnumerationGivesTheLastAddedFirstAndNoticesChanges) {
    auto first = Add(Kind::Parser, WTEXT("a"));
    auto second = Add(Kind::VideoDecoder, WTEXT("b"));
    ComPtr<IEnumFilters> filters;
    ASSERT_EQ(graph->EnumFilters(filters.Out()), 0);
    ComPtr<IBaseFilter> filter;
    EXPECT_EQ(filters->Next(1, filter.Out(), nullptr), 0);
    EXPECT_EQ(filter.Get(), second.Get());
    auto third = Add(Kind::BSACDecoder, WTEXT("c"));
    EXPECT_EQ(filters->Next(1, filter.Out(), nullptr), VFW_E_ENUM_OUT_OF_SYNC);
    EXPECT_EQ(filters->Reset(), 0);
    ULONG fetched = 0;
    IBaseFilter* list[4] = {};
    EXPECT_EQ(filters->Next(4, list, &fetched), S_FALSE);
    ASSERT_EQ(fetched, 3u);
    EXPECT_EQ(list[0], third.Get());
    EXPECT_EQ(list[1], second.Get());
    EXPECT_EQ(list[2], first.Get());
    for (int i = 0; i < 3; ++i)
        list[i]->Release();
    ASSERT_EQ(graph->RemoveFilter(third.Get()), 0);
    EXPECT_EQ(filters->Next(1, list, nullptr), VFW_E_ENUM_OUT_OF_SYNC);
}

TEST_F(GraphRules, R10RemoveFreesThePeerFirstThenTheOwnPin) {
    auto parser = Add(Kind::Parser, WTEXT("a"));
    auto decoder = Add(Kind::VideoDecoder, WTEXT("b"));
    ASSERT_EQ(graph->Connect(Pin(parser, WTEXT("1")).Get(), Pin(decoder, WTEXT("In")).Get()), 0);
    world.stage.log.Clear();
    EXPECT_EQ(graph->RemoveFilter(parser.Get()), 0);
    EXPECT_EQ(Calls(), (Lines{"video.In.Disconnect", "parser.1.Disconnect", "parser.JoinFilterGraph(null)",
                              "parser.SetSyncSource(null)"}));
    EXPECT_EQ(RefCount(parser.Get()), 1u);
    EXPECT_EQ(RefCount(decoder.Get()), 2u);
}

TEST_F(GraphRules, R10AFailingDisconnectKeepsTheFilterAndLeavesTheLinkHalfOpen) {
    auto parser = Add(Kind::Parser, WTEXT("a"));
    auto decoder = Add(Kind::VideoDecoder, WTEXT("b"));
    ASSERT_EQ(graph->Connect(Pin(parser, WTEXT("1")).Get(), Pin(decoder, WTEXT("In")).Get()), 0);
    world.stage[Kind::Parser].stuckPins = {WTEXT("1")};
    EXPECT_EQ(graph->RemoveFilter(parser.Get()), VFW_E_NOT_STOPPED);
    ComPtr<IBaseFilter> found;
    EXPECT_EQ(graph->FindFilterByName(WTEXT("a"), found.Out()), 0);
    EXPECT_TRUE(IsLinked(Kind::Parser, WTEXT("1")));
    EXPECT_FALSE(IsLinked(Kind::VideoDecoder, WTEXT("In")));
    world.stage[Kind::Parser].stuckPins = {};
    EXPECT_EQ(Pin(parser, WTEXT("1"))->Disconnect(), 0);
}

TEST_F(GraphRules, R11RemovingAFilterThatIsNotInTheGraphFails) {
    auto filter = Make(Kind::Parser);
    EXPECT_LT(graph->RemoveFilter(filter.Get()), 0);
    ASSERT_EQ(graph->AddFilter(filter.Get(), WTEXT("a")), 0);
    EXPECT_EQ(graph->RemoveFilter(filter.Get()), 0);
    EXPECT_LT(graph->RemoveFilter(filter.Get()), 0);
    EXPECT_EQ(RefCount(filter.Get()), 1u);
}

#ifndef _WIN32
TEST_F(GraphRules, R13AddingAFilterTwiceIsRefused) {
    auto filter = Add(Kind::Parser, WTEXT("a"));
    EXPECT_LT(graph->AddFilter(filter.Get(), WTEXT("b")), 0);
    EXPECT_EQ(RefCount(filter.Get()), 2u);
}
#endif

// --- links ----------------------------------------------------------------------------------------------------------

TEST_F(GraphRules, R12PinsCountOnTheirFilter) {
    auto parser = Make(Kind::Parser);
    {
        const auto pin = Pin(parser, WTEXT("1"));
        EXPECT_EQ(RefCount(parser.Get()), 2u);
        ComPtr<IEnumPins> pins;
        EXPECT_EQ(parser->EnumPins(pins.Out()), 0);
        EXPECT_EQ(RefCount(parser.Get()), 3u);
        ComPtr<IPin> first;
        EXPECT_EQ(pins->Next(1, first.Out(), nullptr), 0);
        EXPECT_EQ(RefCount(parser.Get()), 4u);
    }
    EXPECT_EQ(RefCount(parser.Get()), 1u);
}

TEST_F(GraphRules, R14ConnectAsksTheOutputWhichOffersACompleteType) {
    auto parser = Add(Kind::Parser, WTEXT("a"));
    auto decoder = Add(Kind::VideoDecoder, WTEXT("b"));
    auto out = Pin(parser, WTEXT("1"));
    auto in = Pin(decoder, WTEXT("In"));
    EXPECT_EQ(graph->Connect(nullptr, in.Get()), E_POINTER);
    EXPECT_EQ(graph->Connect(out.Get(), nullptr), E_POINTER);
    EXPECT_EQ(graph->Connect(out.Get(), in.Get()), 0);
    AM_MEDIA_TYPE type{};
    ASSERT_EQ(in->ConnectionMediaType(&type), 0);
    EXPECT_TRUE(type.majortype == MEDIATYPE_Video);
    EXPECT_FALSE(type.subtype == GUID_NULL);
    dshow::ClearMediaType(type);
}

TEST_F(GraphRules, R15ARefusedLinkOfItsOwnTypeLeavesTheGraphUnchanged) {
    ASSERT_EQ(control.InitDMBFilters(nullptr, 0), 0);
    ASSERT_EQ(peer.Disconnect(), 0);
    world.stage[Kind::VideoRenderer].refusingPins = {kInPin};
    auto out = Pin(InGraph(Kind::VideoDecoder), kOutPin);
    auto in = Pin(InGraph(Kind::VideoRenderer), kInPin);
    EXPECT_EQ(graph->Connect(out.Get(), in.Get()), VFW_E_CANNOT_CONNECT);
    EXPECT_EQ(DMBLinks(), 0);
    out = {};
    in = {};
    EXPECT_EQ(control.CloseDMBFilters(), 0);
}

TEST_F(GraphRules, R15TheGraphGoesThroughAFilterThatItHas) {
    auto parser = Add(Kind::Parser, WTEXT("a"));
    auto renderer = Add(Kind::VideoRenderer, WTEXT("c"));
    auto decoder = Add(Kind::VideoDecoder, WTEXT("b"));
    EXPECT_EQ(graph->Connect(Pin(parser, WTEXT("1")).Get(), Pin(renderer, WTEXT("In")).Get()), 0);
    EXPECT_TRUE(IsLinked(Kind::VideoDecoder, WTEXT("In")));
    EXPECT_TRUE(IsLinked(Kind::VideoDecoder, WTEXT("Out")));
    EXPECT_TRUE(IsLinked(Kind::VideoRenderer, WTEXT("In")));
    graph = {}; // frees the links
}

TEST_F(GraphRules, R16LinkingIsRefusedByTheFiltersWhileTheyRun) {
    auto parser = Add(Kind::Parser, WTEXT("a"));
    auto decoder = Add(Kind::VideoDecoder, WTEXT("b"));
    auto renderer = Add(Kind::VideoRenderer, WTEXT("c"));
    auto out = Pin(parser, WTEXT("1"));
    auto in = Pin(decoder, WTEXT("In"));
    ASSERT_EQ(graph->Connect(out.Get(), in.Get()), 0);
    const auto media = From<IMediaControl>(IID_IMediaControl);
    ASSERT_EQ(media->Run(), 0);
    EXPECT_EQ(graph->Disconnect(out.Get()), VFW_E_NOT_STOPPED);
    EXPECT_EQ(graph->ConnectDirect(Pin(decoder, WTEXT("Out")).Get(), Pin(renderer, WTEXT("In")).Get(), nullptr),
              VFW_E_NOT_STOPPED);
    EXPECT_EQ(graph->RemoveFilter(parser.Get()), VFW_E_NOT_STOPPED);
    ASSERT_EQ(media->Stop(), 0);
    EXPECT_EQ(graph->Disconnect(out.Get()), 0);
    EXPECT_EQ(graph->Disconnect(in.Get()), 0);
}

TEST_F(GraphRules, R17AConnectedPinRefusesASecondLink) {
    auto parser = Add(Kind::Parser, WTEXT("a"));
    auto decoder = Add(Kind::VideoDecoder, WTEXT("b"));
    auto out = Pin(parser, WTEXT("1"));
    auto in = Pin(decoder, WTEXT("In"));
    ASSERT_EQ(graph->Connect(out.Get(), in.Get()), 0);
    EXPECT_EQ(graph->ConnectDirect(out.Get(), in.Get(), nullptr), VFW_E_ALREADY_CONNECTED);
    EXPECT_LT(graph->Connect(out.Get(), in.Get()), 0);
    EXPECT_TRUE(IsLinked(Kind::VideoDecoder, WTEXT("In")));
    EXPECT_EQ(graph->RemoveFilter(parser.Get()), 0);
}

TEST_F(GraphRules, R18DisconnectFreesOneEndOnly) {
    auto parser = Add(Kind::Parser, WTEXT("a"));
    auto decoder = Add(Kind::VideoDecoder, WTEXT("b"));
    auto out = Pin(parser, WTEXT("1"));
    auto in = Pin(decoder, WTEXT("In"));
    EXPECT_EQ(graph->Disconnect(nullptr), E_POINTER);
    EXPECT_EQ(graph->Disconnect(out.Get()), S_FALSE);
    ASSERT_EQ(graph->Connect(out.Get(), in.Get()), 0);
    EXPECT_EQ(graph->Disconnect(out.Get()), 0);
    EXPECT_TRUE(IsLinked(Kind::VideoDecoder, WTEXT("In")));
    EXPECT_EQ(graph->Disconnect(in.Get()), 0);
    EXPECT_FALSE(IsLinked(Kind::VideoDecoder, WTEXT("In")));
}

TEST_F(GraphRules, R19ConnectedToNamesThePeerOrNothing) {
    auto parser = Add(Kind::Parser, WTEXT("a"));
    auto decoder = Add(Kind::VideoDecoder, WTEXT("b"));
    auto out = Pin(parser, WTEXT("1"));
    auto in = Pin(decoder, WTEXT("In"));
    IPin* peerPin = in.Get();
    EXPECT_EQ(out->ConnectedTo(&peerPin), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(peerPin, nullptr);
    ASSERT_EQ(graph->Connect(out.Get(), in.Get()), 0);
    ComPtr<IPin> named;
    const ULONG before = RefCount(decoder.Get());
    EXPECT_EQ(out->ConnectedTo(named.Out()), 0);
    EXPECT_EQ(named.Get(), in.Get());
    EXPECT_EQ(RefCount(decoder.Get()), before + 1);
    EXPECT_EQ(graph->RemoveFilter(parser.Get()), 0);
}

TEST_F(GraphRules, R21PinEnumerationIsFixedAndCounted) {
    auto parser = Make(Kind::Parser);
    ComPtr<IEnumPins> pins;
    ASSERT_EQ(parser->EnumPins(pins.Out()), 0);
    IPin* list[3] = {};
    ULONG fetched = 0;
    EXPECT_EQ(pins->Next(2, list, nullptr), E_INVALIDARG);
    EXPECT_EQ(pins->Next(3, list, &fetched), S_FALSE);
    ASSERT_EQ(fetched, 2u);
    for (ULONG i = 0; i < fetched; ++i) {
        LPWSTR id = nullptr;
        EXPECT_EQ(list[i]->QueryId(&id), 0);
        EXPECT_EQ(WString(id), i == 0 ? WTEXT("1") : WTEXT("2"));
        CoTaskMemFree(id);
        list[i]->Release();
    }
    ComPtr<IPin> pin;
    EXPECT_EQ(pins->Next(1, pin.Out(), nullptr), S_FALSE);
    EXPECT_EQ(pins->Reset(), 0);
    EXPECT_EQ(pins->Skip(1), 0);
    EXPECT_EQ(pins->Skip(2), S_FALSE);
}

TEST_F(GraphRules, R22InfoRecordsAreCounted) {
    auto parser = Add(Kind::Parser, WTEXT("a"));
    FILTER_INFO filterInfo{};
    const ULONG graphCount = RefCount(graph.Get());
    EXPECT_EQ(parser->QueryFilterInfo(&filterInfo), 0);
    EXPECT_EQ(WString(filterInfo.achName), WTEXT("a"));
    EXPECT_EQ(RefCount(graph.Get()), graphCount + 1);
    filterInfo.pGraph->Release();
    PIN_INFO pinInfo{};
    EXPECT_EQ(Pin(parser, WTEXT("2"))->QueryPinInfo(&pinInfo), 0);
    EXPECT_EQ(pinInfo.dir, PINDIR_OUTPUT);
    EXPECT_EQ(RefCount(parser.Get()), 3u);
    pinInfo.pFilter->Release();
}

} // namespace
