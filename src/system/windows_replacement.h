#pragma once

#include "system/file_system.h"

#include <string>

namespace quillmere::windows {

// The Windows bodies of the operations of FileSystem.

FileSystem::Replacement OpenReplacement(const std::string& path);
std::string BackupPath(const std::string& path);

}  // namespace quillmere::windows
