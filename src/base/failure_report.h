#pragma once

#include "base/failure.h"

#include <new>
#include <optional>
#include <stdexcept>
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
    /// Told of the failure behind the three entries that follow. A log that shows more than its entries, such
    /// as the file that failed, takes it from here.
    virtual void FailureReported(const Failure& /*failure*/) {}
};

/// Runs `operation` and returns the failure that ended it, or nothing when it came to its end. Memory running
/// out counts as a failure; any other exception is a fault of the program and passes through.
template <class Operation>
std::optional<Failure> TrapFailure(const Operation& operation) {
    try {
        operation();
        return std::nullopt;
    } catch (const Failure& failure) {
        return failure;
    } catch (const std::bad_alloc&) {
        return Failure(FailureKind::OutOfMemory);
    } catch (const std::length_error&) {
        return Failure(FailureKind::OutOfMemory);
    }
}

/// Adds the three entries of a failure report: the description, the number, the reporting operation's line.
void ReportFailure(Log& log, const Failure& failure, std::string_view moduleLine);

}  // namespace quillmere
