#include "report/density_grid.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <map>
#include <random>
#include <utility>

namespace quillmere::test {
namespace {

constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();

/// How many points are kept and removed, by point or by cell.
using Counts = std::map<std::pair<std::int64_t, std::int64_t>, std::pair<std::int64_t, std::int64_t>>;

/// Compares every cell with the points that lie in it.
void ExpectCells(const DensityGrid& grid, const Counts& points) {
    Counts expected;
    for (const auto& [point, counts] : points) {
        auto& [kept, removed] = expected[{point.first >> grid.Shift(), point.second >> grid.Shift()}];
        kept += counts.first;
        removed += counts.second;
    }
    const DensityGrid::CellRange& range = grid.Cells();
    ASSERT_LE(range.lastColumn - range.firstColumn, DensityGrid::mostCells - 1);
    ASSERT_LE(range.lastRow - range.firstRow, DensityGrid::mostCells - 1);
    Counts cells;
    for (std::int64_t row = range.firstRow; row <= range.lastRow; ++row) {
        for (std::int64_t column = range.firstColumn; column <= range.lastColumn; ++column) {
            const DensityGrid::Cell cell = grid.At(column, row);
            if (cell.kept + cell.removed != 0) cells[{column, row}] = {cell.kept, cell.removed};
        }
    }
    ASSERT_EQ(cells, expected);
}

TEST(DensityGrid, CountsEachPointInItsCellHoweverFarThePointsLieApart) {
    std::mt19937 random(1);
    for (int round = 0; round < 30; ++round) {
        DensityGrid grid;
        Counts points;
        const auto corner = random();
        for (int point = 0; point < 300; ++point) {
            // Farther apart round by round, at last as far as numbers go.
            const auto near = [&] { return static_cast<std::int32_t>(corner + (random() >> (31 - round))); };
            std::int32_t x = near();
            std::int32_t y = near();
            if (round == 29 && point % 5 == 0) x = point % 2 == 0 ? lowest : highest;
            if (round == 29 && point % 7 == 0) y = point % 2 == 0 ? highest : lowest;
            const bool removed = random() % 2 == 0;
            grid.Count(x, y, removed);
            auto& counts = points[{x, y}];
            ++(removed ? counts.second : counts.first);
        }
        ExpectCells(grid, points);
        grid.Coarsen();
        ExpectCells(grid, points);
    }
}

}  // namespace
}  // namespace quillmere::test
