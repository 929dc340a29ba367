#include "host/shell/core/MainWindow.h"

#include "host/shell/core/ShellCore.h"

namespace shell {

MainWindow::MainWindow() {
    SetMessageResource(GetResourceName());
}

MainWindow::~MainWindow() = default;

const GMessageMap* MainWindow::GetMessageMap() const {
    return &messageMap;
}

void MainWindow::OnDraw(HDC dc) {
    DoPaint(dc);
}

const GMessageMap MainWindow::messageMap = [] {
    static const GMessageEntry rows[] = {
        {kBoxMessage, 0, 0,
         [](GView* self, WPARAM textId, LPARAM style) -> LRESULT {
             auto* main = static_cast<MainWindow*>(self);
             const auto id = static_cast<WORD>(textId);
             ShellCore::Current()->boxes.Post(main, main->GetResourceName(), id, main->GetMessageW(id),
                                              static_cast<int>(style));
             return 0;
         }},
        {kCloseViewMessage, 0, 0,
         [](GView*, WPARAM, LPARAM) -> LRESULT {
             ShellCore::Current()->CloseView();
             return 0;
         }},
        {WM_COMMAND, kCommandFullSize, kCommandFullSize,
         [](GView*, WPARAM, LPARAM) -> LRESULT {
             ShellCore::Current()->Restore();
             return 0;
         }},
    };
    return GMessageMap{&GView::messageMap, rows, 3};
}();

} // namespace shell
