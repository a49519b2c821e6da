#include "toolkit/hand_pointer.h"

#include <cstddef>
#include <iterator>
#include <string_view>

namespace quillmere {

namespace {

/// "#" is black and "." is white. The rows below are empty.
constexpr std::string_view picture[] = {
    "",
    "           ##",
    "          #..#",
    "          #..#",
    "          #..#",
    "          #..#",
    "          #..#",
    "          #..###",
    "          #..#..###",
    "          #..#..#..##",
    "          #..#..#..#.#",
    "      ### #..#..#..#..#",
    "      #..##..#..#..#..#",
    "      #...#...........#",
    "       #..............#",
    "        #.............#",
    "        #.............#",
    "         #............#",
    "         #...........#",
    "          #..........#",
    "          #..........#",
    "           #........#",
    "           #........#",
    "           ##########",
};

void Set(HandPointer::Bits& bits, std::size_t pixel) {
    bits[pixel / 8] |= static_cast<std::uint8_t>(0x80U >> pixel % 8);
}

}  // namespace

HandPointer MakeHandPointer() {
    HandPointer hand;
    for (std::size_t y = 0; y < std::size(picture); ++y) {
        for (std::size_t x = 0; x < picture[y].size(); ++x) {
            const std::size_t pixel = y * HandPointer::size + x;
            if (picture[y][x] != ' ') Set(hand.opaque, pixel);
            if (picture[y][x] == '#') Set(hand.black, pixel);
        }
    }
    return hand;
}

}  // namespace quillmere
