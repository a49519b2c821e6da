#pragma once

#include <array>
#include <cstdint>

namespace quillmere {

/// The pointer over a link: a hand whose fingertip is the hot spot. In pixels.
struct HandPointer {
    static constexpr int size = 32;
    static constexpr int hotX = 12;
    static constexpr int hotY = 1;
    /// One bit for each pixel, in rows from the top. The highest bit of a byte is its leftmost pixel.
    using Bits = std::array<std::uint8_t, size * size / 8>;

    Bits opaque{};  ///< the others are transparent
    Bits black{};   ///< of those that are opaque; the others are white
};

HandPointer MakeHandPointer();

}  // namespace quillmere
