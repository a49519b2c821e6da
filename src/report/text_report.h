#pragma once

#include "base/log.h"
#include "report/report.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace quillmere {

// The report as entries of a log. Texts that come from a world script are made safe to print.

/// What a dry run adds to the pass's own entries: an entry for each filter in use, then one for each code of
/// which blocks would go, the most frequent first.
void LogDryRun(const Report& report, Log& log);

/// A survey: three sentences, then a line for each sort of blocks. Such a line has the kind, the number of
/// blocks and the text, between tabs. So a line about a code has the form of a list's entry, as "list make"
/// takes it, with the number as its name.
void LogSurvey(const Report& report, Log& log);

/// "1 block", "2 blocks".
std::string Counted(std::uint64_t count, std::string_view noun);

/// `text` in a form that is safe to print: a save can hold any bytes, even ones that control a terminal.
/// `text` is in the code page, the result in UTF-8.
std::string Printable(std::string_view text);

}  // namespace quillmere
