#pragma once

#include "batch/batch_console.h"
#include "batch/batch_file_system.h"
#include "batch/exit_codes.h"
#include "batch/failure_log.h"
#include "batch/list_options.h"
#include "engine/mod_global.h"

#include <functional>
#include <ostream>
#include <string_view>

namespace quillmere {

/// Shows a filter list as lines, or makes one from lines. Each line or entry that cannot work is named, and
/// then no list is made.
class ListRun {
 public:
    /// `output` gets the lines of a list that is shown. `interrupted` tells whether the user asked to stop.
    /// All but the options must outlive the object.
    ListRun(ListOptions options, FileSystem& system, BatchConsole& console, std::ostream& output,
            std::function<bool()> interrupted);

    ExitCode Run();

 private:
    ExitCode Show();
    template <class Table>
    bool ShowTable(const Table& table, std::string_view kind);
    ExitCode Make();
    bool ReadLines();
    std::string_view AddLine(std::string_view line);
    void Report();

    ListOptions options_;
    BatchConsole& console_;
    FailureLog failureLog_;  ///< of loading and saving, whose reports would be those of the editor
    std::ostream& output_;
    std::function<bool()> interrupted_;
    BatchFileSystem fileSystem_;
    modGlobal shared_;
};

}  // namespace quillmere
