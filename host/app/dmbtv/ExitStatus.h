// How dmbtv ends. One list for all its commands; `--help` and the manual show it as kExitStatusHelp has it.
#pragma once

namespace dmbtv {

enum ExitStatus : int {
    kExitDone = 0,
    kExitFailed = 1,        // something went wrong while running, or a script's expectation did not hold
    kExitUsage = 2,         // the command line, a script, a key map or the skin is not understood
    kExitNoInput = 3,       // the source, the script or the display cannot be opened
    kExitNoSync = 4,        // there is a source, but no broadcast in it
    kExitNoService = 5,     // a broadcast, but no such service
    kExitScrambled = 6,     // the service is scrambled
    kExitNoCodec = 7,       // no decoder for the service
    kExitDiskFull = 8,      // no room for what shall be written
    kExitInterrupted = 130, // SIGINT, SIGTERM or SIGHUP; what was open has been closed
};

inline constexpr const char* kExitStatusHelp =
    "Exit status: 0 done; 1 failed while running, or a script's expectation did not hold; "
    "2 usage; 3 input cannot be opened; 4 no sync; 5 no such service; 6 scrambled; "
    "7 codec missing; 8 disk full; 130 interrupted.";

} // namespace dmbtv
