#include "batch/error_lines.h"
#include "system/code_page.h"
#include "tests/support/batch_rig.h"
#include "tests/support/conservation.h"
#include "tests/support/manual.h"
#include "tests/support/text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace quillmere::test {
namespace {

TEST_F(Batch, CleansAFileAndPrintsTheReportOldestEntryFirst) {
    EXPECT_EQ(Run({"-l", "list", "--items", "equal", "--removed", "gone", "world", "out"}), exitComplete);
    EXPECT_EQ(system.files["out"],
              Lines({"// comment", "", "[WORLDITEM i_chair]", "P=300,400,5", "", "[EOF]", ""}));
    EXPECT_EQ(system.files["gone"], Lines({"[WORLDITEM i_torch]", "P=100,200,0,1", ""}));
    EXPECT_TRUE(out.str().starts_with("Scanning filter options...\nNot filtering Facets....\n"));
    EXPECT_EQ(err.str(), "");
    EXPECT_EQ(Run({"-q", "--facet-in", "9", "--removed", "gone", "world", "out"}), exitComplete);
    EXPECT_EQ(system.files["gone"], "") << "nothing removed, nothing left from before";
    EXPECT_EQ(out.str() + err.str(), "");
    system.files["out"] = "old";
    interrupted = true;
    EXPECT_EQ(Run({"--facet-in", "1", "world", "out"}), exitHalted);
    EXPECT_TRUE(out.str().ends_with("Processing file...\nHalt command issued.\n"));
    EXPECT_TRUE(system.files["out"] == "old" && !system.files.contains("out.tmp"));
}

TEST_F(Batch, EveryLineGetsIntoOneOfTheTwoFilesAndCanBePutBack) {
    const auto blocks = [this](const std::string& ends, const std::string& file) {
        EXPECT_EQ(Run({"survey", "--force", ends, file}), exitComplete);
        return out.str().substr(std::min(out.str().find("\nheader"), out.str().size()));
    };
    std::mt19937 random(1);
    const std::string alphabet = "\r\n[] P=,1\tx";
    const std::string plain[] = {
        Lines({"// comment", "[A b]", "P=1,2,3,1", "", "stray", "[A c]", "X=1", "P=1,1", "Y=2", "", "[EOF]"}),
        Lines({"text", "", " [A b]"})};
    for (int round = 0; round < 2000; ++round) {
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
        ASSERT_EQ(Run({"restore", ends, "--force", "-q", "gone", "out", "back"}), exitComplete) << world;
        ASSERT_EQ(SortedLines(system.files["back"], lineEnd), SortedLines(world, lineEnd)) << world;
        const std::string before = blocks(ends, "world");
        if (out.str().find("not [EOF]") == std::string::npos) {
            ASSERT_EQ(blocks(ends, "back"), before) << world;
        }
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
              "Item filter selects 1 items.\nRectangle filter selects 2 items.\nWould remove 1 of i_torch\n"
              "Dry run: nothing was written.\n");
    EXPECT_EQ(Run({"-n", "--facet-in", "0", "world", "out"}), exitComplete) << "an OUTPUT is left alone";
    EXPECT_EQ(out.str().substr(out.str().find("Facet filter")),
              "Facet filter selects 1 items.\nWould remove 1 of i_chair\nDry run: nothing was written.\n");
    EXPECT_EQ(system.files, before);
    system.files["list"].insert(system.files["list"].find("</ITEMS>"), Lines({"A", "i_none"}));
    Run({"-n", "-l", "list", "--items", "equal", "world"});
    EXPECT_NE(out.str().find("Codes that no block has (1): \"i_none\".\nRemoved"), std::string::npos);
    EXPECT_EQ(err.str(), "");
    Run({"-nq", "-l", "list", "--items", "not-equal", "world"});
    EXPECT_NE(err.str().find("codes that no block has"), std::string::npos) << "its blocks would be lost";
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
        EXPECT_EQ(err.str().find("; give --lf") != std::string::npos, option == std::string("-q"));
    }
    system.files["world"] = world;
    EXPECT_EQ(Run({"--crlf", "--facet-in", "1", "world", "out"}), exitFailed);
    EXPECT_NE(out.str().find("The whole file is one line, because its lines end with line feeds alone.\n"),
              std::string::npos);
}

