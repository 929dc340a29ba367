#include "host/dshow/ClassTable.h"
#include "platform/dshow_api.h"
#include "tests/shell/ShellFixture.h"

namespace shell {

namespace {

IGraphBuilder* MakeGraph() {
    void* graph = nullptr;
    EXPECT_EQ(CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IGraphBuilder, &graph), S_OK);
    return static_cast<IGraphBuilder*>(graph);
}

} // namespace

TEST_F(ShellFixture, WithoutAGraphThereIsNothingToConnect) {
    TestView& view = Open();
    EXPECT_EQ(view.ConnectInterface(), 0);
    view.ReleaseInterface(0);
    view.Play();
    EXPECT_EQ(view.GetPlayMode(), kPlayModeStopped);
    EXPECT_EQ(view.Stop(), 1);
    view.Jump(1000);
    view.ForceMute(1);
    const RECT rect = {0, 0, 10, 10};
    view.MoveVideoWindow(&rect);
}

TEST_F(ShellFixture, ConnectBindsTheEventsToTheViewsWindow) {
    const dshow::ClassTable classes(clock);
    TestView& view = Open();
    view.Graph() = MakeGraph();
    EXPECT_NE(view.ConnectInterface(), 0);
    EXPECT_NE(view.Control(), nullptr);
    void* sink = nullptr;
    ASSERT_EQ(view.Graph()->QueryInterface(IID_IMediaEventSink, &sink), S_OK);
    shell->ClearLog();
    static_cast<IMediaEventSink*>(sink)->Notify(0xA201, 1, 2);
    EXPECT_TRUE(Logged("post view 1025 0 0"));
    view.ReleaseInterface(0);
    EXPECT_EQ(view.Control(), nullptr);
    EXPECT_NE(view.Graph(), nullptr) << "the builder stays";
    shell->ClearLog();
    static_cast<IMediaEventSink*>(sink)->Notify(0xA201, 1, 2);
    EXPECT_FALSE(Logged("post view 1025 0 0")) << "no event interface, no messages";
    static_cast<IMediaEventSink*>(sink)->Release();
    EXPECT_NE(view.ConnectInterface(), 0);
    EXPECT_NE(view.ConnectInterface(), 0) << "connecting twice holds each interface once";
}

TEST_F(ShellFixture, DestroyLetsGoOfTheGraph) {
    const dshow::ClassTable classes(clock);
    TestView& view = Open();
    IGraphBuilder* graph = view.Graph() = MakeGraph();
    EXPECT_NE(view.ConnectInterface(), 0);
    graph->AddRef();
    shell->CloseView();
    EXPECT_EQ(graph->Release(), 0u);
}

TEST_F(ShellFixture, PlayPauseAndStopFollowTheGraph) {
    const dshow::ClassTable classes(clock);
    TestView& view = Open();
    view.Graph() = MakeGraph();
    view.ConnectInterface();
    view.Play();
    EXPECT_EQ(view.GetPlayMode(), kPlayModePlaying);
    view.CVelPlayerView::Pause();
    EXPECT_EQ(view.GetPlayMode(), kPlayModePaused);
    view.Resume();
    EXPECT_EQ(view.GetPlayMode(), kPlayModePlaying);
    EXPECT_EQ(view.Stop(), 1);
    EXPECT_EQ(view.GetPlayMode(), kPlayModeStopped);
    EXPECT_TRUE(Logged("mode 4"));
    EXPECT_EQ(view.CVelPlayerView::AllowFileList(u"a.dmb"), 0);
}

} // namespace shell
