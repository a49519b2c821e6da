#pragma once

#include "engine/filter_settings.h"

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace quillmere {

/// What the command line of quillmere-batch asks for.
struct BatchOptions {
    FilterSettings settings;
    std::string listFile;                    ///< empty: none
    std::string removedFile;                 ///< empty: none
    std::optional<LineEnd> lineEnd;          ///< found out when none is given
    std::optional<std::int64_t> maxRemoved;  ///< percent of the blocks
    bool backup = false;                     ///< keep the old output
    bool force = false;
    bool dryRun = false;
    bool quiet = false;
};

/// The result of a command line that ends the program at once: help, the version, or an error.
struct EarlyExit {
    int exitCode = 0;
    std::string output;  ///< for standard output
    std::string error;   ///< for standard error
};

/// `arguments` are the words after the program's name.
std::variant<BatchOptions, EarlyExit> ParseBatchOptions(const std::vector<std::string>& arguments);

}  // namespace quillmere
