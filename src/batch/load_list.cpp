#include "batch/load_list.h"

#include "batch/input_sample.h"
#include "filters/list_file.h"

namespace quillmere {

bool LoadAnyList(modGlobal& shared, const std::string& path, Log& log) {
    LineEnd lineEnd = LineEnd::CrLf;
    // A file that cannot be read fails once more when it is loaded, with a report.
    TrapFailure([&] { lineEnd = LineEndIn(FirstBytes(shared.openFiles.System(), path)); });
    return LoadFilterList(shared.objReader, path, shared.filterSet, log, lineEnd, true);
}

}  // namespace quillmere
