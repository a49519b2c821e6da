#pragma once

#include "batch/argument_parser.h"

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace quillmere {

/// What the command line of "quillmere-batch restore" asks for.
struct RestoreOptions {
    std::string removedFile;
    std::string inputFile;
    std::string outputFile;
    std::optional<LineEnd> lineEnd;  ///< found out when none is given
    bool backup = false;             ///< keep the old output
    bool force = false;
    bool quiet = false;
};

/// `arguments` are the words after "restore".
std::variant<RestoreOptions, EarlyExit> ParseRestoreOptions(const std::vector<std::string>& arguments);

}  // namespace quillmere
