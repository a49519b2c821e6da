#include "batch/removal_counts.h"

#include "batch/error_lines.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace quillmere {

namespace {

std::string PrintableCode(const std::string& code) {
    return code.empty() ? "(no code)" : Printable(code);
}

}  // namespace

void RemovalCounts::Count(const WorldItem& item, const Verdict& verdict) {
    if (item.Lines.Count() == 0) return;  // the empty record is no block
    for (std::size_t kind = 0; kind < selected_.size(); ++kind)
        selected_[kind] += verdict.selectedBy[kind] ? 1 : 0;
    if (verdict.remove) ++removedByCode_[std::string(item.Code())];
}

void RemovalCounts::LogReport(const FilterSettings& settings, Log& log) const {
    for (const FilterType& type : filterTypes) {
        if (!settings.filters.contains(type.kind)) continue;
        const std::int64_t count = selected_[static_cast<std::size_t>(type.kind)];
        log.LogInfo(std::string(type.reportName) + " filter selects " + std::to_string(count) + " items.");
    }

    std::vector<std::pair<std::string, std::int64_t>> codes(removedByCode_.begin(), removedByCode_.end());
    std::ranges::sort(codes, [](const auto& one, const auto& other) {
        return one.second != other.second ? one.second > other.second : one.first < other.first;
    });
    for (const auto& [code, count] : codes) {
        log.LogInfo("Would remove " + std::to_string(count) + " of " + PrintableCode(code));
    }
}

}  // namespace quillmere
