// The private parts of the view classes.
#pragma once

#include "platform/velshell/VelPlayerView.h"

struct CVelBaseView::BaseImpl {
    WString title;
    bool active = false;
    bool controlsShown = true;
    bool toggleEnabled = true;
    UINT menuTimeout = 5000; // ms
    int receptionStatus = 0;
    int audioLevel = 0;
};

struct CVelPlayerView::PlayerImpl {
    int mode = kPlayModeStopped;
    int preserveAspect = 0;
};

namespace shell {

// The base's own timer: the controls hide.
inline constexpr UINT_PTR kMenuTimer = 1;

// Gives every element of the controls the visibility that fits the size of the window.
void ApplyControls(CVelBaseView& view);

} // namespace shell
