#pragma once

#include <algorithm>
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

/// A table of 501 slots that counts its changes, so that code which prepared something from it can tell when
/// that is out of date. Any access to a table that is not const counts as a change. Use a reference from such
/// an access at once: changes made through it later are not counted.
template <class Entry>
class FilterTable {
 public:
    using value_type = Entry;
    using Slots = std::array<Entry, filterSlots>;

    FilterTable() = default;
    FilterTable(const FilterTable& other) : slots_(other.slots_) {}
    FilterTable& operator=(const FilterTable& other) {
        slots_ = other.slots_;
        ++changes_;
        return *this;
    }
    ~FilterTable() = default;

    static constexpr std::size_t size() { return filterSlots; }
    /// How many slots stand before the first free one: the entries of the table.
    std::size_t EntryCount() const {
        const auto isFree = [](const Entry& entry) { return entry.name.empty(); };
        return static_cast<std::size_t>(std::ranges::find_if(slots_, isFree) - slots_.begin());
    }
    const Entry& operator[](std::size_t slot) const { return slots_[slot]; }
    Entry& operator[](std::size_t slot) { return Changing()[slot]; }
    typename Slots::const_iterator begin() const { return slots_.begin(); }
    typename Slots::const_iterator end() const { return slots_.end(); }
    typename Slots::iterator begin() { return Changing().begin(); }
    typename Slots::iterator end() { return Changing().end(); }
    void fill(const Entry& entry) { Changing().fill(entry); }

    /// Grows whenever the table may have changed.
    std::uint64_t Changes() const { return changes_; }
    bool operator==(const FilterTable& other) const { return slots_ == other.slots_; }

 private:
    Slots& Changing() {
        ++changes_;
        return slots_;
    }

    Slots slots_;
    std::uint64_t changes_ = 0;
};

/// Names and codes are bytes, stored exactly as typed or read, and may repeat.
using RectangleTable = FilterTable<RectangleFilter>;
using ItemTable = FilterTable<ItemFilter>;

/// The two lists against which a pass tests the blocks; the list editor works on a copy. Only a list file
/// edited by hand can leave a gap in a table; what stands after it is kept but never tested.
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
