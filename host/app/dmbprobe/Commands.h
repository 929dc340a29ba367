// The sub-commands of dmbprobe: each adds itself to the command line and lives in a file of its own.
#pragma once

#include <CLI/CLI.hpp>

namespace dmbprobe {

// Exit statuses of all sub-commands.
inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;  // began, but could not finish
inline constexpr int kUsage = 2;   // the command line makes no sense
inline constexpr int kNoInput = 3; // the input cannot be opened

// Declares the sub-command's options. When it is chosen, its callback stores the exit status in `status`.
void AddBsac(CLI::App& app, int& status);

} // namespace dmbprobe
