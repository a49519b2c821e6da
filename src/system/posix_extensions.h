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
/// The attributes of the file that `path` leads to.
FileAttributes AttributesOf(const std::string& path);

/// Has the system start to write `size` bytes of an open file, from `offset` on, to the disk, and does not
/// wait for them. Only a hint: a body that does nothing makes a later fsync take longer.
void StartWritingToDisk(int descriptor, off_t offset, off_t size);

/// The descriptor of this process that `path` names, as /dev/fd/1 does on many systems; a link at the end of
/// `path` is not followed. Nothing when it names none; the path is then opened like any other.
std::optional<int> DescriptorNamed(const std::filesystem::path& path);

/// The full path of the running executable; empty where the system does not tell.
std::filesystem::path ExecutablePath();

}  // namespace quillmere::posix
