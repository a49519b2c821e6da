#include "batch/batch_options.h"

#include "base/failure_report.h"
#include "base/number_text.h"
#include "batch/batch_file_system.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <functional>

namespace quillmere {

namespace {

constexpr const char* description =
    "Copies a world script block by block and leaves out the blocks that the filters select.\n"
    "A block goes only when every filter given selects it. OUTPUT is replaced in one step when the\n"
    "pass is complete and left as it was otherwise.";

constexpr const char* footer =
    "Other tasks: quillmere-batch survey, restore, list; each has a --help of its own.\n"
    "\n"
    "Exit code: 0 complete, 1 failed, 2 refused or wrong usage, 130 halted by an interrupt.\n"
    "\n"
    "Example: quillmere-batch --list junk.lst --items equal world.scp cleaned.scp";

constexpr const char* surveyDescription =
    "Reports what a world script holds: its blocks by header, by facet and by code. Writes no world\n"
    "script.";

/// The option of a filter that tests against a list: one of two words says what it removes.
struct ListFilterOption {
    FilterKind kind;
    const char* name;
    const char* in;
    const char* notIn;
    const char* help;
};
constexpr ListFilterOption listFilterOptions[] = {
    {FilterKind::Item, "--items", "equal", "not-equal", "Remove items whose code is, or is not, in the list"},
    {FilterKind::Rectangle, "--rectangles", "in", "not-in",
     "Remove what lies, or does not lie, in a listed rectangle"},
};

/// The two options of a filter that compares with a number, of which one at most is given.
struct NumberFilterOptions {
    FilterKind kind;
    const char* in;
    const char* helpIn;
    const char* notIn;
    const char* helpNotIn;
};
constexpr NumberFilterOptions numberFilterOptions[] = {
    {FilterKind::Facet, "--facet-in", "Remove what is on facet N", "--facet-not-in",
     "Remove what is on any other facet than N"},
};

/// Refuses a value that is not `valid`; `fault` says what is wrong with it.
CLI::Validator Check(const std::function<bool(const std::string&)>& valid, const std::string& fault) {
    return {[valid, fault](const std::string& value) {
                return valid(value) ? std::string() : '"' + value + "\" " + fault;
            },
            ""};
}

/// The pass would round a fraction, and so take another facet than the one named.
CLI::Validator CheckNumber() {
    return Check(
        [](const std::string& text) {
            const bool whole = text.find_first_not_of("0123456789") == std::string::npos;
            return whole && !TrapFailure([&] { NumberFromText(text); });
        },
        "is not a facet; a facet is a whole number such as 0 or 1");
}

void Declare(CLI::App& app, const ListFilterOption& option, FilterSettings& settings) {
    const std::string in = option.in;
    const std::string notIn = option.notIn;
    const auto set = [&settings, in, kind = option.kind](const std::string& word) {
        settings.filters[kind] = {word == in ? Direction::In : Direction::NotIn};
    };
    app.add_option_function<std::string>(option.name, set, option.help)
        ->type_name(in + "|" + notIn)
        ->check(Check([in, notIn](const std::string& word) { return word == in || word == notIn; },
                      "is neither " + in + " nor " + notIn));
}

void Declare(CLI::App& app, const NumberFilterOptions& options, FilterSettings& settings) {
    const auto setter = [&settings, kind = options.kind](Direction direction) {
        return [&settings, kind, direction](const std::string& text) {
            settings.filters[kind] = {direction, text};
        };
    };
    auto* const in = app.add_option_function<std::string>(options.in, setter(Direction::In), options.helpIn)
                         ->type_name("N")
                         ->check(CheckNumber());
    app.add_option_function<std::string>(options.notIn, setter(Direction::NotIn), options.helpNotIn)
        ->type_name("N")
        ->check(CheckNumber())
        ->excludes(in);
}

/// The options against a run that loses more than was meant.
void DeclareGuards(CLI::App& app, BatchOptions& options) {
    app.add_flag("--keep-unplaced", options.settings.keepUnplaced,
                 "Rectangles and facets never select a block without a position, as all in a\n"
                 "container are; otherwise it counts as lying at 0,0 on facet 0");
    const auto setMaxRemoved = [&options](const std::string& text) {
        const char* const last = text.data() + text.size() - (text.ends_with('%') ? 1 : 0);
        std::int64_t percent = -1;
        const auto [end, error] = std::from_chars(text.data(), last, percent);
        if (error != std::errc() || end != last || percent < 0 || percent > 100) {
            throw CLI::ValidationError("--max-removed", '"' + text + "\" is not a percentage from 0 to 100");
        }
        options.maxRemoved = percent;
    };
    app.add_option_function<std::string>("--max-removed", setMaxRemoved,
                                         "Fail when more than that part of the blocks would go")
        ->type_name("N%");
    app.add_flag("--backup", options.backup, "Keep the old OUTPUT as OUTPUT~");
    app.add_flag("--force", options.force,
                 "Go on although INPUT has no block, does not end with [EOF], or is another\n"
                 "kind of file");
}

constexpr const char* inputHelp = "World script to read; never changed; - is standard input";

/// The options for a report in another form.
void DeclareReports(CLI::App& app, BatchOptions& options) {
    app.add_flag("--json", options.json, "Print the report as one JSON object, in place of the log");
    app.add_option("--page", options.pageFile, "Also write the report as a page with a map to FILE")
        ->type_name("FILE.html")
        ->check(CheckPlainFileName());
    app.add_flag("-q,--quiet", options.quiet, "Print errors and warnings only");
}

void DeclareCleaning(CLI::App& app, BatchOptions& options) {
    DeclareHelp(app);
    app.add_option("INPUT", options.settings.strInputFile, inputHelp)->required()->check(CheckFileName());
    app.add_option("OUTPUT", options.settings.strOutputFile,
                   "Cleaned world script; a device or pipe is written directly; - is standard output");
    app.add_option("-l,--list", options.listFile, "Filter list file to load")
        ->type_name("FILE")
        ->check(CheckPlainFileName());
    for (const ListFilterOption& option : listFilterOptions)
        Declare(app, option, options.settings);
    for (const NumberFilterOptions& pair : numberFilterOptions)
        Declare(app, pair, options.settings);
    app.add_option("--removed", options.removedFile,
                   "Also write the removed blocks, and lines outside blocks, to FILE")
        ->type_name("FILE")
        ->check(CheckPlainFileName());
    app.add_flag_callback(
        "-n,--dry-run", [&options] { options.task = Report::Task::DryRun; },
        "Write no OUTPUT: only report, with removed counts by filter and by item code");
    DeclareGuards(app, options);
    DeclareLineEnds(app, options.lineEnd);
    DeclareReports(app, options);
}

/// Refuses options that lack another one or contradict each other.
void RefuseIncomplete(const BatchOptions& options, bool outputGiven) {
    if (options.WritesOutput()) {
        if (!outputGiven) throw CLI::RequiredError("OUTPUT");
        if (const std::string empty = CheckFileName()(options.settings.strOutputFile); !empty.empty())
            throw CLI::ValidationError("OUTPUT", empty);
        RefuseBackupOfStream(options.backup, options.settings.strOutputFile);
        if (options.json && options.settings.strOutputFile == standardStream)
            throw CLI::ValidationError(
                "--json and - as OUTPUT both need standard output; give a file as OUTPUT");
    }
    const auto& filters = options.settings.filters;
    for (const ListFilterOption& option : listFilterOptions) {
        if (filters.contains(option.kind) && options.listFile.empty())
            throw CLI::ValidationError(std::string(option.name) +
                                       " needs a filter list; give one with --list FILE");
    }
    if (filters.empty()) {
        throw CLI::ValidationError(
            "no filter is given; give --items, --rectangles, --facet-in or --facet-not-in");
    }
}

}  // namespace

std::variant<BatchOptions, EarlyExit> ParseBatchOptions(const std::vector<std::string>& arguments) {
    CLI::App app(description, "quillmere-batch");
    app.footer(footer);
    BatchOptions options;
    options.arguments = arguments;
    DeclareCleaning(app, options);
    const FilterSettings& settings = options.settings;
    const auto end = ParseArguments(app, arguments, {&settings.strInputFile, &settings.strOutputFile},
                                    [&] { RefuseIncomplete(options, app.count("OUTPUT") != 0); });
    if (end) return *end;
    return options;
}

std::variant<BatchOptions, EarlyExit> ParseSurveyOptions(const std::vector<std::string>& arguments) {
    CLI::App app(surveyDescription, "quillmere-batch survey");
    BatchOptions options;
    options.task = Report::Task::Survey;
    options.arguments = arguments;
    options.arguments.insert(options.arguments.begin(), "survey");
    options.settings.needsFilter = false;
    DeclareHelp(app);
    app.add_option("INPUT", options.settings.strInputFile, inputHelp)->required()->check(CheckFileName());
    app.add_flag("--force", options.force, "Go on although INPUT is another kind of file");
    DeclareLineEnds(app, options.lineEnd);
    DeclareReports(app, options);
    const auto end = ParseArguments(app, arguments, {&options.settings.strInputFile}, [] {});
    if (end) return *end;
    return options;
}

}  // namespace quillmere
