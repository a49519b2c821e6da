#pragma once

#include "base/failure.h"
#include "system/file_system.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

/// The parts of the POSIX body of FileSystem: descriptors, and failures for error numbers.
namespace quillmere::posix {

enum class Access { Read, Write };

constexpr mode_t newFileMode = 0666;  // less the umask

/// The folder of `path`; "." when `path` is a name alone.
std::string FolderOf(const std::string& path);
/// The status of what `path` leads to. Nothing, with errno set, when the system cannot tell.
std::optional<struct stat> Status(const std::string& path);

FileState StateOf(const struct stat& status);

/// The failure for an `error` number that opening `path` ended with.
Failure OpenFailure(int error, const std::string& path, Access access);
/// The failure for an `error` number that reading, writing or closing `path` ended with.
Failure TransferFailure(int error, const std::string& path);

/// An open file descriptor and the path that its failures name.
class Descriptor {
 public:
    /// Takes `number` over; a negative one is none.
    Descriptor(int number, std::string path);
    ~Descriptor();
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    Descriptor(Descriptor&& other) noexcept;
    Descriptor& operator=(Descriptor&& other) noexcept;

    int Number() const { return number_; }
    /// Gives the number away, and with it the duty to close it.
    int Release() { return std::exchange(number_, -1); }
    const std::string& Path() const { return path_; }
    struct stat Status() const;
    /// To be called first for what may be a pipe or a terminal. Read and Write then throw Cancelled rather
    /// than wait for its other side once the program is asked to end. A regular file is read and written as
    /// before.
    void WaitCancellably();
    /// Reads at most `size` bytes into `buffer` and returns how many; 0 at the end of the file.
    std::size_t Read(char* buffer, std::size_t size) const;
    /// The same from `offset` on, for a regular file. The position that Read and Write share stays.
    std::size_t ReadAt(off_t offset, char* buffer, std::size_t size) const;
    /// Writes all the bytes.
    void Write(std::string_view bytes) const;
    /// Brings what was written to the disk, where that applies: not to a pipe.
    void Sync() const;
    /// To be called once; a failure means that bytes written earlier may be missing.
    void Close();

 private:
    void WaitUntilReady(short events) const;
    void PrepareAnotherTry(int error) const;

    int number_;
    std::string path_;
    bool mayWait_ = false;                             ///< what is open is no regular file
    std::size_t mostAtOnce_ = std::string_view::npos;  ///< bytes to write without another wait
};

/// Lets a moment pass for something that the program waits for. Throws Cancelled if it is asked to end.
void WaitAMoment();

/// Calls open(2), and again whenever a signal interrupts it. Returns a negative number and leaves errno set
/// on failure.
int OpenNumber(const std::string& path, int flags, mode_t mode = 0);

/// The same for a path that is relative to the open folder `folder`.
int OpenNumberIn(int folder, const std::string& path, int flags, mode_t mode = 0);

/// Another descriptor for the file that is open under `number`; its failures name `path`.
Descriptor Duplicate(int number, const std::string& path);

/// Fails with BadFileNameOrNumber when `path` cannot be a name.
void CheckName(const std::string& path);

}  // namespace quillmere::posix