TEST_F(Batch, ADoubtfulInputFailsUnlessForced) {
    const std::string manual = Manual();
    const std::string noBlock = "no block was found, so this may be no save; --force goes on";
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
             {"it is compressed with xz; unpack it first", {"\3757zXZ"}},
             {"it is compressed with bzip2; unpack it first", {"BZh91AY&SY"}},
             {"it is a tar archive; unpack it first", {std::string(257, 'x') + "ustar"}},
             {"it is a zip file; unpack it first", {"PK\x03\x04"}},
             {list, {Lines({"<ITEMS>"}), "\xEF\xBB\xBF<ITEMS>\n"}}}) {
        EXPECT_NE(manual.find(objection), std::string::npos) << objection;
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
    for (const char* const mode : {"-n", "--force"})
        EXPECT_EQ(Run({mode, "--max-removed", "49%", "--facet-in", "1", "world", "out"}), exitFailed);
    EXPECT_NE(err.str().find("world: 1 of 2 blocks would go, which is more than 49%; "), std::string::npos);
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

TEST_F(Batch, AFaultAnywhereFailsTheRunAndKeepsOldFilesWhole) {
    system.files["gone"] = "old";
    const std::vector<std::string> arguments = {"-q",        "-l",   "list",     "--items", "equal",
                                                "--removed", "gone", "--backup", "world",   "out"};
    // Two operations may fail without harm: the look at the list's line ends opens it and reads from it.
    for (std::size_t operation = 1;; ++operation) {
        system.files["out"] = "old";
        system.FailAt(operation, FailureKind::DiskFull);
        const int code = Run(arguments);
        if (system.operations < operation) {
            EXPECT_EQ(system.files["out~"], "old");
            break;
        }
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

struct Mistake {
    std::string arguments;  ///< words; '' stands for an empty one
    std::string message;    ///< stands on standard error and in the manual page
    std::string world{};    ///< instead of the usual one
    std::string list{};     ///< the same
    std::string detail{};   ///< follows the message on standard error
};
const std::string items = "-q -l list --items equal world out";
const std::string areas = "-q -l list --rectangles in world out";
const std::string facet = "-q --facet-in 7 world out";

std::vector<Mistake> Refusals() {
    return {
        {"", "INPUT is missing"},
        {"--lisst", "there is no option --lisst"},
        {"--facet-in 1 world", "OUTPUT is missing"},
        {"world out", "no filter is given; give --items, --rectangles, --facet-in or --facet-not-in"},
        {"'' out --facet-in 1", "the file name is empty"},
        {"world '' --facet-in 1", "the file name is empty"},
        {"world out --facet-in 1 --removed ''", "the file name is empty"},
        {"world out -l '' --items equal", "the file name is empty"},
        {"world out more", "only INPUT and OUTPUT are expected, but not"},
        {"world out --lisst list", "there is no option --lisst"},
        {"world out --facet-in 1.5", "is not a facet; a facet is a whole number such as 0 or 1"},
        {"world out --facet-in ''", "is not a facet; a facet is a whole number such as 0 or 1"},
        {"world out --facet-in 1 --facet-not-in 2", "cannot be given together"},
        {"world out --facet-in 1 --lf --crlf", "cannot be given together"},
        {"world out --facet-in 1 --facet-in 2", "can be given only once"},
        {"world out --facet-in", "needs a value after it"},
        {"world out --facet-in 1 --quiet=x", "takes no such value"},
        {"world out --items some -l list", "is neither equal nor not-equal"},
        {"world out --items equal", "needs a filter list; give one with --list FILE"},
        {"world out --rectangles in", "needs a filter list; give one with --list FILE"},
        {"world out --facet-in 1 --max-removed 101", "is not a percentage from 0 to 100"},
        {"world out --facet-in 1 --max-removed x%", "is not a percentage from 0 to 100"},
        {"--facet-in 1 world world",
         "You picked the same file to load and save. INPUT and OUTPUT are one file."},
        {"--facet-in 1 --removed world world out", "INPUT and the removed file are one file."},
        {"--facet-in 1 --removed out world out", "OUTPUT and the removed file are one file."},
        {"--facet-in 1 -l list world list", "OUTPUT and the list are one file."},
        {"--facet-in 1 -l list --removed list world out", "The list and the removed file are one file."},
        {"--facet-in 1 --backup out~ out", "where --backup keeps the old OUTPUT, is also"},
        {"--facet-in 1 --backup -l out~ world out", "where --backup keeps the old OUTPUT, is also"},
        {"--facet-in 1 --backup --page out~ world out", "where --backup keeps the old OUTPUT, is also"},
        {"--facet-in 1 --json world -", "--json and - as OUTPUT both need standard output"},
        {"--facet-in 1 --backup world -", "--backup keeps an old file, and - as OUTPUT has none"},
        {"restore --backup out world -", "--backup keeps an old file, and - as OUTPUT has none"},
        {"-n --facet-in 1 -l list --page list world", "The list and the page are one file."},
        {"restore - world out", "- is a stream only as INPUT or OUTPUT; ./- is a file of that name"},
        {"restore list world world", "INPUT and OUTPUT are one file."},
        {"restore out world out", "OUTPUT and REMOVED are one file."},
        {"restore world world out", "INPUT and REMOVED are one file."},
        {"restore --backup out~ world out", "where --backup keeps the old OUTPUT, is also"},
        {"list make -", "- is a stream only as INPUT or OUTPUT; ./- is a file of that name"},
        {"list print list", "is neither show nor make"},
        {items, "You didn't specify any items, but you chose to use them as a filter.", "",
         Lines({"</ITEMS>", "</RECTANGLES>"})},
        {areas, "has none before its first free entry.", "", Lines({"</ITEMS>", "</RECTANGLES>"})},
    };
}

std::string Repeated(std::size_t times, const std::string& text) {
    std::string all;
    while (times-- > 0)
        all += text;
    return all;
}

std::string ListOfArea(const std::string& x1) {
    return Lines({"</ITEMS>", "Town", x1, "2", "3", "4", "</RECTANGLES>"});
}

std::vector<Mistake> Failures() {
    const auto body = [](const std::string& line) { return Lines({"[A b]", line, "", "[EOF]"}); };
    return {
        {"-q --facet-in 1 absent out", "File not found (53). There is no such file; check the name."},
        {"-q --facet-in 1 pipe out",
         "Path/File access error (75). Write its content to a file, and read that."},
        {items,
         "Input past end of file (62). The list ends before </ITEMS>; it is cut short, or no filter list.",
         "", Lines({"Torches", "i_torch"})},
        {items, "a line is missing, or one is too many.", "",
         Lines({"A", "", "B", "</ITEMS>", "</RECTANGLES>"})},
        {items, "The list ends before </RECTANGLES>", "", Lines({"</ITEMS>"})},
        {items,
         "Subscript out of range (9). A list holds up to 501 items and as many rectangles; divide it, unless "
         "it is no filter list at all.",
         "", Repeated(502, Lines({"name", "code"}))},
        {areas,
         "Type mismatch (13). A number is expected here; a rectangle has five lines: name, X1, X2, Y1 and "
         "Y2.",
         "", ListOfArea("one")},
        {areas, "Overflow (6). The number has more than 32 bits; correct it.", "", ListOfArea("2147483648")},
        {facet,
         "Invalid procedure call or argument (5). The header has two spaces before the code; delete one of "
         "them.",
         Lines({"[A  b]", ""})},
        {facet,
         "Type mismatch (13). A part of the position is not a number; correct the line, which reads "
         "P=x,y,height,facet.",
         body("P=1,x")},
        {facet,
         "Overflow (6). A number of the position has more than 32 bits; correct the line, which reads "
         "P=x,y,height,facet.",
         body("P=1,2147483648")},
        {facet,
         "Subscript out of range (9). The block has more than 5000 lines after its header; an empty line may "
         "be missing that ends it.",
         "[A b]\r\n" + Repeated(5001, "X=1\r\n")},
        {"restore pipe world out",
         "Path/File access error (75). Write its content to a file, and read that."},
        {"restore pipe_of_nobody world out", "File not found (53). There is no such file; check the name."},
        {"-q --facet-in 1 --max-removed 1% world out", "check list and filters, or raise --max-removed"},
    };
}

std::vector<Mistake> Warnings() {
    return {
        {"-q -l list --facet-in 1 world out", "the list has no effect without --items or --rectangles"},
        {items, "codes with spaces, which no block can have; delete the spaces", "",
         Lines({"A", "x ", "A", "i_torch", "B", "a b", "</ITEMS>", "</RECTANGLES>"}),
         " (2): \"x \", \"a b\"\n"},
        {items, "codes never used, because an entry without a name comes first; give it one", "",
         Lines({"A", "i_torch", "", "\x1Bx", "B", "y", "</ITEMS>", "</RECTANGLES>"}),
         " (2): \"?x\", \"y\"\n"},
        {"-n " + items, "codes that blocks have in another letter case only; correct it", "",
         Lines({"A", "I_Torch", "B", "i_chair", "</ITEMS>", "</RECTANGLES>"}),
         " (1): \"I_Torch\" for \"i_torch\"\n"},
        {items, "codes that no block has; check their spelling", "",
         Lines({"A", "1", "A", "1", "A", "2", "A", "3", "A",  "4", "A",  "5",        "A",
                "6", "A", "7", "A", "8", "A", "9", "A", "10", "A", "11", "</ITEMS>", "</RECTANGLES>"}),
         R"( (11): "1", "2", "3", "4", "5", "6", "7", "8", "9", "10" and 1 more)"
         "\n"},
        {areas, "rectangles that hold nothing, because X1 > X2 or Y1 > Y2; swap the two", "", ListOfArea("5"),
         " (1): \"Town\"\n"},
        {areas, "rectangles never used, because an entry without a name comes first; give it one", "",
         Lines({"</ITEMS>", "T", "1", "2", "3", "4", "", "1", "2", "3", "4", "</RECTANGLES>"}),
         " (1): \"\"\n"},
        {facet, "lines outside blocks were left out, the first is line",
         Lines({"[A b]", "", "[A lost]", "P=1"}) + Repeated(6000, "x\r\n") + Lines({"[A b]", "[EOF]"}), "",
         " 3; --removed FILE keeps them\n"},
        {"-q --facet-in 1 world out", "warning: removed blocks that hold a second header: ",
         Lines({"[A b]", "P=1,1,1,1", "[A c]", "", "[EOF]"}), "",
         "1; an empty line may be missing before it\n"},
        {"-q --facet-in 7 world out",
         "warning: INPUT has carriage returns, but also line feeds without them; give --lf or --crlf",
         Lines({"[A b]", "\n", "", "[EOF]"})},
        {"--lf --force --facet-in 7 world out",
         "note: INPUT has carriage returns; with --lf they are text of the lines", Lines({"[A b]"})},
        {"--crlf --force --facet-in 7 world out",
         "note: INPUT has no carriage returns; lines that end with line feeds need --lf", "[A b]\n"},
    };
}

TEST_F(Batch, SaysWhatIsWrongAndTheManualPageSaysItToo) {
    const std::string manual = Manual();
    const auto files = system.files;
    for (const auto& [code, some] :
         {std::pair(exitRefused, Refusals()), {exitFailed, Failures()}, {exitComplete, Warnings()}})
        for (const Mistake& mistake : some) {
            SCOPED_TRACE(mistake.arguments + ": " + mistake.message);
            system.files = files;
            system.files["pipe"] = system.files["out~"] = system.files["world"];
            if (!mistake.world.empty()) system.files["world"] = mistake.world;
            if (!mistake.list.empty()) system.files["list"] = mistake.list;
            const auto before = system.files;
            std::vector<std::string> arguments;
            std::istringstream words(mistake.arguments);
            for (std::string word; words >> word;)
                arguments.push_back(word == "''" ? "" : word);
            EXPECT_EQ(Run(arguments), code);
            const std::string said = err.str();
            const bool hasHelp = said.ends_with(" --help lists the options.\n");
            EXPECT_TRUE(said.starts_with("quillmere-batch: "));
            EXPECT_NE(said.find(mistake.message + mistake.detail), std::string::npos) << said;
            EXPECT_NE(manual.find(mistake.message), std::string::npos) << "not in the manual page";
            EXPECT_EQ(std::ranges::count(said, '\n'), hasHelp ? 2 : 1) << said;
            EXPECT_TRUE(code == exitComplete || system.files == before);
        }
    using enum FailureKind;
    for (const FailureKind kind :
         {OutOfMemory, BadFileNameOrNumber, FileNotFound, DeviceIoError, DiskFull, InputPastEnd, TooManyFiles,
          PermissionDenied, PathFileAccessError, PathNotFound, FileChanged})
        EXPECT_NE(manual.find(ErrorLine(Failure(kind))), std::string::npos) << ErrorLine(Failure(kind));
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
