#pragma once

#include "base/failure.h"
#include "base/log.h"

#include <new>
#include <optional>
#include <stdexcept>
#include <string_view>

namespace quillmere {

/// Runs `operation` and returns the failure that ended it; nothing when it succeeded. Memory running out
/// counts as a failure. Any other exception is a fault of the program and passes through.
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

/// Adds the three entries of a failure report: the description, the number, and `moduleLine`, which says what
/// operation failed.
void ReportFailure(Log& log, const Failure& failure, std::string_view moduleLine);

}  // namespace quillmere
