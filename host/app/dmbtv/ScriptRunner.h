// Carries a script out on the shell.
#pragma once

#include <string>

#include "host/app/dmbtv/Script.h"
#include "host/shell/Shell.h"

namespace dmbtv {

// From now on a dialog or box that nobody has an answer for is cancelled: there is no user.
void CancelUnanswered(shell::Shell& shell);

// Empty when every expectation held; otherwise line, wanted and got.
[[nodiscard]] std::string RunScript(shell::Shell& shell, const Script& script);

} // namespace dmbtv
