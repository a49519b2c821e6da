#pragma once

#include "base/failure_report.h"
#include "system/file_system.h"

#include <string>

namespace quillmere {

/// What the program remembers between runs. Paths are what the file system takes; an empty one is not set.
struct Options {
    bool blnTranslucent = false;
    std::string strInputFile;
    std::string strOutputFile;

    bool operator==(const Options&) const = default;
};

// The options file is three lines: True or False, the input path, the output path. A path stands in the code
// page where that can hold it and is read back as the same path, else as it is; a line that is valid UTF-8 is
// taken as UTF-8. Neither operation throws: a failure is reported in the log, and the file is closed again.

/// Without such a file `options` stays as it is, and the log says so. Otherwise each value is stored as soon
/// as it is read, so that a failure leaves those before it set and those behind it as they were.
void LoadOptions(FileSystem& fileSystem, const std::string& strOptionsFile, Options& options, Log& log);

/// A path with a carriage return has no place on a line and fails with BadFileNameOrNumber, before the file
/// is opened. After any other failure the file may hold fewer lines.
void SaveOptions(FileSystem& fileSystem, const std::string& strOptionsFile, const Options& options, Log& log);

}  // namespace quillmere
