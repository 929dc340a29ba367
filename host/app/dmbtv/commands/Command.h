// What dmbtv can be asked to do: to watch, which it does unless told otherwise, and one sub-command for each other task.
//
// Each command lives in a file of its own. It declares its options on the parser; when it is the one the user chose, it leaves its
// task in the request, which main carries out after the options are complete.
#pragma once

#include <functional>

#include "host/app/dmbtv/ExitStatus.h"
#include "host/app/dmbtv/Options.h"

namespace dmbtv {

struct Request {
    Options options;
    std::function<int()> task; // ends with an ExitStatus
};

void AddWatch(CLI::App& app, Request& request);
void AddDemo(CLI::App& app, Request& request);
void AddScan(CLI::App& app, Request& request);
void AddList(CLI::App& app, Request& request);
void AddRecord(CLI::App& app, Request& request);
void AddPlay(CLI::App& app, Request& request);

} // namespace dmbtv
