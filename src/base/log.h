#pragma once

#include "base/failure.h"

#include <string_view>

namespace quillmere {

/// Where the program's entries go: the Status log of the main window, or the standard output of the batch
/// program. Everything below the windows knows the log only as this.
class Log {
 public:
    virtual ~Log() = default;
    /// Adds one entry.
    virtual void LogInfo(std::string_view text) = 0;
    /// Removes all entries.
    virtual void EmptyLog() = 0;
    /// Called before the three entries of a failure report. A log that shows more than its entries, such as
    /// the file that failed, takes it from here.
    virtual void FailureReported(const Failure& /*failure*/) {}
};

}  // namespace quillmere
