#pragma once

#include "system/file_system.h"

#include <string>

namespace quillmere::windows {

/// The Windows body of FileSystem::OpenReplacement.
FileSystem::Replacement OpenReplacement(const std::string& path);

}  // namespace quillmere::windows
