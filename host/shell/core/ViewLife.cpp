// The order of life of a view.
#include "host/shell/core/Access.h"
#include "host/shell/core/BaseImpl.h"
#include "host/shell/core/ShellCore.h"

namespace shell {

CVelPlayerView* ShellCore::OpenView(const GRuntimeClass& runtimeClass) {
    if (view || !runtimeClass.createObject) {
        return nullptr;
    }
    std::unique_ptr<GObject> object(runtimeClass.createObject());
    if (!object || !object->IsKindOf(&CVelPlayerView::classCVelPlayerView)) {
        return nullptr;
    }
    auto* opened = static_cast<CVelPlayerView*>(object.get());
    VelShellAccess::ChooseTexts(*opened);
    log.Note(std::string("open ") + runtimeClass.className);
    lastClass = &runtimeClass;
    view = opened;
    const Window* window = CreateWindowFor(*opened, *opened, WindowKind::View, kScreen, "view");
    if (!window) {
        view = nullptr;
        return nullptr;
    }
    const HWND handle = window->handle;
    reason = {};
    if (viewListener) {
        viewListener(opened);
    }
    opened->Theme();
    opened->LoadProfile();
    ce.loop().Send(handle, WM_COMMAND, kCommandPreload);
    windows.Find(handle)->visible = true;
    VelShellAccess::Base(*opened).active = true;
    opened->Active();
    ScreenChanged();
    object.release();
    return opened;
}

bool ShellCore::CloseView() {
    if (!view) {
        return false;
    }
    if (!modalWindows.empty()) {
        closePending = true;
        return true;
    }
    if (!quitting && !view->IsClosable()) {
        return false;
    }
    log.Note("close");
    const std::unique_ptr<CVelPlayerView> closing(view);
    VelShellAccess::Base(*closing).active = false;
    closing->SaveProfile();
    closing->Deactive();
    closing->Destroy();
    boxes.Sweep(true);
    DestroyWindowOf(*closing);
    view = nullptr;
    homeInFront = false;
    video.visible = false;
    document.SetMinimized(false);
    if (viewListener) {
        viewListener(nullptr);
    }
    main->Refresh();
    return true;
}

void ShellCore::Quit() {
    if (quitting) {
        return;
    }
    quitting = true;
    log.Note("quit");
    if (quitListener) {
        quitListener();
    }
    if (Window* window = windows.Find(main->GetSafeHwnd())) {
        window->visible = false;
    }
    ScreenChanged();
    ce.BeginClosing();
    boxes.Sweep(true);
    CloseView(); // after the modal loops, when there are any
}

} // namespace shell
