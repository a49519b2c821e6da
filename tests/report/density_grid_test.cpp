#include "report/density_grid.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <random>
#include <utility>

namespace quillmere::test {
namespace {

constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();

using Points = std::map<std::pair<std::int64_t, std::int64_t>, DensityGrid::Cell>;

/// Compares every cell with the points that lie in it.
void ExpectCells(const DensityGrid& grid, const Points& points) {
    Points expected;
    for (const auto& [point, counts] : points) {
        DensityGrid::Cell& cell = expected[{point.first >> grid.Shift(), point.second >> grid.Shift()}];
        cell.kept += counts.kept;
        cell.removed += counts.removed;
    }
    const DensityGrid::CellRange& range = grid.Cells();
    ASSERT_LE(range.lastColumn - range.firstColumn, DensityGrid::mostCells - 1);
    ASSERT_LE(range.lastRow - range.firstRow, DensityGrid::mostCells - 1);
    std::size_t taken = 0;
    for (std::int64_t row = range.firstRow; row <= range.lastRow; ++row) {
        for (std::int64_t column = range.firstColumn; column <= range.lastColumn; ++column) {
            const DensityGrid::Cell cell = grid.At(column, row);
            if (cell.kept + cell.removed == 0) continue;
            ++taken;
            ASSERT_EQ(cell.kept, expected.at({column, row}).kept) << column << ',' << row;
            ASSERT_EQ(cell.removed, expected.at({column, row}).removed) << column << ',' << row;
        }
    }
    ASSERT_EQ(taken, expected.size());
}

TEST(DensityGrid, CountsEachPointInItsCellHoweverFarThePointsLieApart) {
    std::mt19937 random(1);
    for (int round = 0; round < 30; ++round) {
        DensityGrid grid;
        Points points;
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
            DensityGrid::Cell& counts = points[{x, y}];
            ++(removed ? counts.removed : counts.kept);
        }
        ExpectCells(grid, points);
        grid.Coarsen();
        ExpectCells(grid, points);
    }
}

}  // namespace
}  // namespace quillmere::test
