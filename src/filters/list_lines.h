#pragma once

#include "filters/filter_set.h"

#include <string>
#include <string_view>
#include <variant>

namespace quillmere {

// A filter list as lines of UTF-8 text, for programs that work with lines and for spreadsheets. An entry is a
// line of fields with tabs between them:
//
//     item       NAME  CODE
//     rectangle  NAME  X1  Y1  X2  Y2
//
// Only what a list file can hold, and what can work in a pass, is an entry.

/// Why a line is no entry: a clause that begins with a small letter.
struct LineProblem {
    std::string_view text;
};
using ListLine = std::variant<ItemFilter, RectangleFilter, LineProblem>;

/// The entry that `line`, which is not empty and has no line end, stands for. Empty fields at its end are
/// left out: a spreadsheet fills up short lines with them.
ListLine EntryFromLine(std::string_view line);

/// The line for an entry, without a line end. A problem if EntryFromLine would not give the entry back.
std::variant<std::string, LineProblem> LineFromEntry(const ItemFilter& item);
std::variant<std::string, LineProblem> LineFromEntry(const RectangleFilter& rectangle);

/// Puts `entry` into the first free slot of its table. Returns false when none is free.
bool AddEntry(FilterSet& filters, const ItemFilter& item);
bool AddEntry(FilterSet& filters, const RectangleFilter& rectangle);

}  // namespace quillmere
