#include "batch/restore_options.h"

#include <CLI/CLI.hpp>

namespace quillmere {

namespace {

constexpr const char* description =
    "Puts removed blocks back: copies a world script and adds the blocks of REMOVED in front of its\n"
    "last line, [EOF]. OUTPUT is replaced in one step when it is complete.";

constexpr const char* footer = "Example: quillmere-batch restore removed.scp cleaned.scp world.scp\n";

}  // namespace

std::variant<RestoreOptions, EarlyExit> ParseRestoreOptions(const std::vector<std::string>& arguments) {
    CLI::App app(description, "quillmere-batch restore");
    app.footer(footer);
    RestoreOptions options;
    DeclareHelp(app);
    app.add_option("REMOVED", options.removedFile, "File that a cleaning wrote with --removed; never changed")
        ->required()
        ->check(CheckPlainFileName());
    app.add_option("INPUT", options.inputFile, "World script to read; never changed; - is standard input")
        ->required()
        ->check(CheckFileName());
    app.add_option("OUTPUT", options.outputFile,
                   "World script with the blocks; a device or pipe is written directly; - is standard output")
        ->required()
        ->check(CheckFileName());
    app.add_flag("--backup", options.backup, "Keep the old OUTPUT as OUTPUT~");
    app.add_flag("--force", options.force,
                 "Go on although OUTPUT would not end with [EOF], or a file is of another kind");
    DeclareLineEnds(app, options.lineEnd);
    app.add_flag("-q,--quiet", options.quiet, "Print errors and warnings only");
    const auto end =
        ParseArguments(app, arguments, {&options.removedFile, &options.inputFile, &options.outputFile},
                       [&options] { RefuseBackupOfStream(options.backup, options.outputFile); });
    if (end) return *end;
    return options;
}

}  // namespace quillmere
