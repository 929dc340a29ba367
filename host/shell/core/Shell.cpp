// The public face.
#include "host/shell/Shell.h"

#include "host/shell/core/Access.h"
#include "host/shell/core/BaseImpl.h"
#include "host/shell/core/ShellCore.h"

#include <algorithm>
#include <utility>

namespace shell {

namespace {

// A pixel whose colours are multiplied with its alpha, without that.
std::uint32_t Straight(std::uint32_t pixel) {
    const std::uint32_t alpha = pixel >> 24;
    if (alpha == 0 || alpha == 255) {
        return pixel;
    }
    const auto divide = [alpha](std::uint32_t colour) { return std::min((colour * 255 + alpha / 2) / alpha, 255u); };
    return alpha << 24 | divide(pixel >> 16 & 0xFF) << 16 | divide(pixel >> 8 & 0xFF) << 8 | divide(pixel & 0xFF);
}

} // namespace

Shell::Shell(ce::Ce& ce, const Setup& setup)
    : core(std::make_unique<ShellCore>(ce, setup)), screen(std::make_unique<Surface>(kScreenWidth, kScreenHeight)) {}

Shell::~Shell() = default;

// ---- Modules and the view ----

std::string Shell::LoadModule(const std::filesystem::path& file) {
    return core->modules.Load(file);
}

bool Shell::UnloadModule(const std::filesystem::path& file) {
    core->CloseView();
    if (core->view || !core->modules.Unload(file)) {
        return false;
    }
    core->lastClass = nullptr; // it may have been the module's
    return true;
}

CVelPlayerView* Shell::OpenView(const char* className) {
    const GRuntimeClass* found = core->classes.Find(className);
    return found ? core->OpenView(*found) : nullptr;
}

CVelPlayerView* Shell::OpenView(const GRuntimeClass& runtimeClass) {
    return core->OpenView(runtimeClass);
}

bool Shell::CloseView() {
    return core->CloseView();
}

CVelPlayerView* Shell::View() const {
    return core->view;
}

CVelDocument& Shell::Document() const {
    return core->document;
}

// ---- Fingers, keys, time ----

bool Shell::Press(UINT element) {
    for (Window* window : core->InputWindows()) {
        const GButton* found = window->widgets->Find(element);
        if (found && core->Click(*window, *static_cast<const class Element*>(found))) {
            return true;
        }
    }
    return false;
}

void Shell::Click(int x, int y) {
    TouchDown(x, y);
    TouchUp(x, y);
}

void Shell::TouchDown(int x, int y) {
    Touch(WM_LBUTTONDOWN, x, y);
}

void Shell::TouchMove(int x, int y) {
    Touch(kTouchMoveMessage, x, y);
}

void Shell::TouchUp(int x, int y) {
    Touch(WM_LBUTTONUP, x, y);
}

void Shell::Touch(UINT message, int x, int y) {
    const bool begins = message == WM_LBUTTONDOWN;
    const Window* window = begins ? core->windows.At({x, y}) : core->windows.Find(core->touched);
    if (begins) {
        core->touched = window ? window->handle : nullptr;
    } else if (message == WM_LBUTTONUP) {
        core->touched = nullptr;
    }
    if (!window || !core->TakesInput(*window)) {
        return;
    }
    const auto pack = [](LONG left, LONG top) { return static_cast<LPARAM>((top & 0xFFFF) << 16 | (left & 0xFFFF)); };
    // A window that is moved by the finger would shift its own points, so a way is told in points of the screen.
    core->ce.loop().Post(window->handle, message, 0,
                         message == kTouchMoveMessage ? pack(x, y)
                                                      : pack(x - window->place.left, y - window->place.top));
}

void Shell::Wheel(int x, int y, int notches) {
    const Window* window = core->windows.At({x, y});
    if (window && core->TakesInput(*window)) {
        core->ce.loop().Post(window->handle, kWheelMessage, 0, notches);
    }
}

void Shell::Key(UINT code, UINT repeat) {
    if (const Window* window = core->KeyWindow()) {
        constexpr UINT kReleased = 0xC0000000;
        core->ce.loop().Post(window->handle, WM_KEYUP, code, static_cast<LPARAM>(kReleased | (repeat & 0xFFFF)));
    }
}

void Shell::RunUntilIdle() {
    core->ce.loop().RunUntilIdle();
}

void Shell::Wait(int milliseconds) {
    core->ce.loop().RunFor(milliseconds);
}

void Shell::DuringModal(std::function<void()> action) {
    core->modalActions.push_back(std::move(action));
}

void Shell::SetIdleInput(std::function<bool()> input) {
    core->idleInput = std::move(input);
}

int Shell::ModalDepth() const {
    return static_cast<int>(core->modalWindows.size());
}

// ---- What the shell does with the view ----

bool Shell::Minimize() {
    return core->Minimize();
}

void Shell::MoveSmall(const RECT& place) {
    core->MoveSmall(place);
}

void Shell::Restore() {
    core->Restore();
}

bool Shell::ShowHome() {
    return core->ShowHome();
}

bool Shell::ShowView() {
    return core->ShowView();
}

void Shell::SetViewListener(std::function<void(CVelPlayerView*)> listener) {
    core->viewListener = std::move(listener);
}

void Shell::SetReasonSource(std::function<ReasonShown()> source) {
    core->reasonSource = std::move(source);
}

void Shell::SetPlayingTimeSource(std::function<std::optional<UINT>(const WCHAR* path)> source) {
    core->playingTimeSource = std::move(source);
}

void Shell::SetDebugMode(bool on) {
    core->document.SetDebugMode(on);
}

void Shell::SetVolume(int percent, bool muted) {
    core->volume = std::clamp(percent, 0, 100);
    core->muted = muted;
    if (core->view) {
        core->view->ForceMute(muted);
    }
}

void Shell::SaveAll() {
    core->document.RequestSave();
    if (core->view) {
        core->view->SaveProfile();
    }
}

void Shell::SetLanguage(Language language) {
    core->language = language;
    core->main->Locale();
    if (core->view) {
        core->view->Locale();
        core->ApplyReason();
    }
}

void Shell::Quit() {
    core->Quit();
}

bool Shell::IsQuitting() const {
    return core->quitting;
}

void Shell::SetQuitListener(std::function<void()> listener) {
    core->quitListener = std::move(listener);
}

// ---- Boxes ----

void Shell::Answer(std::optional<WORD> textId, bool ok) {
    core->boxes.answers.push_back({textId, ok ? kDialogOk : kDialogCancel});
}

const std::vector<BoxRecord>& Shell::BoxRecords() const {
    return core->boxes.records;
}

bool Shell::IsBoxOpen() const {
    return core->boxes.Front() != nullptr;
}

// ---- Looking ----

GButton* Shell::Element(UINT id) const {
    for (const Window* window : core->InputWindows()) {
        if (GButton* found = window->widgets->Find(id)) {
            return found;
        }
    }
    return nullptr;
}

const WCHAR* Shell::Title() const {
    return core->view ? VelShellAccess::Base(*core->view).title.c_str() : u"";
}

void Shell::SetScale(int scale) {
    const int possible = std::clamp(scale, 1, kMaxScale);
    screen->Rescale(possible);
    core->SetScale(possible);
}

int Shell::Scale() const {
    return screen->Scale();
}

const std::uint32_t* Shell::Screen() {
    while (core->PaintOne()) {
    }
    core->windows.Compose(*screen, core->video);
    return screen->PixelRow(0);
}

Shell::Layers Shell::ComposeLayers() {
    core->windows.ComposeAround(*screen, core->video);
    Layers layers;
    layers.video = core->windows.VideoPlace(core->video);
    layers.keepAspect = core->video.keepAspect;
    layers.scale = screen->Scale();
    const std::size_t count = static_cast<std::size_t>(screen->PixelWidth()) * screen->PixelHeight();
    layers.pixels.assign(screen->PixelRow(0), screen->PixelRow(0) + count);
    if (layers.video) { // elsewhere everything is opaque
        std::transform(layers.pixels.begin(), layers.pixels.end(), layers.pixels.begin(), Straight);
    }
    return layers;
}

bool Shell::Screenshot(const std::filesystem::path& file) {
    return Screen() != nullptr && screen->WritePng(file);
}

bool Shell::ScreenshotWindow(HWND window, const std::filesystem::path& file) {
    while (core->PaintOne()) {
    }
    const Window* found = core->windows.Find(window);
    return found && found->surface->WritePng(file);
}

void Shell::SetScreenListener(std::function<void()> listener) {
    core->screenListener = std::move(listener);
}

VideoPlane& Shell::Video() {
    return core->video;
}

// ---- The log and the leak check ----

std::vector<std::string> Shell::Log() const {
    return core->log.Lines();
}

void Shell::ClearLog() {
    core->log.Clear();
}

void Shell::Note(std::string line) {
    core->log.Note(std::move(line));
}

std::vector<std::string> Shell::Leaks() const {
    std::vector<std::string> leaks;
    const auto check = [&leaks](std::size_t count, std::size_t expected, const char* what) {
        if (count > expected) {
            leaks.push_back(std::to_string(count - expected) + " " + what);
        }
    };
    constexpr std::size_t kOwnWindows = 1;
    constexpr std::size_t kOwnTimers = 1; // the home screen's clock
    check(core->windows.Count(), kOwnWindows, "windows");
    check(core->ce.loop().WaitingMessages(), 0, "waiting messages");
    check(core->ce.loop().RunningTimers(), kOwnTimers, "running timers");
    check(core->gdi.OpenWindowContexts(), 0, "contexts not released");
    check(core->gdi.CallerObjects(), 0, "drawing objects not deleted");
    check(core->ce.files().OpenCount(), 0, "open files");
    return leaks;
}

} // namespace shell
