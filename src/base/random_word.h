#pragma once

#include <cstdint>

namespace quillmere {

/// 64 bits that nobody can foresee. A system that gives out no random numbers, such as an old kernel without
/// /dev, gets bits made from the time and an address instead: they may be guessed, but differ from run to run
/// and from call to call.
std::uint64_t RandomWord();

}  // namespace quillmere
