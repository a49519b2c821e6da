#include "report/page.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quillmere::test {
namespace {

/// Counts blocks that are spread over some facets.
void AddBlocks(Facts& facts, std::int32_t facets, int blocks, std::string_view code) {
    std::mt19937 random(2);
    WorldItem item;
    const std::string lines = "[WORLDITEM " + std::string(code) + "]\r\n\r\n";
    item.Lines.Borrow(lines, 1);
    item.code = {11, code.size()};
    item.Placed = true;
    for (int block = 0; block < blocks; ++block) {
        item.Facet = static_cast<std::int32_t>(random() % static_cast<std::uint32_t>(facets));
        item.X = static_cast<std::int32_t>(random() % 7000) - 100;
        item.Y = static_cast<std::int32_t>(random());
        if (facets > 100 && block < 100 * 1024) {  // first a map is filled, then the next
            item.Facet = block / 1024;
            item.X = block % 32 * 32;
            item.Y = block % 1024;
        }
        facts.RecordJudged(item, {.selectedBy = {}, .remove = random() % 3 == 0});
    }
}

/// What the page holds as JSON in the element `id`.
std::string ElementOf(const std::string& page, const std::string& id) {
    const std::string start = "id=\"" + id + "\">";
    const std::size_t begin = page.find(start) + start.size();
    return page.substr(begin, page.find("</script>", begin) - begin);
}

TEST(Page, ShowsEveryPlacedBlockInMapsOfAtMostTwoMegabytes) {
    for (const std::int32_t facets : {1, 300}) {
        Report report;
        report.facts = Facts(Detail::Maps);
        AddBlocks(report.facts, facets, 400'000, "i_torch");
        report.facts.Finish();
        const std::string maps = ElementOf(PageText(report), "maps");
        EXPECT_LE(maps.size(), 2'010'000u);
        std::size_t tiles = 0;
        for (const auto& map : nlohmann::json::parse(maps)) {
            const FacetFacts& facet = report.facts.facets.at(map["facet"]);
            tiles += facet.density.TileCount();
            EXPECT_LT(facet.density.Shift(), 28u) << "on facet " << map["facet"];
            for (const auto& [layer, sum] :
                 {std::pair("kept", facet.tally.Kept()), {"removed", facet.tally.removed}}) {
                std::int64_t counted = 0;
                for (const std::vector<std::int64_t> run : map[layer]) {
                    for (auto number = run.begin() + 2; number != run.end(); ++number)
                        counted += std::max<std::int64_t>(*number, 0);
                }
                EXPECT_EQ(counted, sum) << layer << " on facet " << map["facet"];
            }
        }
        constexpr std::size_t tileSize =
            sizeof(DensityGrid::Cell) * DensityGrid::tileSide * DensityGrid::tileSide;
        EXPECT_LE(tiles * tileSize, 32u << 20);
    }
}

TEST(Page, TextsOfStrangersAreNoMarkup) {
    Report report;
    const std::size_t scripts = PageText(report).size() - PageText(report).find("<script>");
    report.facts = Facts(Detail::Maps);
    const std::string hostile = "</script><script>alert(1)</script><!--{{maps}}";
    AddBlocks(report.facts, 1, 10, hostile);
    report.error = report.settings.strInputFile = report.listFile = hostile;
    report.arguments = report.warnings = report.notes = report.codesNotFound = {hostile, "\xff\xe2\x80\xa8"};
    report.rectangles = {{hostile, 1, 2, 3, 4}};
    const std::string page = PageText(report);
    EXPECT_EQ(page.find("alert(1)</script"), std::string::npos);
    EXPECT_EQ(page.size() - page.find("<script>"), scripts) << "a script that is not ours comes first";
    EXPECT_EQ(nlohmann::json::parse(ElementOf(page, "report"))["codes"][0]["code"], hostile);
}

}  // namespace
}  // namespace quillmere::test
