#pragma once

#include "batch/batch_console.h"
#include "batch/exit_codes.h"

#include <functional>

namespace quillmere {

/// Calls `run`, prints the failure that ends it, or that it was halted, and returns the exit code.
ExitCode RunAndReport(BatchConsole& console, const std::function<ExitCode()>& run);

}  // namespace quillmere
