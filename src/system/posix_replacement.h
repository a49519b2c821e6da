#pragma once

#include "system/file_system.h"

#include <optional>
#include <string>

namespace quillmere::posix {

/// The POSIX body of FileSystem::OpenReplacement.
FileSystem::Replacement OpenReplacement(const std::string& path,
                                        const std::optional<FileSystem::Source>& source);

}  // namespace quillmere::posix
