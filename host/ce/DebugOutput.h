// Where OutputDebugStringW goes: the latest lines are kept for whoever looks, and may be passed on.
//
// Owner: Ce. Thread: any.
#pragma once

#include "platform/types.h"

#include <deque>
#include <functional>
#include <mutex>
#include <vector>

namespace ce {

class DMB_HOST_API DebugOutput {
public:
    void Write(WStringView text);

    // The latest texts, oldest first, exactly as they were written; at most 1000 are kept.
    [[nodiscard]] std::vector<WString> Lines() const;
    void Clear();

    // Every text is also handed to `sink` from now on (none: an empty function), on the writing thread, one
    // at a time.
    void SetSink(std::function<void(WStringView)> sink);

private:
    mutable std::mutex mutex_;
    std::deque<WString> lines_;
    std::function<void(WStringView)> sink_;
};

} // namespace ce
