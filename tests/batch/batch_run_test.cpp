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
    const std::string plain[] = {
        Lines({"// comment", "[A b]", "P=1,2,3,1", "", "stray", "[A c]", "X=1", "P=1,1", "Y=2", "", "[EOF]"}),
        Lines({"text", "", " [A b]"})};
    for (int round = 0; round < 4000; ++round) {
        const LineEnd lineEnd = round % 2 == 0 ? LineEnd::CrLf : LineEnd::Lf;
        std::string& world = system.files["world"];
        world = plain[round % 8 / 7];
        if (lineEnd == LineEnd::Lf) world = WithLineFeeds(world);
        for (auto changes = random() % 6; changes > 0; --changes)
            world[random() % world.size()] = alphabet[random() % alphabet.size()];
        const std::string ends = lineEnd == LineEnd::CrLf ? "--crlf" : "--lf";
        if (Run({ends, "--force", "-q", "--facet-in", "1", "--removed", "gone", "world", "out"}) !=
            exitComplete)
            continue;
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

TEST_F(Batch, FindsOutHowLinesEnd) {
    system.files["list"] = "\xEF\xBB\xBF<ITEMS>\n" + WithLineFeeds(system.files["list"]);
    const std::string world = WithLineFeeds(system.files["world"]);
    for (const char* const option : {"-q", "--lf"}) {
        system.files["world"] = world;
        EXPECT_EQ(Run({option, "-l", "list", "--items", "equal", "world", "out"}), exitComplete);
        EXPECT_EQ(system.files["out"], "// comment\n\n[WORLDITEM i_chair]\nP=300,400,5\n\n[EOF]\n\n");
        EXPECT_EQ(err.str(), "");
        system.files["world"] += "\r";
        Run({option, "--facet-in", "1", "world", "out"});
        EXPECT_EQ(err.str().find("carriage returns") != std::string::npos, option == std::string("--lf"));
    }
    system.files["world"] = world;
    EXPECT_EQ(Run({"--crlf", "--facet-in", "1", "world", "out"}), exitFailed);
    EXPECT_NE(err.str().find("need --lf"), std::string::npos);
    EXPECT_NE(out.str().find("The whole file is one line, because its lines end with line feeds alone.\n"),
              std::string::npos);
}

TEST_F(Batch, ADoubtfulInputFailsUnlessForced) {
    const std::string noBlock = "no block was found; --force goes on";
    const std::string cut =
        "the last line is not [EOF], so the save may be cut short; save again, or --force goes on";
    const std::string list = "it is a filter list, not a world script; give it with --list";
    using Worlds = std::vector<std::string>;
    for (const auto& [objection, worlds] : std::vector<std::pair<std::string, Worlds>>{
             {"", {Lines({"[A b]", "", " [EOF] ", "", " "}), Lines({"[A b]", " [EOF] "}), "[A b]\n[EOF]"}},
             {noBlock, {"", "a\r\n [EOF]", "[EOF]"}},
             {cut,
              {Lines({"[A b]", "", "[EOF]", "", "more"}), Lines({"[A b]", "", "[EOF]", "[A c]"}),
               Lines({"[A b]", "X=[EOF]"}), Lines({"[A b]", "[EOF]", "P=1"})}},
             {"it is compressed with gzip; unpack it first", {"\x1F\x8B\b"}},
             {"it is compressed with zstd; unpack it first", {"\x28\xB5\x2F\xFD"}},
             {"it is a zip file; unpack it first", {"PK\x03\x04"}},
             {list, {Lines({"<ITEMS>"}), "\xEF\xBB\xBF<ITEMS>\n"}}}) {
        for (const std::string& world : worlds) {
            system.files["world"] = world;
            for (const std::string mode : {"-n", "-q", "--force"}) {
                system.files["out"] = "old";
                const bool fails = !objection.empty() && mode != "--force";
                EXPECT_EQ(Run({mode, "--facet-in", "1", "--removed", "gone", "world", "out"}),
                          fails ? exitFailed : exitComplete)
                    << world;
                EXPECT_EQ(err.str(), fails ? "quillmere-batch: world: " + objection + "\n" : "") << world;
                EXPECT_EQ(system.files["out"] == "old", fails || mode == "-n") << world;
            }
        }
    }
}

TEST_F(Batch, FailsWhenMoreBlocksWouldGoThanAllowed) {
    for (const char* const most : {"50", "50%", "100%"})
        EXPECT_EQ(Run({"--max-removed", most, "--facet-in", "1", "world", "out"}), exitComplete) << most;
    system.files["out"] = "old";
    for (const char* const mode : {"-n", "-q", "--force"}) {
        EXPECT_EQ(Run({mode, "--max-removed", "49%", "--facet-in", "1", "world", "out"}), exitFailed);
        EXPECT_EQ(err.str(),
                  "quillmere-batch: world: 1 of 2 blocks would go, which is more than 49%; check list and "
                  "filters, or raise --max-removed\n");
        EXPECT_EQ(system.files["out"], "old");
    }
}

TEST_F(Batch, KeepsTheOldOutputWhenAsked) {
    const std::vector<std::string> arguments = {"-q", "--backup", "--facet-in", "1", "world", "out"};
    ExpectRefused({"--backup", "--facet-in", "1", "out~", "out"},
                  "OUTPUT~, where --backup keeps the old OUTPUT, is also out~.");
    ExpectRefused({"--backup", "-l", "out~", "--items", "equal", "world", "out"},
                  "OUTPUT~, where --backup keeps the old OUTPUT, is also out~.");
    for (const std::string old : {"old", ""}) {
        system.files["out"] = old;
        EXPECT_EQ(Run(arguments), exitComplete);
        EXPECT_EQ(system.files["out~"], old);
    }
    system.files = {{"world", system.files["world"].substr(0, 80)}, {"out", "old"}};
    EXPECT_EQ(Run(arguments), exitFailed);
    EXPECT_FALSE(system.files.contains("out~")) << "nothing was replaced";
}

TEST_F(Batch, KeepsWhatHasNoPositionWhenAsked) {
    system.files["world"] = Lines({"[A in_a_bag]", "", "[A b]", "P=0,0", "", "[EOF]"});
    for (const auto& filter : std::vector<std::vector<std::string>>{
             {"--rectangles", "in", "-l", "list"}, {"--facet-in", "0"}, {"--facet-not-in", "7"}}) {
        std::vector<std::string> arguments = {"-q", "--keep-unplaced", "world", "out"};
        arguments.insert(arguments.end(), filter.begin(), filter.end());
        EXPECT_EQ(Run(arguments), exitComplete);
        EXPECT_EQ(system.files["out"], Lines({"", "[A in_a_bag]", "", "[EOF]", ""})) << filter[0];
    }
    EXPECT_EQ(Run({"--keep-unplaced", "-l", "list", "--items", "not-equal", "world", "out"}), exitComplete);
    EXPECT_EQ(system.files["out"], Lines({"", "[EOF]"})) << "by its code it is selected as ever";
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
    const std::vector<std::string> arguments = {"-q",        "-l",   "list",     "--items", "equal",
                                                "--removed", "gone", "--backup", "world",   "out"};
    // Two operations may fail without harm: the look at the list's line ends opens it and reads from it.
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
        EXPECT_EQ(system.files.contains("out~") ? system.files["out~"] : "old", "old");
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
                                               {"--facet-in", "1", "--lf", "--crlf", "world", "out"},
                                               {"--facet-in", "1", "--max-removed", "101", "world", "out"},
                                               {"--facet-in", "1", "--max-removed", "x%", "world", "out"},
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
    world += "[EOF]";
    system.files["world"] = world;
    EXPECT_EQ(Run({"--facet-in", "1", "world", "out"}, true), exitComplete);
    EXPECT_EQ(err.str().substr(0, 14), "\r\rProcessed  2");
    EXPECT_TRUE(err.str().ends_with(" \r")) << "the line is gone before the report is printed";
    EXPECT_EQ(Run({"-q", "--facet-in", "1", "world", "out"}, true), exitComplete);
    EXPECT_EQ(err.str(), "");
}

}  // namespace
}  // namespace quillmere::test
