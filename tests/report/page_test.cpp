#include "report/page.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace quillmere::test {
namespace {

using nlohmann::json;

const std::string hostile = "</script><script>alert(1)</script><!--{{maps}}";

struct Block {
    std::int32_t facet, x, y;
    bool removed;
};

Facts FactsOf(const std::vector<Block>& blocks) {
    Facts facts(Detail::Maps);
    const std::string lines = "[WORLDITEM " + hostile + "]\r\n\r\n";
    WorldItem item;
    item.Lines.Borrow(lines, 1);
    item.code = {11, hostile.size()};
    item.Placed = true;
    for (const auto& [facet, x, y, removed] : blocks) {
        item.Facet = facet;
        item.X = x;
        item.Y = y;
        facts.RecordJudged(item, {.selectedBy = {}, .remove = removed});
    }
    facts.Finish();
    return facts;
}

/// What the page holds in the element `id`.
json ElementOf(const std::string& page, const std::string& id) {
    const std::size_t begin = page.find('>', page.find("id=\"" + id)) + 1;
    return json::parse(page.substr(begin, page.find("</script>", begin) - begin));
}

/// How many blocks there are in squares of a map, by whether they are removed, row and column.
using Squares = std::map<std::array<std::int64_t, 3>, std::int64_t>;

Squares SquaresOf(const json& map) {
    Squares squares;
    for (const bool removed : {false, true}) {
        for (const std::vector<std::int64_t> run : map[removed ? "removed" : "kept"]) {
            std::int64_t column = run[1];
            for (auto number = run.begin() + 2; number != run.end(); ++number) {
                if (*number > 0) squares[{removed, run[0], column}] = *number;
                column += *number > 0 ? 1 : -*number;  // a negative number counts empty squares
            }
            EXPECT_TRUE(run[0] < map["rows"] && column <= map["columns"]);
        }
    }
    return squares;
}

void ExpectShown(const std::vector<Block>& blocks, std::size_t facets) {
    Report report;
    report.facts = FactsOf(blocks);
    const json maps = ElementOf(PageText(report), "maps");
    EXPECT_LE(maps.dump().size(), 2'010'000u);
    EXPECT_EQ(maps.size(), facets);
    std::size_t tiles = 0;
    for (const json& map : maps) {
        const std::int32_t facet = map["facet"];
        const std::int64_t left = map["left"];
        const std::int64_t top = map["top"];
        const std::int64_t cell = map["cell"];
        Squares expected;
        for (const Block& block : blocks) {
            if (block.facet == facet)
                ++expected[{block.removed, (block.y - top) / cell, (block.x - left) / cell}];
        }
        EXPECT_TRUE(SquaresOf(map) == expected) << "facet " << facet;
        const DensityGrid& grid = report.facts.facets.at(facet).density;
        EXPECT_LT(grid.Shift(), 28u);
        tiles += grid.TileCount();
    }
    EXPECT_LE(tiles * sizeof(DensityGrid::Cell) * DensityGrid::tileSide * DensityGrid::tileSide, 32u << 20);
}

TEST(Page, ShowsEveryPlacedBlockInMapsOfAtMostTwoMegabytes) {
    std::mt19937 random(1);
    using limits = std::numeric_limits<std::int32_t>;
    for (int bits = 1; bits <= 32; ++bits) {  // farther apart each time, at last as far as numbers go
        std::vector<Block> blocks;
        if (bits == 32)
            blocks = {{0, limits::min(), limits::max(), false}, {0, limits::max(), limits::min(), true}};
        const auto corner = random();
        const auto near = [&] { return static_cast<std::int32_t>(corner + (random() >> (32 - bits))); };
        for (int block = 0; block < 300; ++block)
            blocks.push_back({0, near(), near(), random() % 2 == 0});
        ExpectShown(blocks, 1);
    }
    const auto below = [&random](unsigned limit) { return static_cast<std::int32_t>(random() % limit); };
    const auto any = [&random] { return static_cast<std::int32_t>(random()); };
    for (const bool many : {false, true}) {
        std::vector<Block> blocks;
        for (int block = 0; many && block < 100 * 1024; ++block)  // first a map is filled, then the next
            blocks.push_back({block / 1024, block % 32 * 32, block % 1024, below(3) == 0});
        while (blocks.size() < 600'000)
            blocks.push_back({below(many ? 300 : 1), any(), any(), below(3) == 0});
        ExpectShown(blocks, many ? Facts::mostFacets : 1);
    }
}

TEST(Page, TextsOfStrangersAreNoMarkup) {
    Report report;
    const std::size_t scripts = PageText(report).size() - PageText(report).find("<script>");
    report.facts = FactsOf({{0, 0, 0, false}});
    report.error = hostile;
    report.arguments = {hostile, "\xff\xe2\x80\xa8"};
    const std::string page = PageText(report);
    EXPECT_EQ(page.find("alert(1)</script"), std::string::npos);
    EXPECT_EQ(page.size() - page.find("<script>"), scripts) << "a script that is not ours comes first";
    EXPECT_EQ(ElementOf(page, "report")["codes"][0]["code"], hostile);
}

}  // namespace
}  // namespace quillmere::test
