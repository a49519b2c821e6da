#include "toolkit/timer.h"

#include "toolkit/window.h"

namespace quillmere {

Timer::Timer(Window& window, std::chrono::milliseconds interval) : interval_(interval) {
    window.timers_.push_back(this);
}

}  // namespace quillmere
