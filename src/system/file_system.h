#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace quillmere {

// Everything that the program asks of a file system passes through the few methods below, so that a test can
// stand in for one and make any single operation fail. A path is what the system takes: bytes on POSIX
// systems, UTF-8 on Windows. Every method fails with a Failure that names the path.

/// A file opened for reading, from its beginning onwards. Closed when destroyed.
class ReadableFile {
 public:
    virtual ~ReadableFile() = default;
    /// Reads at most `size` bytes into `buffer` and returns how many; 0 only at the end of the file. There it
    /// fails with InputPastEnd when the file has become shorter than it was when it was opened, and with
    /// DeviceIoError when it was written to since.
    virtual std::size_t Read(char* buffer, std::size_t size) = 0;
    /// Whether opening the file once more gives the same bytes again; a pipe does not.
    virtual bool CanBeReadAgain() const = 0;
};

/// A file opened for writing. Destroying it closes it and swallows a failure; Close does not.
class WritableFile {
 public:
    virtual ~WritableFile() = default;
    /// Returns when the system has taken all the bytes.
    virtual void Write(std::string_view bytes) = 0;
    /// To be called once; a failure here means that bytes written earlier may be missing.
    virtual void Close() = 0;
};

/// A new file that was written beside the one that it is to replace.
class PendingReplacement {
 public:
    /// Removes the new file unless it was committed.
    virtual ~PendingReplacement() = default;
    /// Puts the new file, closed before, in the old one's place in one step: whoever opens the path, after a
    /// power cut too, gets either all of the old file or all of the new one.
    virtual void Commit() = 0;
};

enum class FileKind {
    Missing,
    Regular,
    Hidden,  ///< a regular file that a plain search of its folder passes over; on Windows only
    Folder,
    Other  ///< a device, a pipe, what the program was started with
};

class FileSystem {
 public:
    virtual ~FileSystem() = default;
    /// The file must exist.
    virtual std::unique_ptr<ReadableFile> OpenForRead(const std::string& path) = 0;
    /// Creates a missing file and empties an existing one. What the program was started with, as /dev/stdout
    /// names it, is written on from where it stands.
    virtual std::unique_ptr<WritableFile> OpenForWrite(const std::string& path) = 0;

    struct Replacement {
        std::unique_ptr<PendingReplacement> pending;
        std::unique_ptr<WritableFile> file;  ///< goes first: some systems do not remove a file that is open
    };
    /// Creates a file named quillmere-….tmp in the folder of `path` (of the file that it leads to, when it is
    /// a link), with the permissions of the file to be replaced. Closing it brings it to the disk. Fails
    /// where OpenForWrite would, and where it is known that the file could not be replaced.
    virtual Replacement OpenReplacement(const std::string& path) = 0;

    /// What `path` leads to, links followed.
    virtual FileKind KindOf(const std::string& path) = 0;
    /// Whether both paths lead to one file, under whatever names; also when that file does not exist yet.
    virtual bool SameFile(const std::string& one, const std::string& other) = 0;
};

/// The file system of the machine; lives as long as the program.
FileSystem& SystemFileSystem();

}  // namespace quillmere
