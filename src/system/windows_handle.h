#pragma once

#include "base/failure.h"
#include "system/file_system.h"

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// The parts of the Windows body of FileSystem: handles, and failures for error numbers. Where a function
/// takes a path twice, `wide` is for the system and `path` for the failure to name.
namespace quillmere::windows {

enum class Access { Read, Write };

/// `path` for the system. Fails with BadFileNameOrNumber when it cannot be a name.
std::wstring WidePath(const std::string& path);
bool IsSeparator(wchar_t character);
/// The folder of `wide`, with the separator at its end; empty when `wide` is a name alone.
std::wstring FolderOf(const std::wstring& wide);
/// A name for a temporary file that hardly any file has already.
std::wstring TemporaryName();

/// The attributes of what is at `wide`; nothing when nothing is.
std::optional<DWORD> AttributesOf(const std::wstring& wide);
/// Fails when the file is read-only. Windows refuses to open such a file for writing; Wine, when the
/// superuser runs it, does not.
void RefuseReadOnly(const std::wstring& wide, const std::string& path);

/// The kind of failure for an `error` number that opening `wide` ended with.
FailureKind KindOfOpenError(DWORD error, const std::wstring& wide, Access access);
/// The failure for an `error` number that reading, writing or closing `path` ended with.
Failure TransferFailure(DWORD error, const std::string& path);

/// An open file and the path that its failures name.
class Handle {
 public:
    /// Takes `handle` over; INVALID_HANDLE_VALUE is none.
    Handle(HANDLE handle, std::string path);
    ~Handle();
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    Handle(Handle&& other) noexcept;
    Handle& operator=(Handle&&) = delete;

    bool IsOpen() const { return handle_ != INVALID_HANDLE_VALUE; }
    HANDLE Get() const { return handle_; }
    const std::string& Path() const { return path_; }
    bool IsOnDisk() const { return GetFileType(handle_) == FILE_TYPE_DISK; }
    /// The full path of what is open, links followed; empty when nothing is or the system cannot tell.
    std::wstring FinalPath() const;
    BY_HANDLE_FILE_INFORMATION Information() const;
    FileState State() const;
    /// Reads at most `size` bytes into `buffer` and returns how many; 0 at the end of the file.
    std::size_t Read(char* buffer, std::size_t size) const;
    /// The same from `offset` on, for a file on disk.
    std::size_t ReadAt(std::int64_t offset, char* buffer, std::size_t size) const;
    /// How many bytes of a file on disk come before the position that Read and Write share.
    std::int64_t Position() const;
    /// Writes all the bytes.
    void Write(std::string_view bytes) const;
    /// Brings what was written to the disk.
    void Sync() const;
    /// To be called once; a failure means that bytes written earlier may be missing.
    void Close();

 private:
    std::size_t ReadFrom(OVERLAPPED* offset, char* buffer, std::size_t size) const;

    HANDLE handle_;
    std::string path_;
};

/// The arguments of CreateFile.
struct OpenMode {
    DWORD access;
    DWORD share;
    DWORD creation;
    DWORD flags;
};

constexpr DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
/// Only to ask what a path leads to; works for folders, too.
constexpr OpenMode toAsk = {0, shareAll, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS};

/// Returns a handle that is not open, and leaves the error to GetLastError, on failure.
Handle TryOpen(const std::wstring& wide, const std::string& path, const OpenMode& mode);
/// Another handle for a standard stream, such as STD_INPUT_HANDLE; its failures name `path`. It is not open
/// when the program was started without the stream.
Handle DuplicateStream(DWORD stream, const std::string& path);
/// Opens `wide` only to ask what it is. The handle is not open when nothing is there; fails when the system
/// cannot tell.
Handle Ask(const std::wstring& wide, const std::string& path);

/// The state of what is at `wide`; nothing when that is nothing, or a device.
std::optional<FileState> StateAt(const std::wstring& wide, const std::string& path);

}  // namespace quillmere::windows
