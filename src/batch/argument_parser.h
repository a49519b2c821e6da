#pragma once

#include "textfile/line_stream.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Validator;
}  // namespace CLI

namespace quillmere {

// What the command lines of all tasks have in common. The library parses; what it says is put in other words.

/// The result of a command line that ends the program at once: help, the version, or an error.
struct EarlyExit {
    int exitCode = 0;
    std::string output;  ///< for standard output
    std::string error;   ///< for standard error
    std::string reason;  ///< what is wrong, as one sentence
};

/// Declares --help and --version.
void DeclareHelp(CLI::App& app);
/// Declares --lf and --crlf, of which one at most is given.
void DeclareLineEnds(CLI::App& app, std::optional<LineEnd>& lineEnd);

/// Refuses an empty file name: an unset variable in a script would otherwise look like an option that was not
/// given.
CLI::Validator CheckFileName();
/// Refuses also "-", which stands for a stream only as INPUT and OUTPUT.
CLI::Validator CheckPlainFileName();

/// Throws a CLI::ParseError when --backup is given and `output` is standard output, which has no old file.
void RefuseBackupOfStream(bool backup, const std::string& output);

/// Parses `arguments` into what was declared. `check` then looks at the values: it throws a CLI::ParseError
/// to refuse them. `files` are the values of the positional arguments. Returns the way out when the program
/// has to end at once.
std::optional<EarlyExit> ParseArguments(CLI::App& app, const std::vector<std::string>& arguments,
                                        const std::vector<const std::string*>& files,
                                        const std::function<void()>& check);

}  // namespace quillmere
