#include "report/report.h"

#include "system/code_page.h"
#include "tests/support/batch_rig.h"

#include <array>
#include <map>
#include <random>

namespace quillmere::test {
namespace {

using nlohmann::json;

/// For each thing that a report counts, how many blocks there are and how many are removed. For the bounds of
/// a facet, their corners.
using Counts = std::map<std::string, std::vector<int>>;

/// Makes a world of random blocks, and counts what --facet-not-in 7 makes of them.
std::string RandomWorld(unsigned seed, Counts& counts) {
    std::mt19937 random(seed);
    const auto below = [&random](unsigned limit) { return static_cast<unsigned>(random() % limit); };
    const std::array<std::string, 3> words = {"WORLDITEM", "WORLDCHAR", "<b>"};
    const std::array<std::string, 6> codes = {"i_torch", "</script>", "__proto__", "\xE9\x81\"", "\\", ""};
    std::string text;
    std::size_t facets = 0;
    counts = {{"all", {0, 0}}, {"unplaced", {0, 0}}, {"otherFacets", {0, 0}}};
    for (unsigned block = below(1500); block > 0; --block) {
        const std::string& word = words[below(3)];
        const std::string& code = codes[below(6)];
        text += '[' + word + (code.empty() ? "]" : " " + code + "]") + "\r\n";
        std::string where = "unplaced";
        if (below(4) > 0) {
            const std::string facet = std::to_string(below(300));
            const int x = static_cast<int>(below(9000)) - 1000;
            text += "P=" + std::to_string(x) + ",5,0," + facet + "\r\n";
            where = "facet " + facet;
            if (!counts.contains(where) && ++facets > Facts::mostFacets) where = "otherFacets";
            if (where != "otherFacets") {
                std::vector<int>& bounds = counts.try_emplace("bounds " + facet, 4, x).first->second;
                bounds = {std::min(bounds[0], x), 5, std::max(bounds[2], x), 5};
            }
        }
        text += "\r\n";
        const std::string codeShown = "code " + Utf8FromCodePage(code);
        for (const std::string& counted : {std::string("all"), where, "header " + word, codeShown}) {
            std::vector<int>& count = counts.try_emplace(counted, 2).first->second;
            ++count[0];
            count[1] += where == "facet 7" ? 0 : 1;
        }
    }
    return text + "[EOF]\r\n";
}

/// What a report counts.
Counts CountsOf(const json& report) {
    Counts counts;
    for (const char* const sum : {"all", "unplaced", "otherFacets"})
        counts[sum] = {report[sum]["blocks"], report[sum]["removed"]};
    for (const json& facet : report["facets"]) {
        const std::string number = std::to_string(facet["facet"].get<int>());
        const json& bounds = facet["bounds"];
        counts["facet " + number] = {facet["blocks"], facet["removed"]};
        counts["bounds " + number] = {bounds["x1"], bounds["y1"], bounds["x2"], bounds["y2"]};
    }
    for (const auto& [table, kind, key] :
         {std::array{"headers", "header ", "word"}, {"codes", "code ", "code"}}) {
        int last = std::numeric_limits<int>::max();
        for (const json& row : report[table]) {
            counts[kind + row[key].get<std::string>()] = {row["blocks"], row["removed"]};
            EXPECT_LE(row["blocks"], last) << "the most frequent come first";
            last = row["blocks"];
        }
    }
    return counts;
}

TEST_F(Batch, TheJsonObjectHoldsTheNumbersOfTheWorld) {
    for (unsigned seed = 0; seed < 60; ++seed) {
        SCOPED_TRACE(seed);
        Counts counts;
        system.files["world"] = RandomWorld(seed, counts);
        const std::string line = seed % 3 == 0   ? "survey --json --force world"
                                 : seed % 3 == 1 ? "-n --json --force --facet-not-in 7 world"
                                                 : "--json --force --facet-not-in 7 world out";
        if (seed % 3 == 0) {
            for (auto& [counted, count] : counts)
                if (count.size() == 2) count[1] = 0;
        }
        ASSERT_EQ(Run(line), exitComplete) << err.str();
        const json report = json::parse(out.str());
        EXPECT_EQ(report["arguments"], Words(line));
        EXPECT_EQ(CountsOf(report), counts);
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
