#include "batch/error_lines.h"
#include "system/code_page.h"
#include "system/kept_input.h"
#include "tests/support/batch_rig.h"
#include "tests/support/failure_of.h"
#include "tests/support/text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace quillmere::test {
namespace {

const std::string cleaned = Lines({"// comment", "", "[WORLDITEM i_chair]", "P=300,400,5", "", "[EOF]", ""});

/// The text as often as that, one after the other.
std::string Repeated(std::size_t times, const std::string& text) {
    std::string all;
    while (times-- > 0)
        all += text;
    return all;
}

/// The words of the batch program's manual page, as they are typed.
std::string Manual() {
    std::ifstream page(QUILLMERE_MANUAL);
    std::string text(std::istreambuf_iterator<char>(page), {});
    EXPECT_NE(text, "") << QUILLMERE_MANUAL;
    return std::regex_replace(text, std::regex("\n"), " ");
}

/// The text with "N" for each number and "OPTION" for each option.
std::string WithoutValues(const std::string& text) {
    return std::regex_replace(std::regex_replace(text, std::regex("[0-9]+"), "N"), std::regex("--[a-z-]+"),
                              "OPTION");
}

/// Expects that the manual page has each clause of an error line, a warning or a note, apart from its values.
void ExpectInManual(const std::string& said) {
    static const std::string manual = WithoutValues(Manual());
    std::string clauses = WithoutValues(said);
    const std::string values =
        "^quillmere-batch: |\n.*| \\(N\\): \".*|\"[^\"]*\"|(is also|but not:) .*|"
        "(world|gone|out~?|(out|gone).tmp|list|absent|pipe[^:]*|scratch|standard (in|out)put)(, line N)?: ";
    for (const auto& [value, shown] :
         std::vector<std::pair<std::string, const char*>>{{values, ""},
                                                          {"specify any rectangles", "specify any items"},
                                                          {"list list", "list FILE"},
                                                          {"[:;.] ", "\n"}})
        clauses = std::regex_replace(clauses, std::regex(value), shown);
    std::istringstream stream(clauses);
    for (std::string clause; std::getline(stream, clause);)
        EXPECT_NE(manual.find(clause), std::string::npos) << "not in the manual page: " << clause;
}

TEST_F(Batch, CleansAFileAndPrintsTheReportOldestEntryFirst) {
    EXPECT_EQ(Run("-l list --items equal --removed gone world out"), exitComplete);
    EXPECT_EQ(system.files["out"], cleaned);
    EXPECT_EQ(system.files["gone"], Lines({"[WORLDITEM i_torch]", "P=100,200,0,1", ""}));
    EXPECT_TRUE(out.str().starts_with("Scanning filter options...\nNot filtering Facets....\n"));
    EXPECT_EQ(err.str(), "");
    system.files["world"].insert(system.files["world"].find("[EOF]"), "stray\r\n");
    Run("-q --facet-in 9 world out");
    EXPECT_EQ(err.str(),
              "quillmere-batch: warning: 1 line outside blocks was left out, line 9; --removed FILE "
              "keeps it\n");
    EXPECT_EQ(Run("-q --facet-in 9 --removed gone world out"), exitComplete);
    EXPECT_EQ(system.files["gone"], "stray\r\n") << "no block removed, nothing left from before";
    EXPECT_EQ(out.str() + err.str(), "");
    system.files["out"] = "old";
    interrupted = true;
    EXPECT_EQ(Run("--facet-in 1 world out"), exitHalted);
    EXPECT_TRUE(out.str().ends_with("Processing file...\nHalt command issued.\n"));
    EXPECT_TRUE(system.files["out"] == "old" && !system.files.contains("out.tmp"));
}

TEST_F(Batch, ADryRunCountsAndWritesNothing) {
    system.files["list"].insert(system.files["list"].find("</ITEMS>"), Lines({"A", "i_none"}));
    system.files["odd"] = Lines({"[WORLDITEM \x1B[2J\xE9\x7F]", "", "[EOF]"});
    const auto before = system.files;
    for (const auto& [line, entries] : std::vector<std::pair<std::string, std::string>>{
             {"-n -l list --items equal --rectangles in --removed gone world",
              "Item filter selects 1 items.\nRectangle filter selects 2 items.\nWould remove 1 of i_torch\n"
              "Dry run: nothing was written.\n"},
             {"-n --facet-in 0 world out",
              "Facet filter selects 1 items.\nWould remove 1 of i_chair\nDry run: nothing was written.\n"},
             {"-n -l list --items equal world", "\nCodes that no block has (1): \"i_none\".\nRemoved"},
             {"-nq -l list --items not-equal world", "codes that no block has; check their"},  // all would go
             {"-n --facet-in 0 odd", "Would remove 1 of ?[2J" + Utf8FromCodePage("\xE9") + "?\n"}}) {
        EXPECT_EQ(Run(line), exitComplete);
        EXPECT_NE((out.str() + err.str()).find(entries), std::string::npos) << out.str() << err.str();
        EXPECT_EQ(err.str().empty(), !line.starts_with("-nq"));
        EXPECT_EQ(system.files, before);
    }
}

TEST_F(Batch, FindsOutHowLinesEnd) {
    system.files["list"] = "\xEF\xBB\xBF<ITEMS>\n" + WithLineFeeds(system.files["list"]);
    const std::string world = WithLineFeeds(system.files["world"]);
    for (const std::string option : {"-q", "--lf"}) {
        system.files["world"] = world;
        EXPECT_EQ(Run(option + " -l list --items equal world out"), exitComplete);
        EXPECT_EQ(system.files["out"], WithLineFeeds(cleaned));
        EXPECT_EQ(err.str(), "");
        system.files["world"] += "\r";
        Run(option + " --facet-in 1 world out");
        EXPECT_EQ(err.str().find("; give --lf") != std::string::npos, option == "-q");
    }
    system.files["world"] = world;
    EXPECT_EQ(Run("--crlf --facet-in 1 world out"), exitFailed);
    EXPECT_NE(out.str().find("The whole file is one line, because its lines end with line feeds alone.\n"),
              std::string::npos);
}

TEST_F(Batch, RemovesNoMoreThanAsked) {
    for (const std::string world : {"[A b]\r\n\r\n [EOF] \r\n\r\n ", "[A b]\r\n [EOF] \r\n", "[A b]\n[EOF]",
                                    "[A b]\r\nP=1,1,1,1\r\n[EOF]\r\n\r\n[EOF]"}) {
        system.files["end"] = world;
        EXPECT_EQ(Run("-q --facet-in 1 end out"), exitComplete) << world;
    }
    for (const std::string most : {"50", "50%", "100%"})
        EXPECT_EQ(Run("--max-removed " + most + " --facet-in 1 world out"), exitComplete) << most;
    for (const std::string mode : {"-n", "--force"})
        EXPECT_EQ(Run(mode + " --max-removed 49% --facet-in 1 world out"), exitFailed);
    EXPECT_NE(err.str().find("world: 1 of 2 blocks would go, which is more than 49%; "), std::string::npos);
    system.files["world"] = Lines({"[A in_a_bag]", "", "[A b]", "P=0,0", "", "[EOF]"});
    const std::string kept = Lines({"", "[A in_a_bag]", "", "[EOF]", ""});
    for (const auto& [filter, output] : std::vector<std::pair<std::string, std::string>>{
             {"--rectangles in -l list", kept},
             {"--facet-in 0", kept},
             {"--facet-not-in 7", kept},
             {"--items not-equal -l list", Lines({"", "[EOF]"})}}) {  // by its code it is selected as ever
        EXPECT_EQ(Run("-q --keep-unplaced world out " + filter), exitComplete);
        EXPECT_EQ(system.files["out"], output) << filter;
    }
}

TEST_F(Batch, AFaultAnywhereFailsTheRunAndKeepsOldFilesWhole) {
    system.files["gone"] = Lines({"stray", "[A b]", "", "[A c]", "P=1"});
    system.files["-"] = "a file";
    system.mostBytesPerRead = 32;
    for (const std::string line :
         {"-q -l list --items equal --removed gone --backup world out", "-q --facet-in 1 - -",
          "restore -q --backup gone world out", "restore -q gone - out", "list make out"}) {
        system.files["standard input"] = line.starts_with("list") ? "item\ta\tb\n" : system.files["world"];
        const auto before = system.files;
        system.FailAt(0, FailureKind::DiskFull);
        EXPECT_EQ(Run(line), exitComplete);
        auto whole = system.files;
        EXPECT_EQ(whole["out~"], line.find("--backup") == std::string::npos ? "" : "old");
        EXPECT_EQ(whole["standard output"], line.ends_with("- -") ? cleaned : "");
        for (std::size_t operation = 1;; ++operation) {
            SCOPED_TRACE(line + ", operation " + std::to_string(operation));
            system.files = before;
            system.FailAt(operation, FailureKind::DiskFull);
            const int code = Run(line);
            if (system.operations < operation) break;
            // A failure of the look at the list's line ends, which opens it and reads from it, does no harm.
            if (code == exitComplete && line.starts_with("-q -l") && operation < 9) continue;
            EXPECT_EQ(code, exitFailed);
            EXPECT_NE(err.str().find(": Disk full (61). "), std::string::npos) << err.str();
            EXPECT_EQ(err.str().find(": -"), std::string::npos) << err.str();
            ExpectInManual(err.str());
            system.files.erase("standard output");
            if (system.files["out~"].empty() || system.files["out~"] == "old") system.files.erase("out~");
            if (system.files["gone"] == whole["gone"]) system.files["gone"] = before.at("gone");
            EXPECT_EQ(system.files, before);
        }
        system.files = before;
    }
    system.FailAt(0, FailureKind::DiskFull);
    const KeptInput kept(system);
    system.files["scratch"] = "";
    char byte = 0;
    EXPECT_EQ(FailureOf([&] { kept.Open()->Read(&byte, 1); }), 62) << "the disk has lost a part";
}

struct Mistake {
    std::string arguments;
    std::string message;  ///< a part of what is said
    std::string world{};  ///< instead of the usual one
    std::string list{};   ///< the same
};
const std::string items = "-q -l list --items equal world out";
const std::string areas = "-q -l list --rectangles in world out";
const std::string facet = "-q --facet-in 7 world out";
const std::string doubt = "--facet-in 1 --removed gone world out";  // not with --force
const std::string make = "list make made";                          // of the lines in `world`

const std::vector<Mistake> refusals = {
    {"", "INPUT is missing"},
    {"world out --lisst list", "no option --lisst"},
    {"--facet-in 1 world", "OUTPUT is missing"},
    {"world out", "no filter is given; give --items, --rectangles, --facet-in or --facet-not-in"},
    {"'' out --facet-in 1", "INPUT: the file name is empty"},
    {"world '' --facet-in 1", "OUTPUT: the file name is empty"},
    {"world out --facet-in 1 --removed ''", "--removed: the file name is empty"},
    {"world out more", "only INPUT and OUTPUT are expected, but not: more"},
    {"world out --facet-in 1.5", "--facet-in: \"1.5\" is not a facet"},
    {"world out --facet-in ''", "--facet-in: \"\" is not a facet"},
    {"world out --facet-in 1 --facet-not-in 2", "--facet-in and --facet-not-in cannot be given together"},
    {"world out --facet-in 1 --lf --crlf", "cannot be given together"},
    {"world out --facet-in 1 --facet-in 2", "--facet-in can be given only once"},
    {"world out --facet-in", "--facet-in needs a value after it"},
    {"world out --facet-in 1 --quiet=x", "--quiet takes no such value"},
    {"world out --items some -l list", "\"some\" is neither equal nor not-equal"},
    {"world out --items equal", "--items needs a filter list; give one with --list FILE"},
    {"world out --facet-in 1 --max-removed 101", "\"101\" is not a percentage from 0 to 100"},
    {"world out --facet-in 1 --max-removed x%", "\"x%\" is not a percentage"},
    {"--facet-in 1 world world", "You picked the same file to load and save. INPUT and OUTPUT are one file."},
    {"--facet-in 1 --removed world world out", "INPUT and the removed file are one file."},
    {"--facet-in 1 --removed out world out", "OUTPUT and the removed file are one file."},
    {"--facet-in 1 -l list world list", "OUTPUT and the list are one file."},
    {"--facet-in 1 -l list --removed list world out", "The list and the removed file are one file."},
    {"--facet-in 1 --page world world out", "INPUT and the page are one file."},
    {"--facet-in 1 --page out world out", "OUTPUT and the page are one file."},
    {"-n --facet-in 1 -l list --page list world", "The list and the page are one file."},
    {"--facet-in 1 --removed gone --page gone world out", "The removed file and the page are one file."},
    {"--facet-in 1 --backup out~ out", "OUTPUT~, where --backup keeps the old OUTPUT, is also out~."},
    {"--facet-in 1 --backup -l out~ world out", "is also out~."},
    {"--facet-in 1 --backup --removed out~ world out", "is also out~."},
    {"--facet-in 1 --backup --page out~ world out", "is also out~."},
    {"--facet-in 1 --json world -", "--json and - as OUTPUT both need standard output"},
    {"--facet-in 1 --backup world -", "--backup keeps an old file, and - as OUTPUT has none"},
    {"restore --backup out world -", "--backup keeps an old file, and - as OUTPUT has none"},
    {"restore - world out", "REMOVED: - is a stream only as INPUT or OUTPUT; ./- is a file of that name"},
    {"restore list world world", "INPUT and OUTPUT are one file."},
    {"restore out world out", "OUTPUT and REMOVED are one file."},
    {"restore world world out", "INPUT and REMOVED are one file."},
    {"restore --backup out~ world out", "is also out~."},
    {"restore --backup list out~ out", "is also out~."},
    {"list make -", "LIST: - is a stream only as INPUT or OUTPUT"},
    {"list print list", "\"print\" is neither show nor make"},
    {items, "any items, but you chose to use them as a filter.", "", Lines({"</ITEMS>", "</RECTANGLES>"})},
    {areas, "any rectangles, but you chose", "", Lines({"</ITEMS>", "</RECTANGLES>"})},
};

std::string ListOfArea(const std::string& x1) {
    return Lines({"</ITEMS>", "Town", x1, "2", "3", "4", "</RECTANGLES>"});
}

std::string ListOfItems(std::initializer_list<std::string_view> lines) {
    return Lines(lines) + Lines({"</ITEMS>", "</RECTANGLES>"});
}

const std::vector<Mistake> failures = {
    {"-q --facet-in 1 absent out", "absent: File not found (53). There is no such file"},
    {"-q --facet-in 1 pipe out", "(75). Write its content to a file, and read that."},
    {items, "list, line 2: Input past end of file (62). The", "", Lines({"Torches", "i_torch"})},
    {items, "a line is missing, or one is too many.", "", ListOfItems({"A", "", "B"})},
    {items, "The list ends before </RECTANGLES>", "", Lines({"</ITEMS>"})},
    {items, "Subscript out of range (9). A list holds up to 501", "", Repeated(502, Lines({"name", "code"}))},
    {areas, "list, line 3: Type mismatch (13). A number is expected here", "", ListOfArea("one")},
    {areas, "Overflow (6). The number has more than 32 bits", "", ListOfArea("2147483648")},
    {facet, "and with it the line [EOF]", Lines({"[A b]", "P=1,1,1,7", "[EOF]"})},
    {facet, "world, line 1: Invalid procedure call or argument (5). The header has", Lines({"[A  b]", ""})},
    {facet, "world, line 2: Type mismatch (13). A part of the position", Lines({"[A b]", "P=1,x", ""})},
    {facet, "Overflow (6). A number of the position", Lines({"[A b]", "P=1,2147483648", ""})},
    {facet, "Subscript out of range (9). The block has more than", "[A b]\r\n" + Repeated(5001, "X=1\r\n")},
    {"restore pipe world out", "(75). Write its content to a file, and read that."},
    {"list show absent", ": absent: File not found (53). There is no such file; check the name.\n"},
    {"survey -", ": standard input, line 1: Invalid procedure", Lines({"[A  b]", ""})},
    {"restore pipe_of_nobody world out", "File not found (53). There is no such file"},
    {"-q --facet-in 1 --max-removed 1% world out", "check list and filters, or raise --max-removed"},
    {doubt, "world: no block was found, so this may be no save; --force goes on\n", "\n"},
    {doubt, "no block was found", "a\r\n [EOF]"},
    {doubt, "no block was found", "[EOF]"},
    {doubt, "the last line is not [EOF]", Lines({"[A b]", "", "[EOF]", "", "more"})},
    {doubt, "the last line is not [EOF]", Lines({"[A b]", "", "[EOF]", "[A c]"})},
    {doubt, "the last line is not [EOF]", Lines({"[A b]", "X=[EOF]"})},
    {doubt, "the last line is not [EOF]", Lines({"[A b]", "[EOF]", "P=1"})},
    {doubt, "it is compressed with gzip; unpack it first", "\x1F\x8B\b"},
    {doubt, "it is compressed with zstd; unpack it first", "\x28\xB5\x2F\xFD"},
    {doubt, "it is compressed with xz; unpack it first", "\3757zXZ"},
    {doubt, "it is compressed with bzip2; unpack it first", "BZh91AY&SY"},
    {doubt, "it is a tar archive; unpack it first", std::string(257, 'x') + "ustar"},
    {doubt, "it is a zip file; unpack it first", "PK\x03\x04"},
    {doubt, "it is a filter list, not a world script; give it with --list", Lines({"<ITEMS>"})},
    {doubt, "it is a filter list", "\xEF\xBB\xBF<ITEMS>\n"},
    {make, ": standard input: there is no line, so there is nothing to make", "\xEF\xBB\xBF\r\n\n\t\n"},
    {make, "first field is neither item nor", "kind\tname\tcode"},
    {make, "rectangle has 6 fields with", "rectangle\ta\t1\t2\t3\n"},
    {make, "coordinate is not a whole", "rectangle\ta\t1\t1.0\t2\t2"},
    {make, "coordinate has more", "rectangle\ta\t1\t1\t2\t2147483648"},
    {make, "X1 > X2 or Y1 > Y2", "rectangle\ta\t1\t3\t2\t2"},
    {make, ": standard input, line 2: an item has 3 fields with", "\nitem\ta\tb\tc\n"},
    {make, "name is empty", "item\t\tb"},
    {make, "code is empty", "item\ta"},
    {make, "code has a space", "item\ta\tb "},
    {make, "name begins with <", "item\t</ITEMS>\tb"},
    {make, "character is not in the code page", "item\ta\t\xE4\xB8\xAD"},
    {make, "is not valid UTF-8", "item\ta\t\xE9"},
    {make, "holds a control character", "item\ta\rb\tc"},
    {make, ", line 502: a list holds", Repeated(502, "rectangle\ta\t1\t1\t1\t1\n")},
};

const std::vector<Mistake> warnings = {
    {"-q -l list --facet-in 1 world out", "the list has no effect without --items or --rectangles"},
    {items, "spaces (2): \"x \", \"a b\"\n", "", ListOfItems({"A", "x ", "A", "i_torch", "B", "a b"})},
    {items, "it one (2): \"?x\", \"y\"\n", "", ListOfItems({"A", "i_torch", "", "\x1Bx", "B", "y"})},
    {"-n " + items, "\"I_Torch\" for \"i_torch\"", "", ListOfItems({"A", "I_Torch", "B", "i_chair"})},
    {items, R"((11): "1", "2", "3", "4", "5", "6", "7", "8", "9", "0" and 1 more)", "",
     Lines({"A", "1"}) + ListOfItems({"A", "1", "A", "2", "A", "3", "A", "4", "A", "5", "A",
                                      "6", "A", "7", "A", "8", "A", "9", "A", "0", "A", "X"})},
    {areas, "swap the two (1): \"Town\"\n", "", ListOfArea("5")},
    {areas, "give it one (1): \"\"\n", "",
     Lines({"</ITEMS>", "T", "1", "2", "3", "4", "", "1", "2", "3", "4", "</RECTANGLES>"})},
    {facet, " lines outside blocks were left out, the first is line 3;",
     Lines({"[A b]", "", "[A lost]", "P=1"}) + Repeated(6000, "x\r\n") + Lines({"[A b]", "[EOF]"})},
    {facet, "hold a second header: 1; an", Lines({"[A b]", "P=1,1,1,7", "[A c]", "", "[EOF]"})},
    {facet, "INPUT has carriage returns, but also line feeds", Lines({"[A b]", "\n", "", "[EOF]"})},
    {"--lf --force --facet-in 7 world out", "note: INPUT has carriage returns;", Lines({"[A b]"})},
    {"--crlf --force --facet-in 7 world out", "note: INPUT has no carriage returns;", "[A b]\n"},
};

TEST_F(Batch, SaysWhatIsWrongAndTheManualPageSaysItToo) {
    const auto files = system.files;
    for (const auto& [code, outcome, some] : {std::tuple(exitRefused, "refused", refusals),
                                              {exitFailed, "failed", failures},
                                              {exitComplete, "complete", warnings}})
        for (const Mistake& mistake : some) {
            SCOPED_TRACE(mistake.arguments + ": " + mistake.message);
            system.files = files;
            if (!mistake.world.empty()) system.files["world"] = mistake.world;
            for (const char* const file : {"pipe", "out~", "standard input"})
                system.files[file] = system.files["world"];
            if (!mistake.list.empty()) system.files["list"] = mistake.list;
            const auto before = system.files;
            EXPECT_EQ(Run(mistake.arguments), code);
            const std::string said = err.str();
            const bool hasHelp = said.ends_with(" --help lists the options.\n");
            EXPECT_TRUE(said.starts_with("quillmere-batch: "));
            EXPECT_NE(said.find(mistake.message), std::string::npos) << said;
            ExpectInManual(said);
            EXPECT_EQ(std::ranges::count(said, '\n'), hasHelp ? 2 : 1) << said;
            EXPECT_TRUE(code == exitComplete || system.files == before);
            EXPECT_TRUE(mistake.arguments != doubt || Run("--force " + doubt) == exitComplete);
            if (mistake.arguments.starts_with("list") || mistake.arguments.starts_with("restore")) continue;
            const bool survey = mistake.arguments.starts_with("survey");
            Run(survey ? mistake.arguments + " --json" : "--json " + mistake.arguments);
            const auto report = nlohmann::json::parse(out.str());
            EXPECT_EQ(report["exitCode"], code);
            EXPECT_EQ(report["outcome"], outcome);
            const std::string error = report["error"].is_null() ? "" : report["error"].get<std::string>();
            EXPECT_EQ(error.empty(), code == exitComplete);
            EXPECT_EQ(report["warnings"].size() + report["notes"].size(), code == exitComplete ? 1 : 0);
            EXPECT_NE(said.find(error), std::string::npos) << error;
        }
    using enum FailureKind;
    for (const FailureKind kind :
         {OutOfMemory, BadFileNameOrNumber, FileNotFound, DeviceIoError, DiskFull, InputPastEnd, TooManyFiles,
          PermissionDenied, PathFileAccessError, PathNotFound, FileChanged})
        EXPECT_NE(Manual().find(ErrorLine(Failure(kind))), std::string::npos) << ErrorLine(Failure(kind));
}

TEST_F(Batch, TellsItsVersionAndItsOptions) {
    EXPECT_EQ(Run("--version"), exitComplete);
    EXPECT_EQ(out.str(), "quillmere-batch " QUILLMERE_VERSION " (build " QUILLMERE_BUILD
                         ", " QUILLMERE_BUILD_DATE ")\n");
    for (const std::string task : {"", "survey ", "restore ", "list "}) {
        EXPECT_EQ(Run(task + "--help"), exitComplete);
        EXPECT_NE(out.str().find("\nUsage: quillmere-batch " + task + "[OPTIONS] "), std::string::npos);
    }
}

TEST_F(Batch, ShowsProgressOnATerminalOnly) {
    system.files["world"] = Repeated(2000, Lines({"[A b]", ""})) + "[EOF]";
    EXPECT_EQ(Run("--facet-in 1 world out", true), exitComplete);
    EXPECT_EQ(err.str().substr(0, 14), "\r\rProcessed  2");
    EXPECT_TRUE(err.str().ends_with(" \r")) << "the line is gone before the report is printed";
    EXPECT_EQ(Run("-q --facet-in 1 world out", true), exitComplete);
    EXPECT_EQ(err.str(), "");
    system.files["world"] += "[A  b]";
    EXPECT_EQ(Run("--facet-in 1 world out", true), exitFailed);
    EXPECT_EQ(err.str().find("quillmere"), err.str().rfind('\r') + 1) << "an error has a line of its own";
}

}  // namespace
}  // namespace quillmere::test
