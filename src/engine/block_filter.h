#pragma once

#include "engine/filter_settings.h"
#include "engine/list_index.h"
#include "engine/world_item.h"
#include "filters/filter_set.h"

#include <array>
#include <functional>
#include <string>
#include <string_view>

namespace quillmere {

/// Whether what a filter is about holds for a block, before the filter's direction is applied. Made once for
/// a pass; a list may change between calls.
using BlockTest = std::function<bool(const WorldItem& item)>;

/// What the engine knows about one kind of filter. A new kind is one more value of FilterKind and one more
/// row in the table in block_filter.cpp.
struct FilterType {
    FilterKind kind;
    bool byPosition;               ///< what it tests is where the record lies
    std::string_view reportName;   ///< in the counts of a dry run
    std::string_view nameWhenOn;   ///< in the announcement of a filter that is on
    std::string_view nameWhenOff;  ///< and of one that is off
    std::string_view refusal;      ///< shown when the filter is on without anything to compare with
    bool (*lacksValue)(const FilterSetting& setting, const FilterSet& lists);
    /// Fails when the setting's text is not the number that it has to be. A test against the item list keeps
    /// in `use` what it found. `lists` and `use` must outlive the test.
    BlockTest (*makeTest)(const FilterSetting& setting, const FilterSet& lists, CodeUse& use);
};

/// In the order of FilterKind.
extern const std::array<FilterType, filterTypeCount> filterTypes;

/// The log line that says how a filter of that type is set.
std::string Announcement(const FilterType& type, const FilterSettings& settings);

}  // namespace quillmere
