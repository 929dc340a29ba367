// What only this house's graph promises, and its threads. The rules that hold in every graph are tested in tests/graph.
#include "host/dshow/ComObject.h"

#include "platform/wince.h"
#include "tests/graph/GraphWorld.h"

#include <atomic>
#include <thread>

#include <gtest/gtest.h>

namespace dshow {
namespace {

using scripted::Kind;

class OwnGraph : public ::testing::Test {
protected:
    ComPtr<IBaseFilter> Add(Kind kind, const WCHAR* name) {
        ComPtr<IBaseFilter> filter;
        EXPECT_EQ(world.stage.Create(kind, IID_IBaseFilter, filter.OutVoid()), 0);
        EXPECT_EQ(graph->AddFilter(filter.Get(), name), 0);
        return filter;
    }
    template <class T> ComPtr<T> From(REFIID iid) { return QueryFor<T>(graph.Get(), iid); }

    const LONG before = LiveObjects();
    GraphWorld world;
    ComPtr<IGraphBuilder> graph = world.NewGraph();
    ComPtr<IMediaControl> media = From<IMediaControl>(IID_IMediaControl);
    ComPtr<IMediaEventEx> events = From<IMediaEventEx>(IID_IMediaEventEx);

    void TearDown() override {
        media = {};
        events = {};
        graph = {};
        EXPECT_EQ(LiveObjects(), before);
    }
};

TEST_F(OwnGraph, WhatTheProductNeverAsksSaysSo) {
    EXPECT_EQ(graph->Render(nullptr), E_NOTIMPL);
    EXPECT_EQ(graph->RenderFile(nullptr, nullptr), E_NOTIMPL);
    EXPECT_EQ(graph->AddSourceFilter(nullptr, nullptr, nullptr), E_NOTIMPL);
    EXPECT_EQ(graph->SetLogFile(0), E_NOTIMPL);
    EXPECT_EQ(graph->Reconnect(nullptr), E_NOTIMPL);
    const auto lines = world.TakeDebugLines();
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(lines[0], "[dshow] IGraphBuilder::Render is not supported\r\n");
}

TEST_F(OwnGraph, SoundAndPositionWithoutAFilterAreNotImplemented) {
    EXPECT_EQ(From<IBasicAudio>(IID_IBasicAudio)->put_Volume(0), E_NOTIMPL);
    EXPECT_EQ(From<IMediaPosition>(IID_IMediaPosition)->put_Rate(1), E_NOTIMPL);
    EXPECT_EQ(From<IMediaSeeking>(IID_IMediaSeeking)->SetRate(1), E_NOTIMPL);
}

TEST_F(OwnGraph, AClockSetByTheApplicationIsKept) {
    auto filter = Add(Kind::Parser, WTEXT("a"));
    const auto clocks = From<IMediaFilter>(IID_IMediaFilter);
    EXPECT_EQ(clocks->SetSyncSource(nullptr), 0); // run freely
    world.stage.log.Clear();
    EXPECT_EQ(media->Run(), 0);
    EXPECT_EQ(world.stage.log.Count("SetSyncSource"), 0);
    EXPECT_NE(world.stage.Last(Kind::Parser)->Started(), 0);
    EXPECT_EQ(media->Stop(), 0);
}

TEST_F(OwnGraph, StreamTimeStandsStillWhilePaused) {
    auto filter = Add(Kind::Parser, WTEXT("a"));
    ASSERT_EQ(media->Run(), 0);
    const REFERENCE_TIME first = world.stage.Last(Kind::Parser)->Started();
    world.LetTimePass(1000);
    ASSERT_EQ(media->Pause(), 0);
    world.LetTimePass(5000);
    ASSERT_EQ(media->Run(), 0);
    // The start moves on by the pause, and by the little that every start lies in the future.
    const REFERENCE_TIME moved = world.stage.Last(Kind::Parser)->Started() - first;
    EXPECT_GE(moved, 50000000);
    EXPECT_LE(moved, 51000000);
    EXPECT_EQ(media->Stop(), 0);
}

TEST_F(OwnGraph, WaitForCompletionEndsWithTheRun) {
    LONG code = -1;
    EXPECT_EQ(events->WaitForCompletion(0, &code), VFW_E_WRONG_STATE);
    world.stage[Kind::AudioRenderer].renderer = true;
    auto filter = Add(Kind::AudioRenderer, WTEXT("a"));
    ASSERT_EQ(media->Run(), 0);
    EXPECT_EQ(events->WaitForCompletion(100, &code), E_ABORT);
    EXPECT_EQ(code, 0);
    EXPECT_EQ(world.stage.Last(Kind::AudioRenderer)->Report(EC_COMPLETE), 0);
    EXPECT_EQ(events->WaitForCompletion(100, &code), 0);
    EXPECT_EQ(code, EC_COMPLETE);
    EXPECT_EQ(media->Stop(), 0);
}

TEST_F(OwnGraph, TextsOfEventsNobodyReadAreFreed) {
    auto filter = Add(Kind::Parser, WTEXT("a"));
    EXPECT_EQ(world.stage.Last(Kind::Parser)
                  ->Report(EC_STATUS, reinterpret_cast<LONG_PTR>(SysAllocString(WTEXT("a"))),
                           reinterpret_cast<LONG_PTR>(SysAllocString(WTEXT("b")))),
              0);
}

TEST_F(OwnGraph, ANotifyWindowThatIsGoneIsHarmless) {
    auto filter = Add(Kind::Parser, WTEXT("a"));
    EXPECT_EQ(events->SetNotifyWindow(0x7777, WM_USER, 0), 0);
    EXPECT_EQ(world.stage.Last(Kind::Parser)->Report(0xA201), 0);
}

TEST_F(OwnGraph, FiltersReportWhileTheGraphStartsStopsAndTheyLeave) {
    for (int round = 0; round < 20; ++round) {
        auto parser = Add(Kind::Parser, WTEXT("a"));
        auto* reporting = world.stage.Last(Kind::Parser);
        std::atomic<bool> done{false};
        std::thread streaming([&] {
            while (!done)
                (void)reporting->Report(0xA301, 1, 2);
        });
        EXPECT_EQ(media->Run(), 0);
        LONG code = 0;
        LONG_PTR param1 = 0;
        LONG_PTR param2 = 0;
        for (int i = 0; i < 50; ++i)
            (void)events->GetEvent(&code, &param1, &param2, 0);
        EXPECT_EQ(media->Stop(), 0);
        EXPECT_EQ(graph->RemoveFilter(parser.Get()), 0); // the thread still calls, and is turned away
        EXPECT_EQ(reporting->Report(0xA301), VFW_E_NOT_IN_GRAPH);
        done = true;
        streaming.join();
    }
}

TEST_F(OwnGraph, ARunThatWaitsCanBeStoppedAtAnyMoment) {
    for (int round = 0; round < 50; ++round) {
        world.stage[Kind::AudioRenderer].ready = false;
        auto renderer = Add(Kind::AudioRenderer, WTEXT("a"));
        EXPECT_EQ(media->Run(), S_FALSE);
        if (round % 3 != 0)
            world.LetTimePass(round % 7);
        world.stage[Kind::AudioRenderer].ready = round % 2 == 0;
        EXPECT_GE(media->Stop(), 0);
        EXPECT_EQ(world.stage.Last(Kind::AudioRenderer)->State(), State_Stopped);
        EXPECT_EQ(graph->RemoveFilter(renderer.Get()), 0);
    }
}

} // namespace
} // namespace dshow
