#include "base/failure.h"
#include "system/file_system.h"
#include "system/windows_access_list.h"
#include "system/windows_wide_text.h"
#include "system/write_behind.h"

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>

namespace quillmere {

namespace {

enum class Access { Read, Write };

constexpr DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
/// What a file keeps when it is replaced.
constexpr DWORD keptAttributes = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM |
                                 FILE_ATTRIBUTE_NOT_CONTENT_INDEXED | FILE_ATTRIBUTE_ENCRYPTED;

std::wstring WidePath(const std::string& path) {
    const auto wide = WideFromValidUtf8(path);
    if (!wide || wide->empty() || wide->find(L'\0') != std::wstring::npos)
        throw Failure(FailureKind::BadFileNameOrNumber, path);
    return *wide;
}

bool IsSeparator(wchar_t character) {
    return character == L'\\' || character == L'/';
}

/// The attributes of what stands at `path`, and nothing when nothing does.
std::optional<DWORD> AttributesOf(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) return std::nullopt;
    return attributes;
}

/// What stands behind a refused access.
FailureKind KindOfDenial(const std::wstring& path, Access access) {
    const auto attributes = AttributesOf(path);
    const bool folder = attributes && (*attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    const bool readOnly = attributes && access == Access::Write;
    return folder || readOnly ? FailureKind::PathFileAccessError : FailureKind::PermissionDenied;
}

/// The kind of failure that stands for an `error` number met while opening `path`.
FailureKind KindOfOpenError(DWORD error, const std::wstring& path, Access access) {
    switch (error) {
        case ERROR_FILE_NOT_FOUND:
            return FailureKind::FileNotFound;
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_DRIVE:
        case ERROR_BAD_NETPATH:
        case ERROR_BAD_NET_NAME:
            return FailureKind::PathNotFound;
        case ERROR_TOO_MANY_OPEN_FILES:
            return FailureKind::TooManyFiles;
        case ERROR_INVALID_NAME:
        case ERROR_BAD_PATHNAME:
        case ERROR_FILENAME_EXCED_RANGE:
            return FailureKind::BadFileNameOrNumber;
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL:
            return FailureKind::DiskFull;
        case ERROR_NOT_ENOUGH_MEMORY:
        case ERROR_OUTOFMEMORY:
            return FailureKind::OutOfMemory;
        case ERROR_NOT_READY:
        case ERROR_CRC:
        case ERROR_IO_DEVICE:
            return FailureKind::DeviceIoError;
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION:
            return FailureKind::PermissionDenied;
        case ERROR_ACCESS_DENIED:
            return KindOfDenial(path, access);
        default:
            return FailureKind::PathFileAccessError;
    }
}

/// The failure that stands for an `error` number met while reading, writing or closing `path`.
Failure TransferFailure(DWORD error, const std::string& path) {
    switch (error) {
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL:
            return Failure(FailureKind::DiskFull, path);
        case ERROR_LOCK_VIOLATION:
            return Failure(FailureKind::PermissionDenied, path);
        default:
            return Failure(FailureKind::DeviceIoError, path);
    }
}

/// An open file and the path that its failures name.
class Handle {
 public:
    Handle(HANDLE handle, std::string path) : handle_(handle), path_(std::move(path)) {}
    ~Handle() {
        if (IsOpen()) CloseHandle(handle_);
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    Handle(Handle&& other) noexcept
        : handle_(std::exchange(other.handle_, INVALID_HANDLE_VALUE)), path_(std::move(other.path_)) {}
    Handle& operator=(Handle&&) = delete;

    bool IsOpen() const { return handle_ != INVALID_HANDLE_VALUE; }
    HANDLE Get() const { return handle_; }
    const std::string& Path() const { return path_; }
    bool IsOnDisk() const { return GetFileType(handle_) == FILE_TYPE_DISK; }

    void Close() {
        if (CloseHandle(std::exchange(handle_, INVALID_HANDLE_VALUE)) == FALSE)
            throw TransferFailure(GetLastError(), path_);
    }

 private:
    HANDLE handle_;
    std::string path_;
};

struct OpenMode {
    DWORD access;
    DWORD share;
    DWORD creation;
    DWORD flags;
};

/// Nobody else can write to the file while it is open.
constexpr OpenMode toRead = {GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN};
/// Nobody else can open the file.
constexpr OpenMode toWrite = {GENERIC_WRITE, 0, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL};
/// Only to ask what a path, also that of a folder, leads to.
constexpr OpenMode toAsk = {0, shareAll, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS};
/// Only to learn whether the file could be written.
constexpr OpenMode toTryWriting = {GENERIC_WRITE, shareAll, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL};

/// Returns a handle that is not open, and leaves the error to GetLastError, on failure.
Handle TryOpen(const std::wstring& wide, const std::string& path, const OpenMode& mode) {
    return {CreateFileW(wide.c_str(), mode.access, mode.share, nullptr, mode.creation, mode.flags, nullptr),
            path};
}

Handle Open(const std::string& path, const OpenMode& mode, Access access) {
    const std::wstring wide = WidePath(path);
    Handle handle = TryOpen(wide, path, mode);
    if (!handle.IsOpen()) {
        const DWORD error = GetLastError();
        const bool folderToBe = access == Access::Write && IsSeparator(wide.back());
        throw Failure(folderToBe ? FailureKind::PathFileAccessError : KindOfOpenError(error, wide, access),
                      path);
    }
    return handle;
}

/// For systems that do not themselves keep a superuser from writing to a read-only file.
void RefuseReadOnly(const std::wstring& wide, const std::string& path) {
    const DWORD attributes = AttributesOf(wide).value_or(0);
    if ((attributes & FILE_ATTRIBUTE_READONLY) != 0) throw Failure(FailureKind::PathFileAccessError, path);
}

class WindowsReadableFile : public ReadableFile {
 public:
    explicit WindowsReadableFile(Handle handle) : handle_(std::move(handle)) {
        LARGE_INTEGER size{};
        if (handle_.IsOnDisk() && GetFileSizeEx(handle_.Get(), &size) != FALSE)
            bytesExpected_ = size.QuadPart;
    }

    std::size_t Read(char* buffer, std::size_t size) override {
        constexpr std::size_t most = std::numeric_limits<DWORD>::max();
        DWORD count = 0;
        if (ReadFile(handle_.Get(), buffer, static_cast<DWORD>(std::min(size, most)), &count, nullptr) ==
            FALSE) {
            const DWORD error = GetLastError();
            if (error != ERROR_BROKEN_PIPE && error != ERROR_HANDLE_EOF)
                throw TransferFailure(error, handle_.Path());
        }
        bytesExpected_ -= count;
        if (count == 0 && bytesExpected_ > 0)
            throw Failure(FailureKind::InputPastEnd, handle_.Path() + " (cut short while it was read)");
        return count;
    }

    bool CanBeReadAgain() const override { return handle_.IsOnDisk(); }

 private:
    Handle handle_;
    std::int64_t bytesExpected_ = 0;  ///< of those that the file held when opened, how many are still to come
};

class WindowsWritableFile : public WritableFile {
 public:
    explicit WindowsWritableFile(Handle handle) : handle_(std::move(handle)) {}

    void Write(std::string_view bytes) override {
        constexpr std::size_t most = std::numeric_limits<DWORD>::max();
        while (!bytes.empty()) {
            const auto size = static_cast<DWORD>(std::min(bytes.size(), most));
            DWORD count = 0;
            if (WriteFile(handle_.Get(), bytes.data(), size, &count, nullptr) == FALSE)
                throw TransferFailure(GetLastError(), handle_.Path());
            if (count == 0) throw Failure(FailureKind::DeviceIoError, handle_.Path());
            bytes.remove_prefix(count);
        }
    }

    void Close() override { handle_.Close(); }

 protected:
    const Handle& File() const { return handle_; }

 private:
    Handle handle_;
};

/// The new file of a replacement, on the disk when it is closed: put in place before, it could be found empty
/// after a power cut.
class ReplacingFile : public WindowsWritableFile {
 public:
    using WindowsWritableFile::WindowsWritableFile;

    void Close() override {
        if (FlushFileBuffers(File().Get()) == FALSE) throw TransferFailure(GetLastError(), File().Path());
        WindowsWritableFile::Close();
    }
};

class WindowsReplacement : public PendingReplacement {
 public:
    WindowsReplacement(std::wstring temporary, std::wstring target, std::string path)
        : temporary_(std::move(temporary)), target_(std::move(target)), path_(std::move(path)) {}
    ~WindowsReplacement() override {
        if (!committed_) DeleteFileW(temporary_.c_str());
    }
    WindowsReplacement(const WindowsReplacement&) = delete;
    WindowsReplacement& operator=(const WindowsReplacement&) = delete;

    void Commit() override {
        const DWORD error = MoveWhenReleased();
        if (error != ERROR_SUCCESS)
            throw Failure(IsHeld(error) ? FailureKind::PermissionDenied
                                        : KindOfOpenError(error, target_, Access::Write),
                          path_);
        committed_ = true;
    }

 private:
    /// A virus scanner, an indexer or a backup may hold either file for a moment, which must not cost a
    /// finished run. Returns the error of the last attempt.
    DWORD MoveWhenReleased() const {
        constexpr DWORD patience = 2000;  // milliseconds
        constexpr DWORD pause = 50;
        for (DWORD waited = 0;; waited += pause) {
            if (MoveFileExW(temporary_.c_str(), target_.c_str(),
                            MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != FALSE)
                return ERROR_SUCCESS;
            const DWORD error = GetLastError();
            if (waited >= patience || !IsHeld(error)) return error;
            Sleep(pause);
        }
    }

    /// A file that someone has open is a denied access, as a read-only one and a folder are.
    bool IsHeld(DWORD error) const {
        if (error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION) return true;
        const DWORD attributes = AttributesOf(target_).value_or(0);
        return error == ERROR_ACCESS_DENIED &&
               (attributes & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_DIRECTORY)) == 0;
    }

    std::wstring temporary_;
    std::wstring target_;
    std::string path_;
    bool committed_ = false;
};

/// The full path of what is open, links followed; empty when the system cannot tell.
std::wstring FinalPath(const Handle& handle) {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const auto size = static_cast<DWORD>(path.size());
        const DWORD length = GetFinalPathNameByHandleW(handle.Get(), path.data(), size, FILE_NAME_NORMALIZED);
        path.resize(length);
        if (length < size) return path;
    }
}

/// The full path that `path` is short for; `path` itself when the system cannot tell.
std::wstring FullPath(const std::wstring& path) {
    std::wstring full(GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
    if (full.empty()) return path;
    full.resize(GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
    return full;
}

struct SplitPath {
    std::wstring folder;  ///< with the separator at its end, when there is one
    std::wstring name;
};

SplitPath Split(const std::wstring& path) {
    const std::size_t name = path.find_last_of(L"\\/:") + 1;  // 0 when there is no folder
    return {path.substr(0, name), path.substr(name)};
}

/// The path that a link at the end of `path` leads to, and `path` itself when there is no link.
std::wstring FollowLinks(const std::wstring& wide, const std::string& path) {
    const auto attributes = AttributesOf(wide);
    if (!attributes || (*attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return wide;
    const Handle target = TryOpen(wide, path, toAsk);
    const std::wstring final = target.IsOpen() ? FinalPath(target) : std::wstring();
    if (final.empty()) throw Failure(FailureKind::PathFileAccessError, path);
    return final;
}

/// Creates a file and opens it for writing, when it `replaces` another also to set its access list. Those who
/// may only change the files of a share are refused that right.
Handle TryCreate(const std::wstring& wide, const std::string& path, DWORD attributes, bool replaces) {
    if (replaces) {
        Handle file = TryOpen(wide, path, {GENERIC_WRITE | WRITE_DAC, 0, CREATE_NEW, attributes});
        if (file.IsOpen() || GetLastError() != ERROR_ACCESS_DENIED) return file;
    }
    return TryOpen(wide, path, {GENERIC_WRITE, 0, CREATE_NEW, attributes});
}

struct TemporaryFile {
    std::wstring path;
    Handle file;  ///< its failures name the target, which the user knows
};

/// Creates a file with a name of its own in the folder of `target`, which it `replaces` or is to be, and
/// opens it for writing.
TemporaryFile CreateTemporaryBeside(const std::wstring& target, const std::string& path, DWORD attributes,
                                    bool replaces) {
    constexpr int mostAttempts = 1000;
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        const std::wstring temporary = Split(target).folder + L"quillmere-" +
                                       std::to_wstring(GetCurrentProcessId()) + L"-" +
                                       std::to_wstring(attempt) + L".tmp";
        Handle file = TryCreate(temporary, path, attributes, replaces);
        if (file.IsOpen()) return {temporary, std::move(file)};
        const DWORD error = GetLastError();
        if (error == ERROR_ACCESS_DENIED) break;
        if (error != ERROR_FILE_EXISTS) throw Failure(KindOfOpenError(error, target, Access::Write), path);
    }
    throw Failure(FailureKind::PermissionDenied, path);
}

/// Fails where OpenForWrite would; returns what the new file keeps of the attributes of the one at `target`.
DWORD CheckReplaceable(const std::wstring& target, const std::string& path) {
    const auto attributes = AttributesOf(target);
    if (!attributes) {
        if (IsSeparator(target.back())) throw Failure(FailureKind::PathFileAccessError, path);
        return FILE_ATTRIBUTE_NORMAL;
    }
    RefuseReadOnly(target, path);
    if (!TryOpen(target, path, toTryWriting).IsOpen())
        throw Failure(KindOfOpenError(GetLastError(), target, Access::Write), path);
    return *attributes & keptAttributes;
}

/// The path in the one form that all paths of a file that is still missing have in common: the folder's final
/// path, and the name.
std::wstring CommonForm(const std::wstring& path) {
    const SplitPath split = Split(FullPath(path));
    const Handle folder = TryOpen(split.folder, "", toAsk);
    const std::wstring final = folder.IsOpen() ? FinalPath(folder) : std::wstring();
    return (final.empty() ? split.folder : final + L'\\') + split.name;
}

std::optional<BY_HANDLE_FILE_INFORMATION> InformationOf(const std::wstring& path) {
    BY_HANDLE_FILE_INFORMATION information{};
    const Handle handle = TryOpen(path, "", toAsk);
    if (!handle.IsOpen() || GetFileInformationByHandle(handle.Get(), &information) == FALSE)
        return std::nullopt;
    return information;
}

class WindowsFileSystem : public FileSystem {
 public:
    std::unique_ptr<ReadableFile> OpenForRead(const std::string& path) override {
        return std::make_unique<WindowsReadableFile>(Open(path, toRead, Access::Read));
    }

    std::unique_ptr<WritableFile> OpenForWrite(const std::string& path) override {
        RefuseReadOnly(WidePath(path), path);
        Handle file = Open(path, toWrite, Access::Write);
        // Not emptied when it is opened: that is refused for hidden files.
        if (file.IsOnDisk() && SetEndOfFile(file.Get()) == FALSE) throw TransferFailure(GetLastError(), path);
        return WriteBehind(std::make_unique<WindowsWritableFile>(std::move(file)));
    }

    Replacement OpenReplacement(const std::string& path) override {
        const std::wstring target = FollowLinks(WidePath(path), path);
        const bool replaces = AttributesOf(target).has_value();
        TemporaryFile temporary =
            CreateTemporaryBeside(target, path, CheckReplaceable(target, path), replaces);
        auto pending = std::make_unique<WindowsReplacement>(temporary.path, target, path);
        Handle file = std::move(temporary.file);  // closed when `pending` removes it
        if (replaces && !TakeOverAccessList(file.Get(), target))
            throw Failure(FailureKind::PathFileAccessError, path);
        return {std::move(pending), WriteBehind(std::make_unique<ReplacingFile>(std::move(file)))};
    }

    FileKind KindOf(const std::string& path) override {
        const auto wide = WideFromValidUtf8(path);
        if (!wide) return FileKind::Missing;
        const Handle handle = TryOpen(*wide, path, toAsk);
        if (!handle.IsOpen()) return FileKind::Missing;
        BY_HANDLE_FILE_INFORMATION information{};
        if (!handle.IsOnDisk() || GetFileInformationByHandle(handle.Get(), &information) == FALSE)
            return FileKind::Other;
        const DWORD attributes = information.dwFileAttributes;
        if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return FileKind::Folder;
        return (attributes & (FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM)) != 0 ? FileKind::Hidden
                                                                                   : FileKind::Regular;
    }

    bool SameFile(const std::string& one, const std::string& other) override {
        const auto oneWide = WideFromValidUtf8(one);
        const auto otherWide = WideFromValidUtf8(other);
        if (!oneWide || !otherWide) return one == other;
        const auto first = InformationOf(*oneWide);
        const auto second = InformationOf(*otherWide);
        if (first && second) {
            return first->dwVolumeSerialNumber == second->dwVolumeSerialNumber &&
                   first->nFileIndexHigh == second->nFileIndexHigh &&
                   first->nFileIndexLow == second->nFileIndexLow;
        }
        if (first || second) return false;
        return CompareStringOrdinal(CommonForm(*oneWide).c_str(), -1, CommonForm(*otherWide).c_str(), -1,
                                    TRUE) == CSTR_EQUAL;
    }
};

}  // namespace

FileSystem& SystemFileSystem() {
    static WindowsFileSystem system;
    return system;
}

}  // namespace quillmere
