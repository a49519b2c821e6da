#pragma once

#include "textfile/file_system.h"

#include <string>

namespace quillmere::posix {

/// The path that a chain of links ends at, whether or not a file stands there.
std::string FollowLinks(const std::string& path);

/// The body of FileSystem::OpenReplacement. Fails before anything is written where the file could not be
/// replaced later, as far as that can be known.
FileSystem::Replacement OpenReplacement(const std::string& path);

}  // namespace quillmere::posix
