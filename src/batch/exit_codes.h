#pragma once

namespace quillmere {

/// Exit codes of quillmere-batch.
enum ExitCode : int {
    exitComplete = 0,
    exitFailed = 1,
    exitRefused = 2,  ///< the settings were refused, or the command line is wrong
    exitHalted = 130  ///< halted by an interrupt or another request to end
};

}  // namespace quillmere
