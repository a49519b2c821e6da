#include "report/report.h"

#include "system/code_page.h"
#include "tests/support/batch_rig.h"

#include <algorithm>
#include <array>
#include <functional>
#include <map>
#include <random>

namespace quillmere::test {
namespace {

using nlohmann::json;
using std::string_literals::operator""s;

/// For each thing that a report counts, how many blocks there are and how many are removed.
using Counts = std::map<std::string, std::array<int, 2>>;

/// Makes a world of random blocks, and counts what there is, and what --facet-not-in 7 removes of it.
std::string RandomWorld(unsigned seed, bool removing, Counts& counts) {
    std::mt19937 random(seed);
    const std::string words[] = {"WORLDITEM", "WORLDCHAR", "<b>"};
    const std::string codes[] = {"i_torch", "</script>", "__proto__", "\xE9\x81\"", "\\", ""};
    std::string text;
    std::size_t facets = 0;
    counts = {{"all", {}}, {"unplaced", {}}, {"otherFacets", {}}};
    for (auto block = random() % 1500; block > 0; --block) {
        const std::string& word = words[random() % 3];
        const std::string& code = codes[random() % 6];
        text += '[' + word + (code.empty() ? "]" : " " + code + "]") + "\r\n";
        const auto facet = random() % 400;
        const bool placed = facet < 300;
        if (placed) text += "P=1,2,0," + std::to_string(facet) + "\r\n";
        std::string where = placed ? "facet " + std::to_string(facet) : "unplaced";
        if (!counts.contains(where) && ++facets > Facts::mostFacets) where = "otherFacets";
        text += "\r\n";
        for (const std::string& counted : {std::string("all"), where, "word " + json(word).dump(),
                                           "code " + json(Utf8FromCodePage(code)).dump()}) {
            ++counts[counted][0];
            counts[counted][1] += removing && facet != 7 ? 1 : 0;
        }
    }
    return text + "[EOF]\r\n";
}

/// What a report counts. The most frequent comes first.
Counts CountsOf(const json& report) {
    Counts counts;
    const auto count = [&counts](const std::string& counted, const json& row) {
        counts[counted] = {row["blocks"], row["removed"]};
        EXPECT_EQ(row["kept"], counts[counted][0] - counts[counted][1]);
    };
    for (const char* const sum : {"all", "unplaced", "otherFacets"})
        count(sum, report[sum]);
    for (const auto& [table, key] : {std::array{"facets", "facet"}, {"headers", "word"}, {"codes", "code"}}) {
        const json& rows = report[table];
        for (const json& row : rows)
            count(std::string(key) + " " + row[key].dump(), row);
        const auto blocks = [](const json& row) { return row["blocks"].get<int>(); };
        EXPECT_TRUE(key == "facet"s || std::ranges::is_sorted(rows, std::greater(), blocks));
    }
    return counts;
}

TEST_F(Batch, TheJsonObjectHoldsTheNumbersOfTheWorld) {
    for (unsigned seed = 0; seed < 60; ++seed) {
        const std::string line =
            std::array{"survey --json --force world", "-n --json --force --facet-not-in 7 world",
                       "--json --force --facet-not-in 7 world out"}[seed % 3];
        Counts counts;
        system.files["world"] = RandomWorld(seed, seed % 3 != 0, counts);
        ASSERT_EQ(Run(line), exitComplete) << err.str();
        const json report = json::parse(out.str());
        EXPECT_EQ(report["arguments"], Words(line));
        EXPECT_EQ(report["output"], line.ends_with("out") ? json("out") : json());
        EXPECT_EQ(CountsOf(report), counts) << "seed " << seed;
    }
}

TEST_F(Batch, ASurveySaysWhatTheWorldHoldsAndWritesNothing) {
    system.files["world"] =
        Lines({"stray", "[WORLDITEM i_torch]", "P=-5,200,0,1", "", "[WORLDITEM i_torch]", "P=7,100,0,1", "",
               "[WORLDCHAR \x1B[2J]", "", "lost", "[SECTOR]", "P=300,400,5", "", "[EOF]"});
    const auto before = system.files;
    EXPECT_EQ(Run("survey world"), exitComplete);
    EXPECT_EQ(out.str(),
              "The world script holds 4 blocks.\nIts lines end with CR LF; its last line is [EOF].\n"
              "1 line outside blocks, the first is line 10.\n"
              "header\t2 blocks\tWORLDITEM\nheader\t1 block\tSECTOR\nheader\t1 block\tWORLDCHAR\n"
              "facet\t1 block\t0, from 300,400 to 300,400\nfacet\t2 blocks\t1, from -5,100 to 7,200\n"
              "facet\t1 block\tnone, without a position\n"
              "item\t2 blocks\ti_torch\nitem\t1 block\t\nitem\t1 block\t?[2J\n");
    EXPECT_EQ(err.str(), "");
    EXPECT_EQ(system.files, before);
    Run("survey --json world");
    EXPECT_EQ(json::parse(out.str())["facets"][1]["bounds"],
              (json{{"x1", -5}, {"y1", 100}, {"x2", 7}, {"y2", 200}}));
    EXPECT_EQ(Run("./survey out"), exitRefused) << "a file of that name asks for a cleaning";
    EXPECT_NE(err.str().find("no filter is given"), std::string::npos);
}

TEST_F(Batch, JsonTellsWhatTheRunWasAskedFor) {
    system.files["world"] = Lines({"[A b]", "P=1,2,3,4", "", "x", "", "y", "[EOF]"});
    system.files["list"] = Lines({"A", "i_none", "</ITEMS>", "T", "1", "3", "2", "4", "</RECTANGLES>"});
    Run("-n --json -l list --items not-equal --rectangles in --facet-in 4 --removed gone world");
    const json told = json::parse(R"({"removedFile": "gone", "list": "list", "lineEnds": "CR LF", "filters": [
        {"filter": "items", "selects": "not in", "selected": 1}, {"filter": "rectangles", "selects": "in",
        "selected": 1}, {"filter": "facet", "selects": "in", "value": "4", "selected": 1}],
        "endsWithEof": true, "linesOutside": {"lines": 2, "first": 4}, "codesNotFound": ["i_none"],
        "rectangles": [{"name": "T", "x1": 1, "y1": 2, "x2": 3, "y2": 4}]})");
    for (const auto& [key, value] : told.items())
        EXPECT_EQ(json::parse(out.str())[key], value) << key;
}

TEST_F(Batch, JsonTellsOfAPageThatFailsAndOfAHalt) {
    EXPECT_EQ(Run("--facet-in 9 --page page world out"), exitComplete);
    EXPECT_TRUE(system.files["page"].starts_with("<!DOCTYPE html>"));
    EXPECT_NE(system.files["page"].find("Blocks: 2, go: 0, stay: 2<"), std::string::npos);
    EXPECT_EQ(Run("--json --facet-in 1 --page missing/page world out"), exitFailed);
    const json report = json::parse(out.str());
    EXPECT_EQ(report["outcome"], "failed");
    EXPECT_NE(err.str().find(report["error"]), std::string::npos);
    EXPECT_NE(report["error"].dump().find("missing/page"), std::string::npos);
    EXPECT_NE(system.files["out"], "old") << "the page comes last";
    interrupted = true;
    EXPECT_EQ(Run("survey world"), exitHalted);
    EXPECT_EQ(out.str(), "Halt command issued.\n");
    EXPECT_EQ(Run("survey --json world"), exitHalted);
    EXPECT_EQ(json::parse(out.str())["outcome"], "halted");
}

}  // namespace
}  // namespace quillmere::test
