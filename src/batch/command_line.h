#pragma once

#include "batch/batch_options.h"
#include "batch/exit_codes.h"
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

/// The JSON object for a run that was refused or has failed for this reason, and found out nothing; empty if
/// `arguments` do not ask for JSON.
std::string JsonWithoutFacts(const std::vector<std::string>& arguments, ExitCode exitCode,
                             const std::string& reason);

}  // namespace quillmere
