// Events from the filters to the application. The numbers are those of docs/graph-rules.md.
#include "platform/wince.h"
#include "tests/graph/ControllerWorld.h"

#include <thread>

namespace {

using dshow::ComPtr;

class GraphEvents : public ControllerTest {
protected:
    static constexpr UINT kNotify = WM_USER + 1;
    ComPtr<IMediaControl> media = From<IMediaControl>(IID_IMediaControl);
    ComPtr<IMediaEventEx> events = From<IMediaEventEx>(IID_IMediaEventEx);

    struct Event {
        LONG code;
        LONG_PTR param1, param2;
        bool operator==(const Event&) const = default;
    };
    // Everything that waits, in order, as the module drains it.
    std::vector<Event> Drain() {
        std::vector<Event> drained;
        Event event{};
        while (SUCCEEDED(events->GetEvent(&event.code, &event.param1, &event.param2, 0))) {
            EXPECT_EQ(events->FreeEventParams(event.code, event.param1, event.param2), 0);
            drained.push_back(event);
        }
        return drained;
    }
    void Build() {
        world.stage[Kind::AudioRenderer].renderer = true;
        world.stage[Kind::VideoRenderer].renderer = true;
        ASSERT_EQ(control.InitDMBFilters(nullptr, 0), 0);
    }
    void Run() {
        ASSERT_EQ(media->Run(), 0);
        (void)Drain(); // the change of clock
    }
    void Close() {
        EXPECT_EQ(media->Stop(), 0);
        EXPECT_EQ(control.CloseDMBFilters(), 0);
    }
    HRESULT Report(Kind kind, LONG code, LONG_PTR param1 = 0, LONG_PTR param2 = 0) {
        return Last(kind)->Report(code, param1, param2);
    }
    void TearDown() override {
        media = {};
        events = {};
        ControllerTest::TearDown();
    }
};

TEST_F(GraphEvents, R29CustomCodesArriveUnchangedInEveryState) {
    Build();
    EXPECT_EQ(Report(Kind::Parser, IDMB_EVENT_AUDIO_CHANGE, 1, 2), 0);
    Run();
    // Run drained above: only what comes now.
    EXPECT_EQ(Report(Kind::Parser, IDMB_EVENT_NO_SIGNAL, 0x7FFFFFFF, -1), 0);
    EXPECT_EQ(media->Stop(), 0);
    EXPECT_EQ(Report(Kind::Parser, IDMB_EVENT_SIGNAL), 0);
    EXPECT_EQ(control.CloseDMBFilters(), 0); // events survive Stop and the removal of their filter
    EXPECT_EQ(Drain(), (std::vector<Event>{{IDMB_EVENT_NO_SIGNAL, 0x7FFFFFFF, -1}, {IDMB_EVENT_SIGNAL, 0, 0}}));
}

TEST_F(GraphEvents, R29EventsFromAnotherThreadArriveInOrder) {
    Build();
    std::thread filter([this] {
        for (LONG_PTR i = 0; i < 50; ++i)
            (void)Report(Kind::Parser, IDMB_EVENT_PAD, i);
    });
    filter.join();
    const auto drained = Drain();
    ASSERT_EQ(drained.size(), 50u);
    for (LONG_PTR i = 0; i < 50; ++i)
        EXPECT_EQ(drained[static_cast<std::size_t>(i)], (Event{IDMB_EVENT_PAD, i, 0}));
    Close();
}

TEST_F(GraphEvents, AFilterThatLeftTheGraphReportsNothing) {
    Build();
    auto parser = ComPtr<IBaseFilter>::Share(Last(Kind::Parser));
    ASSERT_EQ(graph->RemoveFilter(parser.Get()), 0);
    EXPECT_LT(Report(Kind::Parser, IDMB_EVENT_PAD), 0);
    EXPECT_TRUE(Drain().empty());
    Drop(Kind::Parser);
    for (const Kind kind : kDMBKinds)
        Drop(kind);
}

TEST_F(GraphEvents, R30EveryEventPostsOneMessage) {
    Build();
    ASSERT_EQ(events->SetNotifyWindow(world.Window(), kNotify, 42), 0);
    for (int i = 0; i < 500; ++i)
        EXPECT_EQ(Report(Kind::Parser, IDMB_EVENT_PAD, i), 0);
    const auto messages = world.TakeMessages();
    ASSERT_EQ(messages.size(), 500u);
    for (const auto& message : messages) {
        EXPECT_EQ(message.message, kNotify);
        EXPECT_EQ(message.wParam, 0u);
        EXPECT_EQ(message.lParam, 42);
    }
    EXPECT_EQ(Drain().size(), 500u);
    Close();
}

TEST_F(GraphEvents, R31AnEmptyWindowEndsThePostingAndKeepsTheQueue) {
    Build();
    ASSERT_EQ(events->SetNotifyWindow(world.Window(), kNotify, 0), 0);
    EXPECT_EQ(Report(Kind::Parser, IDMB_EVENT_PAD), 0);
    ASSERT_EQ(events->SetNotifyWindow(0, 0, 0), 0);
    EXPECT_EQ(Report(Kind::Parser, IDMB_EVENT_MOT), 0);
    EXPECT_EQ(world.TakeMessages().size(), 1u); // posted before, not recalled
    EXPECT_EQ(Drain().size(), 2u);
    Close();
}

#ifndef _WIN32
// The device's graph posts one message for what waits already; Wine's posts none.
TEST_F(GraphEvents, R31SettingTheWindowPostsOneMessageForWhatWaits) {
    Build();
    EXPECT_EQ(Report(Kind::Parser, IDMB_EVENT_PAD), 0);
    EXPECT_EQ(Report(Kind::Parser, IDMB_EVENT_PAD), 0);
    ASSERT_EQ(events->SetNotifyWindow(world.Window(), kNotify, 7), 0);
    EXPECT_EQ(world.TakeMessages().size(), 1u);
    ASSERT_EQ(events->SetNotifyWindow(0, 0, 0), 0);
    Close();
}
#endif

TEST_F(GraphEvents, NotifyFlagsHoldThePostingBack) {
    Build();
    ASSERT_EQ(events->SetNotifyWindow(world.Window(), kNotify, 0), 0);
    LONG flags = -1;
    EXPECT_EQ(events->GetNotifyFlags(&flags), 0);
    EXPECT_EQ(flags, 0);
    EXPECT_EQ(events->SetNotifyFlags(1), 0);
    EXPECT_EQ(events->GetNotifyFlags(&flags), 0);
    EXPECT_EQ(flags, 1);
    EXPECT_EQ(Report(Kind::Parser, IDMB_EVENT_PAD), 0);
    EXPECT_TRUE(world.TakeMessages().empty());
    Close();
}

TEST_F(GraphEvents, R32AnEmptyQueueAnswersE_ABORTAndCode0) {
    LONG code = -1;
    LONG_PTR param1 = 0;
    LONG_PTR param2 = 0;
    EXPECT_EQ(events->GetEvent(&code, &param1, &param2, 0), E_ABORT);
    EXPECT_EQ(code, 0);
    code = -1;
    EXPECT_EQ(events->GetEvent(&code, &param1, &param2, 20), E_ABORT);
    EXPECT_EQ(code, 0);
    for (const LONG custom : {IDMB_EVENT_AUDIO_CHANGE, IDMB_EVENT_NO_SIGNAL, LONG{EC_COMPLETE}})
        EXPECT_EQ(events->FreeEventParams(custom, 1, 2), 0); // not pointers
    EXPECT_EQ(events->FreeEventParams(EC_STATUS, reinterpret_cast<LONG_PTR>(SysAllocString(WTEXT("a"))),
                                      reinterpret_cast<LONG_PTR>(SysAllocString(WTEXT("b")))),
              0);
}

TEST_F(GraphEvents, R33CompleteReachesTheApplicationOnceWhenEveryRendererHasReported) {
    Build();
    Run();
    EXPECT_EQ(Report(Kind::AudioRenderer, EC_COMPLETE, 0, 5), 0);
    EXPECT_TRUE(Drain().empty());
    EXPECT_EQ(Report(Kind::VideoRenderer, EC_COMPLETE, 0, 6), 0);
    EXPECT_EQ(Drain(), (std::vector<Event>{{EC_COMPLETE, 0, 0}}));
    EXPECT_EQ(Report(Kind::VideoRenderer, EC_COMPLETE), 0);
    EXPECT_EQ(Report(Kind::AudioRenderer, EC_COMPLETE), 0);
    EXPECT_TRUE(Drain().empty());
    LONG state = -1;
    EXPECT_EQ(media->GetState(0, &state), 0);
    EXPECT_EQ(state, State_Running); // R34: the graph does not stop by itself
    Close();
}

TEST_F(GraphEvents, R33CompleteIsIgnoredWhileStoppedOrPaused) {
    Build();
    EXPECT_EQ(Report(Kind::AudioRenderer, EC_COMPLETE), 0);
    EXPECT_EQ(Report(Kind::VideoRenderer, EC_COMPLETE), 0);
    ASSERT_EQ(media->Pause(), 0);
    (void)Drain();
    EXPECT_EQ(Report(Kind::AudioRenderer, EC_COMPLETE), 0);
    EXPECT_EQ(Report(Kind::VideoRenderer, EC_COMPLETE), 0);
    EXPECT_TRUE(Drain().empty());
    Close();
}

TEST_F(GraphEvents, R33WithoutARendererCompleteNeverArrives) {
    ASSERT_EQ(control.InitDMBFilters(nullptr, 0), 0); // nobody says it is a renderer
    Run();
    EXPECT_EQ(Report(Kind::AudioRenderer, EC_COMPLETE), 0);
    EXPECT_EQ(Report(Kind::VideoRenderer, EC_COMPLETE), 0);
    EXPECT_TRUE(Drain().empty());
    Close();
}

TEST_F(GraphEvents, R33AFilterWithSeekingAndNoOutputIsARenderer) {
    world.stage[Kind::AudioRenderer].seeking = true;
    ASSERT_EQ(control.InitDMBFilters(nullptr, 0), 0);
    Run();
    EXPECT_EQ(Report(Kind::AudioRenderer, EC_COMPLETE), 0);
    EXPECT_EQ(Drain(), (std::vector<Event>{{EC_COMPLETE, 0, 0}}));
    Close();
}

TEST_F(GraphEvents, R33ARadioGraphHasOneRenderer) {
    world.stage[Kind::AudioRenderer].renderer = true;
    ASSERT_EQ(control.InitDABFilters(), 0);
    Run();
    EXPECT_EQ(Report(Kind::AudioRenderer, EC_COMPLETE), 0);
    EXPECT_EQ(Drain(), (std::vector<Event>{{EC_COMPLETE, 0, 0}}));
    EXPECT_EQ(media->Stop(), 0);
    EXPECT_EQ(control.CloseDABFilters(), 0);
}

TEST_F(GraphEvents, R34TheNextRunWithdrawsACompleteThatNobodyRead) {
    Build();
    Run();
    EXPECT_EQ(Report(Kind::AudioRenderer, EC_COMPLETE), 0);
    EXPECT_EQ(Report(Kind::VideoRenderer, EC_COMPLETE), 0);
    EXPECT_EQ(Report(Kind::Parser, IDMB_EVENT_PAD), 0);
    ASSERT_EQ(media->Stop(), 0);
    ASSERT_EQ(media->Run(), 0);
    EXPECT_EQ(Drain(), (std::vector<Event>{{IDMB_EVENT_PAD, 0, 0}}));
    // Counting starts anew.
    EXPECT_EQ(Report(Kind::AudioRenderer, EC_COMPLETE), 0);
    EXPECT_TRUE(Drain().empty());
    EXPECT_EQ(Report(Kind::VideoRenderer, EC_COMPLETE), 0);
    EXPECT_EQ(Drain().size(), 1u);
    Close();
}

TEST_F(GraphEvents, R34PauseThenRunWithdrawsItToo) {
    Build();
    Run();
    EXPECT_EQ(Report(Kind::AudioRenderer, EC_COMPLETE), 0);
    EXPECT_EQ(Report(Kind::VideoRenderer, EC_COMPLETE), 0);
    ASSERT_EQ(media->Pause(), 0);
    ASSERT_EQ(media->Run(), 0);
    EXPECT_TRUE(Drain().empty());
    Close();
}

TEST_F(GraphEvents, R35WhatTheGraphKeepsAndWhatItDelivers) {
    Build();
    Run();
    for (const LONG code : {LONG{EC_REPAINT}, LONG{EC_VIDEOFRAMEREADY}, LONG{EC_USERABORT}, LONG{EC_ERRORABORT}})
        EXPECT_EQ(Report(Kind::VideoRenderer, code), 0);
    EXPECT_EQ(Drain(), (std::vector<Event>{{EC_VIDEOFRAMEREADY, 0, 0}, {EC_USERABORT, 0, 0}, {EC_ERRORABORT, 0, 0}}));
    Close();
}

TEST_F(GraphEvents, CancelledDefaultHandlingDeliversEveryComplete) {
    Build();
    Run();
    EXPECT_EQ(events->CancelDefaultHandling(EC_COMPLETE), 0);
    EXPECT_EQ(Report(Kind::AudioRenderer, EC_COMPLETE, 0, 5), 0);
    EXPECT_EQ(Drain(), (std::vector<Event>{{EC_COMPLETE, 0, 5}}));
    EXPECT_EQ(events->RestoreDefaultHandling(EC_COMPLETE), 0);
    EXPECT_EQ(Report(Kind::AudioRenderer, EC_COMPLETE), 0);
    EXPECT_TRUE(Drain().empty());
    Close();
}

} // namespace
