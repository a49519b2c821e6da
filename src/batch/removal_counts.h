#pragma once

#include "base/log.h"
#include "engine/decisions.h"

#include <array>
#include <cstdint>
#include <string>
#include <unordered_map>

namespace quillmere {

/// What a dry run reports beyond the pass's own lines: how many blocks each filter selects by itself, and
/// how many blocks of each item code would be removed.
class RemovalCounts {
 public:
    void Count(const WorldItem& item, const Verdict& verdict);
    /// Logs an entry for each filter in use, then one for each item code, the most frequent first.
    void LogReport(const FilterSettings& settings, Log& log) const;

 private:
    std::array<std::int64_t, filterTypeCount> selected_{};  ///< by each kind of filter
    std::unordered_map<std::string, std::int64_t> removedByCode_;
};

}  // namespace quillmere
