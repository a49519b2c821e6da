#pragma once

#include <chrono>
#include <cstdint>

namespace quillmere {

/// Tells a backend when Yield has to look for events: when it last did so 10 ms ago. Yield is called millions
/// of times a second, and looking costs thousands of times more than the work between two calls. Even reading
/// the clock would be slow, so only every sixteenth call does.
class YieldThrottle {
 public:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::milliseconds interval{10};

    /// Whether to look for events now; if so, the next interval starts.
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
