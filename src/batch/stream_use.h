#pragma once

#include "batch/batch_options.h"
#include "batch/list_options.h"
#include "batch/restore_options.h"

#include <optional>
#include <string>
#include <vector>

namespace quillmere {

// The standard streams may lead to the same files as the names on the command line. What is printed would
// then change what is read, or mix with what is written.

/// What a run reads, writes and prints.
struct StreamUse {
    std::vector<std::string> read;     ///< paths; an empty one stands for no file
    std::string namesOfRead;           ///< for messages, as "INPUT or the list"
    std::vector<std::string> written;  ///< the main output first
    std::string namesOfWritten;
    bool logs = true;    ///< prints the log
    bool json = false;   ///< prints a report as JSON
    bool quiet = false;  ///< prints errors and warnings only

    /// Whether standard output gets the main output, so that the log goes to standard error.
    bool WritesToOutput() const;
};

StreamUse UseBy(const BatchOptions& options);
StreamUse UseBy(const RestoreOptions& options);
StreamUse UseBy(const ListOptions& options);

/// Why a run has to be refused, and where that may be printed.
struct StreamRefusal {
    std::string reason;
    bool outputIsFree = true;
    bool errorIsFree = true;
};

/// Looks at the streams that the program was started with. Returns nothing when they do not get in the way.
std::optional<StreamRefusal> RefusalOf(const StreamUse& use);

}  // namespace quillmere
