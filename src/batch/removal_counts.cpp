#include "batch/removal_counts.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

namespace quillmere {

void RemovalCounts::Count(const WorldItem& item, const Verdict& verdict) {
    item_ += verdict.item ? 1 : 0;
    rectangle_ += verdict.rectangle ? 1 : 0;
    facet_ += verdict.facet ? 1 : 0;
    if (verdict.remove) ++removedByCode_[std::string(item.Code)];
}

void RemovalCounts::LogReport(const FilterSettings& settings, Log& log) const {
    const auto logFilter = [&log](bool inUse, std::string_view filter, std::int64_t count) {
        if (inUse) log.LogInfo(std::string(filter) + " filter selects " + std::to_string(count) + " items.");
    };
    logFilter(settings.items.has_value(), "Item", item_);
    logFilter(settings.rectangles.has_value(), "Rectangle", rectangle_);
    logFilter(settings.facet.has_value(), "Facet", facet_);

    std::vector<std::pair<std::string, std::int64_t>> codes(removedByCode_.begin(), removedByCode_.end());
    std::ranges::sort(codes, [](const auto& one, const auto& other) {
        return one.second != other.second ? one.second > other.second : one.first < other.first;
    });
    for (const auto& [code, count] : codes) {
        log.LogInfo("Would remove " + std::to_string(count) + " of " + (code.empty() ? "(no code)" : code));
    }
}

}  // namespace quillmere
