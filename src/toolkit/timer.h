#pragma once

#include <chrono>
#include <functional>

namespace quillmere {

class Window;

/// Ticks while its window is loaded, also while a modal window, a message box or a file dialog is open. A
/// member of its window's class.
class Timer {
 public:
    Timer(Window& window, std::chrono::milliseconds interval);
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;

    std::function<void()> OnTick = [] {};
    std::chrono::milliseconds Interval() const { return interval_; }

 private:
    std::chrono::milliseconds interval_;
};

}  // namespace quillmere
