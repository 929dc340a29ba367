// Between the desktop window and the shell, on the shell's thread: what fingers and keys mean, and which frames the window gets.
#pragma once

#include "host/app/dmbtv/Session.h"
#include "host/app/dmbtv/WindowState.h"
#include "host/shell/sdl/Exchange.h"

namespace dmbtv {

class Controls {
public:
    // `state` holds the volume to begin with and is kept up to date.
    Controls(Session& sessionToDrive, shell::sdl::Frames& framesToFill, shell::sdl::Inputs& inputsToTake,
             WindowState& state);
    ~Controls();
    Controls(const Controls&) = delete;
    Controls& operator=(const Controls&) = delete;

private:
    LRESULT OnMessage(UINT message);
    void TakeInput();
    void Do(shell::sdl::Action action);
    void SendKey(UINT whenOpen, UINT otherwise);
    void Choose(int place);
    void PauseOrResume();
    void ChangeVolume(int step);
    void ShowVolume();
    void Publish();

    Session& session;
    shell::Shell& shell;
    shell::sdl::Frames& frames;
    shell::sdl::Inputs& inputs;
    WindowState& state;
    HWND window = nullptr;    // a window of the loop that nobody sees: messages to it come in every modal loop, too
    bool scanned = false;     // a scan has run since input was taken last
    bool volumeShows = false; // the sign is on the screen
};

} // namespace dmbtv
