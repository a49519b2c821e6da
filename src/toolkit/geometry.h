#pragma once

namespace quillmere {

/// A rectangle in twips, 1/1440 inch: 15 to a pixel at 96 dots per inch.
struct Twips {
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
};

inline constexpr int twipsPerPixel = 15;

}  // namespace quillmere
