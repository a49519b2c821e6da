#pragma once

#include "system/file_system.h"

#include <optional>
#include <string>

namespace quillmere::posix {

/// Where a path leads once the links at its end are followed, whether or not a file stands there.
struct LinkTarget {
    std::string path;
    std::optional<int> descriptor;  ///< one that the program was started with, as /dev/stdout names it
};
LinkTarget FollowLinks(const std::string& path);

/// The body of FileSystem::OpenReplacement. Fails before anything is written where the file could not be
/// replaced later, as far as that can be known.
FileSystem::Replacement OpenReplacement(const std::string& path);

}  // namespace quillmere::posix
