#include "host/app/dmbtv/CardWatch.h"

#include <utility>

#include "platform/velshell/VelDocument.h"
#include "view/DMBViewIds.h"

namespace dmbtv {

CardWatch::CardWatch(ce::Ce& ceToUse, OnAirNotice& filtersToHear, std::function<CVelPlayerView*()> viewToWatch)
    : ce(ceToUse), filters(filtersToHear), view(std::move(viewToWatch)) {
    window = ce.loop().AddWindow([this](HWND, UINT message, WPARAM wParam, LPARAM) -> LRESULT {
        if (message == kCaptureEndedMessage)
            OnCaptureEnded(static_cast<HRESULT>(wParam));
        else if (message == kFileLostMessage)
            OnFileLost();
        return 0;
    });
    filters.JoinCardWatch(window);
}

CardWatch::~CardWatch() {
    filters.JoinCardWatch(nullptr);
    ce.loop().RemoveWindow(window);
}

void CardWatch::OnCaptureEnded(HRESULT reason) {
    const CVelPlayerView* open = view();
    if (open == nullptr || open->GetPlayMode() != kPlayModeRecording)
        return; // the user was quicker
    constexpr HRESULT kDiskFull = static_cast<HRESULT>(0x80070000u | ERROR_DISK_FULL);
    // Now and not later, so that the reason comes after the view's own notice and stays.
    ce.loop().Send(open->GetSafeHwnd(), WM_COMMAND, kCmdRecord);
    if (reason == kDiskFull)
        PostMessageW(open->GetSafeHwnd(), WM_PLAYER_MSGBOX, kTextNoSpace, kBoxError);
    else
        PostMessageW(GView::GetMainWindow(), WM_PLAYER_MSGBOX, kTextCardError, kBoxError);
}

void CardWatch::OnFileLost() {
    PostMessageW(GView::GetMainWindow(), WM_PLAYER_MSGBOX, kTextCardError, kBoxError);
}

} // namespace dmbtv
