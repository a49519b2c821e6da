#pragma once

#include "system/posix_descriptor.h"

#include <sys/stat.h>

#include <optional>
#include <string>

namespace quillmere::posix {

/// What a path leads to when the links at its end are followed, whether or not there is a file. Everything is
/// known through descriptors, so it stays what it is when somebody puts a link in the path meanwhile.
struct Target {
    std::string path;  ///< as it was given, for failures

    std::optional<int> descriptor;  ///< the open descriptor that the path names, as /dev/stdout does; if so,
                                    ///< `file` and `status` are not set

    Descriptor folder{-1, {}};       ///< none when the folder is missing
    bool folderCanBeRead = false;    ///< otherwise `folder` only serves to reach the files in it
    std::string name;                ///< of the file in the folder; not a link
    bool throughSystemLink = false;  ///< `name` is a link of /proc after all, to a pipe or a device
    Descriptor file{-1, {}};         ///< open for no use but to tell it from others; none when it is missing
    struct stat status {};           ///< of the file

    bool FolderIsMissing() const { return !descriptor && folder.Number() < 0; }
    bool IsMissing() const { return !descriptor && file.Number() < 0; }
};

/// Finds the target of `path`. In a sticky folder in which everyone may create files, follows only links of
/// the user and of the folder's owner: another user could lead the program to a file that only this user may
/// write. Linux has the same rule as a setting, but not every system has it switched on. Fails when the
/// system cannot tell what the path leads to.
Target Resolve(const std::string& path);

}  // namespace quillmere::posix
