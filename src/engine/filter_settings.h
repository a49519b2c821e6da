#pragma once

#include "textfile/line_stream.h"

#include <cstddef>
#include <map>
#include <string>

namespace quillmere {

/// Which blocks a filter selects for removal.
enum class Direction {
    In,    ///< those that match: "Equal To", "In Rectangle", "In Facet"
    NotIn  ///< those that do not
};

/// The kinds of filter, in the order of a dry run's counts. A pass checks and announces the last one first.
enum class FilterKind { Item, Rectangle, Facet };
inline constexpr std::size_t filterTypeCount = 3;

/// How one filter is set.
struct FilterSetting {
    Direction direction = Direction::In;
    /// The number as typed, for a filter that compares with one; empty for a filter that tests against a list
    /// of the shared filter set.
    std::string text{};
};

/// What one filter pass is asked to do.
struct FilterSettings {
    std::string strInputFile;
    std::string strOutputFile;
    LineEnd lineEnd = LineEnd::CrLf;
    /// In a file without any header line, the last line is copied with those before it. Whether it is then
    /// read once more, as one between blocks.
    bool lastLineTwice = true;
    /// Filters by position do not select a record without one. Otherwise it counts as lying at 0,0 on facet
    /// 0.
    bool keepUnplaced = false;
    std::map<FilterKind, FilterSetting> filters;  ///< those that are switched on
    /// A pass without any filter is refused. Otherwise every block is kept.
    bool needsFilter = true;
};

}  // namespace quillmere
