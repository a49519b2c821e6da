#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace quillmere {

/// Slots of each table, numbered 0 to 500.
inline constexpr std::size_t filterSlots = 501;

/// A named map area. The corners are stored as given: nothing orders them, and a rectangle whose first corner
/// is not the one with the smaller coordinates contains no point.
struct RectangleFilter {
    std::string name;  ///< empty: the slot is free
    std::int32_t X1 = 0;
    std::int32_t Y1 = 0;
    std::int32_t X2 = 0;
    std::int32_t Y2 = 0;

    bool operator==(const RectangleFilter&) const = default;
};

/// A named item definition code.
struct ItemFilter {
    std::string name;  ///< empty: the slot is free
    std::string code;  ///< compared with a block's code as a whole, letter case included

    bool operator==(const ItemFilter&) const = default;
};

/// Names and codes are bytes, stored exactly as typed or read, and may repeat.
using RectangleTable = std::array<RectangleFilter, filterSlots>;
using ItemTable = std::array<ItemFilter, filterSlots>;

/// The two lists against which a pass tests the blocks; the list editor works on a copy of the same shape.
/// The entries of a table are its slots before the first free one. Only a list file edited by hand can leave
/// a gap; the entries behind it are kept but never tested.
struct FilterSet {
    RectangleTable arrRectangles;
    ItemTable arrItems;

    /// Makes every slot of both tables free.
    void Clear() {
        arrItems.fill({});
        arrRectangles.fill({});
    }
};

}  // namespace quillmere
