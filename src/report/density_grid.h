#pragma once

#include "base/prefetch.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace quillmere {

/// How many blocks stay and how many go in each part of one facet's map. The map is cut into square cells. As
/// the area that holds blocks grows, the cells become larger, so that there are never more than 1,024 by
/// 1,024 of them. Memory is taken only for parts of the map that hold blocks.
class DensityGrid {
 public:
    static constexpr std::int32_t mostCells = 1024;  ///< in one direction

    struct Cell {
        std::uint32_t kept = 0;
        std::uint32_t removed = 0;
    };
    /// A range of cells, in both directions; empty when a last cell comes before the first. A loop over it
    /// can step past the last cell: that takes more than 32 bits.
    struct CellRange {
        std::int64_t firstColumn = 0;
        std::int64_t firstRow = 0;
        std::int64_t lastColumn = -1;
        std::int64_t lastRow = -1;
    };

    void Count(std::int32_t x, std::int32_t y, bool removed) {
        std::int64_t column = x >> shift_;
        std::int64_t row = y >> shift_;
        if (column < cells_.firstColumn || column > cells_.lastColumn || row < cells_.firstRow ||
            row > cells_.lastRow) {
            Include(x, y);
            column = x >> shift_;
            row = y >> shift_;
        }
        Cell& cell = CellAt(column, row);
        ++(removed ? cell.removed : cell.kept);
    }

    /// To be called some time before the point is counted: the cells of a large map lie in memory that is
    /// slow to reach.
    void Prepare(std::int32_t x, std::int32_t y) const {
        const std::int64_t column = x >> shift_;
        const std::int64_t row = y >> shift_;
        const auto& tile = tiles_[TileIndex(column, row)];
        if (tile != nullptr) Prefetch(&(*tile)[IndexInTile(column, row)]);
    }

    /// Cell 0 begins at coordinate 0 and is 2 to this power wide and high.
    unsigned Shift() const { return shift_; }
    /// The cells counted so far lie in this range.
    const CellRange& Cells() const { return cells_; }
    Cell At(std::int64_t column, std::int64_t row) const;
    /// Doubles the width and height of the cells. Of use only while there are more than four tiles: those
    /// around the origin never become one.
    void Coarsen();
    /// Tiles that take memory.
    std::size_t TileCount() const { return tileCount_; }

    static constexpr std::int32_t tileBits = 5;
    static constexpr std::int32_t tileSide = 1 << tileBits;  ///< cells in one direction of a tile

 private:
    static constexpr std::int32_t tilesAcross = mostCells / tileSide;
    using Tile = std::array<Cell, std::size_t{tileSide} * tileSide>;

    void Include(std::int32_t x, std::int32_t y);
    static bool Fits(const CellRange& range);
    Cell& CellAt(std::int64_t column, std::int64_t row);

    /// The place of a tile; no two tiles of a range that fits have the same.
    static std::size_t TileIndex(std::int64_t column, std::int64_t row) {
        const std::int64_t across = (column >> tileBits) & (tilesAcross - 1);
        const std::int64_t down = (row >> tileBits) & (tilesAcross - 1);
        return static_cast<std::size_t>(down * tilesAcross + across);
    }
    static std::size_t IndexInTile(std::int64_t column, std::int64_t row) {
        return static_cast<std::size_t>((row & (tileSide - 1)) * tileSide + (column & (tileSide - 1)));
    }

    using Tiles = std::array<std::unique_ptr<Tile>, std::size_t{tilesAcross} * tilesAcross>;
    Tiles tiles_;
    std::size_t tileCount_ = 0;
    unsigned shift_ = 0;
    CellRange cells_;
};

}  // namespace quillmere
