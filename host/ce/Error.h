// The calling thread's error number, as the device's system keeps it.
#pragma once

#include "platform/wince.h"

namespace ce {

// The ERROR_ number of the last call of this thread that failed; ERROR_SUCCESS before the first.
[[nodiscard]] DMB_HOST_API DWORD LastError();

// Sets it and returns false, for `return Fail(ERROR_...)`.
bool Fail(DWORD error);

// The number for an errno value of a file operation.
[[nodiscard]] DMB_HOST_API DWORD ErrorOfErrno(int number);

} // namespace ce
