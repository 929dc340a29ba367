// Running, pausing, stopping, and the clock. The numbers are those of docs/graph-rules.md.
#include "tests/graph/ControllerWorld.h"

namespace {

using dshow::ComPtr;

class GraphStates : public ControllerTest {
protected:
    ComPtr<IMediaControl> media = From<IMediaControl>(IID_IMediaControl);

    void Build() {
        ASSERT_EQ(control.InitDMBFilters(nullptr, 0), 0);
        world.stage.log.Clear();
    }
    LONG State(HRESULT expected, LONG timeoutMs = 0) {
        LONG state = -1;
        EXPECT_EQ(media->GetState(timeoutMs, &state), expected);
        return state;
    }
    // The state changes that the filters saw.
    Lines Sweeps() const {
        Lines lines;
        for (const std::string& line : Calls())
            if (line.ends_with(".Run") || line.ends_with(".Stop") || line.find(".Pause") != std::string::npos)
                lines.push_back(line);
        return lines;
    }
    static std::size_t Place(const Lines& lines, const std::string& line) {
        return static_cast<std::size_t>(std::ranges::find(lines, line) - lines.begin());
    }
    // Each filter comes before those that feed it.
    static void ExpectDownstreamFirst(const Lines& lines, const std::string& call) {
        const char* const links[][2] = {
            {"parser", "video"}, {"video", "picture"}, {"parser", "bsac"}, {"bsac", "audio"}};
        for (const auto& link : links) {
            EXPECT_LT(Place(lines, link[1] + call), Place(lines, link[0] + call)) << link[0] << call;
            EXPECT_LT(Place(lines, link[0] + call), lines.size());
        }
    }
    void TearDown() override {
        media = {};
        ControllerTest::TearDown();
    }
};

TEST_F(GraphStates, R23AFreshGraphIsStoppedAndAnEmptyOneRuns) {
    EXPECT_EQ(State(0), State_Stopped);
    EXPECT_EQ(media->Stop(), 0);
    EXPECT_EQ(media->Run(), 0);
    EXPECT_EQ(State(0), State_Running);
    EXPECT_EQ(media->Run(), 0);
    EXPECT_EQ(media->Stop(), 0);
    EXPECT_EQ(State(0), State_Stopped);
}

TEST_F(GraphStates, R24RunPausesAllThenRunsAllWithOneStartTime) {
    Build();
    EXPECT_EQ(media->Run(), 0);
    const Lines sweeps = Sweeps();
    ASSERT_EQ(sweeps.size(), 10u);
    ExpectDownstreamFirst({sweeps.begin(), sweeps.begin() + 5}, ".Pause");
    ExpectDownstreamFirst({sweeps.begin() + 5, sweeps.end()}, ".Run");
    const REFERENCE_TIME start = Last(Kind::Parser)->Started();
    EXPECT_NE(start, 0);
    for (const Kind kind : kDMBKinds)
        EXPECT_EQ(Last(kind)->Started(), start);
    EXPECT_EQ(State(0), State_Running);

    world.stage.log.Clear();
    EXPECT_EQ(media->Stop(), 0);
    const Lines stops = Sweeps();
    ASSERT_EQ(stops.size(), 10u);
    ExpectDownstreamFirst({stops.begin(), stops.begin() + 5}, ".Pause");
    ExpectDownstreamFirst({stops.begin() + 5, stops.end()}, ".Stop");
    EXPECT_EQ(State(0), State_Stopped);
    EXPECT_EQ(control.CloseDMBFilters(), 0);
}

TEST_F(GraphStates, R24TheFirstRunChoosesAClockForEveryFilter) {
    Build();
    EXPECT_EQ(media->Run(), 0);
    EXPECT_EQ(Calls("SetSyncSource(clock)").size(), 5u);
    const auto events = From<IMediaEventEx>(IID_IMediaEventEx);
    LONG code = 0;
    LONG_PTR param1 = 0;
    LONG_PTR param2 = 0;
    EXPECT_EQ(events->GetEvent(&code, &param1, &param2, 0), 0);
    EXPECT_EQ(code, EC_CLOCK_CHANGED);
    EXPECT_EQ(media->Stop(), 0);
    world.stage.log.Clear();
    EXPECT_EQ(media->Run(), 0);
    EXPECT_TRUE(Calls("SetSyncSource").empty());
    EXPECT_EQ(media->Stop(), 0);
    EXPECT_EQ(control.CloseDMBFilters(), 0);
}

TEST_F(GraphStates, AFilterWithAClockGivesItAndTheCloseStillFreesIt) {
    world.stage[Kind::AudioRenderer].clock = true;
    Build();
    EXPECT_EQ(media->Run(), 0);
    ComPtr<IReferenceClock> clock;
    EXPECT_EQ(From<IMediaFilter>(IID_IMediaFilter)->GetSyncSource(clock.Out()), 0);
    EXPECT_EQ(clock.Get(),
              dshow::QueryFor<IReferenceClock>(peer.Field(Kind::AudioRenderer), IID_IReferenceClock).Get());
    clock = {};
    EXPECT_EQ(media->Stop(), 0);
    EXPECT_EQ(control.CloseDMBFilters(), 0);
    // A graph built again chooses again.
    Build();
    EXPECT_EQ(media->Run(), 0);
    EXPECT_EQ(Calls("SetSyncSource(clock)").size(), 5u);
    EXPECT_EQ(media->Stop(), 0);
    EXPECT_EQ(control.CloseDMBFilters(), 0);
}

TEST_F(GraphStates, PauseFromRunningPausesAllAndRunGoesOn) {
    Build();
    EXPECT_EQ(media->Run(), 0);
    world.stage.log.Clear();
    EXPECT_EQ(media->Pause(), 0);
    EXPECT_EQ(Sweeps().size(), 5u);
    EXPECT_EQ(State(0), State_Paused);
    world.stage.log.Clear();
    EXPECT_EQ(media->Run(), 0);
    EXPECT_EQ(Calls(".Run").size(), 5u);
    EXPECT_EQ(State(0), State_Running);
    EXPECT_EQ(media->Pause(), 0);
    world.stage.log.Clear();
    EXPECT_EQ(media->Stop(), 0);
    EXPECT_EQ(Sweeps().size(), 5u); // from paused: stops only
    EXPECT_EQ(control.CloseDMBFilters(), 0);
}

TEST_F(GraphStates, R25AFilterThatIsNotReadyMakesRunAnswerS_FALSEAndTheGraphRunsTheFiltersLater) {
    world.stage[Kind::AudioRenderer].ready = false;
    Build();
    EXPECT_EQ(media->Run(), S_FALSE);
    EXPECT_EQ(State(VFW_S_STATE_INTERMEDIATE), State_Running); // the target
    EXPECT_EQ(State(VFW_S_STATE_INTERMEDIATE, 30), State_Running);
    EXPECT_TRUE(Calls(".Run").empty());
    world.stage[Kind::AudioRenderer].ready = true;
    for (int turn = 0; turn < 500 && Calls(".Run").size() < 5; ++turn)
        world.LetTimePass(10);
    EXPECT_EQ(Calls(".Run").size(), 5u);
    EXPECT_EQ(State(0, 1000), State_Running);
    EXPECT_EQ(media->Stop(), 0);
    EXPECT_EQ(control.CloseDMBFilters(), 0);
}

TEST_F(GraphStates, R25StopEndsARunThatWaits) {
    world.stage[Kind::AudioRenderer].ready = false;
    Build();
    EXPECT_EQ(media->Run(), S_FALSE);
    EXPECT_EQ(media->Stop(), S_FALSE); // its Pause answered so on the way down
    EXPECT_EQ(State(0), State_Stopped);
    world.stage[Kind::AudioRenderer].ready = true;
    world.LetTimePass(50);
    EXPECT_TRUE(Calls(".Run").empty());
    EXPECT_EQ(control.CloseDMBFilters(), 0);
}

TEST_F(GraphStates, R25ReleasingTheGraphEndsARunThatWaits) {
    world.stage[Kind::AudioRenderer].ready = false;
    ASSERT_EQ(control.InitDABFilters(), 0);
    EXPECT_EQ(media->Run(), S_FALSE);
    media = {};
    graph = {};
    for (const Kind kind : kDABKinds) {
        EXPECT_EQ(Last(kind)->State(), State_Stopped);
        Drop(kind);
    }
}

TEST_F(GraphStates, R26ALiveSourceLetsTheGraphRunWithoutWaiting) {
    world.stage[Kind::Parser].live = true;
    world.stage[Kind::AudioRenderer].ready = false;
    Build();
    EXPECT_GE(media->Run(), 0);
    for (int turn = 0; turn < 500 && Calls(".Run").size() < 5; ++turn)
        world.LetTimePass(10);
    EXPECT_EQ(Calls(".Run").size(), 5u);
    EXPECT_EQ(media->Pause() < 0, false);
    EXPECT_EQ(State(VFW_S_CANT_CUE), State_Paused);
    world.stage[Kind::AudioRenderer].ready = true;
    EXPECT_EQ(media->Stop(), 0);
    EXPECT_EQ(control.CloseDMBFilters(), 0);
}

TEST_F(GraphStates, R27AFailingPauseIsTheAnswerOfRun) {
    world.stage[Kind::Parser].pause = E_ABORT;
    Build();
    EXPECT_EQ(media->Run(), E_ABORT);
    EXPECT_TRUE(Calls(".Run").empty());
    EXPECT_EQ(Last(Kind::VideoRenderer)->State(), State_Paused);
#ifdef _WIN32
    for (const Kind kind : kDMBKinds) // the graph counts as stopped already and stops nothing (known difference)
        EXPECT_EQ(Last(kind)->Stop(), 0);
#endif
    EXPECT_EQ(media->Stop(), 0);
    EXPECT_EQ(Last(Kind::VideoRenderer)->State(), State_Stopped);
    EXPECT_EQ(State(0), State_Stopped);
    EXPECT_EQ(control.CloseDMBFilters(), 0);
}

TEST_F(GraphStates, R28AddingToARunningGraphStartsNothingAndRemovingStopsNothing) {
    Build();
    EXPECT_EQ(media->Run(), 0);
    ComPtr<IBaseFilter> late;
    ASSERT_EQ(world.stage.Create(Kind::DABSource, IID_IBaseFilter, late.OutVoid()), 0);
    world.stage.log.Clear();
    EXPECT_EQ(graph->AddFilter(late.Get(), WTEXT("late")), 0);
    EXPECT_TRUE(Sweeps().empty());
    EXPECT_EQ(graph->RemoveFilter(late.Get()), 0);
    EXPECT_TRUE(Sweeps().empty());
    EXPECT_EQ(media->Stop(), 0);
    EXPECT_EQ(control.CloseDMBFilters(), 0);
}

} // namespace
