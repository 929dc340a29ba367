// What stands beside a file in a list.
#pragma once

#include "platform/wince.h"

#include <optional>

namespace shell {

// Local time, to the minute.
[[nodiscard]] DMB_HOST_API WString DateText(TimeSeconds written);
// How long it plays (m:ss or h:mm:ss); where that cannot be known, its size in MB.
[[nodiscard]] DMB_HOST_API WString LengthText(ULONGLONG bytes, std::optional<UINT> seconds);

} // namespace shell
