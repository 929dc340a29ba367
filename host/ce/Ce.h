// The device's system as one object: clock, message loop, files, debugger output. The calls of
// platform/wince.h act on the current one.
//
// Owner: the program or the test harness constructs exactly one, before the shell and the module, and
// destroys it after them. Thread: construct it on the shell thread, or let that thread call
// loop().AdoptThread(). The clock is borrowed and outlives it.
//
// Do: end streaming threads before destroying it. Don't: keep a second one alive; there is one current
// system, and what a library keeps of it beyond that object (nothing, today) would outlive a test.
#pragma once

#include "host/ce/Clock.h"
#include "host/ce/DebugOutput.h"
#include "host/ce/DeviceFiles.h"
#include "host/ce/Error.h"
#include "host/ce/MessageLoop.h"

namespace ce {

class DMB_HOST_API Ce {
public:
    // Becomes the current system.
    explicit Ce(Clock& clock);
    ~Ce();
    Ce(const Ce&) = delete;
    Ce& operator=(const Ce&) = delete;

    // The current system, null when there is none.
    [[nodiscard]] static Ce* Current();

    [[nodiscard]] Clock& clock() { return clock_; }
    [[nodiscard]] MessageLoop& loop() { return loop_; }
    [[nodiscard]] DeviceFiles& files() { return files_; }
    [[nodiscard]] DebugOutput& debug() { return debug_; }

    // The user leaves: from now on Sleep returns at once and RunUntil ends as cancelled. Any thread.
    void BeginClosing();
    [[nodiscard]] bool IsClosing() { return clock_.IsClosing(); }

private:
    Clock& clock_;
    MessageLoop loop_;
    DeviceFiles files_;
    DebugOutput debug_;
};

} // namespace ce
