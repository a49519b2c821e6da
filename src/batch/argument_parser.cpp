#include "batch/argument_parser.h"

#include "base/version.h"
#include "batch/exit_codes.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <sstream>

namespace quillmere {

namespace {

constexpr const char* emptyFileName = "the file name is empty";

/// "INPUT", "INPUT and OUTPUT", "REMOVED, INPUT and OUTPUT".
std::string NamesOfPositionals(const CLI::App& app) {
    const auto positionals =
        app.get_options([](const CLI::Option* option) { return option->get_positional(); });
    std::string names;
    for (std::size_t i = 0; i < positionals.size(); ++i) {
        if (i > 0) names += i + 1 < positionals.size() ? ", " : " and ";
        names += positionals[i]->get_name(true);
    }
    return names + (positionals.size() == 1 ? " is" : " are");
}

/// `text` ends with a colon and the words that mean nothing. One that looks like an option is at fault, even
/// if what was to be its value comes first.
std::string SentenceOfExtras(const CLI::App& app, const std::string& text) {
    const std::string words = text.substr(text.find(": ") + 1);
    const std::size_t option = words.find(" -");
    if (option == std::string::npos || words.ends_with(" -"))
        return "only " + NamesOfPositionals(app) + " expected, but not:" + words;
    return "there is no option " + words.substr(option + 1, words.find(' ', option + 1) - option - 1);
}

/// What the library says, in a sentence for the user. Its texts begin with the name of an option or argument.
std::string Sentence(const CLI::App& app, const CLI::ParseError& error) {
    std::string text = error.what();
    const std::string name = text.substr(0, text.find_first_of(": "));
    if (dynamic_cast<const CLI::RequiredError*>(&error) != nullptr) {
        // Words that mean nothing, if there are any, are the likelier fault.
        const auto extras = app.remaining();
        return extras.empty() ? name + " is missing" : SentenceOfExtras(app, CLI::ExtrasError(extras).what());
    }
    if (dynamic_cast<const CLI::ExcludesError*>(&error) != nullptr)
        return name + " and " + text.substr(text.rfind(' ') + 1) + " cannot be given together";
    if (dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr) return SentenceOfExtras(app, text);
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr) {
        return text.find("received") != std::string::npos ? name + " can be given only once"
                                                          : name + " needs a value after it";
    }
    if (dynamic_cast<const CLI::ConversionError*>(&error) != nullptr) {
        const std::size_t option = text.find("--");
        return text.substr(option, text.find(' ', option) - option) + " takes no such value";
    }
    return text;
}

/// For a command line that is wrong: what is wrong with it, and how to get help.
EarlyExit UsageError(const CLI::App& app, const CLI::ParseError& error) {
    const std::string reason = Sentence(app, error);
    const std::string lines =
        "quillmere-batch: " + reason + "\n" + app.get_name() + " --help lists the options.\n";
    return {exitRefused, "", lines, reason};
}

std::string VersionText() {
    return std::string("quillmere-batch ") + programVersion + " (build " + programBuild + ", " +
           programBuildDate + ")";
}

/// Only a whole argument names a file: the library also takes "-q5" for "-q" and a file "-5".
void RefusePartsOfArguments(const std::vector<const std::string*>& files,
                            const std::vector<std::string>& arguments) {
    for (const std::string* const file : files) {
        if (!file->empty() && std::ranges::find(arguments, *file) == arguments.end())
            throw CLI::ExtrasError({*file});
    }
}

}  // namespace

void DeclareHelp(CLI::App& app) {
    app.allow_windows_style_options(false);  // "/world/save.scp" is a path
    app.set_help_flag("-h,--help", "Print this help and exit");
    app.set_version_flag("--version", VersionText(), "Print the version and exit");
}

void DeclareLineEnds(CLI::App& app, std::optional<LineEnd>& lineEnd) {
    auto* const lf = app.add_flag_callback(
        "--lf", [&lineEnd] { lineEnd = LineEnd::Lf; },
        "Lines of world scripts end with a line feed, in and out");
    app.add_flag_callback(
           "--crlf", [&lineEnd] { lineEnd = LineEnd::CrLf; },
           "They end with carriage return and line feed; found out when neither is given")
        ->excludes(lf);
}

CLI::Validator CheckFileName() {
    return {[](const std::string& text) { return text.empty() ? emptyFileName : ""; }, ""};
}

CLI::Validator CheckPlainFileName() {
    return {[](const std::string& text) {
                if (text.empty()) return emptyFileName;
                return text == "-" ? "- is a stream only as INPUT or OUTPUT; ./- is a file of that name" : "";
            },
            ""};
}

void RefuseBackupOfStream(bool backup, const std::string& output) {
    if (backup && output == "-")
        throw CLI::ValidationError(
            "--backup keeps an old file, and - as OUTPUT has none; leave out one of them");
}

std::optional<EarlyExit> ParseArguments(CLI::App& app, const std::vector<std::string>& arguments,
                                        const std::vector<const std::string*>& files,
                                        const std::function<void()>& check) {
    try {
        app.parse(std::vector(arguments.rbegin(), arguments.rend()));  // the library takes them last first
        RefusePartsOfArguments(files, arguments);
        check();
    } catch (const CLI::ParseError& end) {
        if (end.get_exit_code() != 0) return UsageError(app, end);
        std::ostringstream output;
        app.exit(end, output);
        return EarlyExit{exitComplete, output.str(), "", ""};
    }
    return std::nullopt;
}

}  // namespace quillmere
