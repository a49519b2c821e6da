#pragma once

#include "base/failure_report.h"

#include <cstdint>
#include <string>

namespace quillmere::test {

/// The number of the failure that ends `operation`; 0 when it succeeds.
template <class Operation>
std::int32_t FailureOf(const Operation& operation) {
    const auto failure = TrapFailure(operation);
    return failure ? failure->Number() : 0;
}

/// The same, followed by what the failure names; empty when it succeeds.
template <class Operation>
std::string FailureNamed(const Operation& operation) {
    const auto failure = TrapFailure(operation);
    return failure ? std::to_string(failure->Number()) + ' ' + failure->Where() : "";
}

}  // namespace quillmere::test
