#pragma once

#include "engine/block_filter.h"
#include "engine/filter_settings.h"
#include "engine/world_item.h"

#include <bitset>
#include <vector>

namespace quillmere {

/// What the filters of a pass say of one record.
struct Verdict {
    /// For each kind whether a filter of it selects the record; one that is off selects nothing.
    std::bitset<filterTypeCount> selectedBy;
    /// What becomes of the record. The filters narrow each other: it goes only when every filter selects it.
    bool remove = false;
};

/// Judges records by the filters of a pass.
class Decisions {
 public:
    void Clear() { filters_.clear(); }
    /// Adds a filter. With `placedOnly` it never selects a record without a position.
    void Add(FilterKind kind, Direction direction, BlockTest test, bool placedOnly);
    /// Without any filter nothing goes.
    Verdict Judge(const WorldItem& item);

 private:
    struct Filter {
        FilterKind kind;
        Direction direction;
        BlockTest test;
        bool placedOnly;
    };
    std::vector<Filter> filters_;
};

}  // namespace quillmere
