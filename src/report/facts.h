#pragma once

#include "base/keyed_hash.h"
#include "engine/decisions.h"
#include "engine/world_item.h"
#include "report/density_grid.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace quillmere {

/// How many blocks there are of one sort, and how many of them go.
struct Tally {
    std::int64_t blocks = 0;
    std::int64_t removed = 0;

    void Add(bool remove) {
        ++blocks;
        removed += remove ? 1 : 0;
    }
    std::int64_t Kept() const { return blocks - removed; }
};

/// The smallest rectangle that holds some points; made with none, it holds nothing.
struct Bounds {
    std::int32_t x1 = std::numeric_limits<std::int32_t>::max();
    std::int32_t y1 = std::numeric_limits<std::int32_t>::max();
    std::int32_t x2 = std::numeric_limits<std::int32_t>::min();
    std::int32_t y2 = std::numeric_limits<std::int32_t>::min();

    void Include(std::int32_t x, std::int32_t y) {
        x1 = std::min(x1, x);
        y1 = std::min(y1, y);
        x2 = std::max(x2, x);
        y2 = std::max(y2, y);
    }
};

/// The blocks of one facet that have a position.
struct FacetFacts {
    Tally tally;
    Bounds bounds;
    DensityGrid density;  ///< filled only with Detail::Maps
};

/// Tallies by a text that a stranger may have chosen. A search takes a part of a block's text, without a
/// copy.
class TallyTable {
 public:
    using Row = std::pair<const std::string, Tally>;

    TallyTable() = default;
    TallyTable(TallyTable&&) = default;
    TallyTable& operator=(TallyTable&&) = default;

    /// The row of `key`, which is added if it is missing. It stays where it is.
    Row& RowOf(std::string_view key) {
        Row*& recent = recent_[RecentPlace(key)];
        if (recent == nullptr || recent->first != key) recent = &FoundOrAdded(key);
        return *recent;
    }
    auto begin() const { return tallies_.begin(); }
    auto end() const { return tallies_.end(); }
    std::size_t size() const { return tallies_.size(); }

 private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const { return KeyedHash(text); }
    };

    Row& FoundOrAdded(std::string_view key) {
        const auto found = tallies_.find(key);
        return found != tallies_.end() ? *found : *tallies_.try_emplace(std::string(key)).first;
    }

    static constexpr unsigned recentBits = 10;
    /// From the length and three bytes of `key`.
    static std::size_t RecentPlace(std::string_view key) {
        if (key.empty()) return 0;
        const auto byte = [key](std::size_t at) {
            return std::uint32_t{static_cast<unsigned char>(key[at])};
        };
        const std::size_t size = key.size();
        const std::uint32_t bytes = byte(size - 1) << 16U | byte(size / 2) << 8U | byte(size * 3 / 4);
        return ((bytes ^ static_cast<std::uint32_t>(size) << 24U) * 0x9E3779B1U) >> (32U - recentBits);
    }

    std::unordered_map<std::string, Tally, Hash, std::equal_to<>> tallies_;
    /// Rows found last, which are nearly always those looked for next. The keyed hash, without which
    /// strangers could make a table slow, costs more than all the rest.
    std::array<Row*, std::size_t{1} << recentBits> recent_{};
};

/// The rows of a table whose `count` is not 0, the largest first; those with the same count by their text.
std::vector<std::pair<std::string_view, Tally>> SortedTallies(const TallyTable& table,
                                                              std::int64_t Tally::*count);

/// How much a pass collects. More takes more time for each block, and more memory.
enum class Detail {
    Sums,    ///< without the tables and the maps
    Tables,  ///< also by header, code and facet
    Maps     ///< also where the blocks of each facet lie
};

/// What one pass over a world script finds out.
class Facts {
 public:
    explicit Facts(Detail detail = Detail::Sums) : detail_(detail) {}

    // As for a PassObserver.
    void RecordJudged(const WorldItem& item, const Verdict& verdict);
    void LineSkipped(std::uint64_t number);
    void SentinelCopied() {
        endsWithSentinel = true;
        sentinelRemoved = false;
    }
    /// To be called after the last block: brings the maps up to date.
    void Finish();

    Tally all;
    std::array<std::int64_t, filterTypeCount>
        selected{};                      ///< blocks that each kind of filter selects by itself
    std::int64_t removedWithHeader = 0;  ///< removed blocks that hold a second header, so are perhaps two
    bool endsWithSentinel = false;       ///< the last line so far that is not empty is "[EOF]"
    bool sentinelRemoved = false;        ///< it is in the last block, which is removed
    std::uint64_t linesOutside = 0;      ///< lines that belong to no block and are left out
    std::uint64_t firstOutside = 0;      ///< number of the first of these lines

    // Texts are in the code page.
    TallyTable byHeader;  ///< by the first word of the header
    TallyTable byCode;
    std::map<std::int32_t, FacetFacts> facets;  ///< the blocks with a position
    Tally otherFacets;                          ///< those on facets beyond the most that are told apart
    Tally unplaced;                             ///< the blocks without a position

    static constexpr std::size_t mostFacets = 256;  ///< that are told apart

 private:
    void CountInTables(const WorldItem& item, bool remove);
    void CountPlaced(const WorldItem& item, bool remove);
    FacetFacts* FacetOf(std::int32_t number);
    struct Placed {
        FacetFacts* facet = nullptr;  ///< null: none
        std::int32_t x = 0;
        std::int32_t y = 0;
        bool remove = false;
    };
    void CountOnMap(const Placed& placed);
    void LimitMaps();

    Detail detail_;
    std::size_t tiles_ = 0;  ///< of all maps, when last limited
    /// Blocks that wait until their cells are fetched. Without that a pass with maps takes twice as long.
    std::array<Placed, 16> waiting_{};
    std::size_t nextWaiting_ = 0;
    TallyTable::Row* lastHeader_ = nullptr;  ///< nearly always that of the next block, too
    std::int32_t lastFacet_ = 0;
    FacetFacts* lastFacetFacts_ = nullptr;
};

}  // namespace quillmere
