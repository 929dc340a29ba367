// The private parts of the view classes.
#pragma once

#include "host/shell/skin/SkinDescription.h"
#include "platform/velshell/VelPlayerView.h"

struct CVelBaseView::BaseImpl {
    WString title;
    bool active = false;
    bool controlsShown = true;
    bool toggleEnabled = true;
    bool recordSign = false;
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
// What an element with this role shows of the view's title: a station's name goes without the channel in brackets before it.
[[nodiscard]] WString TitleFor(Role role, const WString& title);
// Shows or hides the sign of a recording.
void ShowRecordSign(CVelBaseView& view, bool on);

} // namespace shell
