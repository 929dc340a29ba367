// The world of tests on this house's own graph.
#include "tests/graph/GraphWorld.h"

#include "host/ce/Ce.h"
#include "host/dshow/ClassTable.h"

#include <utility>

struct GraphWorld::Impl {
    ce::ManualClock clock;
    ce::Ce system{clock};
    dshow::ClassTable classes{clock};
    HWND window = nullptr;
    std::vector<Received> received;
    long passed = 0; // by LetTimePass, not by a Sleep of what is tested
};

GraphWorld::GraphWorld() : impl_(std::make_unique<Impl>()) {
    for (std::size_t i = 0; i < scripted::kKinds; ++i) {
        const auto kind = static_cast<scripted::Kind>(i);
        impl_->classes.Add(scripted::InfoOf(kind).classId,
                           [this, kind](REFIID iid, void** object) { return stage.Create(kind, iid, object); });
    }
    stage.log.now = [this] { return SleptMs(); };
}

GraphWorld::~GraphWorld() {
    stage.log.now = nullptr;
}

dshow::ComPtr<IGraphBuilder> GraphWorld::NewGraph() {
    dshow::ComPtr<IGraphBuilder> graph;
    (void)CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IGraphBuilder, graph.OutVoid());
    return graph;
}

std::vector<std::string> GraphWorld::TakeDebugLines() {
    std::vector<std::string> lines;
    for (const WString& wide : impl_->system.debug().Lines()) {
        std::string& line = lines.emplace_back();
        for (const WCHAR unit : wide)
            line += unit < 0x80 ? static_cast<char>(unit) : '?';
    }
    impl_->system.debug().Clear();
    return lines;
}

long GraphWorld::SleptMs() const {
    return static_cast<long>(impl_->clock.Now()) - impl_->passed;
}

void GraphWorld::LetTimePass(long milliseconds) {
    impl_->passed += milliseconds;
    impl_->clock.Sleep(milliseconds);
}

OAHWND GraphWorld::Window() {
    if (impl_->window == nullptr)
        impl_->window = impl_->system.loop().AddWindow([this](HWND, UINT message, WPARAM wParam, LPARAM lParam) {
            impl_->received.push_back({message, wParam, lParam});
            return LRESULT{0};
        });
    return reinterpret_cast<OAHWND>(impl_->window);
}

std::vector<GraphWorld::Received> GraphWorld::TakeMessages() {
    impl_->system.loop().RunUntilIdle();
    return std::exchange(impl_->received, {});
}
