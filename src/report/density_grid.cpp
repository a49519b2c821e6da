#include "report/density_grid.h"

#include <algorithm>
#include <utility>

namespace quillmere {

DensityGrid::Cell DensityGrid::At(std::int64_t column, std::int64_t row) const {
    const auto& tile = tiles_[TileIndex(column, row)];
    return tile == nullptr ? Cell() : (*tile)[IndexInTile(column, row)];
}

void DensityGrid::Coarsen() {
    const Tiles fine = std::exchange(tiles_, {});
    const CellRange range = cells_;
    tileCount_ = 0;
    ++shift_;
    cells_ = {range.firstColumn >> 1, range.firstRow >> 1, range.lastColumn >> 1, range.lastRow >> 1};
    for (std::int64_t row = range.firstRow; row <= range.lastRow; ++row) {
        for (std::int64_t column = range.firstColumn; column <= range.lastColumn; ++column) {
            const auto& tile = fine[TileIndex(column, row)];
            if (tile == nullptr) continue;
            const Cell& from = (*tile)[IndexInTile(column, row)];
            if (from.kept == 0 && from.removed == 0) continue;
            Cell& to = CellAt(column >> 1, row >> 1);
            to.kept += from.kept;
            to.removed += from.removed;
        }
    }
}

/// Makes the range of cells hold the point, with larger cells if need be.
void DensityGrid::Include(std::int32_t x, std::int32_t y) {
    while (true) {
        const std::int64_t column = x >> shift_;
        const std::int64_t row = y >> shift_;
        CellRange range = {column, row, column, row};
        if (tileCount_ > 0) {
            range = {std::min(column, cells_.firstColumn), std::min(row, cells_.firstRow),
                     std::max(column, cells_.lastColumn), std::max(row, cells_.lastRow)};
        }
        if (Fits(range)) {
            cells_ = range;
            return;
        }
        Coarsen();
    }
}

/// Whether the tiles of the range have places of their own.
bool DensityGrid::Fits(const CellRange& range) {
    return (range.lastColumn >> tileBits) - (range.firstColumn >> tileBits) < tilesAcross &&
           (range.lastRow >> tileBits) - (range.firstRow >> tileBits) < tilesAcross;
}

DensityGrid::Cell& DensityGrid::CellAt(std::int64_t column, std::int64_t row) {
    auto& tile = tiles_[TileIndex(column, row)];
    if (tile == nullptr) {
        tile = std::make_unique<Tile>();
        ++tileCount_;
    }
    return (*tile)[IndexInTile(column, row)];
}

}  // namespace quillmere
