// What the user is told when the card is full or gone while it is used.
#pragma once

#include <functional>

#include "host/app/dmbtv/ScreenPort.h"
#include "host/ce/Ce.h"
#include "platform/velshell/VelPlayerView.h"

namespace dmbtv {

// Hears on the shell's thread what the filters say on theirs: a window of its own takes their messages. Lives from after the shell
// was made to before it goes.
class CardWatch {
public:
    // `view` tells the open view, or null.
    CardWatch(ce::Ce& ce, OnAirNotice& filters, std::function<CVelPlayerView*()> view);
    ~CardWatch();
    CardWatch(const CardWatch&) = delete;
    CardWatch& operator=(const CardWatch&) = delete;

private:
    // The card is full or gone: the recording ends as by the button, and a box says why.
    void OnCaptureEnded(HRESULT reason);
    // The file that plays cannot be read any further: a box says why; what has been read is played to its end.
    static void OnFileLost();

    ce::Ce& ce;
    OnAirNotice& filters;
    const std::function<CVelPlayerView*()> view;
    HWND window = nullptr;
};

} // namespace dmbtv
