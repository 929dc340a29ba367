#include "host/app/dmbtv/Controls.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "host/app/dmbtv/ScriptRunner.h"
#include "host/app/dmbtv/ViewLook.h"
#include "host/ce/Text.h"
#include "host/shell/sdl/VolumeSign.h"
#include "view/DMBViewIds.h"

namespace dmbtv {

using shell::sdl::Action;
using shell::sdl::Frame;
using shell::sdl::Input;

namespace {

constexpr UINT kInputCame = WM_USER + 1;
constexpr UINT_PTR kVolumeTimer = 1;
constexpr UINT kVolumeShows = 1500; // ms
constexpr int kVolumeStep = 5;
// Keys of a dialog with lines.
constexpr UINT kKeyUp = 38, kKeyDown = 40;
constexpr UINT kKeyNone = 0;
constexpr int kDigits = 10;

} // namespace

Controls::Controls(Session& sessionToDrive, shell::sdl::Frames& framesToFill, shell::sdl::Inputs& inputsToTake,
                   WindowState& windowState)
    : session(sessionToDrive), shell(sessionToDrive.Shell()), frames(framesToFill), inputs(inputsToTake),
      state(windowState) {
    ce::MessageLoop& loop = session.System().loop();
    window = loop.AddWindow([this](HWND, UINT message, WPARAM, LPARAM) { return OnMessage(message); });
    inputs.SetListener([&loop, to = window] { loop.Post(to, kInputCame); });
    loop.Post(window, kInputCame); // what came before there was a listener
    shell.SetVolume(state.volume, state.muted);
    session.SetScreenListener([this] { Publish(); });
    Publish();
}

Controls::~Controls() {
    session.SetScreenListener({});
    inputs.SetListener({});
    session.System().loop().RemoveWindow(window);
}

LRESULT Controls::OnMessage(UINT message) {
    if (message == kInputCame) {
        shell.SetScale(inputs.WantedScale());
        TakeInput();
    } else if (message == WM_TIMER) {
        session.System().loop().StopTimer(window, kVolumeTimer);
        volumeShows = false;
        Publish();
    }
    return 0;
}

// ---- Input -----------------------------------------------------------------------------------------------------------

void Controls::TakeInput() {
    const auto waiting = inputs.Take();
    // What came while a scan held the thread was meant for a screen that is gone.
    if (std::exchange(scanned, false))
        return;
    for (const Input& input : waiting) {
        switch (input.kind) {
        case Input::Kind::TouchDown:
            shell.TouchDown(input.place.x, input.place.y);
            break;
        case Input::Kind::TouchUp:
            shell.TouchUp(input.place.x, input.place.y);
            break;
        case Input::Kind::TouchMove:
            shell.TouchMove(input.place.x, input.place.y);
            break;
        case Input::Kind::Wheel:
            shell.Wheel(input.place.x, input.place.y, input.notches);
            break;
        case Input::Kind::Key:
            Do(input.action);
            break;
        }
    }
}

void Controls::Do(Action action) {
    switch (action) {
    case Action::Previous:
        shell.Key(kKeyChannelDown);
        break;
    case Action::Next:
        shell.Key(kKeyChannelUp);
        break;
    case Action::Up:
        SendKey(kKeyUp, kKeyChannelDown);
        break;
    case Action::Down:
        SendKey(kKeyDown, kKeyChannelUp);
        break;
    case Action::Ok:
        if (shell.ModalDepth() > 0 || shell.IsBoxOpen() || !PressTool(shell, kElementList))
            shell.Key(kKeyOk); // also the way from the home screen to television
        break;
    case Action::Cancel:
        shell.Key(kKeyEscape);
        break;
    case Action::Record:
        SendKey(kKeyNone, kKeyRecord);
        break;
    case Action::Scan:
        SendKey(kKeyNone, kKeyScan);
        break;
    case Action::List:
        PressTool(shell, kElementList);
        break;
    case Action::Settings:
        PressTool(shell, kElementSetting);
        break;
    case Action::Source:
        if (!PressTool(shell, kElementToggleFull))
            shell.Press(kElementToggleSmall);
        break;
    case Action::SmallWindow:
        if (shell.ModalDepth() == 0 && !shell.Minimize())
            shell.Restore();
        break;
    case Action::Pause:
        PauseOrResume();
        break;
    case Action::VolumeUp:
        ChangeVolume(+kVolumeStep);
        break;
    case Action::VolumeDown:
        ChangeVolume(-kVolumeStep);
        break;
    case Action::Mute:
        state.muted = !state.muted;
        ShowVolume();
        break;
    default:
        if (const int digit = shell::sdl::DigitOf(action); digit >= 0)
            Choose((digit + kDigits - 1) % kDigits); // 1 is the first, 0 the tenth
        break;
    }
}

// One key for a dialog or box in front, another one for the view.
void Controls::SendKey(UINT whenOpen, UINT otherwise) {
    const UINT key = shell.ModalDepth() > 0 ? whenOpen : otherwise;
    if (key != kKeyNone)
        shell.Key(key);
}

// A service of the kind that plays, by its place.
void Controls::Choose(int place) {
    const auto* view = static_cast<const CVelDMBView*>(shell.View());
    if (view == nullptr || shell.ModalDepth() > 0)
        return;
    const int kind = DMBViewPeer::CurrentType(*view) == kSessionDAB ? int{kKindDAB} : int{kKindDMB};
    if (const int position = DMBViewPeer::PositionOf(*view, kind, place); position >= 0)
        PostMessageW(view->GetSafeHwnd(), WM_DMB_CHANGECHANNEL, static_cast<WPARAM>(position), 0);
}

void Controls::PauseOrResume() {
    CVelPlayerView* view = shell.View();
    if (view == nullptr || shell.ModalDepth() > 0)
        return;
    if (view->GetPlayMode() == kPlayModePlaying)
        view->Pause();
    else if (view->GetPlayMode() == kPlayModePaused)
        view->Resume();
    Publish();
}

void Controls::ChangeVolume(int step) {
    state.volume = std::clamp(state.volume + step, 0, 100);
    state.muted = false;
    ShowVolume();
}

void Controls::ShowVolume() {
    shell.SetVolume(state.volume, state.muted);
    volumeShows = true;
    session.System().loop().StartTimer(window, kVolumeTimer, kVolumeShows);
    Publish();
}

// ---- Frames ----------------------------------------------------------------------------------------------------------

void Controls::Publish() {
    const bool scanning = session.IsScanning();
    if (scanned && !scanning) {
        (void)inputs.Take(); // the scan has just ended; whatever it opens gets fresh input
        scanned = false;
    }
    scanned = scanned || scanning;

    auto frame = std::make_shared<Frame>();
    shell::Shell::Layers layers = shell.ComposeLayers();
    frame->pixels = std::move(layers.pixels);
    frame->scale = layers.scale;
    if (volumeShows)
        shell::sdl::DrawVolumeSign(frame->pixels, frame->scale, state.volume, state.muted);
    if (layers.video) {
        const RECT& place = *layers.video;
        frame->video = true;
        frame->videoPlace = {place.left, place.top, place.right - place.left, place.bottom - place.top};
    }
    frame->keepAspect = layers.keepAspect;
    const CVelPlayerView* view = shell.View();
    const int mode = view != nullptr ? view->GetPlayMode() : int{kPlayModeStopped};
    frame->keepAwake = frame->video && (mode == kPlayModePlaying || mode == kPlayModeRecording);
    frame->askedFor = shell.ModalDepth() > 0 || shell.IsBoxOpen();
    const std::string title = ce::ToUtf8(shell.Title());
    frame->title = title.empty() ? kWindowTitle : title + " - " + kWindowTitle;
    frames.Show(std::shared_ptr<const Frame>(std::move(frame)));
}

} // namespace dmbtv
