#include "batch/list_options.h"

#include <CLI/CLI.hpp>

namespace quillmere {

namespace {

constexpr const char* description =
    "Shows a filter list as lines of text, or makes one from such lines. Between the fields of a line\n"
    "are tabs:\n"
    "  item       NAME  CODE\n"
    "  rectangle  NAME  X1  Y1  X2  Y2";

constexpr const char* footer =
    "Example: quillmere-batch survey world.scp | grep '^item.*spawn' | quillmere-batch list make spawn.lst";

CLI::Validator CheckAction() {
    return {[](const std::string& word) {
                return word == "show" || word == "make" ? "" : '"' + word + "\" is neither show nor make";
            },
            ""};
}

}  // namespace

std::variant<ListOptions, EarlyExit> ParseListOptions(const std::vector<std::string>& arguments) {
    CLI::App app(description, "quillmere-batch list");
    app.footer(footer);
    ListOptions options;
    std::string action;
    DeclareHelp(app);
    app.add_option("ACTION", action,
                   "show: print LIST on standard output; make: write LIST, with what the lines on\n"
                   "standard input say")
        ->type_name("show|make")
        ->required()
        ->check(CheckAction());
    app.add_option("LIST", options.listFile, "Filter list file; make replaces it in one step")
        ->required()
        ->check(CheckPlainFileName());
    app.add_flag("-q,--quiet", options.quiet, "Print errors and warnings only, and what was asked for");
    const auto end = ParseArguments(app, arguments, {&action, &options.listFile}, [] {});
    if (end) return *end;
    if (action == "make") options.action = ListOptions::Action::Make;
    return options;
}

}  // namespace quillmere
