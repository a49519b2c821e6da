#pragma once

#include "system/file_system.h"

#include <memory>

namespace quillmere::posix {

/// The POSIX body of FileSystem::CreateScratchFile.
std::unique_ptr<ScratchFile> CreateScratchFile();

}  // namespace quillmere::posix
