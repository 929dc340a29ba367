// The viewer put together: system core, class table, tuner, shell, module.
#pragma once

#include "host/app/dmbtv/Options.h"

namespace dmbtv {

// Runs until the script ends or the user leaves; an ExitStatus. Reasons go to stderr.
[[nodiscard]] int Run(const Options& options);

} // namespace dmbtv
