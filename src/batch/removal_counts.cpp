#include "batch/removal_counts.h"

#include "base/utf8.h"
#include "system/code_page.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

namespace quillmere {

namespace {

bool IsControl(char32_t character) {
    return character < ' ' || (character >= 0x7F && character <= 0x9F);
}

/// The code in a form that is safe to print: a save can hold any bytes, even ones that control a terminal.
std::string PrintableCode(const std::string& code) {
    if (code.empty()) return "(no code)";
    const std::string text = Utf8FromCodePage(code);
    std::string printable;
    for (std::string_view rest = text; !rest.empty();) {
        const std::string_view before = rest;
        const auto character = TakeCharacter(rest);
        printable += character && IsControl(*character) ? "?" : before.substr(0, before.size() - rest.size());
    }
    return printable;
}

}  // namespace

void RemovalCounts::Count(const WorldItem& item, const Verdict& verdict) {
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
