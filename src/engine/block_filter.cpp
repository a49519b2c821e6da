#include "engine/block_filter.h"

#include "base/failure_report.h"
#include "base/number_text.h"

namespace quillmere {

namespace {

/// Whether an entry of the item list has exactly the record's code.
BlockTest IsInItemList(const FilterSet& lists, CodeUse& use) {
    return [index = CodeIndex(lists.arrItems, use)](const WorldItem& item) mutable {
        return index.Contains(item.Code());
    };
}

/// Whether the record's X and Y lie in a rectangle of the list, bounds included.
BlockTest IsInRectangleList(const FilterSet& lists) {
    return [index = RectangleIndex(lists.arrRectangles)](const WorldItem& item) mutable {
        return index.Contains(item.X, item.Y);
    };
}

BlockTest IsOnFacet(std::int32_t facet) {
    return [facet](const WorldItem& item) { return item.Facet == facet; };
}

/// `name` says in the failure which number the text was to be.
std::int32_t NumberOf(const FilterSetting& setting, const char* name) {
    std::int32_t number = 0;
    const auto failure = TrapFailure([&] { number = NumberFromText(setting.text); });
    if (failure) throw failure->At(std::string(name) + " number \"" + setting.text + "\"");
    return number;
}

}  // namespace

const std::array<FilterType, filterTypeCount> filterTypes = {{
    {FilterKind::Item, false, "Item", "item", "items",
     "You didn't specify any items, but you chose to use them as a filter.",
     [](const FilterSetting&, const FilterSet& lists) { return lists.arrItems.EntryCount() == 0; },
     [](const FilterSetting&, const FilterSet& lists, CodeUse& use) { return IsInItemList(lists, use); }},
    {FilterKind::Rectangle, true, "Rectangle", "rectangles", "rectangles",
     "You didn't specify any rectangles, but you chose to use them as a filter.",
     [](const FilterSetting&, const FilterSet& lists) { return lists.arrRectangles.EntryCount() == 0; },
     [](const FilterSetting&, const FilterSet& lists, CodeUse&) { return IsInRectangleList(lists); }},
    {FilterKind::Facet, true, "Facet", "Facets", "Facets",
     "You didn't specify a Facet, but you chose to use it as a filter.",
     [](const FilterSetting& setting, const FilterSet&) { return setting.text.empty(); },
     [](const FilterSetting& setting, const FilterSet&, CodeUse&) {
         return IsOnFacet(NumberOf(setting, "facet"));
     }},
}};

std::string Announcement(const FilterType& type, const FilterSettings& settings) {
    const auto on = settings.filters.find(type.kind);
    if (on == settings.filters.end()) return "Not filtering " + std::string(type.nameWhenOff) + "....";
    const auto& [direction, text] = on->second;
    return "Filtering " + std::string(type.nameWhenOn) + " where value is " +
           (direction == Direction::In ? "equal to " : "NOT equal to ") +
           (text.empty() ? "list values" : text) + ".";
}

}  // namespace quillmere
