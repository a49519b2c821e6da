#pragma once

#include "base/failure.h"

#include <cstdint>

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

}  // namespace quillmere::test
