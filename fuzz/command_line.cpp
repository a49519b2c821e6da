// Fuzz target: any bytes as the command line of the batch program, in which a 0 byte stands between two
// arguments. What is accepted is also run, on files in memory.

#include "batch/command_line.h"

#include "batch/batch_run.h"
#include "fuzz/fuzz_target.h"
#include "tests/support/memory_file_system.h"

#include <algorithm>
#include <sstream>
#include <variant>
#include <vector>

namespace quillmere::test {
namespace {

using Words = std::vector<std::string>;

Words Arguments(const std::string& bytes) {
    Words words;
    std::istringstream stream(bytes);
    for (std::string word; std::getline(stream, word, '\0');)
        words.push_back(word);
    return words;
}

/// A plain command line that asks for `options`.
Words CommandLineFor(const BatchOptions& options) {
    const auto& [task, settings, listFile, removedFile, pageFile, lineEnd, maxRemoved, backup, force, json,
                 quiet, arguments] = options;
    Words words;
    const auto add = [&words](const std::string& name, const std::string& value) {
        if (value.empty()) {
            words.insert(words.end(), {name, value});
        } else {
            words.push_back(name + "=" + value);  // the value may begin with "-"
        }
    };
    for (const auto& [kind, setting] : settings.filters) {
        const bool in = setting.direction == Direction::In;
        if (kind == FilterKind::Item) add("--items", in ? "equal" : "not-equal");
        if (kind == FilterKind::Rectangle) add("--rectangles", in ? "in" : "not-in");
        if (kind == FilterKind::Facet) add(in ? "--facet-in" : "--facet-not-in", setting.text);
    }
    if (!listFile.empty()) add("--list", listFile);
    if (!removedFile.empty()) add("--removed", removedFile);
    if (!pageFile.empty()) add("--page", pageFile);
    if (task == Report::Task::Survey) words.insert(words.begin(), "survey");
    if (task == Report::Task::DryRun) words.emplace_back("--dry-run");
    if (json) words.emplace_back("--json");
    if (quiet) words.emplace_back("--quiet");
    if (lineEnd) words.emplace_back(*lineEnd == LineEnd::Lf ? "--lf" : "--crlf");
    if (maxRemoved) add("--max-removed", std::to_string(*maxRemoved));
    if (settings.keepUnplaced) words.emplace_back("--keep-unplaced");
    if (backup) words.emplace_back("--backup");
    if (force) words.emplace_back("--force");
    words.insert(words.end(), {"--", settings.strInputFile});
    if (task != Report::Task::Survey) words.push_back(settings.strOutputFile);
    return words;
}

void CheckValues(const BatchOptions& options, const Words& words) {
    const auto isTyped = [&words](const std::string& value) {
        return std::ranges::any_of(words, [&](const std::string& word) { return word.ends_with(value); });
    };
    const FilterSettings& settings = options.settings;
    Require(std::ranges::find(words, settings.strInputFile) != words.end(), "INPUT is one of the arguments");
    Require(isTyped(settings.strOutputFile) && isTyped(options.listFile) && isTyped(options.removedFile) &&
                isTyped(options.pageFile),
            "a file name is what was typed");
    for (const auto& [kind, setting] : settings.filters)
        Require(kind == FilterKind::Facet ? isTyped(setting.text) : setting.text.empty(),
                "only the facet has a number, and it is what was typed");
}

void CheckEarlyExit(const EarlyExit& end, const Words& words) {
    Require(end.exitCode == exitComplete || end.exitCode == exitRefused, "the exit code is a known one");
    Require(end.exitCode != exitComplete || !end.output.empty(), "help and version are printed");
    const bool mayBeJson = std::ranges::find(words, "--json") != words.end();
    Require(end.exitCode == exitComplete || mayBeJson || end.output.empty(), "only JSON tells of a refusal");
    Require(end.error.empty() == (end.exitCode == exitComplete), "a refusal says why");
}

void Run(const BatchOptions& options) {
    MemoryFileSystem system;
    system.files = {
        {"in", "[A i_torch]\r\nP=1,2,0,1\r\n\r\n[A b]\r\n\r\n[EOF]\r\n"},
        {"list", "Torches\r\ni_torch\r\n</ITEMS>\r\nTown\r\n0\r\n9\r\n0\r\n9\r\n</RECTANGLES>\r\n"}};
    const auto before = system.files;
    std::ostringstream output;
    std::ostringstream error;
    BatchConsole console(output, error, {!options.quiet, !options.quiet, false});
    const ExitCode code = BatchRun(options, system, console, [] { return false; }).Run();
    Require(code == exitComplete || code == exitFailed || code == exitRefused, "the run ends in a known way");
    Require(code == exitComplete || !error.str().empty(), "a run that is not complete says why");
    Require(system.openFiles == 0, "no file is left open");
    if (!options.WritesOutput() && options.pageFile.empty())
        Require(system.files == before, "a dry run writes no file");
    for (const auto& name : {options.settings.strInputFile, options.listFile}) {
        const auto file = before.find(name);
        Require(file == before.end() || system.files.at(name) == file->second,
                "no file that is read changes");
    }
}

void ParseAndRun(const Words& words) {
    const auto parsed = ParseCommandLine(words);
    if (const auto* const end = std::get_if<EarlyExit>(&parsed)) return CheckEarlyExit(*end, words);
    const auto* const cleaning = std::get_if<BatchOptions>(&parsed);
    if (cleaning == nullptr) return;
    const BatchOptions& options = *cleaning;
    CheckValues(options, words);
    const Words plain = CommandLineFor(options);
    const auto again = ParseCommandLine(plain);
    Require(
        std::holds_alternative<BatchOptions>(again) && CommandLineFor(std::get<BatchOptions>(again)) == plain,
        "a plain command line for the options gives the same options");
    Run(options);
}

}  // namespace
}  // namespace quillmere::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    quillmere::test::ParseAndRun(quillmere::test::Arguments(quillmere::test::Bytes(data, size)));
    return 0;
}
