#pragma once

#include "textfile/line_stream.h"

#include <optional>
#include <string>

namespace quillmere {

/// Which blocks a filter selects for removal.
enum class Direction {
    In,    ///< those that match: "Equal To", "In Rectangle", "In Facet"
    NotIn  ///< those that do not
};

/// What one filter pass is asked to do. A filter without a direction is off. The lists that the rectangle and
/// the item filter test against are those of the shared filter set.
struct FilterSettings {
    std::string strInputFile;
    std::string strOutputFile;
    std::optional<Direction> items;
    std::optional<Direction> rectangles;
    std::optional<Direction> facet;
    std::string facetText;  ///< the facet number as typed
    LineEnd lineEnd = LineEnd::CrLf;
};

}  // namespace quillmere
