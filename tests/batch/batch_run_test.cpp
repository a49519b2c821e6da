#include "batch/batch_run.h"

#include "system/code_page.h"
#include "tests/support/conservation.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/text.h"

#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace quillmere::test {
namespace {

/// Runs the batch program on files in memory, from its arguments to its exit code.
class Batch : public testing::Test {
 protected:
    Batch() {
        system.files["world"] = Lines({"// comment", "", "[WORLDITEM i_torch]", "P=100,200,0,1", "",
                                       "[WORLDITEM i_chair]", "P=300,400,5", "", "[EOF]"});
        system.files["list"] =
            Lines({"Torches", "i_torch", "</ITEMS>", "Town", "0", "310", "0", "410", "</RECTANGLES>"});
        system.files["out"] = "old";
    }

    int Run(const std::vector<std::string>& arguments, bool terminal = false) {
        out.str("");
        err.str("");
        const auto parsed = ParseBatchOptions(arguments);
        if (const auto* const end = std::get_if<EarlyExit>(&parsed)) {
            out << end->output;
            err << end->error;
            return end->exitCode;
        }
        const auto& options = std::get<BatchOptions>(parsed);
        BatchConsole console(out, err, {options.quiet, terminal});
        const int code = BatchRun(options, system, console, [this] { return interrupted; }).Run();
        EXPECT_EQ(system.openFiles, 0);
        return code;
    }
    void ExpectRefused(const std::vector<std::string>& arguments, const std::string& text) {
        const auto before = system.files;
        EXPECT_EQ(Run(arguments), exitRefused) << text;
        EXPECT_EQ(err.str(), "quillmere-batch: " + text + "\n");
        EXPECT_EQ(system.files, before);
    }

