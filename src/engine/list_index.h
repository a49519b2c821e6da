#pragma once

#include "filters/filter_set.h"

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quillmere {

// A pass tests every block against both lists, and walking 501 entries for each would take longer than all
// the rest. An index answers just as the walk would, in a time that hardly depends on the list's length. It
// belongs to one table and prepares itself anew when that has changed.

/// A count of changes that no table reaches.
inline constexpr std::uint64_t neverPrepared = ~std::uint64_t{0};

/// What the blocks of a pass had to do with each entry of the item list. Of entries with the same code the
/// first one stands for all.
struct CodeUse {
    std::bitset<filterSlots> found;  ///< whether a block had the code
    /// A block's code that differs from the entry's in the case of letters a to z only; empty: none.
    std::vector<std::string> inOtherCase = std::vector<std::string>(filterSlots);
};

/// Finds codes in an item table.
class CodeIndex {
 public:
    /// Keeps in `use` what was looked for since the table changed last. Both must outlive the index.
    CodeIndex(const ItemTable& table, CodeUse& use) : table_(table), use_(use) { use_ = {}; }

    /// Whether an entry before the first free slot has exactly this code.
    bool Contains(std::string_view code);

 private:
    /// A place in a hash table; the entry with the code stands in the slot.
    struct Place {
        std::uint32_t hash = 0;  ///< 0: nothing stands here
        std::uint32_t slot = 0;
    };
    static constexpr unsigned placeBits = 12;
    static constexpr std::size_t places = std::size_t{1} << placeBits;  // eight times the slots
    static constexpr std::size_t FirstPlace(std::uint32_t hash) { return hash >> (32 - placeBits); }

    void Prepare();

    void NoteOtherCase(std::size_t slot, std::string_view code);

    const ItemTable& table_;
    CodeUse& use_;
    std::uint64_t preparedAt_ = neverPrepared;  ///< the table's count of changes
    std::vector<Place> places_;
};

/// Finds the rectangles of a rectangle table that contain a point. The smallest area that holds them all is
/// cut into 64 columns and 64 rows; a rectangle can only contain a point whose column and row it touches.
class RectangleIndex {
 public:
    /// `table` must outlive the index.
    explicit RectangleIndex(const RectangleTable& table) : table_(table) {}

    /// Whether a rectangle before the first free slot contains the point, bounds included.
    bool Contains(std::int32_t x, std::int32_t y);

 private:
    static constexpr std::size_t stripes = 64;
    static constexpr std::size_t words = (filterSlots + 63) / 64;
    /// A set of slots, a bit each.
    using SlotSet = std::array<std::uint64_t, words>;

    /// One direction: which rectangles touch each stripe.
    class Axis {
     public:
        /// Starts over, with stripes for the numbers from `low` to `high`.
        void Reset(std::int64_t low, std::int64_t high);
        void Add(std::size_t slot, std::int64_t from, std::int64_t to);
        /// The rectangles that touch the stripe of `at`; null where no stripe is.
        const SlotSet* Touching(std::int64_t at) const {
            const std::uint64_t stripe = static_cast<std::uint64_t>(at - low_) >> shift_;
            return stripe < touching_.size() ? &touching_[stripe] : nullptr;
        }

     private:
        std::int64_t low_ = 0;
        unsigned shift_ = 0;  ///< a stripe is this power of two wide
        std::vector<SlotSet> touching_;
    };

    void Prepare();
    bool AnyContains(const SlotSet& columns, const SlotSet& rows, std::int32_t x, std::int32_t y) const;

    const RectangleTable& table_;
    std::uint64_t preparedAt_ = neverPrepared;  ///< the table's count of changes
    Axis columns_;
    Axis rows_;
};

}  // namespace quillmere
