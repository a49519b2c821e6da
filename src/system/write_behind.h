#pragma once

#include "system/file_system.h"

#include <memory>

namespace quillmere {

/// Returns a file that passes what it gets to `file` on a thread of its own, so that the caller goes on while
/// the system writes. A small file is written without a thread. Write returns when the bytes are copied: a
/// failure is thrown by a later Write or by Close, which returns when everything is written. After a failure
/// nothing more is written.
std::unique_ptr<WritableFile> WriteBehind(std::unique_ptr<WritableFile> file);

}  // namespace quillmere
