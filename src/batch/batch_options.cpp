#include "batch/batch_options.h"

#include "batch/exit_codes.h"
#include "engine/version.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <sstream>
#include <utility>

namespace quillmere {

namespace {

constexpr const char* description =
    "Copies a world script block by block and leaves out the blocks that the filters select.\n"
    "A block goes only when every filter given selects it. OUTPUT is replaced in one step when the\n"
    "pass is complete and left as it was otherwise.";

constexpr const char* footer =
    "Exit code: 0 complete, 1 failed, 2 refused or wrong usage, 130 halted by an interrupt.\n"
    "\n"
    "Example: quillmere-batch --list junk.lst --items equal world.scp cleaned.scp";

std::string VersionText() {
    return std::string("quillmere-batch ") + programVersion + " (build " + programBuild + ", " +
           programBuildDate + ")";
}

/// The options as CLI11 fills them, before they become settings.
struct RawOptions {
    BatchOptions options;
    std::string items;
    std::string rectangles;
    std::string facetIn;
    std::string facetNotIn;
    bool lineFeeds = false;
};

void Declare(CLI::App& app, RawOptions& raw) {
    BatchOptions& options = raw.options;
    // A script's variable that was never set would otherwise pass for an option that was not given.
    const CLI::Validator notEmpty(
        [](const std::string& text) { return text.empty() ? "The file name is empty" : ""; }, "");
    app.footer(footer);
    app.allow_windows_style_options(false);  // "/world/save.scp" is a path
    app.set_help_flag("-h,--help", "Print this help and exit");
    app.set_version_flag("--version", VersionText(), "Print the version and exit");
    app.add_option("INPUT", options.settings.strInputFile, "World script to clean; never changed")
        ->required();
    app.add_option("OUTPUT", options.settings.strOutputFile,
                   "Cleaned world script; a device or pipe is written directly");
    app.add_option("-l,--list", options.listFile, "Filter list file to load")
        ->type_name("FILE")
        ->check(notEmpty);
    app.add_option("--items", raw.items, "Remove items whose code is, or is not, in the list")
        ->type_name("equal|not-equal")
        ->check(CLI::IsMember({"equal", "not-equal"}).description(""));
    app.add_option("--rectangles", raw.rectangles, "Remove what lies, or does not lie, in a listed rectangle")
        ->type_name("in|not-in")
        ->check(CLI::IsMember({"in", "not-in"}).description(""));
    auto* const facetIn =
        app.add_option("--facet-in", raw.facetIn, "Remove what is on facet N")->type_name("N");
    app.add_option("--facet-not-in", raw.facetNotIn, "Remove what is on any other facet than N")
        ->type_name("N")
        ->excludes(facetIn);
    app.add_option("--removed", options.removedFile, "Also write the removed blocks to FILE")
        ->type_name("FILE")
        ->check(notEmpty);
    app.add_flag("-n,--dry-run", options.dryRun,
                 "Write no file: only report, with removed counts by filter and by item code");
    app.add_flag("--lf", raw.lineFeeds, "Lines of world scripts end with a line feed, in and out");
    app.add_flag("-q,--quiet", options.quiet, "Print errors only");
}

/// The direction that `text`, one of the two words of an option, stands for.
Direction DirectionOf(const std::string& text) {
    return text.starts_with("not") ? Direction::NotIn : Direction::In;
}

BatchOptions Finish(const CLI::App& app, RawOptions& raw) {
    FilterSettings& settings = raw.options.settings;
    if (app.count("--items") > 0) settings.items = DirectionOf(raw.items);
    if (app.count("--rectangles") > 0) settings.rectangles = DirectionOf(raw.rectangles);
    if (app.count("--facet-in") > 0) {
        settings.facet = Direction::In;
        settings.facetText = raw.facetIn;
    }
    if (app.count("--facet-not-in") > 0) {
        settings.facet = Direction::NotIn;
        settings.facetText = raw.facetNotIn;
    }
    if (raw.lineFeeds) settings.lineEnd = LineEnd::Lf;
    return raw.options;
}

}  // namespace

std::variant<BatchOptions, EarlyExit> ParseBatchOptions(std::vector<std::string> arguments) {
    CLI::App app(description, "quillmere-batch");
    RawOptions raw;
    Declare(app, raw);
    try {
        std::ranges::reverse(arguments);  // as the library wants them
        app.parse(std::move(arguments));
        if (app.count("OUTPUT") == 0 && !raw.options.dryRun) throw CLI::RequiredError("OUTPUT");
    } catch (const CLI::ParseError& end) {
        std::ostringstream output;
        std::ostringstream error;
        const int code = app.exit(end, output, error);
        return EarlyExit{code == 0 ? exitComplete : exitRefused, output.str(), error.str()};
    }
    return Finish(app, raw);
}

}  // namespace quillmere
