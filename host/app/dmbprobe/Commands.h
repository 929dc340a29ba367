// The sub-commands of dmbprobe: each adds itself to the command line and lives in a file of its own.
#pragma once

#include <CLI/CLI.hpp>

namespace dmbprobe {

// Exit statuses of all sub-commands.
inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;    // began, but could not finish
inline constexpr int kUsage = 2;     // the command line makes no sense
inline constexpr int kNoInput = 3;   // the input cannot be opened
inline constexpr int kNoSync = 4;    // no ETI frame in it
inline constexpr int kNoService = 5; // no such service, or not of this kind

// Declares the sub-command's options. When it is chosen, its callback stores the exit status in `status`.
void AddAudio(CLI::App& app, int& status);
void AddBsac(CLI::App& app, int& status);
void AddFic(CLI::App& app, int& status);
void AddInfo(CLI::App& app, int& status);
void AddPad(CLI::App& app, int& status);
void AddPlay(CLI::App& app, int& status);
void AddTs(CLI::App& app, int& status);

} // namespace dmbprobe
