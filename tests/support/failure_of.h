#pragma once

#include "base/failure.h"

#include <cstdint>
#include <string>

namespace quillmere::test {

/// The number of the failure that ends `operation`; 0 when it succeeds.
template <class Operation>
std::int32_t FailureOf(const Operation& operation) {
    try {
        operation();
        return 0;
    } catch (const Failure& failure) {
        return failure.Number();
    }
}

/// The same, followed by what the failure names; empty when it succeeds.
template <class Operation>
std::string FailureNamed(const Operation& operation) {
    try {
        operation();
        return {};
    } catch (const Failure& failure) {
        return std::to_string(failure.Number()) + ' ' + failure.Where();
    }
}

}  // namespace quillmere::test
