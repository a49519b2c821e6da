#pragma once

#include "batch/batch_options.h"
#include "batch/list_options.h"
#include "batch/restore_options.h"

#include <string>
#include <variant>
#include <vector>

namespace quillmere {

/// What the program is to do.
using CommandLine = std::variant<BatchOptions, RestoreOptions, ListOptions, EarlyExit>;

/// `arguments` are the words after the program's name. The first one may name a task; without that the
/// program cleans. A file of such a name can be given as ./survey.
CommandLine ParseCommandLine(const std::vector<std::string>& arguments);

/// The JSON object for a run that was refused for this reason, if `arguments` ask for JSON; otherwise empty.
std::string JsonOfRefusal(const std::vector<std::string>& arguments, const std::string& reason);

}  // namespace quillmere
