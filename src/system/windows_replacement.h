#pragma once

#include "system/file_system.h"

#include <string>

namespace quillmere::windows {

/// The body of FileSystem::OpenReplacement. Fails before anything is written where the file could not be
/// replaced later, as far as that can be known.
FileSystem::Replacement OpenReplacement(const std::string& path);

}  // namespace quillmere::windows
