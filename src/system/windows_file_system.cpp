#include "system/file_system.h"
#include "system/windows_handle.h"
#include "system/windows_replacement.h"
#include "system/windows_wide_text.h"
#include "system/write_behind.h"

#include <cstdint>
#include <optional>
#include <utility>

namespace quillmere {

namespace {

using namespace windows;

/// Nobody else can write to the file while it is open.
constexpr OpenMode toRead = {GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN};
/// Nobody else can open the file.
constexpr OpenMode toWrite = {GENERIC_WRITE, 0, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL};

/// A file that fails at its end when it has become shorter since it was opened.
class WindowsReadableFile : public ReadableFile {
 public:
    explicit WindowsReadableFile(Handle handle) : handle_(std::move(handle)) {
        LARGE_INTEGER size{};
        if (handle_.IsOnDisk() && GetFileSizeEx(handle_.Get(), &size) != FALSE)
            bytesExpected_ = size.QuadPart;
    }

    std::size_t Read(char* buffer, std::size_t size) override {
        const std::size_t count = handle_.Read(buffer, size);
        bytesExpected_ -= static_cast<std::int64_t>(count);
        if (count == 0 && bytesExpected_ > 0)
            throw Failure(FailureKind::InputPastEnd, handle_.Path() + " (cut short while it was read)");
        return count;
    }

    bool CanBeReadAgain() const override { return handle_.IsOnDisk(); }
    FileState State() const override { return handle_.State(); }

 private:
    Handle handle_;
    std::int64_t bytesExpected_ = 0;  ///< of those that the file held when opened, how many are to come
};

class WindowsWritableFile : public WritableFile {
 public:
    explicit WindowsWritableFile(Handle handle) : handle_(std::move(handle)) {}
    void Write(std::string_view bytes) override { handle_.Write(bytes); }
    void Close() override { handle_.Close(); }

 private:
    Handle handle_;
};

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

/// The full path for a relative `path`; `path` itself when the system cannot tell.
std::wstring FullPath(const std::wstring& path) {
    std::wstring full(GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
    if (full.empty()) return path;
    full.resize(GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
    return full;
}

/// A form that is the same for all paths of one missing file: the final path of its folder, and its name.
std::wstring CommonForm(const std::wstring& path) {
    const std::wstring full = FullPath(path);
    const std::wstring folder = FolderOf(full);
    const std::wstring final = TryOpen(folder, "", toAsk).FinalPath();
    return (final.empty() ? folder : final + L'\\') + full.substr(folder.size());
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
        // Not emptied by the call that opens it: Windows refuses that for hidden files.
        if (file.IsOnDisk() && SetEndOfFile(file.Get()) == FALSE) throw TransferFailure(GetLastError(), path);
        return WriteBehind(std::make_unique<WindowsWritableFile>(std::move(file)));
    }

    Replacement OpenReplacement(const std::string& path, const std::optional<Source>& /*source*/) override {
        return windows::OpenReplacement(path);
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
