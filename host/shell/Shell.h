// The shell as programs and tests see it: load a module, open its view, touch it, let time pass, look at it.
//
// Construct a ce::Ce first, then one Shell, on the same thread; destroy them in the opposite order. All calls belong to that
// thread. With a manual clock nothing happens by itself: RunUntilIdle handles what waits, Wait lets time pass.
#pragma once

#include "platform/types.h"
#include "platform/velshell/VelDialog.h"
#include "platform/velshell/VelDocument.h"
#include "platform/velshell/VelPlayerView.h"

#include "host/shell/core/BoxRecord.h"
#include "host/shell/core/Reason.h"
#include "host/shell/gdi/VideoPlane.h"
#include "host/shell/skin/SkinDescription.h"
#include "host/shell/skin/SkinError.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ce {
class Ce;
}

namespace shell {

class ShellCore;
class Surface;

struct Setup {
    std::filesystem::path skinFolder;
    Language language = Language::Korean;
    WString profileDirectory = u"\\Profile\\"; // device path with its final separator
    bool debugMode = false;
};

class DMB_HOST_API Shell {
public:
    // Becomes the current shell, with its main window shown. Throws SkinError when the skin cannot be used.
    Shell(ce::Ce& ce, const Setup& setup);
    // Closes the view and unloads the modules.
    ~Shell();
    Shell(const Shell&) = delete;
    Shell& operator=(const Shell&) = delete;

    // ---- Modules and the view ----

    // Returns an empty text, or the module's name and the loader's reason.
    [[nodiscard]] std::string LoadModule(const std::filesystem::path& file);
    // Closes the view first. False when the module is not loaded.
    bool UnloadModule(const std::filesystem::path& file);
    // Creates the view of that class, makes its window, applies the skin, has it read its profile and get ready. Null when
    // there is no such class, it is no player view, or it refuses its window.
    CVelPlayerView* OpenView(const char* className);
    CVelPlayerView* OpenView(const GRuntimeClass& runtimeClass);
    // Has the view save its settings, takes it down and deletes it. False when there is none or it may not be closed now. In a
    // modal loop it is only noted, and done when the loop has ended.
    bool CloseView();
    // The open view, or null.
    [[nodiscard]] CVelPlayerView* View() const;
    [[nodiscard]] CVelDocument& Document() const;

    // ---- Fingers, keys, time ----

    // Presses and lets go an element of the window in front: a box, a dialog, else the view; what lies beside a box that nobody
    // waits for can be pressed too. False when it is not there, not visible, no button or disabled, or when the view refuses.
    // What it does happens when messages are handled.
    bool Press(UINT element);
    // A touch at a point of the screen.
    void Click(int x, int y);
    void TouchDown(int x, int y);
    // Further points of the touch; dragging scrolls lists, makes the view small, moves and sizes the small window.
    void TouchMove(int x, int y);
    void TouchUp(int x, int y);
    // The wheel over a point of the screen; positive is away from the user.
    void Wheel(int x, int y, int notches);
    // A key is let go; `repeat` is what its message says.
    void Key(UINT code, UINT repeat = 1);

    // Handles everything that waits, without letting time pass.
    void RunUntilIdle();
    // Lets so many milliseconds pass, with timers in their order.
    void Wait(int milliseconds);
    // Inside a modal loop that has nothing to do, the next of these is called; then the scripted answers and the idle input are
    // asked. A modal loop for which nothing is left ends with Cancel.
    void DuringModal(std::function<void()> action);
    // Asked when a modal loop has nothing else to do; true when it did something.
    void SetIdleInput(std::function<bool()> input);
    // Depth of modal loops now.
    [[nodiscard]] int ModalDepth() const;

    // ---- What the shell does with the view ----

    // The view becomes a small window, moves while small, returns to full size. False when it may not.
    bool Minimize();
    void MoveSmall(const RECT& place);
    void Restore();
    // The home screen comes to the front and the view is held behind it; the view comes back, also from its small form, and a
    // closed one is opened again. False when nothing changes, or a modal window is up.
    bool ShowHome();
    bool ShowView();
    // Told every view that is opened, before it begins, and null when it is gone.
    void SetViewListener(std::function<void(CVelPlayerView*)> listener);
    // Asked twice a second why the view shows no picture; the answer is shown over it.
    void SetReasonSource(std::function<ReasonShown()> source);
    // Asked how many seconds a file of a list plays, when its row is first drawn; nothing when that cannot be known.
    void SetPlayingTimeSource(std::function<std::optional<UINT>(const WCHAR* path)> source);
    void SetDebugMode(bool on);
    // How loud views play, 0 to 100, and whether they are silent. Kept from one session to the next.
    void SetVolume(int percent, bool muted);
    // Asks every view to save at its next SaveProfile, and has it save.
    void SaveAll();
    void SetLanguage(Language language);
    // The user leaves: the window is hidden, waits end, boxes and dialogs are cancelled, the view is closed.
    void Quit();
    [[nodiscard]] bool IsQuitting() const;
    // Called once by Quit, before anything else; the place to make the tuner answer at once.
    void SetQuitListener(std::function<void()> listener);

    // ---- Boxes ----

    // Answers the next box with this text (none: any) with OK or Cancel.
    void Answer(std::optional<WORD> textId, bool ok);
    [[nodiscard]] const std::vector<BoxRecord>& BoxRecords() const;
    [[nodiscard]] bool IsBoxOpen() const;

    // ---- Looking ----

    // An element of the window in front (found as for Press), or null.
    [[nodiscard]] GButton* Element(UINT id) const;
    [[nodiscard]] const WCHAR* Title() const;
    // How finely everything is drawn: 1 or 2 pixels for a unit of the screen's 800 x 480. A change paints everything anew and nobody
    // else notices it. Others are taken for the nearest.
    void SetScale(int scale);
    [[nodiscard]] int Scale() const;
    // Writes the screen as PNG. False when the file cannot be written.
    [[nodiscard]] bool Screenshot(const std::filesystem::path& file);
    // Writes one window as PNG, with its transparency. False when there is no such window or file.
    [[nodiscard]] bool ScreenshotWindow(HWND window, const std::filesystem::path& file);
    // The screen as rows of 32-bit pixels (0xFFRRGGBB), 800 times the scale a row. Valid until the next call.
    [[nodiscard]] const std::uint32_t* Screen();
    // The screen for a window that shows the moving picture by itself.
    struct Layers {
        std::vector<std::uint32_t> pixels; // 0xAARRGGBB, colours not multiplied with alpha; 800 times the scale a row
        int scale = 1;
        std::optional<RECT> video; // in units: where the moving picture shows through; nothing: it does not show
        bool keepAspect = false;   // of the moving picture
    };
    // What has been painted so far. May be called while the shell is in the middle of something.
    [[nodiscard]] Layers ComposeLayers();
    // Called after something on the screen changed.
    void SetScreenListener(std::function<void()> listener);
    [[nodiscard]] VideoPlane& Video();

    // ---- The log and the leak check ----

    [[nodiscard]] std::vector<std::string> Log() const;
    void ClearLog();
    void Note(std::string line);
    // What is left over now, one line each: windows, messages, timers, drawing contexts and objects, files. With a view open
    // its own window and timers are among them.
    [[nodiscard]] std::vector<std::string> Leaks() const;

private:
    void Touch(UINT message, int x, int y);

    std::unique_ptr<ShellCore> core;
    std::unique_ptr<Surface> screen;
};

} // namespace shell
