#pragma once

#include "engine/filter_settings.h"
#include "engine/list_index.h"
#include "engine/world_item.h"
#include "filters/filter_set.h"

#include <cstdint>
#include <string_view>

namespace quillmere {

/// What the filters say of one record: for each whether it selects the record for removal; a filter that is
/// off selects nothing.
struct Verdict {
    bool item = false;
    bool rectangle = false;
    bool facet = false;
    /// What becomes of the record. The filters narrow each other: it goes only when every filter in use
    /// selects it.
    bool remove = false;
};

/// Judges records against a filter set. The tables are read as they are at the time of each call.
class Decisions {
 public:
    /// `filters` must outlive the object.
    explicit Decisions(const FilterSet& filters)
        : rectangles_(filters.arrRectangles), items_(filters.arrItems) {}

    /// Whether the record's X and Y lie in a rectangle of the list, bounds included.
    bool IsInRectangleList(const WorldItem& item) { return rectangles_.Contains(item.X, item.Y); }
    /// Whether an entry of the list has exactly this code.
    bool IsInItemList(std::string_view code) { return items_.Contains(code); }

    /// The verdict of the filters that `settings` switches on; `facet` is the number behind its facet text.
    Verdict Judge(const WorldItem& item, const FilterSettings& settings, std::int32_t facet);

 private:
    RectangleIndex rectangles_;
    CodeIndex items_;
};

}  // namespace quillmere
