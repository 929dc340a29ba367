// Which channel a step leads to.
#pragma once

#include <functional>
#include <optional>

#include "platform/types.h"

// From `from`, steps by +1 or -1 round the list and returns the first position whose kind is `kind`. One pass over the list,
// the start included as the last candidate; nothing when no record is of that kind. `kindAt` gives a position's kind, or
// nothing when the list has no such record.
[[nodiscard]] std::optional<int> StepChannel(int from, int step, int channelCount, int kind,
                                             const std::function<std::optional<int>(int)>& kindAt);
