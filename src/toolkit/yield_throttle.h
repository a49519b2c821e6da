#pragma once

#include <chrono>
#include <cstdint>

namespace quillmere {

/// Yield is called millions of times a second, and looking at a window system's queue costs thousands of
/// times more than the line of work between two calls. A backend asks this first: it is told to look when 10
/// ms have passed since it last did, so that whatever the user did is served in that time. Even the clock is
/// read at every sixteenth call only, which is a fraction of a millisecond unless blocks are huge.
class YieldThrottle {
 public:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::milliseconds interval{10};

    /// Whether the queue has to be looked at now; the next interval then starts.
    bool Due() {
        if (calls_++ % callsPerReading != 0) return false;
        const Clock::time_point now = Clock::now();
        if (now - last_ < interval) return false;
        last_ = now;
        return true;
    }

 private:
    static constexpr std::uint32_t callsPerReading = 16;

    std::uint32_t calls_ = 0;
    Clock::time_point last_{};
};

}  // namespace quillmere
