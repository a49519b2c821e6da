#include "batch/list_check.h"

#include "report/text_report.h"

#include <algorithm>
#include <set>
#include <string_view>

namespace quillmere {

namespace {

constexpr std::size_t mostNames = 10;

using Names = std::vector<std::string>;

std::string Quoted(std::string_view text) {
    return '"' + Printable(text) + '"';
}

/// `what`, then how many names there are, then the first of them.
std::string Line(std::string_view what, const Names& names) {
    std::string text = std::string(what) + " (" + std::to_string(names.size()) + "): ";
    for (std::size_t i = 0; i < std::min(names.size(), mostNames); ++i)
        text += (i == 0 ? "" : ", ") + names[i];
    if (names.size() > mostNames) text += " and " + std::to_string(names.size() - mostNames) + " more";
    return text;
}

/// Adds a warning that says `what` of the entries with these names, unless there are none.
void Warn(Names& warnings, std::string_view what, const Names& names) {
    if (!names.empty()) warnings.push_back(Line(what, names));
}

/// `field`, in quotes, of what stands from the first free slot on.
template <class Table>
Names NamesOfUnused(const Table& table, std::string Table::value_type::*field) {
    Names names;
    for (std::size_t slot = table.EntryCount(); slot < table.size(); ++slot) {
        if (table[slot] != typename Table::value_type()) names.push_back(Quoted(table[slot].*field));
    }
    return names;
}

bool HasSpace(std::string_view code) {
    return code.find(' ') != std::string_view::npos;
}

}  // namespace

std::vector<std::string> WarningsOfList(const FilterSettings& settings, const FilterSet& lists) {
    Names warnings;
    if (settings.filters.contains(FilterKind::Item)) {
        Names spaced;
        for (std::size_t slot = 0; slot < lists.arrItems.EntryCount(); ++slot) {
            const std::string& code = lists.arrItems[slot].code;
            if (HasSpace(code)) spaced.push_back(Quoted(code));
        }
        Warn(warnings, "codes with spaces, which no block can have; delete the spaces", spaced);
        Warn(warnings, "codes never used, because an entry without a name comes first; give it one",
             NamesOfUnused(lists.arrItems, &ItemFilter::code));
    }
    if (settings.filters.contains(FilterKind::Rectangle)) {
        Names empty;
        for (std::size_t slot = 0; slot < lists.arrRectangles.EntryCount(); ++slot) {
            const RectangleFilter& rectangle = lists.arrRectangles[slot];
            if (rectangle.X1 > rectangle.X2 || rectangle.Y1 > rectangle.Y2)
                empty.push_back(Quoted(rectangle.name));
        }
        Warn(warnings, "rectangles that hold nothing, because X1 > X2 or Y1 > Y2; swap the two", empty);
        Warn(warnings, "rectangles never used, because an entry without a name comes first; give it one",
             NamesOfUnused(lists.arrRectangles, &RectangleFilter::name));
    }
    if (!settings.filters.contains(FilterKind::Item) && !settings.filters.contains(FilterKind::Rectangle))
        warnings.emplace_back("the list has no effect without --items or --rectangles");
    return warnings;
}

ListUse UseOfList(const FilterSettings& settings, const FilterSet& lists, const CodeUse& use) {
    ListUse result;
    const auto filter = settings.filters.find(FilterKind::Item);
    if (filter == settings.filters.end()) return result;
    const ItemTable& items = lists.arrItems;
    std::set<std::string_view> done;
    const std::size_t count = items.EntryCount();
    for (std::size_t slot = 0; slot < count; ++slot) {
        if (use.found[slot]) done.insert(items[slot].code);
    }
    const bool mayBeUsual = !done.empty() && filter->second.direction == Direction::In;
    Names inOtherCase;
    Names inNoBlock;
    for (std::size_t slot = 0; slot < count; ++slot) {
        const std::string& code = items[slot].code;
        if (HasSpace(code) || !done.insert(code).second) continue;
        if (use.inOtherCase[slot].empty()) {
            result.notFound.push_back(code);
            inNoBlock.push_back(Quoted(code));
        } else {
            inOtherCase.push_back(Quoted(code) + " for " + Quoted(use.inOtherCase[slot]));
        }
    }
    Warn(result.warnings, "codes that blocks have in another letter case only; correct it", inOtherCase);
    if (!mayBeUsual) {
        Warn(result.warnings, "codes that no block has; check their spelling", inNoBlock);
    } else if (!inNoBlock.empty()) {
        result.entry = Line("Codes that no block has", inNoBlock) + ".";
    }
    return result;
}

}  // namespace quillmere
