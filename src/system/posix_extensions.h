#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <string>

/// What the program asks of a POSIX system beyond the standard. Each function has an answer that is right for
/// a system that has nothing to offer here.
namespace quillmere::posix {

/// What may keep a file from being replaced although it can be written. Where the system does not tell, both
/// are false, and the replacement fails when it is committed instead of before anything is written.
struct FileAttributes {
    bool appendOnly = false;
    bool mountPoint = false;
};
FileAttributes AttributesOf(int descriptor);

/// Whether the user may write the file `name` in the open folder `folder`. Sets errno when not.
bool MayBeWritten(int folder, const std::string& name);

/// Has the system start to write `size` bytes of an open file, from `offset` on, to the disk, and does not
/// wait for them. Only a hint: a body that does nothing makes a later fsync take longer.
void StartWritingToDisk(int descriptor, off_t offset, off_t size);

/// Creates a file without a name in the open folder `folder`, for its owner alone, and opens it for reading
/// and writing. It vanishes with its last descriptor unless GiveName is called. Returns a negative number
/// where such a file cannot be made or could not get a name.
int CreateUnnamed(int folder);
/// Gives such a file its first name. Returns false, with errno set, on failure: EEXIST when the name is
/// taken.
bool GiveName(int descriptor, int folder, const std::string& name);
/// Renames a file within its folder. Returns false, with errno set, on failure: EEXIST when the new name is
/// taken, EINVAL or ENOSYS when the system can only rename over what has the new name.
bool RenameToFreeName(int folder, const std::string& from, const std::string& to);

/// A file's access list, as the system stores it: what users and groups may do beside the owner, the group
/// and everyone. Empty when the file has none.
using AccessList = std::string;
/// The list of an open file. Nothing, with errno set, on failure.
std::optional<AccessList> AccessListOf(int descriptor);
/// The list that new files in an open folder get; empty when it has none or cannot be asked.
AccessList ListForNewFiles(int folder);
/// Sets the list, and so the permission bits, of an open file; an empty one removes it. Returns false, with
/// errno set, on failure.
bool SetAccessList(int descriptor, const AccessList& list);
/// What a list, which must not be empty, lets the owner, the file's group and everyone do.
mode_t PermissionsIn(const AccessList& list);
/// Has a list, which may be empty, let the file's group and everyone do what `permissions` say.
void SetGroupAndOthers(AccessList& list, mode_t permissions);

/// The full path of the running executable; empty where the system does not tell.
std::filesystem::path ExecutablePath();

}  // namespace quillmere::posix
