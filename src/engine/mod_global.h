#pragma once

#include "filters/filter_set.h"
#include "textfile/file_handler.h"
#include "textfile/open_file_table.h"

namespace quillmere {

/// What the windows and the engine share for the whole run of the program. A program makes one and hands it
/// to whatever works with it.
struct modGlobal {
    /// `fileSystem` must outlive the object.
    explicit modGlobal(FileSystem& fileSystem) : openFiles(fileSystem) {}
    modGlobal(const modGlobal&) = delete;
    modGlobal& operator=(const modGlobal&) = delete;

    OpenFileTable openFiles;
    fileHandler objReader{openFiles};
    fileHandler objWriter{openFiles};
    FilterSet filterSet;
    bool blnIdle = true;  ///< no filter pass runs
};

}  // namespace quillmere
