// A message box that was shown.
#pragma once

#include "platform/types.h"

namespace shell {

struct BoxRecord {
    WString resource; // whose text table
    WORD textId = 0;
    int style = 0;       // VelBoxStyle
    bool posted = false; // asked for by a posted message: nobody waits for its answer
    int answer = 0;      // VelDialogResult once it is closed, 0 while it is open
};

} // namespace shell
