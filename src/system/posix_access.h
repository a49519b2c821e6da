#pragma once

#include "system/posix_descriptor.h"
#include "system/posix_extensions.h"

#include <sys/types.h>

namespace quillmere::posix {

/// Who may do what with a file.
struct FileAccess {
    uid_t owner = 0;
    gid_t group = 0;
    mode_t permissions = newFileMode;  ///< nine bits; those of the group are its own, less the list's mask
    AccessList list;
};
FileAccess AccessTo(const Descriptor& file);

// Nobody may read the new file who could not read the other one. So where the group cannot be kept, the new
// group and everyone else get only what both the old group and everyone else had.

/// Gives the new file `file` the access to the file that it replaces and, where the system allows it, the
/// owner and the group.
void GiveSameAccess(const Descriptor& file, const FileAccess& replaced);
/// Gives the new file `file`, created in `folder`, at most the access to the file that it is made from. Its
/// owner may always read and write it. The umask applies, or instead of it the folder's list for new files.
void GiveNoMoreAccess(const Descriptor& file, const FileAccess& source, const Descriptor& folder);

}  // namespace quillmere::posix
