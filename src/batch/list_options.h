#pragma once

#include "batch/argument_parser.h"

#include <string>
#include <variant>
#include <vector>

namespace quillmere {

/// What the command line of "quillmere-batch list" asks for.
struct ListOptions {
    enum class Action {
        Show,  ///< print the list as lines
        Make   ///< write the list from the lines on standard input
    };

    Action action = Action::Show;
    std::string listFile;
    bool quiet = false;
};

/// `arguments` are the words after "list".
std::variant<ListOptions, EarlyExit> ParseListOptions(const std::vector<std::string>& arguments);

}  // namespace quillmere
