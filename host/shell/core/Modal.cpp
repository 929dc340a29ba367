// Modal loops: boxes and dialogs wait in them, and only they handle messages while a handler runs.
#include "host/shell/core/ShellCore.h"

namespace shell {

bool ShellCore::RunModal(HWND window, const std::function<bool()>& done) {
    modalWindows.push_back(window);
    ce.loop().RunUntil([&] { return done() || quitting; });
    modalWindows.pop_back();
    const bool finished = done();
    if (!finished && !quitting) {
        log.Note("unanswered");
    }
    if (modalWindows.empty() && closePending) {
        closePending = false;
        ce.loop().Post(main->GetSafeHwnd(), kCloseViewMessage);
    }
    return finished;
}

bool ShellCore::ModalIdle() {
    if (modalWindows.empty()) {
        return false;
    }
    if (!modalActions.empty()) {
        const auto action = std::move(modalActions.front());
        modalActions.pop_front();
        action();
        return true;
    }
    MessageBoxDialog* front = boxes.Front();
    if (front && front->GetSafeHwnd() == modalWindows.back() && boxes.AnswerByScript(*front)) {
        return true;
    }
    return idleInput && idleInput();
}

} // namespace shell
