#pragma once

#include <cstdint>
#include <string_view>

namespace quillmere {

/// A hash of `bytes` for tables whose keys strangers choose (SipHash-1-3). Its key is random and the same
/// until the program ends, so nobody can make up keys that all have one hash, with which a table would take
/// quadratic time.
std::uint64_t KeyedHash(std::string_view bytes);

}  // namespace quillmere
