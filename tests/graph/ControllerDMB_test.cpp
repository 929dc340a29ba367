// The television graph of the controller: build, join, and every way in which that may fail.
#include "tests/graph/ControllerWorld.h"

#include <cstring>
#include <type_traits>

namespace {

using ControllerDMB = ControllerTest;

// --- the object -----------------------------------------------------------------------------------------------------

TEST_F(ControllerDMB, HoldsEightPointersAndNothingElse) {
    static_assert(sizeof(CDMBFilterControl) == 8 * sizeof(void*));
    static_assert(!std::is_polymorphic_v<CDMBFilterControl>);
    // In the documented order.
    CDMBFilterControl fresh(graph.Get());
    const DMBFilterControlPeer fields{fresh};
    void* const* raw = reinterpret_cast<void* const*>(&fresh);
    EXPECT_EQ(raw[0], graph.Get());
    EXPECT_EQ(static_cast<void*>(&fields.Graph()), raw);
    const Kind order[] = {Kind::Parser,        Kind::BSACDecoder, Kind::AudioRenderer, Kind::VideoDecoder,
                          Kind::VideoRenderer, Kind::DABSource,   Kind::MP3Decoder};
    for (int i = 0; i < 7; ++i) {
        EXPECT_EQ(static_cast<void*>(&fields.Field(order[i])), raw + 1 + i);
        EXPECT_EQ(raw[1 + i], nullptr);
    }
}

TEST_F(ControllerDMB, ConstructorAndDestructorCountNothing) {
    const ULONG before = RefCount(graph.Get());
    {
        CDMBFilterControl other(graph.Get());
        EXPECT_EQ(RefCount(graph.Get()), before);
    }
    EXPECT_EQ(RefCount(graph.Get()), before);
}

TEST_F(ControllerDMB, DestructorLeavesTheFiltersAlone) {
    {
        CDMBFilterControl other(graph.Get());
        ASSERT_EQ(other.InitDMBFilters(nullptr, 0), 0);
        // Kept by the test so that it can give them back: the destructor will not.
        for (const Kind kind : kDMBKinds)
            peer.Field(kind) = DMBFilterControlPeer{other}.Field(kind);
    }
    EXPECT_EQ(world.stage.Alive(), 5);
    EXPECT_EQ(control.CloseDMBFilters(), 0);
}

TEST_F(ControllerDMB, CopyAssignmentCopiesEightPointersWithoutCounting) {
    ASSERT_EQ(control.InitDMBFilters(nullptr, 0), 0);
    const ULONG held = Last(Kind::Parser)->References();
    CDMBFilterControl copy(nullptr);
    copy = control;
    EXPECT_EQ(std::memcmp(static_cast<void*>(&copy), static_cast<void*>(&control), sizeof copy), 0);
    EXPECT_EQ(Last(Kind::Parser)->References(), held);
    EXPECT_EQ(copy.CloseDMBFilters(), 0);
}

// --- building -------------------------------------------------------------------------------------------------------

TEST_F(ControllerDMB, BuildsTheFiveFiltersInOrderAndJoinsFourLinks) {
    EXPECT_EQ(control.InitDMBFilters(nullptr, 0), 0);
    const Lines expected = {
        "parser.Create",
        "parser.JoinFilterGraph(MES DMB Parser Filter)",
        "bsac.Create",
        "bsac.JoinFilterGraph(MES BSAC Decoder)",
        "audio.Create",
        "audio.JoinFilterGraph(Audio Renderer)",
        "video.Create",
        "video.JoinFilterGraph(MES Video Decoder)",
        "picture.Create",
        "picture.JoinFilterGraph(MES VIDRenderer Filter)",
        "parser.FindPin(1)",
        "video.FindPin(In)",
        "video.In.ReceiveConnection",
        "parser.1.Connect",
        "video.FindPin(Out)",
        "picture.FindPin(In)",
        "picture.In.ReceiveConnection",
        "video.Out.Connect",
        "parser.FindPin(2)",
        "bsac.FindPin(In)",
        "bsac.In.ReceiveConnection",
        "parser.2.Connect",
        "bsac.FindPin(Out)",
        "audio.FindPin(Audio Input pin (rendered))",
        "audio.Audio Input pin (rendered).ReceiveConnection",
        "bsac.Out.Connect",
    };
    EXPECT_EQ(Calls(), expected);
    EXPECT_EQ(DMBLinks(), 4);
    EXPECT_EQ(control.CloseDMBFilters(), 0);
}

TEST_F(ControllerDMB, LogsLiveModeLetterForLetter) {
    ASSERT_EQ(control.InitDMBFilters(nullptr, 0), 0);
    const Lines expected = {
        kFilterLog + "InitDMBFilters(0, (null))\r\n",
        kFilterLog + "LoadDMBFilters() success\r\n",
        kFilterLog + "ConnectDMBFilters() success\r\n",
    };
    EXPECT_EQ(world.TakeDebugLines(), expected);
    EXPECT_EQ(control.CloseDMBFilters(), 0);
    EXPECT_TRUE(world.TakeDebugLines().empty());
}

TEST_F(ControllerDMB, FileModeLoadsTheFileWithoutAType) {
    ASSERT_EQ(control.InitDMBFilters(WTEXT("\\SDMMC Card\\DMB\\a.dmb"), 1), 0);
    EXPECT_EQ(Calls("Load("), Lines{"parser.Load(\\SDMMC Card\\DMB\\a.dmb)"});
    const Lines expected = {
        kFilterLog + "InitDMBFilters(1, \\SDMMC Card\\DMB\\a.dmb)\r\n",
        kFilterLog + "LoadDMBFilters() success\r\n",
        kFilterLog + "ConnectDMBFilters() success\r\n",
    };
    EXPECT_EQ(world.TakeDebugLines(), expected);
    // The interface is given back: link 1, link 2, the field and the graph.
    EXPECT_EQ(Last(Kind::Parser)->References(), 4u);
    EXPECT_EQ(control.CloseDMBFilters(), 0);
}

// Edge case: a null name with mode 1 builds a live graph.
TEST_F(ControllerDMB, InitDMBFiltersWithANullNameAndMode1BuildsALiveModeGraph) {
    EXPECT_EQ(control.InitDMBFilters(nullptr, 1), 0);
    EXPECT_TRUE(Calls("Load(").empty());
    EXPECT_EQ(DMBLinks(), 4);
    EXPECT_EQ(world.TakeDebugLines()[0], kFilterLog + "InitDMBFilters(1, (null))\r\n");
    EXPECT_EQ(control.CloseDMBFilters(), 0);
}

TEST_F(ControllerDMB, AnyOtherModeWithANameIsLive) {
    for (const int mode : {0, 2, -1}) {
        EXPECT_EQ(control.InitDMBFilters(WTEXT("a.dmb"), mode), 0);
        EXPECT_EQ(control.CloseDMBFilters(), 0);
    }
    EXPECT_TRUE(Calls("Load(").empty());
}

// Edge case: a file that the parser cannot open is no failure of the build.
TEST_F(ControllerDMB, AFileNameThatTheParserCannotOpenStillReturns0FromInitDMBFilters) {
    world.stage[Kind::Parser].load = static_cast<HRESULT>(0x80070002u);
    EXPECT_EQ(control.InitDMBFilters(WTEXT("missing.dmb"), 1), 0);
    EXPECT_EQ(DMBLinks(), 4);
    EXPECT_EQ(world.TakeDebugLines()[1], kFilterLog + "LoadDMBFilters() success\r\n");
    EXPECT_EQ(control.CloseDMBFilters(), 0);
}

TEST_F(ControllerDMB, AParserWithoutIFileSourceFilterLoadsNothingAndSaysSo) {
    world.stage[Kind::Parser].noCustom = true;
    EXPECT_EQ(control.InitDMBFilters(WTEXT("a.dmb"), 1), 0);
    const Lines expected = {
        kFilterLog + "InitDMBFilters(1, a.dmb)\r\n",
        kFilterLog + "~LoadDMBFilters() file mode fail\r\n",
        kFilterLog + "LoadDMBFilters() success\r\n",
        kFilterLog + "ConnectDMBFilters() success\r\n",
    };
    EXPECT_EQ(world.TakeDebugLines(), expected);
    EXPECT_EQ(control.CloseDMBFilters(), 0);
}

// Edge case: a second connect over a connected graph changes nothing.
TEST_F(ControllerDMB, ASecondConnectDMBFiltersOverAConnectedGraphReturns0AndChangesNothing) {
    ASSERT_EQ(control.InitDMBFilters(nullptr, 0), 0);
    ULONG before[5];
    for (int i = 0; i < 5; ++i)
        before[i] = Last(kDMBKinds[i])->References();
    world.stage.log.Clear();
    EXPECT_EQ(peer.Connect(), 0);
    EXPECT_TRUE(Calls(".Connect").empty());
    EXPECT_TRUE(Calls("ReceiveConnection").empty());
    EXPECT_EQ(DMBLinks(), 4);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(Last(kDMBKinds[i])->References(), before[i]);
    EXPECT_EQ(control.CloseDMBFilters(), 0);
}

TEST_F(ControllerDMB, ARefusedLinkIsNotReported) {
    world.stage[Kind::VideoRenderer].refusingPins = {kInPin};
    EXPECT_EQ(control.InitDMBFilters(nullptr, 0), 0);
    EXPECT_FALSE(IsLinked(Kind::VideoRenderer, kInPin));
    EXPECT_EQ(DMBLinks(), 3);
    EXPECT_EQ(world.TakeDebugLines().back(), kFilterLog + "ConnectDMBFilters() success\r\n");
    EXPECT_EQ(control.CloseDMBFilters(), 0);
}

TEST_F(ControllerDMB, AnUnknownPinIdEndsTheConnectAtThatLink) {
    world.stage[Kind::BSACDecoder].unknownPins = {kInPin};
    EXPECT_EQ(control.InitDMBFilters(nullptr, 0), E_FAIL);
    EXPECT_EQ(DMBLinks(), 2); // picture chain only
    EXPECT_TRUE(Calls("bsac.FindPin(Out)").empty());
    const Lines expected = {kFilterLog + "InitDMBFilters(0, (null))\r\n", kFilterLog + "LoadDMBFilters() success\r\n"};
    EXPECT_EQ(world.TakeDebugLines(), expected);
    // The upstream pin of that link stays counted, so the close fails at the parser.
    EXPECT_EQ(control.CloseDMBFilters(), E_FAIL);
    EXPECT_EQ(Last(Kind::Parser)->References(), 1u);
    Last(Kind::Parser)->Release();
    for (const Kind kind : {Kind::BSACDecoder, Kind::AudioRenderer, Kind::VideoDecoder, Kind::VideoRenderer})
        Drop(kind);
}

// --- failing loads --------------------------------------------------------------------------------------------------

TEST_F(ControllerDMB, WithoutAGraphNothingIsCreated) {
    CDMBFilterControl lost(nullptr);
    EXPECT_EQ(lost.InitDMBFilters(nullptr, 0), E_FAIL);
    EXPECT_EQ(DMBFilterControlPeer{lost}.Load(nullptr, 0), E_FAIL);
    EXPECT_EQ(DMBFilterControlPeer{lost}.Connect(), E_FAIL);
    EXPECT_EQ(DMBFilterControlPeer{lost}.Disconnect(), E_FAIL);
    EXPECT_TRUE(Calls().empty());
    EXPECT_EQ(world.TakeDebugLines(), Lines{kFilterLog + "InitDMBFilters(0, (null))\r\n"});
}

TEST_F(ControllerDMB, CloseWithoutAGraphFailsAfterTenRetriesWithoutLogging) {
    CDMBFilterControl lost(nullptr);
    EXPECT_EQ(lost.CloseDMBFilters(), E_FAIL);
    EXPECT_EQ(world.SleptMs(), 1000);
    EXPECT_TRUE(world.TakeDebugLines().empty());
}

TEST_F(ControllerDMB, AFailedCreateKeepsTheFiltersBeforeItInTheGraph) {
    for (int failing = 0; failing < 5; ++failing) {
        world.stage[kDMBKinds[failing]].create = E_OUTOFMEMORY;
        EXPECT_EQ(control.InitDMBFilters(nullptr, 0), E_FAIL);
        EXPECT_EQ(world.stage.Alive(), failing);
        for (int i = 0; i < 5; ++i) {
            EXPECT_EQ(peer.Field(kDMBKinds[i]) != nullptr, i < failing);
            EXPECT_EQ(static_cast<bool>(InGraph(kDMBKinds[i])), i < failing);
            if (i < failing) {
                EXPECT_EQ(Last(kDMBKinds[i])->References(), 2u); // the field and the graph
            }
        }
        world.stage[kDMBKinds[failing]].create = S_OK;
        for (int i = 0; i < failing; ++i)
            EXPECT_EQ(DeleteFilter(graph.Get(), peer.Field(kDMBKinds[i])), 0);
    }
}

TEST_F(ControllerDMB, AFailedAddKeepsTheFilterInItsFieldOnly) {
    world.stage[Kind::AudioRenderer].join = E_UNEXPECTED;
    EXPECT_EQ(control.InitDMBFilters(nullptr, 0), E_FAIL);
    EXPECT_FALSE(InGraph(Kind::AudioRenderer));
    EXPECT_EQ(Last(Kind::AudioRenderer)->References(), 1u);
    EXPECT_EQ(Last(Kind::VideoDecoder), nullptr);
    EXPECT_EQ(DeleteFilter(graph.Get(), peer.Field(Kind::Parser)), 0);
    EXPECT_EQ(DeleteFilter(graph.Get(), peer.Field(Kind::BSACDecoder)), 0);
    Drop(Kind::AudioRenderer);
}

TEST_F(ControllerDMB, ACloseAfterAFailedLoadNeverFreesTwice) {
    ASSERT_EQ(control.InitDMBFilters(nullptr, 0), 0);
    ASSERT_EQ(control.CloseDMBFilters(), 0);
    // The fields are stale now; a load that fails at the third filter clears them first.
    world.stage[Kind::AudioRenderer].create = E_OUTOFMEMORY;
    EXPECT_EQ(control.InitDMBFilters(nullptr, 0), E_FAIL);
    EXPECT_EQ(peer.Field(Kind::AudioRenderer), nullptr);
    EXPECT_EQ(peer.Field(Kind::VideoRenderer), nullptr);
    // A null filter never disconnects, so the close gives up before it deletes anything.
    EXPECT_EQ(control.CloseDMBFilters(), E_FAIL);
    EXPECT_EQ(world.stage.Alive(), 2);
    EXPECT_EQ(DeleteFilter(graph.Get(), peer.Field(Kind::Parser)), 0);
    EXPECT_EQ(DeleteFilter(graph.Get(), peer.Field(Kind::BSACDecoder)), 0);
}

} // namespace
