#pragma once

#include "system/file_system.h"

#include <memory>

namespace quillmere {

/// `file`, written to on a thread of its own, so that whoever makes the bytes goes on meanwhile; a small file
/// is written without. Write returns when the bytes are copied: a failure of the system is thrown by a later
/// Write, or by Close, which returns when everything is written. Nothing is written behind a failure.
std::unique_ptr<WritableFile> WriteBehind(std::unique_ptr<WritableFile> file);

}  // namespace quillmere
