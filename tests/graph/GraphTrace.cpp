// Writes what a graph does to its filters, line by line, in a row of scenes. The same program runs on this house's graph and
// on that of Windows; tools/wine_stage.sh compares the two.
//
// Left out are the calls that a graph makes for its own sorting (EnumPins, ConnectedTo); GetState is never written down.
#include "graph/DMBFilterControl.h"
#include "tests/graph/GraphWorld.h"

#include <cstdio>
#include <functional>

using scripted::Kind;

namespace {

class Scene {
public:
    Scene(const char* title, const std::function<void(Scene&)>& play) {
        std::printf("== %s\n", title);
        play(*this);
        media = {};
        events = {};
        graph = {};
        Show("graph released", S_OK);
    }

    GraphWorld world;
    dshow::ComPtr<IGraphBuilder> graph = world.NewGraph();
    dshow::ComPtr<IMediaControl> media = dshow::QueryFor<IMediaControl>(graph.Get(), IID_IMediaControl);
    dshow::ComPtr<IMediaEventEx> events = dshow::QueryFor<IMediaEventEx>(graph.Get(), IID_IMediaEventEx);
    CDMBFilterControl control{graph.Get()};

    // Writes what the filters and the debugger have seen since the last call, and then the result.
    void Show(const char* what, HRESULT result) {
        std::printf("-- %s\n", what);
        for (const std::string& line : world.stage.log.Texts())
            if (line.find("ConnectedTo") == std::string::npos && line.find("EnumPins") == std::string::npos)
                std::printf("%s\n", line.c_str());
        world.stage.log.Clear();
        for (const std::string& line : world.TakeDebugLines())
            std::printf("debug: %s\n", line.substr(0, line.size() - 2).c_str());
        // Only the controller's pauses count, which are a hundred each.
        std::printf("result %08X, slept %ld00, alive %d\n", static_cast<unsigned>(result), world.SleptMs() / 100,
                    world.stage.Alive());
    }
    void ShowEvents() {
        LONG code = 0;
        LONG_PTR param1 = 0;
        LONG_PTR param2 = 0;
        while (SUCCEEDED(events->GetEvent(&code, &param1, &param2, 0))) {
            std::printf("event %X (%ld, %ld)\n", static_cast<unsigned>(code), static_cast<long>(param1),
                        static_cast<long>(param2));
            events->FreeEventParams(code, param1, param2);
        }
    }
    void ShowState(LONG timeoutMs = 0) {
        LONG state = -1;
        const HRESULT result = media->GetState(timeoutMs, &state);
        std::printf("state %d (%08X)\n", static_cast<int>(state), static_cast<unsigned>(result));
    }
    // Gives the references back that a field of the controller would hold.
    void Drop(Kind kind, ULONG references) {
        for (ULONG i = 0; i < references; ++i)
            world.stage.Last(kind)->Release();
    }
};

void Television(Scene& scene) {
    scene.Show("InitDMBFilters", scene.control.InitDMBFilters(nullptr, 0));
    scene.Show("Run", scene.media->Run());
    scene.ShowState();
    scene.ShowEvents();
    scene.Show("Stop", scene.media->Stop());
    scene.ShowState();
    scene.Show("HandleAudioChange", scene.control.HandleAudioChange());
    scene.Show("Run", scene.media->Run());
    scene.Show("Pause", scene.media->Pause());
    scene.ShowState();
    scene.Show("Run", scene.media->Run());
    scene.Show("Stop", scene.media->Stop());
    scene.Show("CloseDMBFilters", scene.control.CloseDMBFilters());
    scene.ShowEvents();
}

void File(Scene& scene) {
    scene.world.stage[Kind::AudioRenderer].renderer = true;
    scene.world.stage[Kind::VideoRenderer].renderer = true;
    scene.Show("InitDMBFilters", scene.control.InitDMBFilters(WTEXT("\\SDMMC Card\\a.dmb"), 1));
    scene.Show("Run", scene.media->Run());
    scene.world.stage.Last(Kind::VideoRenderer)->Report(EC_COMPLETE);
    scene.world.stage.Last(Kind::AudioRenderer)->Report(EC_COMPLETE);
    scene.ShowEvents();
    scene.Show("Stop", scene.media->Stop());
    scene.Show("CloseDMBFilters", scene.control.CloseDMBFilters());
}

void Radio(Scene& scene) {
    scene.world.stage[Kind::AudioRenderer].clock = true;
    scene.Show("InitDABFilters", scene.control.InitDABFilters());
    scene.Show("Run", scene.media->Run());
    scene.ShowEvents();
    scene.world.stage.Last(Kind::DABSource)->Report(IDMB_EVENT_PAD, 1, 2);
    scene.world.stage.Last(Kind::DABSource)->Report(IDMB_EVENT_MOT, 3, 4);
    scene.Show("Stop", scene.media->Stop());
    scene.Show("CloseDABFilters", scene.control.CloseDABFilters());
    scene.ShowEvents();
}

void ClockGivenByAFilter(Scene& scene) {
    scene.world.stage[Kind::AudioRenderer].clock = true;
    scene.Show("InitDMBFilters", scene.control.InitDMBFilters(nullptr, 0));
    scene.Show("Run", scene.media->Run());
    scene.Show("Stop", scene.media->Stop());
    scene.Show("CloseDMBFilters", scene.control.CloseDMBFilters());
    scene.ShowEvents();
    scene.Show("InitDMBFilters", scene.control.InitDMBFilters(nullptr, 0));
    scene.Show("Run", scene.media->Run());
    scene.Show("Stop", scene.media->Stop());
    scene.Show("CloseDMBFilters", scene.control.CloseDMBFilters());
    scene.ShowEvents();
}

void RefusedLink(Scene& scene) {
    scene.world.stage[Kind::VideoRenderer].refusingPins = {kInPin};
    scene.Show("InitDMBFilters", scene.control.InitDMBFilters(nullptr, 0));
    scene.Show("Run", scene.media->Run());
    scene.Show("Stop", scene.media->Stop());
    scene.Show("CloseDMBFilters", scene.control.CloseDMBFilters());
}

void HeldFilter(Scene& scene) {
    scene.Show("InitDMBFilters", scene.control.InitDMBFilters(nullptr, 0));
    scene.world.stage.Last(Kind::VideoDecoder)->AddRef();
    scene.Show("CloseDMBFilters", scene.control.CloseDMBFilters());
    scene.Drop(Kind::VideoDecoder, 1);
    scene.Show("InitDMBFilters again", scene.control.InitDMBFilters(nullptr, 0));
    scene.Show("CloseDMBFilters again", scene.control.CloseDMBFilters());
    scene.Drop(Kind::VideoRenderer, 1);
}

void UnknownPin(Scene& scene) {
    scene.world.stage[Kind::BSACDecoder].unknownPins = {kInPin};
    scene.Show("InitDMBFilters", scene.control.InitDMBFilters(nullptr, 0));
    scene.Show("CloseDMBFilters", scene.control.CloseDMBFilters());
    scene.Drop(Kind::Parser, 1);
    for (const Kind kind : {Kind::BSACDecoder, Kind::AudioRenderer, Kind::VideoDecoder, Kind::VideoRenderer})
        scene.Drop(kind, 1);
}

void FailedLoad(Scene& scene) {
    scene.world.stage[Kind::VideoDecoder].create = E_OUTOFMEMORY;
    scene.Show("InitDMBFilters", scene.control.InitDMBFilters(nullptr, 0));
    scene.Show("CloseDMBFilters", scene.control.CloseDMBFilters());
    for (const Kind kind : {Kind::Parser, Kind::BSACDecoder, Kind::AudioRenderer})
        scene.Drop(kind, 1);
}

void ClosedWhileRunning(Scene& scene) {
    scene.Show("InitDABFilters", scene.control.InitDABFilters());
    scene.Show("Run", scene.media->Run());
    scene.Show("CloseDABFilters", scene.control.CloseDABFilters());
    scene.Show("Stop", scene.media->Stop());
    scene.Show("CloseDABFilters", scene.control.CloseDABFilters());
}

void LiveSource(Scene& scene) {
    scene.world.stage[Kind::Parser].live = true;
    scene.Show("InitDMBFilters", scene.control.InitDMBFilters(nullptr, 0));
    scene.Show("Pause", scene.media->Pause());
    scene.ShowState();
    scene.Show("Run", scene.media->Run());
    scene.ShowState();
    scene.Show("Stop", scene.media->Stop());
    scene.Show("CloseDMBFilters", scene.control.CloseDMBFilters());
}

void LiveSourceWithAWaitingRenderer(Scene& scene) {
    scene.world.stage[Kind::Parser].live = true;
    scene.world.stage[Kind::AudioRenderer].ready = false;
    scene.Show("InitDMBFilters", scene.control.InitDMBFilters(nullptr, 0));
    scene.Show("Run", scene.media->Run());
    scene.Show("Stop", scene.media->Stop());
    scene.Show("CloseDMBFilters", scene.control.CloseDMBFilters());
}

void WaitingRenderer(Scene& scene) {
    scene.world.stage[Kind::AudioRenderer].ready = false;
    scene.Show("InitDABFilters", scene.control.InitDABFilters());
    scene.Show("Run", scene.media->Run());
    scene.ShowState(20);
    scene.world.stage[Kind::AudioRenderer].ready = true;
    for (int turn = 0; turn < 500 && scene.world.stage.log.Count(".Run") < 3; ++turn)
        scene.world.LetTimePass(10);
    scene.Show("ready", S_OK);
    scene.ShowState(1000);
    scene.Show("Stop", scene.media->Stop());
    scene.Show("CloseDABFilters", scene.control.CloseDABFilters());
}

void ReleasedWhileBuilt(Scene& scene) {
    scene.Show("InitDMBFilters", scene.control.InitDMBFilters(nullptr, 0));
    scene.Show("Run", scene.media->Run());
    scene.media = {};
    scene.events = {};
    scene.graph = {};
    scene.Show("released", S_OK);
    for (const Kind kind :
         {Kind::Parser, Kind::BSACDecoder, Kind::AudioRenderer, Kind::VideoDecoder, Kind::VideoRenderer})
        scene.Drop(kind, 1);
}

} // namespace

int main() {
    const struct {
        const char* title;
        void (*play)(Scene&);
    } scenes[] = {
        {"television", Television},
        {"file", File},
        {"radio", Radio},
        {"clock given by a filter", ClockGivenByAFilter},
        {"refused link", RefusedLink},
        {"held filter", HeldFilter},
        {"unknown pin", UnknownPin},
        {"failed load", FailedLoad},
        {"closed while running", ClosedWhileRunning},
        {"live source", LiveSource},
        {"live source with a waiting renderer", LiveSourceWithAWaitingRenderer},
        {"waiting renderer", WaitingRenderer},
        {"released while built", ReleasedWhileBuilt},
    };
    for (const auto& scene : scenes)
        const Scene played(scene.title, scene.play);
    return 0;
}