    MemoryFileSystem system;
    std::ostringstream out;
    std::ostringstream err;
    bool interrupted = false;
};

TEST_F(Batch, CleansAFileAndPrintsTheReportOldestEntryFirst) {
    EXPECT_EQ(Run({"-l", "list", "--items", "equal", "world", "out"}), exitComplete);
    EXPECT_EQ(system.files["out"],
              Lines({"// comment", "", "[WORLDITEM i_chair]", "P=300,400,5", "", "[EOF]", ""}));
    EXPECT_EQ(out.str().substr(0, out.str().find("Averaged")),
              "Scanning filter options...\nNot filtering Facets....\nNot filtering rectangles....\n"
              "Filtering item where value is equal to list values.\nPassed validation.\nProcessing file...\n"
              "Removed 1 items.\n");
    EXPECT_EQ(err.str(), "");
    EXPECT_FALSE(system.files.contains("out.tmp"));
}

TEST_F(Batch, WritesTheRemovedBlocksToTheirOwnFile) {
    EXPECT_EQ(Run({"-q", "--facet-not-in", "9", "--removed", "gone", "world", "out"}), exitComplete);
    EXPECT_EQ(system.files["out"], Lines({"// comment", "", "[EOF]"}));
    EXPECT_EQ(system.files["gone"],
              Lines({"[WORLDITEM i_torch]", "P=100,200,0,1", "", "[WORLDITEM i_chair]", "P=300,400,5", ""}));
    EXPECT_EQ(out.str() + err.str(), "");
    EXPECT_EQ(Run({"-q", "--facet-in", "9", "--removed", "gone", "world", "out"}), exitComplete);
    EXPECT_EQ(system.files["gone"], "") << "nothing removed, nothing left from before";
}

TEST_F(Batch, EveryLineGetsIntoOneOfTheTwoFiles) {
    std::mt19937 random(1);
    const std::string alphabet = "\r\n[] P=,1\tx";
    const std::string plain =
        Lines({"// comment", "[A b]", "P=1,2,3,1", "", "stray", "[A c]", "X=1", "P=1,1", "Y=2", "", "[EOF]"});
    for (int round = 0; round < 4000; ++round) {
        const LineEnd lineEnd = round % 2 == 0 ? LineEnd::CrLf : LineEnd::Lf;
        std::string& world = system.files["world"];
        world = lineEnd == LineEnd::CrLf ? plain : WithLineFeeds(plain);
        for (auto changes = random() % 6; changes > 0; --changes)
            world[random() % world.size()] = alphabet[random() % alphabet.size()];
        const std::string run = lineEnd == LineEnd::CrLf ? "-q" : "--lf";
        if (Run({run, "--facet-in", "1", "--removed", "gone", "world", "out"}) != exitComplete) continue;
        ASSERT_EQ(SortedLines(system.files["out"] + system.files["gone"], lineEnd),
                  SortedLines(world, lineEnd))
            << world;
    }
    system.files["world"] = Lines({"[A b]", "", "P=9,9", "", "[A c]", "X=1", "P=5", "Y=1", "", "[EOF]"});
    EXPECT_EQ(Run({"-q", "--facet-in", "1", "world", "out"}), exitComplete);
    EXPECT_EQ(err.str(),
              "quillmere-batch: warning: 5 lines outside blocks were left out, the first is line 3; "
              "--removed FILE keeps them\n");
    EXPECT_EQ(Run({"-q", "--facet-in", "1", "--removed", "gone", "world", "out"}), exitComplete);
    EXPECT_EQ(system.files["gone"], Lines({"P=9,9", "[A c]", "X=1", "P=5", "Y=1"}));
    EXPECT_EQ(err.str(), "");
}

TEST_F(Batch, ADryRunCountsAndWritesNothing) {
    const auto before = system.files;
    EXPECT_EQ(
        Run({"-n", "-l", "list", "--items", "equal", "--rectangles", "in", "--removed", "gone", "world"}),
        exitComplete);
    EXPECT_NE(out.str().find("Removed 1 items.\n"), std::string::npos);
    EXPECT_EQ(out.str().substr(out.str().find("Item filter")),
              "Item filter selects 1 items.\nRectangle filter selects 3 items.\nWould remove 1 of i_torch\n");
    EXPECT_EQ(Run({"-n", "--facet-in", "0", "world", "out"}), exitComplete) << "an OUTPUT is left alone";
    EXPECT_EQ(out.str().substr(out.str().find("Facet filter")),
              "Facet filter selects 2 items.\nWould remove 1 of (no code)\nWould remove 1 of i_chair\n");
    EXPECT_EQ(system.files, before);
    system.files["world"] = Lines({"[WORLDITEM \x1B[2J\xE9\x7F]", ""});
    Run({"-n", "--facet-in", "0", "world"});
    EXPECT_NE(out.str().find("Would remove 1 of ?[2J" + Utf8FromCodePage("\xE9") + "?\n"), std::string::npos)
        << "nothing that steers a terminal: " << out.str();
}

TEST_F(Batch, ReadsAndWritesLineFeeds) {
    system.files["world"] = WithLineFeeds(system.files["world"]);
    EXPECT_EQ(Run({"--lf", "--facet-in", "1", "world", "out"}), exitComplete);
    EXPECT_EQ(system.files["out"], "// comment\n\n[WORLDITEM i_chair]\nP=300,400,5\n\n[EOF]\n\n");
    EXPECT_EQ(err.str(), "");
    EXPECT_EQ(Run({"--facet-in", "1", "world", "out"}), exitComplete);
    EXPECT_NE(err.str().find("need --lf"), std::string::npos);
    system.files["world"] = "[A b]\r\n";
    EXPECT_EQ(Run({"--lf", "--facet-in", "1", "world", "out"}), exitComplete);
    EXPECT_NE(err.str().find("carriage returns"), std::string::npos);
}

TEST_F(Batch, AnythingButACompletePassLeavesTheOutputAsItWas) {
    interrupted = true;
    EXPECT_EQ(Run({"--facet-in", "1", "world", "out"}), exitHalted);
    EXPECT_TRUE(out.str().ends_with("Processing file...\nHalt command issued.\n"));
    interrupted = false;
    EXPECT_EQ(Run({"--facet-in", "1", "absent", "out"}), exitFailed);
    EXPECT_EQ(err.str(), "quillmere-batch: absent: File not found (53)\n");
    EXPECT_EQ(Run({"--facet-in", "abc", "world", "out"}), exitFailed);
    EXPECT_EQ(out.str(),
              "Scanning filter options...\nOops description: Type mismatch\nOops number: 13\n"
              "Error in filter engine.  Pffft....\n");
    system.files["world"] = Lines({"[A b]", "P=x,1"});
    EXPECT_EQ(Run({"-q", "--facet-in", "1", "world", "out"}), exitFailed);
    EXPECT_EQ(out.str(), "");
    EXPECT_EQ(err.str().substr(0, err.str().find('\n')),
              "quillmere-batch: world, line 2: Type mismatch (13)");
    EXPECT_EQ(system.files["out"], "old");
    EXPECT_FALSE(system.files.contains("out.tmp"));
}

TEST_F(Batch, AFaultAnywhereFailsTheRunAndKeepsOldFilesWhole) {
    system.files["gone"] = "old";
    const std::vector<std::string> arguments = {"-q",        "-l",   "list",  "--items", "equal",
                                                "--removed", "gone", "world", "out"};
    // Two operations may fail without harm: the look at the line ends opens the input and reads from it.
    for (std::size_t operation = 1;; ++operation) {
        system.files["out"] = "old";
        system.FailAt(operation, FailureKind::DiskFull);
        const int code = Run(arguments);
        if (system.operations < operation) break;
        if (code == exitComplete) {
            EXPECT_NE(system.files["out"], "old");
            continue;
        }
        EXPECT_EQ(code, exitFailed);
        EXPECT_EQ(system.files["out"], "old") << "operation " << operation;
        EXPECT_NE(err.str().find("Disk full (61)"), std::string::npos);
    }
}

TEST_F(Batch, AListThatFailsToLoadEndsItBeforeAnythingIsWritten) {
    system.files["list"] = Lines({"Torches", "i_torch"});
    EXPECT_EQ(Run({"-l", "list", "--items", "equal", "world", "out"}), exitFailed);
    EXPECT_EQ(out.str(),
              "Oops description: Input past end of file\nOops number: 62\n"
              "Error in list loading module.  Pffft....\n");
    EXPECT_EQ(err.str(), "quillmere-batch: list, line 2: Input past end of file (62)\n");
    EXPECT_EQ(system.files["out"], "old");
}

TEST_F(Batch, RefusesWhatThePassRefusesAndNamesUsedTwice) {
    ExpectRefused({"world", "out"}, "You didn't chose any filters.");
    ExpectRefused({"--facet-in", "", "world", "out"},
                  "You didn't specify a Facet, but you chose to use it as a filter.");
    ExpectRefused({"--facet-in", "1", "world", ""},
                  "You need to pick a file to load and save in order to run a report.");
    const std::string same = "You picked the same file to load and save.";
    ExpectRefused({"--facet-in", "1", "world", "world"}, same);
    ExpectRefused({"--facet-in", "1", "--removed", "world", "world", "out"}, same);
    ExpectRefused({"--facet-in", "1", "--removed", "out", "world", "out"}, same);
    ExpectRefused({"--facet-in", "1", "-l", "list", "world", "list"}, same);
    ExpectRefused({"--facet-in", "1", "-l", "list", "--removed", "list", "world", "out"}, same);
}

TEST_F(Batch, RefusesWrongUsage) {
    for (const auto& arguments :
         std::vector<std::vector<std::string>>{{},
                                               {"world"},
                                               {"world", "out", "more"},
                                               {"--items", "some", "world", "out"},
                                               {"--facet-in", "1", "--facet-not-in", "2", "world", "out"},
                                               {"--facet-in", "1", "--removed", "", "world", "out"},
                                               {"--items", "equal", "--list", "", "world", "out"},
                                               {"--no-such-option", "world", "out"}}) {
        EXPECT_EQ(Run(arguments), exitRefused);
        EXPECT_NE(err.str(), "");
        EXPECT_EQ(out.str(), "");
    }
    EXPECT_EQ(system.files["out"], "old");
    EXPECT_EQ(Run({"--version"}), exitComplete);
    EXPECT_EQ(out.str(), "quillmere-batch " QUILLMERE_VERSION " (build " QUILLMERE_BUILD
                         ", " QUILLMERE_BUILD_DATE ")\n");
}

TEST_F(Batch, ShowsProgressOnATerminalOnly) {
    std::string world;
    for (int i = 0; i < 2000; ++i)
        world += Lines({"[A b]", ""});
    system.files["world"] = world;
    EXPECT_EQ(Run({"--facet-in", "1", "world", "out"}, true), exitComplete);
    EXPECT_EQ(err.str().substr(0, 14), "\r\rProcessed  2");
    EXPECT_TRUE(err.str().ends_with(" \r")) << "the line is gone before the report is printed";
    EXPECT_EQ(Run({"-q", "--facet-in", "1", "world", "out"}, true), exitComplete);
    EXPECT_EQ(err.str(), "");
}

}  // namespace
}  // namespace quillmere::test
