// The one object behind the framework classes: all that the shell knows. Shell.h is its public face.
//
// There is one current shell; the framework classes find it through ShellCore::Current(). Everything here belongs to the
// shell's thread.
#pragma once

#include "host/ce/Ce.h"
#include "host/shell/Shell.h"
#include "host/shell/core/Boxes.h"
#include "host/shell/core/Document.h"
#include "host/shell/core/EffectLog.h"
#include "host/shell/core/Gesture.h"
#include "host/shell/core/MainWindow.h"
#include "host/shell/core/ModuleLoader.h"
#include "host/shell/core/Reason.h"
#include "host/shell/core/RunTimeClasses.h"
#include "host/shell/core/WindowTree.h"
#include "host/shell/gdi/VideoPlane.h"
#include "host/shell/skin/Element.h"
#include "host/shell/skin/SkinHost.h"
#include "platform/velshell/VelPlayerView.h"

#include <deque>
#include <functional>
#include <memory>
#include <string>

namespace shell {

inline constexpr int kScreenWidth = 800;
inline constexpr int kScreenHeight = 480;
inline constexpr RECT kScreen = {0, 0, kScreenWidth, kScreenHeight};

// The shell's own messages to its main window.
inline constexpr UINT kCloseViewMessage = WM_USER + 300;
// A finger that moves (the point of the screen) and the wheel (its notches), to the window they belong to.
inline constexpr UINT kTouchMoveMessage = WM_USER + 301;
inline constexpr UINT kWheelMessage = WM_USER + 302;
// Requests that views post: the picture under the view, and a message box.
inline constexpr UINT kVideoMessage = WM_USER + 5;
inline constexpr UINT kBoxMessage = WM_USER + 7;
// No tap yet that a second one could follow.
inline constexpr ce::Millis kNoTap = -1000000;
// Commands of the shell's own.
inline constexpr UINT kCommandFullSize = 17;
inline constexpr UINT kCommandSmallSize = 19;
inline constexpr UINT kCommandPreload = 64954;

// A touch that lasts.
struct Finger {
    bool down = false;
    POINT from = {}; // on the screen
    RECT place = {}; // of its window then
    Drag drag = Drag::None;
    int rows = 0; // how far a list has followed
};

class ShellCore final : public SkinHost {
public:
    ShellCore(ce::Ce& system, const Setup& setup);
    ~ShellCore();
    ShellCore(const ShellCore&) = delete;
    ShellCore& operator=(const ShellCore&) = delete;

    [[nodiscard]] static ShellCore* Current();

    // ---- Windows (Windows.cpp) ----

    // Makes a window for a view object: WM_CREATE is sent; null when the object refuses it.
    [[nodiscard]] Window* CreateWindowFor(GView& view, GFactory& widgets, WindowKind kind, const RECT& place,
                                          const std::string& logName);
    void DestroyWindowOf(GView& view);
    // Brings a view in front of the other views; dialogs and boxes stay above it.
    void RaiseBelowDialogs(HWND handle);
    LRESULT Dispatch(HWND handle, UINT message, WPARAM wParam, LPARAM lParam);
    // Paints one window that wants it. False when none does.
    bool PaintOne();
    void PaintWindow(Window& window);
    // Everything is painted anew, with so many pixels for a unit of 800 x 480.
    void SetScale(int newScale);
    // The screen has changed: whoever presents it should compose it again.
    void ScreenChanged();

    // ---- Touches and keys (Input.cpp) ----

    void TouchDown(Window& window, POINT client);
    // The finger goes on, anywhere on the screen: from here on it is a drag, once it has gone far enough.
    void TouchMove(Window& window, POINT screenPoint);
    void TouchUp(Window& window, POINT client);
    // The wheel over a window; positive is away from the user.
    void Wheel(Window& window, int notches);
    // May this window take input now? While a modal window is up, only it and message boxes may.
    [[nodiscard]] bool TakesInput(const Window& window) const;
    // Presses and lets go an element. False when it is not to be pressed or the window refuses.
    bool Click(Window& window, const Element& element);
    // A short touch beside every button of the small window: one shows or hides its controls, a second one soon after restores it.
    void TapSmall(Window& window);
    // The windows that take touches now, the one in front first: a box that nobody waits for, then a modal window, else the
    // view, else the home screen.
    [[nodiscard]] std::vector<Window*> InputWindows();
    // Where keys go.
    [[nodiscard]] Window* KeyWindow();

    // ---- Modal windows (Modal.cpp) ----

    // Dispatches until `done`; false when it was cut short (nothing can happen any more, or the user leaves).
    bool RunModal(HWND window, const std::function<bool()>& done);
    // Called when a modal loop has nothing to do. True when something was done.
    bool ModalIdle();

    // ---- The view (ViewLife.cpp) ----

    [[nodiscard]] CVelPlayerView* OpenView(const GRuntimeClass& runtimeClass);
    // In a modal loop it is only noted, and done when that has ended: true all the same.
    bool CloseView();
    void Quit();

    // ---- Small window (Pip.cpp) ----

    bool Minimize();
    void MoveSmall(const RECT& place);
    void Restore();

    // ---- Who is in front (Home.cpp) ----

    // The home screen comes to the front and the view is held. False when there is no view at full size, or a modal window is up.
    bool ShowHome();
    // The view comes to the front: a small one at full size, a held one as it was, a closed one anew.
    bool ShowView();
    // Asks why there is no picture, and shows the answer over the view.
    void RefreshReason();
    void ApplyReason();

    // ---- SkinHost ----

    [[nodiscard]] GdiState& Gdi() override { return gdi; }
    [[nodiscard]] const SkinLibrary& Skins() const override { return skins; }
    [[nodiscard]] Language CurrentLanguage() const override { return language; }
    void Redraw(HWND window, const RECT& rect, bool atOnce) override;
    [[nodiscard]] bool ShowsVideoBehind(HWND window) const override;

    ce::Ce& ce;
    GdiState gdi;
    SkinLibrary skins;
    Language language;
    int scale = 1; // pixels of the windows for a unit
    Document document;
    RunTimeClasses classes;
    EffectLog log;
    VideoPlane video;
    WindowTree windows;
    Boxes boxes;
    std::unique_ptr<MainWindow> main;
    CVelPlayerView* view = nullptr;
    std::vector<HWND> modalWindows; // last: in front
    bool closePending = false;
    bool homeInFront = false;                 // the view is held behind the home screen
    const GRuntimeClass* lastClass = nullptr; // of the view that was opened last, while its module is there
    WString lastTitle;
    std::function<std::optional<UINT>(const WCHAR* path)> playingTimeSource;
    std::function<ReasonShown()> reasonSource;
    ReasonShown reason;
    bool reasonIsSmall = false;
    std::function<void(CVelPlayerView*)> viewListener;
    bool quitting = false;
    int volume = 100; // per cent
    bool muted = false;
    HWND touched = nullptr; // where the touch that lasts began; its way and its end belong there too
    Finger finger;
    RECT smallPlace = {};    // where the small window is now
    bool smallMoved = false; // the user moved it
    ce::Millis lastTap = kNoTap;
    std::deque<std::function<void()>> modalActions;
    std::function<bool()> idleInput;
    std::function<void()> screenListener;
    std::function<void()> quitListener;
    ModuleLoader modules;
};

} // namespace shell
