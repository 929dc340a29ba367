// The world of tests on the graph of Windows.
#include "tests/graph/GraphWorld.h"

#include "host/dshow/ComObject.h"

#include <array>
#include <mutex>
#include <utility>

namespace {

std::mutex guard;
std::vector<std::string> debugLines;
long slept = 0;
DWORD testThread = 0;

void WINAPI CaptureDebugString(LPCWSTR text) {
    const std::scoped_lock lock(guard);
    std::string& line = debugLines.emplace_back();
    for (; *text != 0; ++text)
        line += *text < 0x80 ? static_cast<char>(*text) : '?';
}

void RealSleep(DWORD milliseconds) {
    static const auto sleep = reinterpret_cast<void(WINAPI*)(DWORD)>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32"), "Sleep")));
    sleep(milliseconds);
}

// The pauses of what is tested are counted, not waited for.
void WINAPI CountSleep(DWORD milliseconds) {
    if (GetCurrentThreadId() != testThread) {
        RealSleep(milliseconds);
        return;
    }
    const std::scoped_lock lock(guard);
    slept += static_cast<long>(milliseconds);
}

// Makes the scripted filters of one kind.
class Factory final : public dshow::ComObject<IClassFactory> {
public:
    Factory(scripted::Stage& stage, scripted::Kind kind) : stage_(stage), kind_(kind) {}

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        *object = nullptr;
        if (!(iid == IID_IUnknown) && !(iid == IID_IClassFactory))
            return E_NOINTERFACE;
        *object = static_cast<IClassFactory*>(this);
        AddRef();
        return S_OK;
    }
    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
        *object = nullptr;
        return outer != nullptr ? CLASS_E_NOAGGREGATION : stage_.Create(kind_, iid, object);
    }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }

private:
    scripted::Stage& stage_;
    const scripted::Kind kind_;
};

std::vector<GraphWorld::Received>* receiver = nullptr;

LRESULT CALLBACK Receive(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message >= WM_USER && receiver != nullptr) {
        receiver->push_back({message, wParam, lParam});
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

} // namespace

// What the tested code calls as imported functions.
extern "C" {
void(WINAPI* __imp_OutputDebugStringW)(LPCWSTR) = &CaptureDebugString;
void(WINAPI* __imp_Sleep)(DWORD) = &CountSleep;
}

struct GraphWorld::Impl {
    std::array<DWORD, scripted::kKinds> cookies{};
    HWND window = nullptr;
    std::vector<Received> received;
};

GraphWorld::GraphWorld() : impl_(std::make_unique<Impl>()) {
    CoInitialize(nullptr);
    testThread = GetCurrentThreadId();
    slept = 0;
    debugLines.clear();
    receiver = &impl_->received;
    for (std::size_t i = 0; i < scripted::kKinds; ++i) {
        const auto kind = static_cast<scripted::Kind>(i);
        auto* factory = new Factory(stage, kind);
        CoRegisterClassObject(scripted::InfoOf(kind).classId, factory, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE,
                              &impl_->cookies[i]);
        factory->Release();
    }
    stage.log.now = [this] { return SleptMs(); };
}

GraphWorld::~GraphWorld() {
    stage.log.now = nullptr;
    for (const DWORD cookie : impl_->cookies)
        if (cookie != 0)
            CoRevokeClassObject(cookie);
    if (impl_->window != nullptr)
        DestroyWindow(impl_->window);
    receiver = nullptr;
    CoUninitialize();
}

dshow::ComPtr<IGraphBuilder> GraphWorld::NewGraph() {
    dshow::ComPtr<IGraphBuilder> graph;
    (void)CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IGraphBuilder, graph.OutVoid());
    return graph;
}

void GraphWorld::UseSystemRenderer() {
    CoRevokeClassObject(std::exchange(impl_->cookies[static_cast<std::size_t>(scripted::Kind::AudioRenderer)], 0));
}

std::vector<std::string> GraphWorld::TakeDebugLines() {
    const std::scoped_lock lock(guard);
    return std::exchange(debugLines, {});
}

long GraphWorld::SleptMs() const {
    return slept;
}

void GraphWorld::LetTimePass(long milliseconds) {
    RealSleep(static_cast<DWORD>(milliseconds));
}

OAHWND GraphWorld::Window() {
    if (impl_->window == nullptr) {
        WNDCLASSW windowClass{};
        windowClass.lpfnWndProc = &Receive;
        windowClass.lpszClassName = L"GraphWorld";
        RegisterClassW(&windowClass);
        impl_->window =
            CreateWindowExW(0, L"GraphWorld", nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    }
    return reinterpret_cast<OAHWND>(impl_->window);
}

std::vector<GraphWorld::Received> GraphWorld::TakeMessages() {
    MSG message;
    while (PeekMessageW(&message, impl_->window, 0, 0, PM_REMOVE))
        DispatchMessageW(&message);
    return std::exchange(impl_->received, {});
}
