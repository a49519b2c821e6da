#pragma once

namespace quillmere {

/// Exit codes of quillmere-batch.
enum ExitCode : int {
    exitComplete = 0,
    exitFailed = 1,
    exitRefused = 2,  ///< Run refused the settings, or the command line is wrong
    exitHalted = 130  ///< stopped by an interrupt
};

}  // namespace quillmere
