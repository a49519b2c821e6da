#pragma once

#include "system/file_system.h"

#include <optional>
#include <string>

namespace quillmere::posix {

/// Where a path leads when the links at its end are followed, whether or not there is a file.
struct LinkTarget {
    std::string path;
    std::optional<int> descriptor;  ///< the one that the path names, as /dev/stdout does
};
LinkTarget FollowLinks(const std::string& path);

/// The POSIX body of FileSystem::OpenReplacement.
FileSystem::Replacement OpenReplacement(const std::string& path);

}  // namespace quillmere::posix
