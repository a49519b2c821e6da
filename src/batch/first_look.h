#pragma once

#include "batch/batch_console.h"
#include "system/file_system.h"
#include "textfile/line_stream.h"

#include <optional>
#include <string>
#include <string_view>

namespace quillmere {

/// A world script as the command line names it.
struct NamedWorldScript {
    std::string path;
    std::string_view argument;       ///< for example "INPUT"
    std::optional<LineEnd> lineEnd;  ///< found out when none is given
    bool mayBeOtherFile = false;     ///< go on although it is compressed, or a filter list
};

/// Looks at the first bytes of a world script before it is read. Returns how its lines end, and says when
/// that may be wrong. Returns nothing when it was printed why the file is not to be read. Fails as reading
/// fails.
std::optional<LineEnd> LookAtWorldScript(const NamedWorldScript& script, FileSystem& system,
                                         BatchConsole& console);

}  // namespace quillmere
