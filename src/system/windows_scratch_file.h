#pragma once

#include "system/file_system.h"

#include <memory>

namespace quillmere::windows {

/// The Windows body of FileSystem::CreateScratchFile.
std::unique_ptr<ScratchFile> CreateScratchFile();

}  // namespace quillmere::windows
