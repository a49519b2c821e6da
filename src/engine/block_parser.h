#pragma once

#include "engine/world_item.h"
#include "textfile/line_stream.h"

#include <cstddef>
#include <string_view>

namespace quillmere {

// What a block of a world script is. A block is a header line, which begins with "[" once the spaces at its
// ends are removed, and the body lines after it up to the first empty one. The header carries the item code,
// body lines that begin with "P=" the position.
//
// There are two ways to parse one. Line by line takes any block and finds every failure. ParseWholeBlock
// takes a block that lies complete in memory, as nearly all do; without it a pass takes a third longer. It
// refuses every block that it is not sure of, which is then parsed line by line. Both follow the same rules
// for the header and the position.
//
// Text handed to these functions lies in a LineReader's buffer, so that ByteMask may look beyond its end.

/// The line after the last block.
inline constexpr std::string_view endSentinel = "[EOF]";

constexpr bool IsHeader(std::string_view line) {
    return line.starts_with('[');
}

/// Makes `item` a block with this header line, which has no spaces at its ends. Fails with
/// InvalidProcedureCall when the line's second piece is empty.
void BeginBlock(WorldItem& item, std::string_view header);

enum class BodyLine {
    Added,     ///< the block goes on
    Ends,      ///< an empty line: the block is complete
    Abandons,  ///< a position without a comma: this is no block, and scanning goes on after the line
};
/// Takes the next body line of the block. Fails with TypeMismatch or Overflow for a position that is no
/// number, and with SubscriptOutOfRange for a line too many.
BodyLine AddBodyLine(WorldItem& item, std::string_view line);

/// Makes `item` the block at the front of `text` and returns its size in bytes, the empty line included.
/// `item` then borrows the text. Returns 0 when there is no complete block with proper line ends, or one that
/// would fail; what `item` holds then means nothing.
std::size_t ParseWholeBlock(WorldItem& item, std::string_view text, LineEnd lineEnd);

}  // namespace quillmere
