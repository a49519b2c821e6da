#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace quillmere {

class Failure;

// Files are opened, replaced and compared only through these classes, so that a test can put a file system of
// its own in their place and make any single operation fail. A path is what the system takes: bytes on POSIX
// systems, UTF-8 on Windows. Every method fails with a Failure that names the path. One that waits for the
// other side of a pipe, or for a device, throws Cancelled once the program is asked to end (console.h).

/// What failures call the standard streams.
inline constexpr const char* standardInput = "standard input";
inline constexpr const char* standardOutput = "standard output";

/// Which file it is, and what shows that somebody wrote to it. Equal states of two openings mean the same
/// bytes, unless a writer kept the size and put the time of the last write back.
struct FileState {
    std::uint64_t volume = 0;               ///< the file system that holds it
    std::array<std::uint64_t, 2> number{};  ///< the file's own number there
    std::int64_t size = 0;                  ///< bytes
    std::int64_t written = 0;  ///< time of the last write, in a unit of the system's; 0 without a size

    bool operator==(const FileState&) const = default;
    bool IsSameFile(const FileState& other) const { return volume == other.volume && number == other.number; }
};

/// Fails with InputPastEnd when the file at `path` has become shorter between the two states, and with
/// FileChanged when it was written to, or replaced by another one.
void CheckUnchanged(const FileState& before, const FileState& now, const std::string& path);

/// The failure of a run whose target at `path` is no longer what it was at the start.
Failure ReplacedMeanwhile(const std::string& path);

/// The failure to open the standard stream `name` where the program was started without it.
Failure StreamIsClosed(const std::string& name);

/// The failure of a run that would have to read the pipe at `path` twice.
Failure CannotBeReadTwice(const std::string& path);

/// A file opened for reading, from its beginning onwards. Closed when destroyed.
class ReadableFile {
 public:
    virtual ~ReadableFile() = default;
    /// Reads at most `size` bytes into `buffer` and returns how many; 0 only at the end of the file. At the
    /// end it fails like CheckUnchanged when the file has changed since it was opened.
    virtual std::size_t Read(char* buffer, std::size_t size) = 0;
    /// Whether opening the file once more gives the same bytes again; a pipe does not.
    virtual bool CanBeReadAgain() const = 0;
    /// The state that the open file is in now, whatever its path leads to meanwhile.
    virtual FileState State() const = 0;
};

/// A file opened for writing. Destroying it closes it, too, but ignores a failure.
class WritableFile {
 public:
    virtual ~WritableFile() = default;
    /// Writes all the bytes. A failure may be thrown only by a later Write or by Close.
    virtual void Write(std::string_view bytes) = 0;
    /// To be called once. Returns when the system has taken everything; a failure means that bytes written
    /// earlier may be missing.
    virtual void Close() = 0;
};

/// A new file of the program's own to keep bytes in. Nobody else can open it, and it is gone when the object
/// is destroyed or the program ends, however that happens. Failures name its folder.
class ScratchFile {
 public:
    virtual ~ScratchFile() = default;
    /// Adds all the bytes at the end.
    virtual void Append(std::string_view bytes) = 0;
    /// To be called once, after the last Append. A failure means that bytes may be missing.
    virtual void FinishWriting() = 0;
    /// Reads at most `size` bytes from `offset` on into `buffer` and returns how many; 0 only at the end.
    virtual std::size_t ReadAt(std::int64_t offset, char* buffer, std::size_t size) const = 0;
};

/// A new file in the same folder as the one that it is to replace.
class PendingReplacement {
 public:
    /// Removes the new file unless it was committed.
    virtual ~PendingReplacement() = default;
    /// Brings the new file, which must be closed, to the disk: were it put in place before that, a power cut
    /// could leave it empty, and a disk that fails later would go unnoticed.
    virtual void BringToDisk() = 0;
    /// Keeps the old file, if there is one, at the path that BackupPath gives, in one step: at any moment
    /// that path leads to all of one file, too. Nothing else changes. Before Commit; fails like it, and where
    /// the file system has no hard links.
    virtual void KeepOldFile() = 0;
    /// Puts the new file in the old one's place in one step. At any moment, also after a power cut, the path
    /// leads to either all of the old file or all of the new one. Fails when the path leads to another file
    /// than at the start.
    virtual void Commit() = 0;
};

enum class FileKind {
    Missing,
    Regular,
    Hidden,  ///< a regular file that a plain search of its folder leaves out; on Windows only
    Folder,
    Other  ///< a device, a pipe, or an open descriptor, as /dev/stdout names one
};

class FileSystem {
 public:
    virtual ~FileSystem() = default;
    /// The file must exist.
    virtual std::unique_ptr<ReadableFile> OpenForRead(const std::string& path) = 0;
    /// Creates a missing file and empties an existing one. An open descriptor, as /dev/stdout names one, is
    /// not emptied but written on from its current position.
    virtual std::unique_ptr<WritableFile> OpenForWrite(const std::string& path) = 0;
    /// The same for what KindOf has called Other. On Linux fails when a regular file has taken its place
    /// since.
    virtual std::unique_ptr<WritableFile> OpenDirectly(const std::string& path) { return OpenForWrite(path); }

    /// Opens standard input at its current position. What is read from it is gone for everyone.
    virtual std::unique_ptr<ReadableFile> OpenStandardInput() = 0;
    /// Opens standard output, which is not emptied but written on from its current position.
    virtual std::unique_ptr<WritableFile> OpenStandardOutput() = 0;
    /// The file lies in the folder that the environment names for temporary files: TMPDIR on POSIX systems,
    /// TMP on Windows. Without TMPDIR it lies in /var/tmp, since /tmp is often kept in memory.
    virtual std::unique_ptr<ScratchFile> CreateScratchFile() = 0;

    struct Replacement {
        std::unique_ptr<PendingReplacement> pending;
        std::unique_ptr<WritableFile> file;  ///< last, so closed first: Windows removes no open file
    };
    /// The file, opened for reading, that a replacement is made from.
    struct Source {
        std::string path;
        FileState state;
    };
    /// Creates a file that is to replace the one at `path`. It lies in the same folder, for a link in that of
    /// the file that the link leads to, and gets the old file's permissions. If there is no old file, it gets
    /// no more than those of the source. Fails where OpenForWrite would, and where it is known already that
    /// the file cannot be replaced or that it is the source.
    virtual Replacement OpenReplacement(const std::string& path, const std::optional<Source>& source) = 0;

    /// Where a replacement of the file at `path` keeps the old one: beside it, with "~" added to its name.
    virtual std::string BackupPath(const std::string& path) { return path + "~"; }

    /// What `path` leads to, links followed. Missing only if there is nothing, not if the system does not
    /// tell.
    virtual FileKind KindOf(const std::string& path) = 0;
    /// Whether both paths lead to the same file, whatever its names are and even if it does not exist yet.
    virtual bool SameFile(const std::string& one, const std::string& other) = 0;
};

/// The machine's file system. It lives until the program ends.
FileSystem& SystemFileSystem();

}  // namespace quillmere
