#pragma once

#include "textfile/line_stream.h"

#include <cstdint>
#include <functional>

namespace quillmere {

/// Where further blocks belong in a world script: in front of its last line that is not empty when that is
/// "[EOF]", otherwise at the end of the file.
struct WorldEnd {
    std::uint64_t offset = 0;      ///< bytes before that place
    bool sentinelFollows = false;  ///< "[EOF]" stands there
    int lineEndsMissing = 0;       ///< to be written there first, so that an empty line stands before a block
};

/// Reads `input`, which was just opened, to its end and finds that place. Calls `yield` once for each line.
WorldEnd FindWorldEnd(LineReader& input, const std::function<void()>& yield);

}  // namespace quillmere
