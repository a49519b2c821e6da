#pragma once

#include "engine/block_filter.h"
#include "engine/filter_settings.h"
#include "engine/world_item.h"

#include <bitset>
#include <memory>
#include <vector>

namespace quillmere {

/// What the filters of a pass say of one record.
struct Verdict {
    /// For each kind whether a filter of it selects the record; one that is off selects nothing.
    std::bitset<filterTypeCount> selectedBy;
    /// What becomes of the record. The filters narrow each other: it goes only when every filter selects it.
    bool remove = false;

    bool SelectedBy(FilterKind kind) const { return selectedBy[static_cast<std::size_t>(kind)]; }
};

/// Judges records by the filters of a pass.
class Decisions {
 public:
    void Clear() { filters_.clear(); }
    /// Adds a filter that judges before those added so far.
    void AddFirst(FilterKind kind, Direction direction, std::unique_ptr<BlockFilter> filter);
    /// At least one filter must have been added.
    Verdict Judge(const WorldItem& item);

 private:
    struct Filter {
        FilterKind kind;
        Direction direction;
        std::unique_ptr<BlockFilter> filter;
    };
    std::vector<Filter> filters_;
};

}  // namespace quillmere
