#pragma once

#include "base/failure_report.h"
#include "filters/filter_set.h"
#include "textfile/file_handler.h"

#include <string>

namespace quillmere {

// A filter list file holds one filter set as text, a field a line, lines ended by CR LF:
//
//     <ITEMS>
//     name and code of each item
//     </ITEMS>
//     <RECTANGLES>
//     name, X1, X2, Y1, Y2 of each rectangle
//     </RECTANGLES>
//
// The closing lines must match exactly; any other line that begins with "<" is skipped where a name is
// expected.

/// Clears `target`, then fills it from the file `strFile`. Returns whether the whole list was read; a failure
/// is reported to `log`, and `target` then holds what was read before it, even part of a rectangle. A list
/// with more entries than slots fails with SubscriptOutOfRange. The file is closed in every case.
///
/// Files that other programs wrote may end their lines otherwise. They may also begin with a byte order mark,
/// which `skipMark` leaves out.
bool LoadFilterList(fileHandler& objReader, const std::string& strFile, FilterSet& target, Log& log,
                    LineEnd lineEnd = LineEnd::CrLf, bool skipMark = false);

/// Writes `source` to the file `strFile`. Returns whether all of it was written; a failure is reported to
/// `log`, and the file then holds the lines written before it. Items end at the first empty code, rectangles
/// at the first empty name.
bool SaveFilterList(fileHandler& objWriter, const std::string& strFile, const FilterSet& source, Log& log);

}  // namespace quillmere
