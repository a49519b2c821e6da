#pragma once

#include "system/file_system.h"

#include <optional>
#include <string>

namespace quillmere::windows {

// The Windows bodies of the operations of FileSystem.

FileSystem::Replacement OpenReplacement(const std::string& path,
                                        const std::optional<FileSystem::Source>& source);
std::string BackupPath(const std::string& path);

}  // namespace quillmere::windows
