// Carries a script out on the shell.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "host/app/dmbtv/Script.h"
#include "host/shell/Shell.h"

namespace dmbtv {

// Steps to be taken in the dialogs that are open while this object lives; what has not been taken by its end never is.
class ModalPlan {
public:
    explicit ModalPlan(shell::Shell& shellToDrive);
    ~ModalPlan();
    ModalPlan(const ModalPlan&) = delete;
    ModalPlan& operator=(const ModalPlan&) = delete;

    void Add(std::function<void()> step);

private:
    shell::Shell& shell;
    std::shared_ptr<bool> valid;
};

// Presses a button of the tool bar, which comes back for that when it has hidden itself. False when the button is off.
bool PressTool(shell::Shell& shell, UINT element);

// From now on a dialog or box that nobody has an answer for is cancelled: there is no user.
void CancelUnanswered(shell::Shell& shell);

// Empty when every expectation held; otherwise line, wanted and got. `tell`, when there is one, gets what happened, line by line.
[[nodiscard]] std::string RunScript(shell::Shell& shell, const Script& script,
                                    const std::function<void(const std::string& line)>& tell = {});

} // namespace dmbtv
