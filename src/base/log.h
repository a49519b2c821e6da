#pragma once

#include "base/failure.h"

#include <string_view>

namespace quillmere {

/// Where the program's entries go: the Status log of the main window, or the standard output of the batch
/// program. Code below the windows knows a log only through this interface.
class Log {
 public:
    virtual ~Log() = default;
    /// Adds one entry.
    virtual void LogInfo(std::string_view text) = 0;
    /// Removes all entries.
    virtual void EmptyLog() = 0;
    /// Called before the three entries of a failure report, for a log that shows more of the failure, such as
    /// the file that it is about.
    virtual void FailureReported(const Failure& /*failure*/) {}
};

}  // namespace quillmere
