#include "base/failure_report.h"
#include "system/file_system.h"
#include "system/windows_handle.h"
#include "system/windows_replacement.h"
#include "system/windows_scratch_file.h"
#include "system/windows_wide_text.h"
#include "system/write_behind.h"

#include <cstdint>
#include <optional>
#include <utility>

namespace quillmere {

namespace {

using namespace windows;

/// Others may write to the file, remove and replace it meanwhile: a save that fails would be worse than a
/// pass that fails.
constexpr OpenMode toRead = {GENERIC_READ, shareAll, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN};
/// Nobody else can open the file.
constexpr OpenMode toWrite = {GENERIC_WRITE, 0, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL};

/// A file that fails at its end when it was cut short or changed since it was opened. The time of the last
/// write is certain only when each writer has closed the file; its size is known at once.
class WindowsReadableFile : public ReadableFile {
 public:
    /// Wine cannot tell the state of standard input where a POSIX program redirected it from a file.
    explicit WindowsReadableFile(Handle handle) : handle_(std::move(handle)) {
        if (!handle_.IsOnDisk()) return;
        position_ = handle_.Position();
        TrapFailure([&] { opened_ = handle_.State(); });
    }

    std::size_t Read(char* buffer, std::size_t size) override {
        const std::size_t count = handle_.Read(buffer, size);
        position_ += static_cast<std::int64_t>(count);
        if (count == 0 && opened_) CheckAtEnd();
        return count;
    }

    bool CanBeReadAgain() const override { return handle_.IsOnDisk(); }
    FileState State() const override { return handle_.State(); }

 private:
    /// Not by CheckUnchanged, which compares the file's number, too: once the file was removed, Wine gives
    /// the open file another one.
    void CheckAtEnd() const {
        if (position_ < opened_->size)
            throw Failure(FailureKind::InputPastEnd, handle_.Path() + " (cut short while it was read)");
        const FileState now = handle_.State();
        if (now.size != opened_->size || now.written != opened_->written)
            throw Failure(FailureKind::FileChanged, handle_.Path() + " (changed while it was read)");
    }

    Handle handle_;
    std::optional<FileState> opened_;  ///< the state when it was opened, if it is a file and that is known
    std::int64_t position_ = 0;
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

/// Opens a standard stream, which failures call `name`.
Handle OpenStream(DWORD stream, const std::string& name) {
    Handle handle = DuplicateStream(stream, name);
    if (!handle.IsOpen()) throw StreamIsClosed(name);
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
std::wstring CommonForm(const std::wstring& wide, const std::string& path) {
    const std::wstring full = FullPath(wide);
    const std::wstring folder = FolderOf(full);
    const std::wstring final = Ask(folder, path).FinalPath();
    return (final.empty() ? folder : final + L'\\') + full.substr(folder.size());
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

    std::unique_ptr<ReadableFile> OpenStandardInput() override {
        return std::make_unique<WindowsReadableFile>(OpenStream(STD_INPUT_HANDLE, standardInput));
    }

    std::unique_ptr<WritableFile> OpenStandardOutput() override {
        return WriteBehind(
            std::make_unique<WindowsWritableFile>(OpenStream(STD_OUTPUT_HANDLE, standardOutput)));
    }

    std::unique_ptr<ScratchFile> CreateScratchFile() override { return windows::CreateScratchFile(); }

    Replacement OpenReplacement(const std::string& path, const std::optional<Source>& source) override {
        return windows::OpenReplacement(path, source);
    }

    FileKind KindOf(const std::string& path) override {
        const auto wide = WideFromValidUtf8(path);
        if (!wide) return FileKind::Missing;
        const Handle handle = Ask(*wide, path);
        if (!handle.IsOpen()) return FileKind::Missing;
        if (!handle.IsOnDisk()) return FileKind::Other;
        const DWORD attributes = handle.Information().dwFileAttributes;
        if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return FileKind::Folder;
        return (attributes & (FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM)) != 0 ? FileKind::Hidden
                                                                                   : FileKind::Regular;
    }

    std::string BackupPath(const std::string& path) override { return windows::BackupPath(path); }

    bool SameFile(const std::string& one, const std::string& other) override {
        const auto oneWide = WideFromValidUtf8(one);
        const auto otherWide = WideFromValidUtf8(other);
        if (!oneWide || !otherWide) return one == other;
        const auto first = StateAt(*oneWide, one);
        const auto second = StateAt(*otherWide, other);
        if (first && second) return first->IsSameFile(*second);
        if (first || second) return false;
        return CompareStringOrdinal(CommonForm(*oneWide, one).c_str(), -1,
                                    CommonForm(*otherWide, other).c_str(), -1, TRUE) == CSTR_EQUAL;
    }
};

}  // namespace

FileSystem& SystemFileSystem() {
    static WindowsFileSystem system;
    return system;
}

}  // namespace quillmere
