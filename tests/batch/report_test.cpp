#include "report/report.h"

#include "system/code_page.h"
#include "tests/support/batch_rig.h"

#include <algorithm>
#include <map>
#include <random>
#include <set>

namespace quillmere::test {
namespace {

using nlohmann::json;

/// A world made of random blocks, and what an honest report of it says.
struct RandomWorld {
    explicit RandomWorld(unsigned seed) : random(seed) {
        for (unsigned block = Below(400); block > 0; --block)
            AddBlock();
        text += "[EOF]\r\n";
    }

    unsigned Below(unsigned limit) { return static_cast<unsigned>(random() % limit); }

    void AddBlock() {
        static const std::vector<std::string> words = {"WORLDITEM", "WORLDCHAR", "<b>"};
        static const std::vector<std::string> codes = {"i_torch",    "</script>", "__proto__",
                                                       "\xE9\x81\"", "\\",        ""};
        const std::string& word = words[Below(3)];
        const std::string& code = codes[Below(6)];
        const int facet = static_cast<int>(Below(300));
        text += '[' + word + (code.empty() ? "]" : " " + code + "]") + "\r\n";
        const bool placed = Below(4) > 0;
        const bool goes = facet != 7 || !placed;
        if (placed) {
            const int x = static_cast<int>(Below(9000)) - 1000;
            text += "P=" + std::to_string(x) + ",5,0," + std::to_string(facet) + "\r\n";
            facets.insert(facet);
            ++placedBlocks;
        }
        text += "\r\n";
        ++blocks;
        removed += goes ? 1 : 0;
        for (auto* const count : {&byWord[Utf8FromCodePage(word)], &byCode[Utf8FromCodePage(code)]}) {
            ++count->blocks;
            count->removed += goes ? 1 : 0;
        }
    }

    std::mt19937 random;
    std::string text;
    int blocks = 0;
    int removed = 0;  ///< by --facet-not-in 7
    int placedBlocks = 0;
    std::set<int> facets;
    std::map<std::string, Tally> byWord;
    std::map<std::string, Tally> byCode;
};

/// Whether the rows are those of the table, the most frequent first.
void ExpectRows(const json& rows, const char* key, const std::map<std::string, Tally>& table, bool removes) {
    EXPECT_EQ(rows.size(), table.size());
    std::int64_t last = std::numeric_limits<std::int64_t>::max();
    for (const json& row : rows) {
        const Tally& tally = table.at(row[key]);
        EXPECT_EQ(row["blocks"], tally.blocks);
        EXPECT_EQ(row["removed"], removes ? tally.removed : 0);
        EXPECT_LE(row["blocks"], last);
        last = row["blocks"];
    }
}

TEST_F(Batch, TheJsonObjectHoldsTheNumbersOfTheWorld) {
    for (unsigned seed = 0; seed < 60; ++seed) {
        SCOPED_TRACE(seed);
        const RandomWorld world(seed);
        system.files["world"] = world.text;
        const bool removes = seed % 3 != 0;
        const std::string line = seed % 3 == 0   ? "survey --json --force world"
                                 : seed % 3 == 1 ? "-n --json --force --facet-not-in 7 world"
                                                 : "--json --force --facet-not-in 7 world out";
        ASSERT_EQ(Run(line), exitComplete) << err.str();
        const json report = json::parse(out.str());
        EXPECT_EQ(report["arguments"], Words(line));
        EXPECT_EQ(report["all"]["blocks"], world.blocks);
        EXPECT_EQ(report["all"]["removed"], removes ? world.removed : 0);
        EXPECT_EQ(report["unplaced"]["blocks"], world.blocks - world.placedBlocks);
        ExpectRows(report["headers"], "word", world.byWord, removes);
        ExpectRows(report["codes"], "code", world.byCode, removes);
        std::int64_t placed = report["otherFacets"]["blocks"];
        EXPECT_EQ(placed == 0, world.facets.size() <= Facts::mostFacets);
        EXPECT_EQ(report["facets"].size(), std::min(world.facets.size(), Facts::mostFacets));
        for (const json& facet : report["facets"]) {
            placed += facet["blocks"].get<std::int64_t>();
            EXPECT_LE(facet["bounds"]["x1"], facet["bounds"]["x2"]);
            EXPECT_EQ(facet["bounds"]["y1"], 5);
        }
        EXPECT_EQ(placed, world.placedBlocks);
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
    EXPECT_EQ(Run("./survey out"), exitRefused) << "a file of that name asks for a cleaning";
    EXPECT_NE(err.str().find("no filter is given"), std::string::npos);
}

TEST_F(Batch, JsonTellsEveryOutcome) {
    system.files["short"] = "[A b]\r\n";
    struct Row {
        std::string line;
        ExitCode exitCode;
        std::string outcome;
        std::string error;
    };
    for (const Row& row : std::vector<Row>{
             {"--facet-in 1 world out", exitComplete, "complete", ""},
             {"survey absent", exitFailed, "failed", "absent: File not found (53)."},
             {"--facet-in 1 short out", exitFailed, "failed", "short: the last line is not [EOF]"},
             {"--facet-in 1 world world", exitRefused, "refused", "You picked the same file"},
             {"--facet-in 1 world", exitRefused, "refused", "OUTPUT is missing"},
             {"survey", exitRefused, "refused", "INPUT is missing"},
             {"--facet-in 1 --page missing/p world out", exitFailed, "failed", "missing/p"}}) {
        SCOPED_TRACE(row.line);
        EXPECT_EQ(Run(row.line + " --json"), row.exitCode);
        const json report = json::parse(out.str());
        EXPECT_EQ(report["outcome"], row.outcome);
        EXPECT_EQ(report["exitCode"], row.exitCode);
        const std::string error = report["error"].is_null() ? "" : report["error"].get<std::string>();
        EXPECT_NE(error.find(row.error), std::string::npos) << error;
        EXPECT_EQ(error.empty(), row.exitCode == exitComplete);
        EXPECT_NE(err.str().find(error), std::string::npos) << "said on standard error, too";
    }
    EXPECT_NE(system.files["out"], "old") << "the page comes last";
    interrupted = true;
    EXPECT_EQ(Run("survey world"), exitHalted);
    EXPECT_EQ(out.str(), "Halt command issued.\n");
    EXPECT_EQ(Run("survey --json world"), exitHalted);
    EXPECT_EQ(json::parse(out.str())["outcome"], "halted");
}

}  // namespace
}  // namespace quillmere::test
