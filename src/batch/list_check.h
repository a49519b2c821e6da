#pragma once

#include "engine/filter_settings.h"
#include "engine/list_index.h"
#include "filters/filter_set.h"

#include <string>
#include <vector>

namespace quillmere {

// Warnings of entries that cannot do what the user wants. Only the lists that a filter tests against are
// looked at. Each warning is one line, without the list's name, that names the first entries concerned.

/// What can be told before the pass: entries that can match nothing, and entries that are never used.
std::vector<std::string> WarningsOfList(const FilterSettings& settings, const FilterSet& lists);

/// What can be told once all blocks were tested.
struct ListUse {
    std::vector<std::string> warnings;
    /// The codes that no block has, in the code page.
    std::vector<std::string> notFound;
    /// For the log: those codes; empty when there are none. A list for every night holds such codes, so this
    /// is a warning only if no code was found or if all but the listed codes are removed.
    std::string entry;
};
ListUse UseOfList(const FilterSettings& settings, const FilterSet& lists, const CodeUse& use);

}  // namespace quillmere
