#pragma once

#include "engine/status_log.h"

#include <cstdint>
#include <string>

namespace quillmere {

/// What the user reads while a pass runs: how many records it has read so far.
std::string ProgressText(std::int64_t processed);

/// What the info line says from tick to tick of the main window's timer, ten a second: the progress of the
/// pass that runs, and a remark now and then while none does. Lives as long as the program; a pass in between
/// does not start the remarks over.
class ProgressDisplay {
 public:
    /// One tick. `lngProcessed` counts the records that the running pass has read.
    void Tick(bool blnIdle, std::int64_t lngProcessed, StatusLog& log);

 private:
    void ShowNextBanter(StatusLog& log);

    std::uint8_t bytTickCount_ = 0;    ///< idle ticks since the last remark; 1 while a pass runs
    std::uint8_t bytBanterIndex_ = 0;  ///< number, from 1, of the remark shown last; 0 before the first
};

}  // namespace quillmere
