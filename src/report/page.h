#pragma once

#include "report/report.h"

#include <string>

namespace quillmere {

/// The report as one HTML page in UTF-8, complete in itself: it loads nothing, from the network or elsewhere.
/// Its script shows what two elements of the page hold as JSON, and nothing else:
///
/// - "report" is what JsonReport gives.
/// - "maps" is an array with one object for each facet. Its map is cut into squares, `columns` by `rows` of
///   them. A square is `cell` coordinates wide and high; the first one begins at `left`, `top`. `kept` and
///   `removed` say how many blocks lie in the squares. They are arrays of runs. A run is an array: row,
///   column of the first square, then a number for each square from there on; a negative number stands for as
///   many empty squares.
///
/// Texts of the report can become neither markup nor script. All maps together take 2 MB at most: the squares
/// of the largest ones become larger until that is so. Does not change the maps of the report.
std::string PageText(const Report& report);

}  // namespace quillmere
