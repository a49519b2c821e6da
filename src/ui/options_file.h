#pragma once

#include "base/failure_report.h"
#include "system/file_system.h"

#include <string>
#include <vector>

namespace quillmere {

/// What the program remembers between runs. An empty path means that no file was chosen.
struct Options {
    bool blnTranslucent = false;
    std::string strInputFile;
    std::string strOutputFile;

    bool operator==(const Options&) const = default;
};

// The options file has three lines: True or False, the input path, the output path. A path is written in the
// code page if it is then read back as the same path, else as it is. A line that is valid UTF-8 is read as
// UTF-8. Neither function throws: a failure is reported in the log, and the file is closed.

/// Reads the first of `files` that exists. Without one `options` does not change, and the log says so. Each
/// value is stored as soon as it is read, so a failure leaves the later ones unchanged.
void LoadOptions(FileSystem& fileSystem, const std::vector<std::string>& files, Options& options, Log& log);

/// A path with a carriage return does not fit on a line: it fails with BadFileNameOrNumber before the file is
/// opened. After any other failure the file may be incomplete.
void SaveOptions(FileSystem& fileSystem, const std::string& strOptionsFile, const Options& options, Log& log);

}  // namespace quillmere
