#pragma once

#include "textfile/number_text.h"

#include <cstdint>
#include <string>

namespace quillmere {

/// What the user reads while a pass runs: how many records it has read so far.
inline std::string ProgressText(std::int32_t processed) {
    return "Processed " + DecimalWithSignPosition(processed) + " objects.";
}

}  // namespace quillmere
