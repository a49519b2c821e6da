#include "engine/progress_display.h"

#include "base/number_text.h"

#include <array>
#include <cstddef>

namespace quillmere {

namespace {

constexpr std::uint8_t quietTicks = 250;  // a remark comes at the next tick

constexpr std::array banter = {
    "(Helloooo....)",
    "Are you gonna do anything?",
    "...",
    "You bore me....",
    "Lets get to work.",
    "*hums happy birthday*",
    "Wtf?",
    "God you are slow....",
    "I'M BORED!  LOAD SOMETHING!",
    "You are going insane....",
    "Programs don't talk to you :P",
    "Si teh munky. :D",
    "(Pacing like a mindless robot)",
};

}  // namespace

std::string ProgressText(std::int64_t processed) {
    return "Processed " + DecimalWithSignPosition(processed) + " objects.";
}

void ProgressDisplay::Tick(bool blnIdle, std::int64_t lngProcessed, StatusLog& log) {
    if (!blnIdle) {
        log.ShowInfo(ProgressText(lngProcessed));
        bytTickCount_ = 1;
        return;
    }
    if (++bytTickCount_ <= quietTicks) return;
    bytTickCount_ = 1;
    ShowNextBanter(log);
}

void ProgressDisplay::ShowNextBanter(StatusLog& log) {
    if (++bytBanterIndex_ > banter.size()) bytBanterIndex_ = 1;
    log.ShowInfo(banter[bytBanterIndex_ - std::size_t{1}]);
}

}  // namespace quillmere
