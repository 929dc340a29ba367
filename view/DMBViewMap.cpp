// The view's message map: rows in the order in which they are tried; everything else is the base's.
#include <iterator>

#include "view/DMBView.h"
#include "view/DMBViewIds.h"

const GMessageMap* CVelDMBView::GetMessageMap() const {
    return &messageMap;
}

// A friend of the view, so that its private handlers can be named.
struct DMBViewRows {
    using View = CVelDMBView;
    static constexpr GMessageEntry kRows[] = {
        GMap::OnCreate<&View::OnCreate>(),
        GMap::OnCommand<&View::OnClickExit>(kCmdExit),
        GMap::OnCommand<&View::OnClickScan>(kCmdScan),
        GMap::OnCommand<&View::OnClickList>(kCmdList),
        GMap::OnCommand<&View::OnClickSetting>(kCmdSetting),
        GMap::OnCommand<&View::OnClickRecord>(kCmdRecord),
        GMap::OnCommand<&View::ToggleDMBButton>(kCmdToggleFace),
        GMap::OnTimer<&View::OnTimer>(),
        GMap::OnLButtonDown<&View::OnLButtonDown>(),
        GMap::OnCommand<&View::OnCmdPreload>(kCmdPreload),
        GMap::OnKeyUp<&View::OnKeyUp>(),
        GMap::OnCommand<&View::DecodeMotBody>(kCmdDecodeSlide),
        GMap::OnMessage<&View::OnShowChLabel>(WM_DMB_SHOWCHLABEL),
        GMap::OnMessage<&View::OnMediaNotify>(WM_DMB_MEDIANOTIFY),
        GMap::OnMessage<&View::OnChangeChannel>(WM_DMB_CHANGECHANNEL),
        GMap::OnMessage<&View::OnUpdateInfo>(WM_DMB_UPDATEINFO),
        GMap::OnMessage<&View::OnAir>(WM_DMB_ONAIR),
        GMap::OnMessage<&View::ChangeChUpDown>(WM_DMB_CHUPDOWN),
        GMap::OnCommandRange<&View::OnClickChannelUpDown>(kCmdChannelDown, kCmdChannelUp),
        GMap::OnCommandRange<&View::OnClickToggleDMB>(kCmdToggleSmall, kCmdToggleFull),
    };
};

const GMessageMap CVelDMBView::messageMap = {&CVelPlayerView::messageMap, DMBViewRows::kRows,
                                             static_cast<UINT>(std::size(DMBViewRows::kRows))};
