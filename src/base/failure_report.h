#pragma once

#include "base/failure.h"
#include "base/log.h"

#include <new>
#include <optional>
#include <stdexcept>
#include <string_view>

namespace quillmere {

/// Runs `operation` and returns the failure that ended it; nothing when it succeeded. Memory running out
/// counts as a failure. Any other exception passes through: Cancelled, or a fault of the program.
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

/// Runs an `operation`, such as a close, for something that has failed already: how it ends does not matter.
template <class Operation>
void IgnoreFailure(const Operation& operation) {
    try {
        TrapFailure(operation);
    } catch (const Cancelled&) {
        return;
    }
}

/// Adds the three entries of a failure report: the description, the number, and `moduleLine`, which says what
/// operation failed.
void ReportFailure(Log& log, const Failure& failure, std::string_view moduleLine);

}  // namespace quillmere
