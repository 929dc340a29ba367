// CVelPlayerView: the play mode and the aspect ratio. What touches the filter graph is in PlayerGraph.cpp.
#include "platform/velshell/VelPlayerView.h"

#include "host/shell/core/BaseImpl.h"
#include "host/shell/core/ShellCore.h"

using shell::ShellCore;

const GRuntimeClass CVelPlayerView::classCVelPlayerView = {"CVelPlayerView", nullptr, &CVelToolView::classCVelToolView};

const GMessageMap CVelPlayerView::messageMap = [] {
    static const GMessageEntry rows[] = {
        GMap::OnCreate<&CVelPlayerView::OnCreate>(),
        GMap::OnTimer<&CVelPlayerView::OnTimer>(),
        GMap::OnCommand<&CVelPlayerView::OnCmdPreload>(shell::kCommandPreload),
    };
    return GMessageMap{&CVelToolView::messageMap, rows, 3};
}();

CVelPlayerView::CVelPlayerView() : m_pPlayer(new PlayerImpl) {}

CVelPlayerView::~CVelPlayerView() {
    delete m_pPlayer;
}

const GRuntimeClass* CVelPlayerView::GetRuntimeClass() const {
    return &classCVelPlayerView;
}

const GMessageMap* CVelPlayerView::GetMessageMap() const {
    return &messageMap;
}

void CVelPlayerView::OnDraw(HDC dc) {
    CVelToolView::OnDraw(dc);
}

int CVelPlayerView::OnCreate(CREATESTRUCTW* parameters) {
    return CVelToolView::OnCreate(parameters);
}

void CVelPlayerView::OnTimer(UINT_PTR id) {
    if (id != shell::kMenuTimer) {
        CVelToolView::OnTimer(id);
        return;
    }
    KillTimer(m_hWnd, id);
    if (ShellCore::Current()->video.visible) {
        ShowControls(0, 1);
    }
}

void CVelPlayerView::OnCmdPreload() {
    if (ShellCore* core = ShellCore::Current()) {
        core->log.Note("preloaded");
    }
}

int CVelPlayerView::AllowFileList(const WCHAR* /*path*/) {
    return 0;
}

void CVelPlayerView::LoadProfile() {}

void CVelPlayerView::SaveProfile() {}

int CVelPlayerView::GetPlayMode() const {
    return m_pPlayer->mode;
}

void CVelPlayerView::SetPlayMode(int mode) {
    m_pPlayer->mode = mode;
    shell::ShowRecordSign(*this, mode == kPlayModeRecording);
    if (ShellCore* core = ShellCore::Current()) {
        core->log.Note("mode " + std::to_string(mode));
    }
}

int CVelPlayerView::IsPreserveAspectRatio() const {
    return m_pPlayer->preserveAspect;
}

void CVelPlayerView::SetPreserveAspectRatio(int preserve) {
    m_pPlayer->preserveAspect = preserve;
    if (ShellCore* core = ShellCore::Current()) {
        core->video.keepAspect = preserve != 0;
        core->log.Note("aspect " + std::to_string(preserve));
        core->ScreenChanged();
    }
}
