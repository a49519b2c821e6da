#pragma once

#include "system/file_system.h"

#include <memory>

namespace quillmere {

/// All bytes of standard input, kept in a scratch file so that they can be read more than once.
class KeptInput {
 public:
    /// Reads standard input to its end. Fails with a Failure that names it, or the folder of the scratch
    /// file, and gives advice. Throws Cancelled once the program is asked to end.
    explicit KeptInput(FileSystem& system);

    /// Opens them from their beginning on. Each opening has its own position and the same state, and may
    /// outlive the object.
    std::unique_ptr<ReadableFile> Open() const;

 private:
    std::shared_ptr<const ScratchFile> file_;
    FileState state_;
};

}  // namespace quillmere
