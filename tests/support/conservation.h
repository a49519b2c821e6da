#pragma once

#include "base/number_text.h"
#include "textfile/line_stream.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace quillmere::test {

/// The lines of a file without the spaces at their ends, sorted; empty ones are left out. A run of the batch
/// program must not lose or double any: OUTPUT and the removed file together have those of INPUT.
inline std::vector<std::string> SortedLines(std::string_view file, LineEnd lineEnd) {
    std::vector<std::string> lines;
    while (!file.empty()) {
        const std::size_t end = std::min(file.find(LineEndText(lineEnd).front()), file.size());
        const std::string_view line = TrimSpaces(file.substr(0, end));
        if (!line.empty()) lines.emplace_back(line);
        file.remove_prefix(std::min(end + 1, file.size()));
        if (lineEnd == LineEnd::CrLf && file.starts_with('\n')) file.remove_prefix(1);
    }
    std::ranges::sort(lines);
    return lines;
}

}  // namespace quillmere::test
