#include "engine/world_end.h"

#include "base/number_text.h"
#include "engine/block_parser.h"

namespace quillmere {

namespace {

/// How many line ends make an empty line after this line, whose line end has `endSize` bytes. One at least
/// when the line ends with CR alone: an LF written next would belong to that.
int LineEndsMissing(bool empty, std::uint64_t endSize, LineEnd lineEnd) {
    if (endSize == 0) return 2;
    return empty && endSize == LineEndText(lineEnd).size() ? 0 : 1;
}

}  // namespace

WorldEnd FindWorldEnd(LineReader& input, const std::function<void()>& yield) {
    WorldEnd sentinel;  // the last one, while no other text follows it
    WorldEnd here;
    while (!input.AtEnd()) {
        yield();
        const std::string_view line = input.NextLine();
        const std::size_t size = line.size();
        const std::string_view text = TrimSpaces(line);
        if (!text.empty()) {
            sentinel = here;
            sentinel.sentinelFollows = text == endSentinel;
        }
        const std::uint64_t textEnd = here.offset + size;
        static_cast<void>(input.AtEnd());  // takes the line feed after a carriage return
        here.offset = input.Offset();
        here.lineEndsMissing = LineEndsMissing(size == 0, here.offset - textEnd, input.LineEnding());
    }
    return sentinel.sentinelFollows ? sentinel : here;
}

}  // namespace quillmere
