// The private part of a dialog.
#pragma once

#include "platform/velshell/VelDialog.h"

struct CVelDialog::DialogImpl {
    GView* parent = nullptr;
    bool failed = false; // the base could not initialise
    bool ended = false;
    int result = kDialogCancel;
};

namespace shell {

// Makes a dialog's window, applies its skin and initialises it; false when it could not be made. Shows it where it placed
// itself, else in the middle of the screen.
[[nodiscard]] bool MakeDialog(CVelDialog& dialog, bool isMessageBox);
void UnmakeDialog(CVelDialog& dialog);

} // namespace shell
